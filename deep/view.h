// What a deep picture depends on, and whether it can be rendered.
#pragma once

#include <string>

namespace deep {

// What a picture depends on. Decimals are texts of frac/decimal_text.h. Pixel (i, j) of W x H
// stands exactly at
//     centre + ((i/W - 1/2) width, (j/H - 1/2) width H/W):
// row 0 has the smallest imaginary part, as in every picture of the program (pixelPoint).
struct View {
    std::string re, im, width;   // centre and width
    std::string cRe, cIm;        // the constant of a Julia set; both empty: the Mandelbrot set
    int pixelsWide, pixelsHigh;  // W, H: samples of the whole picture, at least 1
    double limit;                // escape bound: |z|^2 > limit
    int maxIters;
};

// One line without a full stop that says why this view cannot be rendered, or nothing. Cheap.
std::string refusal(const View& view);

}  // namespace deep

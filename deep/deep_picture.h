// Iteration counts of Mandelbrot and Julia sets at any depth, proven to be those of exact
// arithmetic at the pixel's exact point: no count is a guess, and no result depends on threads, on
// the part of the picture that is asked for or on the instruction set. docs/deep-zoom.md derives
// it.
//
// Orbits are followed as differences from a reference (K. I. Martin, "Superfractalthing maths",
// 2013), which is taken anew where it has come nearer to 0 than the difference is long, and skip
// steps by bilinear maps (Zhuoran and C. Heiland-Allen, 2021 to 2022). Here each carries a bound of
// its error: standard rounding analysis (N. J. Higham, "Accuracy and Stability of Numerical
// Algorithms", 2002), discs as in J. van der Hoeven, "Ball arithmetic", 2009, sums of two doubles
// as in M. Joldes, J.-M. Muller and V. Popescu, "Tight and rigorous error bounds for basic building
// blocks of double-word arithmetic", 2017.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "compute/stop_flag.h"

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

// Values are whole multiples of this. Rounding to them hides which of several ways, all of them
// proven and none of them exact, a pixel took. Half a unit is below 1e-6 of a step.
inline constexpr double VALUE_UNIT = 0x1p-20;

// A view with all that its pixels share. Const once made: any threads render parts at once, which
// may overlap only if they write elsewhere. A view that refusal() refuses must not come here.
class Picture {
  public:
    explicit Picture(const View& view, StopFlag stop = nullptr);
    // Takes over the reference orbit of `before` where it serves this view as well, and else makes
    // one: same texts of centre and constant, same limit, no more iterations, a spacing no smaller.
    // So the deepest frame of a flight is the one to begin with. The other may go at any time.
    Picture(const View& view, const Picture& before, StopFlag stop = nullptr);
    ~Picture();
    Picture(Picture&&) noexcept;
    Picture& operator=(Picture&&) noexcept;

    // Writes the pixels [xStart, xEnd) x [yStart, yEnd), which lie within the picture: (x, y) is
    // element (y - yStart) * stride + (x - xStart). Either pointer may be null.
    //
    // A count is the first step n < maxIters, from 0, with |z_n|^2 > limit, maxIters where there is
    // none, and -1 where that could not be decided within the effort that multi_orbit.h states. A
    // value is that of compute/value_tile.h, rounded to VALUE_UNIT; NaN where the orbit stays or is
    // undecided.
    //
    // Returns how many pixels were left undecided. Once `stop` is set it returns within some
    // milliseconds, and what was not known by then is not written.
    std::int64_t render(int xStart, int yStart, int xEnd, int yEnd, std::int32_t* counts,
                        double* values, std::ptrdiff_t stride, StopFlag stop = nullptr) const;

    // Whether both pictures follow their pixels from one reference orbit.
    bool sharesReference(const Picture& other) const;

  private:
    class Work;
    std::unique_ptr<const Work> work;
};

}  // namespace deep

// Where a view lies that doubles cannot name. Plain data.
#pragma once

#include <string>

// Decimals as frac/decimal_text.h reads them, kept as they were written.
struct ExactPlace {
    std::string re, im;  // the centre
    std::string width;   // above 0; pictures are as high as their pixels are square
    std::string cRe,
        cIm;  // the constant c, where it is a decimal too; empty where a double says it
};

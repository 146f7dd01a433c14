// Counts and smooth values of a tile, for colouring that is not by count alone.
#pragma once

#include <cstddef>
#include <cstdint>

#include "compute/stop_flag.h"

// One tile and all that its pixels depend on. The tile need not be clipped to the picture; a
// picture without pixels has nothing to render.
//
// With m_k = |z_k|^2 after step k (steps are numbered from 0), formed in T by the rule's own
// arithmetic, m_(-1) that of the orbit's start, and L the limit, a pixel escapes at the first step
// n with m_n > L, n < maxIters. Its count is n and its value
//     v = (n - 1) + q,   q = (ln L - ln m_(n-1)) / (ln m_n - ln m_(n-1)),
// with logarithms (to base 2, which the quotient does not mind) and all else in double
// (compute/fixed_math.h); a q that is not a number or
// outside [0, 1] is taken as 1, so that v lies in [n - 1, n]. A pixel that stays has the count
// max(maxIters, 0) and the value NaN; so has every pixel under an unknown rule. That holds for
// Julia, too: what its own loop counts beyond the limit is no escape here, as it is none in the
// picture.
//
// Under a trigonometric rule in double v is rounded to 32 significant bits, 2.4e-10 of it at most
// (rounded32). Magnitudes that are only near those of the rule's own arithmetic then give its very
// value, save where it lies next to the middle between two such numbers.
//
// The bits are the same on every processor and with every C library.
//
// A pixel (x, y) is element (y - yOrigin) * stride + (x - xOrigin) of counts and values; either may
// be null. Once `stop` is set the tile is given up within some milliseconds; pixels that are not
// known by then are not written.
template <class T>
struct ValueTile {
    int xStart, yStart, xEnd, yEnd;
    int width, height;
    T xMin, xMax, yMin, yMax, cx, cy;
    T limit;
    int maxIters;
    std::int32_t* counts;
    double* values;
    int xOrigin, yOrigin;
    std::ptrdiff_t stride;
    StopFlag stop = nullptr;
};

// Renders the tile by rule `type` with vectors where the machine has them and help, else pixel by
// pixel: the same bits. Allocates nothing and takes no lock; any thread, on disjoint tiles at once.
void renderValues(const ValueTile<float>& tile, int type);
void renderValues(const ValueTile<double>& tile, int type);

// The yardstick: one pixel at a time with the scalar functions of compute/formulas.h.
void renderValuesScalar(const ValueTile<float>& tile, int type);
void renderValuesScalar(const ValueTile<double>& tile, int type);

// A yardstick for pictures deeper than double: the count of one pixel at a time, proven, slowly, by
// other means than those of deep/.
//
// An orbit is followed in whole numbers (GMP): z stands for z * 2^P, every product is exact and
// every step is cut once. A disc of one radius about it holds the orbit of exact arithmetic; a
// decision counts where it holds for the whole disc, else P grows by half and the orbit starts
// anew. The pixel's point is a ratio of whole numbers and never rounded before it is cut to P bits.
// What no precision decides is decided by exact ratios: real orbits that cannot leave, and ties
// |z|^2 = limit within the first steps.
#pragma once

#include <gmpxx.h>

#include <cstdint>
#include <string>

namespace oracle {

// Pixel (i, j) stands at centre + ((i/W - 1/2) width, (j/H - 1/2) width H/W). Texts are decimals,
// [+-]digits[.digits][(e|E)[+-]digits]. Without cRe the set is the Mandelbrot set, else Julia's.
struct View {
    std::string re, im, width;
    std::string cRe, cIm;
    int pixelsWide, pixelsHigh;
    double limit;  // a power of two times a whole number below 2^53, 2^-60 to 2^60
    int maxIters;
};

constexpr std::int32_t UNDECIDED = -1;

struct Answer {
    std::int32_t count;  // the first step n, from 0, with |z_(n+1)|^2 > limit; maxIters: none
    double value;        // n - 1 + q as compute/value_tile.h has it; NaN inside
    int bits;            // P that decided; 0: no orbit was needed
};

// The ratio that a decimal text stands for. Throws std::invalid_argument on any other text.
mpq_class decimal(const std::string& text);

// One view, its numbers read once. Any thread may ask.
class Oracle {
  public:
    explicit Oracle(const View& view);
    Answer pixel(int i, int j) const;
    // The same with this many bits and no more; UNDECIDED where they do not suffice.
    Answer pixelWith(int bits, int i, int j) const;

  private:
    struct Point {
        mpq_class re, im;
    };
    struct Orbit {
        Point start, constant;
    };
    friend class Follower;

    Orbit orbit(int i, int j) const;
    bool staysOnTheRealAxis(const Orbit& orbit) const;

    View view;
    mpq_class re, im, width, cRe, cIm;
    int bitsAtFirst;
};

}  // namespace oracle

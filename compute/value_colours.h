// The colours of values over a gradient, a row at a time.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

// What a value is measured on: as it is, the root of what is above zero, or the logarithm of one
// more than that.
enum class ValueScale { linear, squareRoot, logarithm };

// A piece of a gradient: red, green and blue from 0 to 1 on a straight line from `start` on, by
// `change` from one end to the other. The fourth number of `start` is 0, or 1 for a piece that is
// not straight and has to be asked for by other means; that of `change` is 0.
struct alignas(16) GradientPart {
    float start[4] = {}, change[4] = {};
};

// A gradient is cut into so many parts of one length. Behind them in the table stand a part for
// its very end and one for values that are NaN.
inline constexpr int GRADIENT_PARTS = 4096;
inline constexpr std::size_t GRADIENT_END = GRADIENT_PARTS, GRADIENT_INSIDE = GRADIENT_PARTS + 1;
inline constexpr std::size_t GRADIENT_TABLE = GRADIENT_PARTS + 2;

// A value v lies after (scaled(v) - start) / turn + offset turns of the gradient. What is left of
// whole turns, from 0 to 1, is its place; with `endsAtOne` the place of a whole number of turns
// above 0 is 1. A number of turns that is not a number or beyond 2^52 has the place 0.
struct ValueColours {
    const GradientPart* parts;  // GRADIENT_TABLE of them
    ValueScale scale;
    double start, turn, offset;
    bool endsAtOne;
    bool deep;  // levels of 16 bits, two bytes with the greater one first, rather than of 8
};

inline constexpr int ROUNDINGS = 16;

// Writes the levels of n pixels to `out`, three each: the number below (level * 255 or 65535) +
// roundings[x % ROUNDINGS], cut to the range of levels. 0 < roundings < 1. Writes the numbers of
// the pixels that it leaves to the caller, because their part of the gradient is not straight, to
// `left` (room for n; ascending), and returns how many. Where the machine has no vectors it leaves
// all of them.
//
// All of it is single operations, those on values in double, those on levels in float but for the
// last two of 16 bits: the same bytes on every processor, and those of the same text in scalar
// code. Any thread.
int colourValues(const ValueColours& how, const float* roundings, const double* values, int n,
                 unsigned char* out, std::int32_t* left);

// The level of a light, both from 0 to 1, by the curve of sRGB (IEC 61966-2-1), within 1e-6: a
// line, and above it a polynomial in the fourth root, along which the curve hardly bends.
inline constexpr float LEVELS_A_LIGHT = 12.92F, LAST_LINE_LIGHT = 0.0031308F;
inline constexpr float LEVEL_CURVE[] = {-0.05857903109F, 0.1254713258F,  1.45042974F,
                                        -1.121391133F,   1.14742157F,    -0.834668004F,
                                        0.3594089379F,   -0.06809359239F};
inline float levelOfLight(float light) {
    if (!(light > LAST_LINE_LIGHT)) return light * LEVELS_A_LIGHT;
    const float root = std::sqrt(std::sqrt(light));
    float level = LEVEL_CURVE[7];
    for (int n = 6; n >= 0; --n) level = level * root + LEVEL_CURVE[n];
    return level;
}

// Values of rows of samples: side x side of them for each pixel.
inline constexpr int MOST_SAMPLES = 8;  // a side
struct SampleRows {
    const double* values;
    std::ptrdiff_t stride;  // from one row to the next
    int side;
};

// As colourValues(), of pixels of samples. The parts hold light. That of a pixel is the sum of its
// samples', added row by row from the left, times 1 / (side * side), its level levelOfLight() of
// that. Leaves pixels with a sample in a part that is not straight.
int colourAverages(const ValueColours& how, const float* roundings, const SampleRows& samples,
                   int n, unsigned char* out, std::int32_t* left);

// Averages of colours in linear light, by the curve of sRGB.
//
// All of it is integer arithmetic on two tables that the compiler works out with + - * / alone, so
// an average is the same on every processor. A table holds the light of a level in units so small
// that an average is exact unless it lies within 2^-44 of the boundary between two levels. The dark
// end of the curve is a line, where averages do hit that boundary: there the table is exact, and
// they go to the brighter level.
#pragma once

#include <array>
#include <cstdint>

namespace render {

// The light of level 255: about 2^44, so chosen that that of level 1, by 255 * 12.92 less, is even.
inline constexpr std::uint64_t FULL_LIGHT = std::uint64_t{32946} << 29;

// The light of each level, 0 to FULL_LIGHT.
const std::array<std::uint64_t, 256>& lightOfLevel();

// The level whose light is nearest to sum / count. count: 1 to 2^16, sum: at most count *
// FULL_LIGHT. Any thread.
unsigned char levelOfAverage(std::uint64_t sum, std::uint64_t count);

}  // namespace render

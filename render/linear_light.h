// Averages of colours in linear light, by the curve of sRGB.
//
// All of it is integer arithmetic on two tables that the compiler works out with + - * / alone, so
// an average is the same on every processor. A table holds the light of a level in units of 2^-44,
// rounded; an average is therefore exact unless it lies within 2^-44 of the boundary between two
// levels.
#pragma once

#include <array>
#include <cstdint>

namespace render {

// The light of level 255.
inline constexpr std::uint64_t FULL_LIGHT = std::uint64_t{1} << 44;

// The light of each level, 0 to FULL_LIGHT.
const std::array<std::uint64_t, 256>& lightOfLevel();

// The level whose light is nearest to sum / count. count: 1 to 2^16, sum: at most count *
// FULL_LIGHT. Any thread.
unsigned char levelOfLight(std::uint64_t sum, std::uint64_t count);

}  // namespace render

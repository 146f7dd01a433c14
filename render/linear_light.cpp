#include "render/linear_light.h"

#include <algorithm>

namespace render {
namespace {

// x to the power 1/5 for 0 < x <= 1, by Newton's method from above, where it falls until it rests.
constexpr double fifthRoot(double x) {
    double root = 1;
    for (;;) {
        const double fourth = root * root * root * root;
        const double next = root - (root * fourth - x) / (5 * fourth);
        if (!(next < root)) return root;
        root = next;
    }
}

// The light of level 1. Up to level 10.3 the curve is a line.
constexpr std::uint64_t LEVEL_ONE = std::uint64_t{10} << 29;

// The light of a level, in halves of a level: the curve of IEC 61966-2-1, x^2.4 as x^2 (x^2)^(1/5).
constexpr std::uint64_t light(std::uint64_t halves) {
    const double value = static_cast<double>(halves) / 510;
    if (value <= 0.04045) return halves * (LEVEL_ONE / 2);
    const double base = (value + 0.055) / 1.055;
    const double share = base * base * fifthRoot(base * base);
    // lround is no constant expression. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<std::uint64_t>(share * static_cast<double>(FULL_LIGHT) + 0.5);
}

constexpr std::array<std::uint64_t, 256> lightTable(std::uint64_t offset) {
    std::array<std::uint64_t, 256> table{};
    for (std::size_t level = 0; level < table.size(); ++level) {
        table[level] = light(2 * level + offset);
    }
    return table;
}

constexpr auto LIGHT = lightTable(0);
constexpr auto UPPER_END = lightTable(1);  // the light at which the next level is the nearer one

// Where to begin to look: the level of the least light with these leading bits.
constexpr int GUESS_SHIFT = 32;
constexpr std::size_t GUESSES = (FULL_LIGHT >> GUESS_SHIFT) + 1;

constexpr std::array<unsigned char, GUESSES> guessTable() {
    std::array<unsigned char, GUESSES> table{};
    std::size_t level = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        while (level < 255 && UPPER_END[level] <= (std::uint64_t{i} << GUESS_SHIFT)) ++level;
        table[i] = static_cast<unsigned char>(level);
    }
    return table;
}

constexpr auto GUESS = guessTable();

}  // namespace

const std::array<std::uint64_t, 256>& lightOfLevel() {
    return LIGHT;
}

unsigned char levelOfAverage(std::uint64_t sum, std::uint64_t count) {
    std::size_t level = GUESS[(sum / count) >> GUESS_SHIFT];
    while (level < 255 && UPPER_END[level] * count <= sum) ++level;
    return static_cast<unsigned char>(level);
}

}  // namespace render

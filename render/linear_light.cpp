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

// The light of a level, 0 to 255 and between: the curve of IEC 61966-2-1, x^2.4 as x^2 (x^2)^(1/5).
constexpr double light(double level) {
    const double value = level / 255;
    if (value <= 0.04045) return value / 12.92;
    const double base = (value + 0.055) / 1.055;
    return base * base * fifthRoot(base * base);
}

constexpr std::uint64_t units(double value) {
    return static_cast<std::uint64_t>(value * static_cast<double>(FULL_LIGHT) + 0.5);
}

constexpr std::array<std::uint64_t, 256> lightTable(double offset) {
    std::array<std::uint64_t, 256> table{};
    for (std::size_t level = 0; level < table.size(); ++level) {
        table[level] = units(light(static_cast<double>(level) + offset));
    }
    return table;
}

constexpr auto LIGHT = lightTable(0);
constexpr auto UPPER_END = lightTable(0.5);  // the light at which the next level is the nearer one

// Where to begin to look: the level of the least light with these leading bits.
constexpr int GUESS_BITS = 12;

constexpr std::array<unsigned char, (1 << GUESS_BITS) + 1> guessTable() {
    std::array<unsigned char, (1 << GUESS_BITS) + 1> table{};
    std::size_t level = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        while (level < 255 && UPPER_END[level] <= (std::uint64_t{i} << (44 - GUESS_BITS))) ++level;
        table[i] = static_cast<unsigned char>(level);
    }
    return table;
}

constexpr auto GUESS = guessTable();

}  // namespace

const std::array<std::uint64_t, 256>& lightOfLevel() {
    return LIGHT;
}

unsigned char levelOfLight(std::uint64_t sum, std::uint64_t count) {
    std::size_t level = GUESS[(sum / count) >> (44 - GUESS_BITS)];
    while (level < 255 && UPPER_END[level] * count <= sum) ++level;
    return static_cast<unsigned char>(level);
}

}  // namespace render

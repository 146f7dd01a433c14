#include "render/colour_curves.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace render {
namespace {

constexpr double LAST_LINEAR_LEVEL = 0.04045, LAST_LINEAR_LIGHT = 0.04045 / 12.92;
constexpr double LN_2_HIGH = 0x1.62e42fefa3800p-1;  // 41 bits: exact times an exponent
constexpr double LN_2_LOW = 0x1.ef35793c76730p-45;
constexpr double LN_2 = LN_2_HIGH + LN_2_LOW;

// x to the power 1/5, 0 < x <= 1, by Newton's method from above.
double fifthRoot(double x) {
    double root = 1;
    for (;;) {
        const double fourth = root * root * root * root;
        const double next = root - (root * fourth - x) / (5 * fourth);
        if (!(next < root)) return root;
        root = next;
    }
}

double exactLight(double level) {
    if (level <= LAST_LINEAR_LEVEL) return level / 12.92;
    const double base = (level + 0.055) / 1.055;
    return base * base * fifthRoot(base * base);
}

// The level of root * root: x^(1/2.4) is root^(5/6), and that the fifth power of a sixth root.
double exactLevel(double root) {
    if (root * root <= LAST_LINEAR_LIGHT) return root * root * 12.92;
    const double sixth = std::sqrt(cubeRoot(root));
    return 1.055 * sixth * sixth * sixth * sixth * sixth - 0.055;
}

// A function on 0 to 1 by straight lines between many of its points.
class Lines {
  public:
    explicit Lines(double (*function)(double)) {
        for (std::size_t n = 0; n <= PARTS; ++n) points[n] = function(double(n) / PARTS);
        points[PARTS + 1] = points[PARTS];
    }

    double at(double x) const {
        const double place = x * PARTS;
        const auto n = static_cast<std::size_t>(place);
        return points[n] + (place - static_cast<double>(n)) * (points[n + 1] - points[n]);
    }

  private:
    static constexpr std::size_t PARTS = 8192;
    std::array<double, PARTS + 2> points{};
};

}  // namespace

// Where the curve is a line it is one here too: the kink would not lie between two points.
double lightOf(double level) {
    static const Lines LINES(exactLight);
    if (!(level > 0)) return 0;
    return level <= LAST_LINEAR_LEVEL ? level / 12.92 : LINES.at(std::min(level, 1.0));
}

// By the square root, along which the curve is smooth.
double levelOf(double light) {
    static const Lines LINES(exactLevel);
    if (!(light > 0)) return 0;
    return light <= LAST_LINEAR_LIGHT ? light * 12.92
                                      : LINES.at(std::sqrt(std::min(light, 1.0)));
}

double cubeRoot(double x) {
    if (x == 0) return x;
    if (x < 0) return -cubeRoot(-x);
    double root = std::max(x, 1.0);
    for (;;) {
        const double next = root - (root - x / (root * root)) / 3;
        if (!(next < root)) return root;
        root = next;
    }
}

// ln x = e ln 2 + ln m with m from sqrt(1/2) to sqrt(2), and ln m = 2 (s + s^3/3 + s^5/5 + ...)
// with s = (m - 1) / (m + 1).
double logarithm(double x) {
    constexpr std::uint64_t HALF_ROOT = 0x3fe6a09e667f3bcd;  // the bits of sqrt(1/2)
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const auto exponent = static_cast<std::int64_t>(bits - HALF_ROOT) >> 52;
    const double m = std::bit_cast<double>(bits - (static_cast<std::uint64_t>(exponent) << 52));
    const double s = (m - 1) / (m + 1), square = s * s;
    double sum = 0;
    for (int n = 21; n >= 3; n -= 2) sum = (sum + 1.0 / n) * square;
    const auto e = static_cast<double>(exponent);
    return e * LN_2_HIGH + (2 * s + (2 * s * sum + e * LN_2_LOW));
}

double exponential(double x) {
    const double k = std::floor(x / LN_2 + 0.5);
    const double rest = (x - k * LN_2_HIGH) - k * LN_2_LOW;
    double sum = 1;
    for (int n = 16; n >= 1; --n) sum = 1 + sum * rest / n;
    return std::ldexp(sum, static_cast<int>(k));
}

double sine(double x) {
    double sum = 1;
    for (int n = 26; n >= 2; n -= 2) sum = 1 - sum * x * x / (n * (n + 1));
    return x * sum;
}

}  // namespace render

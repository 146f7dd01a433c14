#include "render/colour_curves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "compute/fixed_math.h"

namespace render {
namespace {

constexpr double LAST_LINEAR_LEVEL = 0.04045, LAST_LINEAR_LIGHT = 0.04045 / 12.92;

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

// The bent part of the curve; below, where it is a line, too, so that the part that lies across the
// kink is as good as the others.
double bentLight(double level) {
    const double base = (level + 0.055) / 1.055;
    return base * base * fifthRoot(base * base);
}

// The level of root * root likewise: x^(1/2.4) is root^(5/6), and that the fifth power of a sixth
// root.
double bentLevel(double root) {
    const double sixth = std::sqrt(fixedCubeRoot(root));
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
    static const Lines LINES(bentLight);
    if (!(level > 0)) return 0;
    return level <= LAST_LINEAR_LEVEL ? level / 12.92 : LINES.at(std::min(level, 1.0));
}

// By the square root, along which the curve is smooth.
double levelOf(double light) {
    static const Lines LINES(bentLevel);
    if (!(light > 0)) return 0;
    return light <= LAST_LINEAR_LIGHT ? light * 12.92 : LINES.at(std::sqrt(std::min(light, 1.0)));
}

double sine(double x) {
    double sum = 1;
    for (int n = 26; n >= 2; n -= 2) sum = 1 - sum * x * x / (n * (n + 1));
    return x * sum;
}

}  // namespace render

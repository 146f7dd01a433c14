#include "tests/compute/boundary_views.h"

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include "compute/formulas.h"
#include "tests/compute/wide_trig.h"

namespace vector_test {
namespace {

using wide_trig::Wide;

constexpr bool isTrigonometric(int type) {
    return type >= 2 && type <= 5;
}

// f of the rule z -> f(z) + c, and its slope.
Wide valueOf(int type, const Wide& z) {
    return isTrigonometric(type) ? wide_trig::valueOf(type, z) : z * z;
}

Wide slopeOf(int type, const Wide& z) {
    return isTrigonometric(type) ? wide_trig::slopeOf(type, z) : 2.0L * z;
}

// A point where the slope is `slope`.
Wide pointOfSlope(int type, const Wide& slope) {
    switch (type) {
        case 2:
            return std::acos(slope);
        case 3:
            return std::asin(-slope);
        case 4:
            return std::acosh(slope);
        case 5:
            return std::asinh(slope);
        default:
            return slope / 2.0L;
    }
}

double rounded(long double value, bool doublePrecision) {
    return doublePrecision ? static_cast<double>(value)
                           : static_cast<double>(static_cast<float>(value));
}

double unitInTheLastPlace(double value, bool doublePrecision) {
    const double size = std::fabs(value);
    if (doublePrecision) return std::nextafter(size, INFINITY) - size;
    const auto narrow = static_cast<float>(size);
    return static_cast<double>(std::nextafter(narrow, INFINITY)) - static_cast<double>(narrow);
}

constexpr int SIDE = 8;

// SIDE x SIDE pixels, one unit in the last place apart, around a point.
void surround(View& v, long double x, long double y) {
    const double middle[] = {rounded(x, v.doublePrecision), rounded(y, v.doublePrecision)};
    const double reach[] = {SIDE / 2 * unitInTheLastPlace(middle[0], v.doublePrecision),
                            SIDE / 2 * unitInTheLastPlace(middle[1], v.doublePrecision)};
    v.xMin = middle[0] - reach[0];
    v.xMax = middle[0] + reach[0];
    v.yMin = middle[1] - reach[1];
    v.yMax = middle[1] + reach[1];
    v.width = v.height = SIDE;
}

View viewOf(Random& random, int type, bool doublePrecision) {
    View v;
    v.type = type;
    v.doublePrecision = doublePrecision;
    v.cx = random.uniform(-1.5, 1.5);
    v.cy = random.uniform(-1.2, 1.2);
    v.tileWidth = random.among({SIDE, SIDE, 3});
    v.tileHeight = random.among({SIDE, SIDE, 5});
    return v;
}

// Of a view that `surround` made, pixels from an axis on to as far behind the point, which is still
// one of them: orbits of every fate in one tile.
void spread(View& v, bool across) {
    double& from = across ? v.xMin : v.yMin;
    double& to = across ? v.xMax : v.yMax;
    to = 2 * (from + (to - from) / 2);
    from = 0;
    (across ? v.width : v.height) = 2 * SIDE;
}

// Pixels around the start of Julia's orbit, or around the constant of the others.
void surroundOrbit(View& v, const Wide& start, const Wide& c) {
    if (v.type != 1) return surround(v, c.real(), c.imag());
    v.cx = rounded(c.real(), v.doublePrecision);
    v.cy = rounded(c.imag(), v.doublePrecision);
    surround(v, start.real(), start.imag());
}

template <class T>
int countAt(const View& v, T x, T y) {
    int count = 0;
    visitRule(v.type, [&](auto rule) {
        count = pixelCount<decltype(rule), T>(0, 0, 1, 1, x, x, y, y, static_cast<T>(v.cx),
                                              static_cast<T>(v.cy), static_cast<T>(v.maxSize),
                                              v.maxIters);
    });
    return count;
}

// The last number before `far` on the way from `near` whose pixel has the count of `near`.
template <class T, class Count>
T lastOfItsCount(T near, T far, Count&& count) {
    const int known = count(near);
    for (;;) {
        const T middle = near + (far - near) / 2;
        if (middle == near || middle == far) return near;
        (count(middle) == known ? near : far) = middle;
    }
}

template <class T>
void findCrossing(Random& random, View& v, double width, double height) {
    for (int attempt = 0; attempt < 40; ++attempt) {
        T x = static_cast<T>(random.uniform(-width, width));
        T y = static_cast<T>(random.uniform(-height, height));
        const T step = static_cast<T>(std::pow(10.0, -random.uniform(0, 3)));
        const bool across = random.pick(0, 1) == 1;
        const T far = across ? x + step * static_cast<T>(width) : y + step * static_cast<T>(height);
        const auto count = [&](T at) { return across ? countAt(v, at, y) : countAt(v, x, at); };
        T& moving = across ? x : y;
        surround(v, static_cast<long double>(x), static_cast<long double>(y));
        if (count(moving) == count(far)) continue;
        moving = lastOfItsCount(moving, far, count);
        surround(v, static_cast<long double>(x), static_cast<long double>(y));
        return;
    }
}

}  // namespace

View crossing(Random& random, int type, bool doublePrecision) {
    View v = viewOf(random, type, doublePrecision);
    const int limits[] = {0, 1, 2, 4, 4, 4, 5, 25, 100, 128, 400, 89999, 90000, 90001, 1000000};
    v.maxSize = random.among(limits);
    v.maxIters = random.pick(0, 7) == 0 ? random.pick(767, 770)
                                        : static_cast<int>(std::pow(10.0, random.uniform(0, 2)));
    const double radius = std::sqrt(v.maxSize) + 0.5;
    // Of large trigonometric states those are of use whose hyperbolic argument is small.
    const double hyperbolic = std::min(radius, random.uniform(1, 8));
    double width = random.pick(0, 1) == 1 ? radius : std::min(radius, 2.0), height = width;
    if (type == 2 || type == 3) height = std::min(height, hyperbolic);
    if (type == 4 || type == 5) width = std::min(width, hyperbolic);
    if (doublePrecision) {
        findCrossing<double>(random, v, width, height);
    } else {
        findCrossing<float>(random, v, width, height);
    }
    if (random.pick(0, 3) == 0) spread(v, random.pick(0, 1) == 1);
    return v;
}

View restOnTheLimit(Random& random, int type, bool doublePrecision) {
    View v = viewOf(random, type, doublePrecision);
    v.maxIters = random.among({60, 200, 769, 1500});
    v.maxSize = isTrigonometric(type) ? random.among({1, 2, 3, 4, 5, 8, 10}) : random.among({0, 1});
    for (int attempt = 0; attempt < 60; ++attempt) {
        const long double angle = random.pick(0, 3) == 0
                                      ? std::numbers::pi_v<long double> / 2 * random.pick(0, 3)
                                      : random.uniform(0, 6.2831853);
        const Wide rest = std::polar(std::sqrt(static_cast<long double>(v.maxSize)), angle);
        const Wide c = rest - valueOf(type, rest);
        surroundOrbit(v, rest, c);
        if (std::abs(slopeOf(type, rest)) >= 1) continue;
        Wide z = type == 1 ? rest : 0;
        for (int i = 0; i < 200 && std::abs(z) < 20; ++i) z = valueOf(type, z) + c;
        if (std::abs(z - rest) < 1e-3L) break;
    }
    return v;
}

View neutral(Random& random, int type, bool doublePrecision) {
    View v = viewOf(random, type, doublePrecision);
    const int denominator = random.pick(1, 7);
    const long double golden = (std::sqrt(5.0L) - 1) / 2;
    const long double turns =
        random.pick(0, 1) == 1 ? golden : static_cast<long double>(random.pick(0, 6)) / denominator;
    const Wide slope = std::polar(1.0L, 2 * std::numbers::pi_v<long double> * turns);
    const Wide rest = pointOfSlope(type, slope);
    v.maxSize = isTrigonometric(type) ? random.among({4, 10, 128}) : 4;
    v.maxIters = random.among({100, 400, 770, 1500});
    const long double away = random.pick(0, 1) == 1 ? 0 : random.uniform(0, 0.3);
    surroundOrbit(v, rest * (1 - away), rest - valueOf(type, rest));
    return v;
}

View misiurewicz(Random& random, int type, bool doublePrecision) {
    View v = viewOf(random, type, doublePrecision);
    v.maxSize = random.among({128, 4, 400, 90000});
    v.maxIters = random.among({100, 400, 769});
    for (int attempt = 0; attempt < 60; ++attempt) {
        Wide c{random.uniform(-2, 2), random.uniform(-2, 2)}, rest = 0;
        const int steps = random.pick(2, 5);
        long double error = 1;
        // Newton's method for z_(n+1) = z_n as a function of c.
        for (int i = 0; i < 40 && error > 1e-18L; ++i) {
            Wide z = c, growth = 1;
            for (int n = 1; n < steps; ++n) {
                growth = slopeOf(type, z) * growth + 1.0L;
                z = valueOf(type, z) + c;
            }
            rest = z;
            const Wide change = valueOf(type, z) + c - z;
            const Wide step = change / (slopeOf(type, z) * growth + 1.0L - growth);
            error = std::abs(step);
            c -= step;
        }
        if (!(error < 1e-15L) || !(std::abs(c) < 10)) continue;
        surround(v, c.real(), c.imag());
        if (std::abs(slopeOf(type, rest)) > 1.1L) break;
    }
    return v;
}

View extreme(Random& random, int type, bool doublePrecision) {
    View v = viewOf(random, type, doublePrecision);
    const double smallest = doublePrecision ? 1e-322 : 1e-44,
                 largest = doublePrecision ? 1e300 : 1e37;
    const double scales[] = {smallest, 1e10 * smallest, largest, 30, 300, 720, 2000, 40000};
    const double scale = random.among(scales);
    const double x = random.uniform(-scale, scale), y = random.uniform(-scale, scale);
    v.maxSize =
        random.among({0, 4, 90000, 90001, 360001, 100000000, std::numeric_limits<int>::max()});
    v.maxIters = random.pick(1, 60);
    surround(v, x, y);
    if (random.pick(0, 1) == 1) return v;
    v.xMin = -scale;
    v.xMax = scale;
    v.yMin = random.among({-scale, -8.0});
    v.yMax = -v.yMin;
    v.width = 16;
    return v;
}

View boundaryView(Random& random, int type, bool doublePrecision) {
    const int kind = random.pick(0, 9);
    if (kind == 0) return extreme(random, type, doublePrecision);
    if (type >= SMOOTH_TYPES || kind < 6) return crossing(random, type, doublePrecision);
    if (kind < 8) return restOnTheLimit(random, type, doublePrecision);
    if (kind == 8 || type == 1) return neutral(random, type, doublePrecision);
    return misiurewicz(random, type, doublePrecision);
}

}  // namespace vector_test

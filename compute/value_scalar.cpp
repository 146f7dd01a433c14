#include <algorithm>
#include <limits>
#include <type_traits>

#include "compute/fixed_math.h"
#include "compute/formulas.h"
#include "compute/value_tile.h"

namespace {

// Where an orbit escaped, and |z|^2 before and after that step. count: the iteration limit for an
// orbit that stays, or GIVEN_UP.
template <class T>
struct Escape {
    int count;
    T before{}, after{};
};

template <class R, class T>
Escape<T> followOrbit(cpuComplex<T> z, const cpuComplex<T>& c, const ValueTile<T>& tile,
                      int maxIters) {
    T before = magnitudeSquared(z);
    for (int count = 0; count < maxIters; ++count) {
        if (count % STEPS_BETWEEN_LOOKS == 0 && isSet(tile.stop)) return {GIVEN_UP};
        z = R::step(z, c);
        const T after = magnitudeSquared(z);
        if (after > tile.limit) return {count, before, after};
        before = after;
    }
    return {maxIters};
}

template <class R, class T>
Escape<T> followPixel(const ValueTile<T>& t, int x, int y, int maxIters) {
    const cpuComplex<T> p = pixelPoint(x, y, t.width, t.height, t.xMin, t.xMax, t.yMin, t.yMax);
    const cpuComplex<T> z = R::start == Start::pixel ? p : cpuComplex<T>{T(0), T(0)};
    const cpuComplex<T> c = R::constant == Constant::pixel ? p : cpuComplex<T>{t.cx, t.cy};
    return followOrbit<R>(z, c, t, maxIters);
}

// Calls pixel(x, y) for every pixel of the tile until it is to stop.
template <class T, class Pixel>
void forEachPixel(const ValueTile<T>& tile, Pixel&& pixel) {
    for (int y = std::max(tile.yStart, 0); y < std::min(tile.yEnd, tile.height); ++y) {
        for (int x = std::max(tile.xStart, 0); x < std::min(tile.xEnd, tile.width); ++x) {
            if (isSet(tile.stop)) return;
            pixel(x, y);
        }
    }
}

template <class T>
void writePixel(const ValueTile<T>& tile, int x, int y, int count, double value) {
    const std::ptrdiff_t at =
        (std::ptrdiff_t{y} - tile.yOrigin) * tile.stride + (std::ptrdiff_t{x} - tile.xOrigin);
    if (tile.counts != nullptr) tile.counts[at] = count;
    if (tile.values != nullptr) tile.values[at] = value;
}

template <class R>
constexpr bool IS_TRIGONOMETRIC = std::is_same_v<R, SinRule> || std::is_same_v<R, CosRule> ||
                                  std::is_same_v<R, SinhRule> || std::is_same_v<R, CoshRule>;

// The value of a pixel that escaped under rule R.
template <class R, class T>
double valueOf(const Escape<T>& e, double logLimit) {
    const auto value = smoothValue<double>(e.count, static_cast<double>(e.before),
                                           static_cast<double>(e.after), logLimit);
    constexpr bool ROUNDED = IS_TRIGONOMETRIC<R> && std::is_same_v<T, double>;
    return ROUNDED ? rounded32(value) : value;
}

template <class T>
void renderPixels(const ValueTile<T>& tile, int type) {
    constexpr double INSIDE = std::numeric_limits<double>::quiet_NaN();
    const int maxIters = std::max(tile.maxIters, 0);
    const double logLimit = fixedLog2(static_cast<double>(tile.limit));
    const bool known = visitRule(type, [&](auto rule) {
        forEachPixel(tile, [&](int x, int y) {
            using R = decltype(rule);
            const Escape<T> e = followPixel<R>(tile, x, y, maxIters);
            if (e.count == GIVEN_UP) return;
            const double value = e.count == maxIters ? INSIDE : valueOf<R>(e, logLimit);
            writePixel(tile, x, y, e.count, value);
        });
    });
    if (known) return;
    forEachPixel(tile, [&](int x, int y) { writePixel(tile, x, y, maxIters, INSIDE); });
}

}  // namespace

void renderValuesScalar(const ValueTile<float>& tile, int type) {
    renderPixels(tile, type);
}

void renderValuesScalar(const ValueTile<double>& tile, int type) {
    renderPixels(tile, type);
}

#include "tests/support/reference_fractal.h"

#include <cmath>
#include <limits>

#include "compute/rounded_trig.h"

namespace test_support {
namespace {

template <class T>
struct Point {
    T re, im;
};

template <class T>
Point<T> plus(Point<T> a, Point<T> b) {
    return {a.re + b.re, a.im + b.im};
}

template <class T>
Point<T> minus(Point<T> a, Point<T> b) {
    return {a.re - b.re, a.im - b.im};
}

template <class T>
Point<T> times(Point<T> a, Point<T> b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

template <class T>
Point<T> real(int k) {
    return {T(k), T(0)};
}

// A product of two functions in double, which tests of their own hold to MPFR; rounded once to T.
template <class T>
T rounded(double a, double b) {
    return static_cast<T>(a * b);
}

template <class T>
Point<T> trigonometric(int type, Point<T> z) {
    const SineCosine r = type <= 3 ? sineCosine(z.re) : hyperbolicSineCosine(z.re);
    const SineCosine j = type <= 3 ? hyperbolicSineCosine(z.im) : sineCosine(z.im);
    switch (type) {
        case 2:
            return {rounded<T>(r.sine, j.cosine), rounded<T>(r.cosine, j.sine)};
        case 3:
            return {rounded<T>(r.cosine, j.cosine), -rounded<T>(r.sine, j.sine)};
        case 4:
            return {rounded<T>(r.sine, j.cosine), rounded<T>(r.cosine, j.sine)};
        default:
            return {rounded<T>(r.cosine, j.cosine), rounded<T>(r.sine, j.sine)};
    }
}

template <class T>
Point<T> sierpinski(Point<T> z) {
    const double x = 2.0 * static_cast<double>(z.re);
    const double y = 2.0 * static_cast<double>(z.im);
    if (static_cast<double>(z.im) > 0.5) return {static_cast<T>(x), static_cast<T>(y - 1.0)};
    if (static_cast<double>(z.re) > 0.5) return {static_cast<T>(x - 1.0), static_cast<T>(y)};
    return {static_cast<T>(x), static_cast<T>(y)};
}

template <class T>
Point<T> polynomial(int type, Point<T> z, Point<T> p) {
    const Point<T> z2 = times(z, z);
    const Point<T> z3 = times(z2, z);
    const Point<T> z4 = times(z3, z);
    if (type == 11) {
        const Point<T> z5 = times(z4, z);
        const Point<T> high = minus(times(z5, real<T>(16)), times(z3, real<T>(20)));
        return plus(plus(high, times(z, real<T>(5))), p);
    }
    if (type == 12) {
        const Point<T> high = minus(times(z4, real<T>(16)), times(z2, real<T>(48)));
        return plus(high, real<T>(12));
    }
    const Point<T> high = minus(times(z3, real<T>(20)), times(z2, real<T>(30)));
    return minus(plus(high, times(z, real<T>(12))), real<T>(1));
}

// The next point of the orbit; p is the pixel's point, c the view's constant.
template <class T>
Point<T> next(int type, Point<T> z, Point<T> p, Point<T> c) {
    switch (type) {
        case 0:
            return plus(times(z, z), p);
        case 1:
            return plus(times(z, z), c);
        case 2:
        case 3:
        case 4:
        case 5:
            return plus(trigonometric(type, z), p);
        case 6:
            return z.re >= T(0) ? minus(times(c, z), c) : plus(times(c, z), c);
        case 7: {
            const Point<T> w = times(c, z);
            return w.im >= T(0) ? minus(w, c) : plus(w, c);
        }
        case 8:
            return {z.re * z.re - z.im * z.im - T(1) + c.re * z.re, T(2) * z.re * z.im};
        case 9:
            return sierpinski(z);
        case 10:
            return times(times(c, z), Point<T>{T(1) - z.re, -z.im});
        default:
            return polynomial(type, z, p);
    }
}

bool startsAtOrigin(int type) {
    return type == 0 || (type >= 2 && type <= 5);
}

int wholePart(double v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483647.0) return std::numeric_limits<int>::max();
    if (v <= -2147483648.0) return std::numeric_limits<int>::min();
    return static_cast<int>(v);
}

template <class T>
std::int64_t count(const ReferenceView& v, int x, int y) {
    const T left = static_cast<T>(v.xMin), right = static_cast<T>(v.xMax);
    const T low = static_cast<T>(v.yMin), high = static_cast<T>(v.yMax);
    const Point<T> p{T(x) / T(v.width) * (right - left) + left,
                     T(y) / T(v.height) * (high - low) + low};
    const Point<T> c{static_cast<T>(v.cx), static_cast<T>(v.cy)};
    const T limit = static_cast<T>(wholePart(v.maxSize));
    const bool julia = v.type == 1;
    if (!julia && v.maxIters < 1) return 0;
    Point<T> z = startsAtOrigin(v.type) ? Point<T>{T(0), T(0)} : p;
    for (std::int64_t n = 0;; ++n) {
        if (!julia && n == v.maxIters) return n;
        z = next(v.type, z, p, c);
        if (z.re * z.re + z.im * z.im > limit) return n;
        if (julia && n > v.maxIters) return n;
    }
}

}  // namespace

std::int64_t referenceCount(const ReferenceView& view, int x, int y) {
    return view.doublePrecision ? count<double>(view, x, y) : count<float>(view, x, y);
}

void referencePixel(const ReferenceView& view, const unsigned char* palette, int x, int y,
                    unsigned char* rgba) {
    const bool known = view.type >= 0 && view.type <= 13;
    const std::int64_t n = known ? referenceCount(view, x, y) : view.maxIters;
    const bool inside = !known || n >= view.maxIters;
    for (int channel = 0; channel < 3; ++channel) {
        rgba[channel] = inside ? 0 : palette[4 * (n % 768) + channel];
    }
    rgba[3] = 255;
}

}  // namespace test_support

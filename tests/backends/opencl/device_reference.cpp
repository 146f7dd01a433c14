#include "tests/backends/opencl/device_reference.h"

#include <cmath>
#include <cstring>

namespace device_reference {
namespace {

template <class T>
struct Point {
    T re, im;
};

template <class T>
Point<T> sum(Point<T> a, Point<T> b) {
    return {a.re + b.re, a.im + b.im};
}

template <class T>
Point<T> difference(Point<T> a, Point<T> b) {
    return {a.re - b.re, a.im - b.im};
}

template <class T>
Point<T> product(Point<T> a, Point<T> b) {
    return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}

template <class T>
Point<T> scaled(int factor, Point<T> a) {
    return {static_cast<T>(factor) * a.re, static_cast<T>(factor) * a.im};
}

template <class T>
Point<T> power(Point<T> a, int n) {
    return n == 1 ? a : product(power(a, n - 1), a);
}

template <class T>
Point<T> doubling(Point<T> z) {
    const T two = 2, one = 1, half = static_cast<T>(0.5);
    if (z.im > half) return {two * z.re, two * z.im - one};
    if (z.re > half) return {two * z.re - one, two * z.im};
    return {two * z.re, two * z.im};
}

template <class T>
Point<T> trigonometric(int type, Point<T> z) {
    using std::sin, std::cos, std::sinh, std::cosh;
    switch (type) {
        case 2:
            return {sin(z.re) * cosh(z.im), cos(z.re) * sinh(z.im)};
        case 3:
            return {cos(z.re) * cosh(z.im), -(sin(z.re) * sinh(z.im))};
        case 4:
            return {sinh(z.re) * cos(z.im), cosh(z.re) * sin(z.im)};
        default:
            return {cosh(z.re) * cos(z.im), sinh(z.re) * sin(z.im)};
    }
}

template <class T>
Point<T> polynomial(int type, Point<T> z, Point<T> p) {
    switch (type) {
        case 11:
            return sum(sum(sum(scaled(16, power(z, 5)), scaled(-20, power(z, 3))), scaled(5, z)),
                       p);
        case 12:
            return sum(sum(sum(scaled(16, power(z, 4)), scaled(-48, power(z, 2))), {12, 0}), p);
        default:
            return sum(sum(sum(scaled(20, power(z, 3)), scaled(-30, power(z, 2))), scaled(12, z)),
                       {-1, 0});
    }
}

// The next point of the orbit; p is the pixel's point, c the view's constant.
template <class T>
Point<T> next(int type, Point<T> z, Point<T> p, Point<T> c) {
    const Point<T> w = product(c, z);
    switch (type) {
        case 0:
            return sum(product(z, z), p);
        case 1:
            return sum(product(z, z), c);
        case 6:
            return z.re >= 0 ? difference(w, c) : sum(w, c);
        case 7:
            return w.im >= 0 ? difference(w, c) : sum(w, c);
        case 8:
            return sum(sum(product(z, z), {-1, 0}), {c.re * z.re, 0});
        case 9:
            return doubling(z);
        case 10:
            return product(w, {1 - z.re, -z.im});
        default:
            break;
    }
    if (type <= 5) return sum(trigonometric(type, z), p);
    return polynomial(type, z, p);
}

template <class T>
T along(int pixel, int pixels, double low, double high) {
    const T from = static_cast<T>(low), to = static_cast<T>(high);
    return static_cast<T>(pixel) / static_cast<T>(pixels) * (to - from) + from;
}

}  // namespace

template <class T>
int count(const View& v, int x, int y) {
    const Point<T> p = {along<T>(x, v.width, v.xMin, v.xMax),
                        along<T>(y, v.height, v.yMin, v.yMax)};
    const Point<T> c = {static_cast<T>(v.cx), static_cast<T>(v.cy)};
    const bool fromOrigin = v.type == 0 || (v.type >= 2 && v.type <= 5);
    Point<T> z = fromOrigin ? Point<T>{0, 0} : p;
    const T limit = static_cast<T>(v.maxSize);
    // Julia takes its first step unconditionally and one step beyond the limit.
    const int steps = v.type == 1 ? (v.maxIters < 0 ? 0 : v.maxIters + 1) : v.maxIters;
    for (int n = 0; n < steps; ++n) {
        z = next(v.type, z, p, c);
        if (z.re * z.re + z.im * z.im > limit) return n;
    }
    return steps < 0 ? 0 : steps;
}

template int count<float>(const View&, int, int);
template int count<double>(const View&, int, int);

test_support::Picture picture(const View& v, bool doublePrecision, const unsigned char* palette) {
    test_support::Picture result(v.width, v.height, 0);
    for (int y = 0; y < v.height; ++y) {
        for (int x = 0; x < v.width; ++x) {
            const int n = doublePrecision ? count<double>(v, x, y) : count<float>(v, x, y);
            unsigned char* pixel = result.pixel(x, y);
            if (n < v.maxIters) std::memcpy(pixel, palette + 4 * (n % 768), 3);
            pixel[3] = 255;
        }
    }
    return result;
}

long differingPixels(const test_support::Picture& a, const test_support::Picture& b) {
    long different = 0;
    for (std::size_t at = 0; at + 4 <= a.bytes.size() && at + 4 <= b.bytes.size(); at += 4) {
        different += std::memcmp(&a.bytes[at], &b.bytes[at], 4) != 0;
    }
    return different;
}

}  // namespace device_reference

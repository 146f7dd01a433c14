// Escape counts of single pixels, in plain scalar code: the yardstick that every faster renderer is
// measured against, byte for byte.
//
// All functions here share one argument list:
//   x, y            pixel column and row; any value, not only those inside the image
//   width, height   image size in pixels, at least 1
//   xMin .. yMax    view rectangle in the plane; may be inverted, empty, infinite or NaN
//   cx, cy          constant c of the rules that take one from the view
//   maxSizeSquared  escape limit; the orbit has escaped when |z|^2 is strictly greater
//   maxIters        iteration limit, any int
// and return the iteration count, 0..maxIters (0..maxIters + 1 for Julia). They touch nothing but
// their arguments; any thread may call them.
//
// escapeCount, escapeCountJulia and pixelCount take a stop flag as well: once it is set they return
// within STEPS_BETWEEN_LOOKS steps, whatever the limit, with a count that means nothing.
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "compute/rules.h"
#include "compute/stop_flag.h"

// Steps between two looks at the stop flag: a fraction of a millisecond under every rule.
inline constexpr int STEPS_BETWEEN_LOOKS = 1024;

// The point of pixel (x, y). Column 0 is xMin and row 0 is yMin; the maxima are never reached.
template <class T>
inline cpuComplex<T> pixelPoint(int x, int y, int width, int height, T xMin, T xMax, T yMin,
                                T yMax) {
    return {static_cast<T>(x) / static_cast<T>(width) * (xMax - xMin) + xMin,
            static_cast<T>(y) / static_cast<T>(height) * (yMax - yMin) + yMin};
}

// The loop of every rule but Julia: a count that equals maxIters means the orbit stayed.
template <class R, class T>
inline int escapeCount(cpuComplex<T> z, const cpuComplex<T>& c, T maxSizeSquared, int maxIters,
                       StopFlag stop) {
    int count = 0;
    while (count < maxIters && !isSet(stop)) {
        const int steps = std::min(maxIters - count, STEPS_BETWEEN_LOOKS);
        for (int i = 0; i < steps; ++i, ++count) {
            z = R::step(z, c);
            if (magnitudeSquared(z) > maxSizeSquared) return count;
        }
    }
    return count;
}

// The Julia loop: one step at least, and an orbit that stays returns maxIters + 1.
template <class R, class T>
inline int escapeCountJulia(cpuComplex<T> z, const cpuComplex<T>& c, T maxSizeSquared, int maxIters,
                            StopFlag stop) {
    int count = 0;
    while (!isSet(stop)) {
        for (int i = 0; i < STEPS_BETWEEN_LOOKS; ++i, ++count) {
            z = R::step(z, c);
            if (magnitudeSquared(z) > maxSizeSquared) return count;
            if (count > maxIters || count == std::numeric_limits<int>::max()) return count;
        }
    }
    return count;
}

// The count of pixel (x, y) under rule R.
template <class R, class T>
inline int pixelCount(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx,
                      T cy, T maxSizeSquared, int maxIters, StopFlag stop = nullptr) {
    const cpuComplex<T> p = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    const cpuComplex<T> z = R::start == Start::pixel ? p : cpuComplex<T>{T(0), T(0)};
    const cpuComplex<T> c = R::constant == Constant::pixel ? p : cpuComplex<T>{cx, cy};
    if constexpr (std::is_same_v<R, JuliaRule>) {
        return escapeCountJulia<R>(z, c, maxSizeSquared, maxIters, stop);
    } else {
        return escapeCount<R>(z, c, maxSizeSquared, maxIters, stop);
    }
}

template <class T>
int juliaCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
             T maxSizeSquared, int maxIters);
template <class T>
int sinCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
           T maxSizeSquared, int maxIters);
template <class T>
int cosCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
           T maxSizeSquared, int maxIters);
template <class T>
int sinhCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
            T maxSizeSquared, int maxIters);
template <class T>
int coshCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
            T maxSizeSquared, int maxIters);
template <class T>
int barnsley1CPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
                 T maxSizeSquared, int maxIters);
template <class T>
int barnsley2CPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
                 T maxSizeSquared, int maxIters);
template <class T>
int barnsley3CPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
                 T maxSizeSquared, int maxIters);
template <class T>
int barnsleySierpinskiCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx,
                          T cy, T maxSizeSquared, int maxIters);
template <class T>
int dragonCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
              T maxSizeSquared, int maxIters);
template <class T>
int chebyshevCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
                 T maxSizeSquared, int maxIters);
template <class T>
int hermiteCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
               T maxSizeSquared, int maxIters);
template <class T>
int legendreCPU(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,
                T maxSizeSquared, int maxIters);

// Views where the smallest error of a renderer shows: pixels one unit in the last place apart, at
// points where an orbit meets the escape limit or takes long to tell where it goes.
//
// A seed gives the same views on every machine that has the same C library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>

#include "tests/compute/view.h"

namespace vector_test {

// Not the library's distributions: their results differ from one library to the next.
class Random {
  public:
    explicit Random(std::uint32_t seed) : generator(seed) {}

    double uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(generator()) / 4294967296.0;
    }
    int pick(int low, int high) {
        return low + static_cast<int>(generator() % static_cast<unsigned>(high - low + 1));
    }
    template <class T, std::size_t N>
    T among(const T (&values)[N]) {
        return values[generator() % N];
    }
    template <class T>
    T among(std::initializer_list<T> values) {
        return values.begin()[generator() % values.size()];
    }

  private:
    std::mt19937 generator;
};

// Around a point, found by bisection, on both sides of which orbits escape at different steps: at
// one of them |z|^2 crosses the limit there. All rules.
View crossing(Random& random, int type, bool doublePrecision);

// The rules with a slope in closed form, z -> f(z) + c: those of Mandelbrot, Julia and the four
// trigonometric functions.
inline constexpr int SMOOTH_TYPES = 6;

// Orbits that come to rest on a circle |z|^2 = L around zero, L being the escape limit.
View restOnTheLimit(Random& random, int type, bool doublePrecision);

// A fixed point whose slope has length 1: parabolic, or the centre of a Siegel disk.
View neutral(Random& random, int type, bool doublePrecision);

// A constant for which the orbit of zero runs into a point that repels it. Types 0, 2 to 5.
View misiurewicz(Random& random, int type, bool doublePrecision);

// Numbers about as small or as large as there are, or about to overflow in a function. All rules.
View extreme(Random& random, int type, bool doublePrecision);

// One of the above that suits the type.
View boundaryView(Random& random, int type, bool doublePrecision);

}  // namespace vector_test

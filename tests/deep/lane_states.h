// States of lanes in which one term of a bound alone stands for the error, and what they are made
// of.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "deep/exact_view.h"
#include "lane_probe.h"
#include "oracle.h"

namespace lane_probe {

constexpr int STATES = 4000;

// A tier of a real view, whose reference tests may overwrite. A Julia set adds nothing in a step
// but its reference's own error, here of 2^-bits.
struct Made {
    deep::View view;
    deep::ExactView exact;
    deep::Reference reference;
    deep::TierData<1> tier;

    Made(const deep::View& v, long bits)
        : view(v),
          exact(view),
          reference(exact, view, bits, nullptr),
          tier(deep::makeTier<1>(reference, exact, view)) {}
};

inline deep::View juliaView(const char* re = "0.3", const char* im = "0.2") {
    return {re, im, "1e-300", "-0.32173", "0.5411", 4, 4, 4, 200};
}

inline Made deepTier() {
    return Made(juliaView(), 2500);
}

// Random numbers of no simple form.
class Numbers {
  public:
    double within(double low, double high) { return low + (high - low) * unit(engine); }
    int sign() { return engine() % 2 == 0 ? 1 : -1; }
    // A point at such a distance from 0.
    std::pair<double, double> point(double low, double high) {
        const double size = within(low, high), turn = within(0, 6.2831853);
        return {size * std::cos(turn), size * std::sin(turn)};
    }
    // What may have been rounded to x: half a unit of its last digit beside it.
    mpq_class beside(double x) {
        const double last = std::ldexp(1, std::ilogb(x) - 52);
        return mpq_class(x) + sign() * mpq_class(last) / 2;
    }

  private:
    std::mt19937_64 engine{20261122};
    std::uniform_real_distribution<double> unit{0, 1};
};

// Index 0 of the reference is kept as (re, im), index 1 anywhere.
inline void setPoint(Made& made, double re, double im, double size = -1) {
    auto& z = made.reference.z[0];
    z[0] = re, z[1] = im, z[2] = 0.5, z[3] = 0.25;
    made.reference.size[0][0] = size;
    made.reference.tiny.clear();
    made.reference.tinySizes.clear();
}

inline mpq_class powerOfTwo(std::int64_t exponent) {
    mpq_class one(1);
    const auto by = static_cast<mp_bitcnt_t>(std::abs(exponent));
    return exponent < 0 ? mpq_class(one >> by) : mpq_class(one << by);
}

inline deep::View mandelbrotView(int wide, int high, const char* width) {
    return {
        "-0.7756837680090537974694835", "0.1364673682946901247", width, "", "", wide, high, 4, 20};
}

inline Exact keptPoint(const deep::Reference& reference, std::uint32_t m) {
    Exact z;
    for (int part = 0; part < 2; ++part) {
        z = z + Exact{reference.z[part][2 * m], reference.z[part][2 * m + 1]};
    }
    return z;
}

// An orbit that stays, two that are stepped from points far out, and one about a constant there.
struct Course {
    double limit;
    const char *re, *im, *cRe;
};
constexpr Course COURSES[] = {{4, "0.3", "-0.2", "-0.32173"},
                              {0x1p20, "1.3", "-1.2", "-0.32173"},
                              {0x1p40, "1.3", "-1.2", "-0.32173"},
                              {4, "0.3", "-0.2", "100000.32173"}};

// A reference of so few bits that two doubles hold all of each point.
inline Made coarseTier(int n) {
    const Course& course = COURSES[n % 4];
    deep::View view = juliaView();
    view.re = course.re + std::to_string(1000 + n);
    view.im = course.im + std::to_string(2000 + n);
    view.cRe = std::string(course.cRe);
    view.limit = course.limit;
    return Made(view, 60);
}

}  // namespace lane_probe

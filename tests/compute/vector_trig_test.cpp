// The vector sine, cosine and hyperbolic functions keep the error bound that the exactness of the
// pictures rests on.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "tests/compute/vector_support.h"

namespace {

using vector_control::evaluateTrig;
using vector_control::TrigValues;

// Units of 2^-53 relative to the true value: what the derivation allows a factor.
constexpr long double SINE_BOUND = 6, HYPERBOLIC_BOUND = 11, ROUNDED_BOUND = 1;

long double unitsOff(double value, long double truth) {
    if (truth == 0) return value == 0 ? 0 : INFINITY;
    return std::fabs((static_cast<long double>(value) - truth) / truth) * 0x1p53L;
}

// Arguments all over the range, close to zero, and close to multiples of pi/2 and of ln 2, where
// the reductions lose most.
std::vector<double> arguments() {
    std::vector<double> all = {0.0, 1e-45, 1e-310, 300.0, 299.9999, 0.34657359, 0.7853981633974483};
    std::mt19937_64 generator(7);
    const auto uniform = [&] { return static_cast<double>(generator()) / 18446744073709551616.0; };
    for (int i = 0; i < 20000; ++i) all.push_back(300.0 * uniform());
    for (int i = 0; i < 20000; ++i) all.push_back(12.0 * uniform());
    for (int i = 0; i < 5000; ++i) all.push_back(std::pow(10.0, -30.0 * uniform()));
    for (int k = 1; k < 190; ++k) {
        for (const double step :
             {1.57079632679489661923, 0.69314718055994530942, 0.34657359027997}) {
            double x = k * step;
            for (int i = 0; i < 4; ++i, x = std::nextafter(x, 0.0)) all.push_back(x);
            all.push_back(static_cast<double>(static_cast<float>(k * step)));
        }
    }
    const std::size_t positive = all.size();
    for (std::size_t i = 0; i < positive; ++i) all.push_back(-all[i]);
    return all;
}

class VectorTrig : public testing::TestWithParam<std::size_t> {
  protected:
    const vector_test::ForcedTarget forced{vector_test::allTargets()[GetParam()].bit};

    // The largest error of one function over all arguments.
    template <class Get, class Truth>
    static long double worst(Get&& get, Truth&& truth) {
        long double most = 0;
        for (const double x : arguments()) {
            most = std::max(most, unitsOff(get(evaluateTrig(x, x)), truth(x)));
        }
        return most;
    }
};

TEST_P(VectorTrig, SineKeepsItsBound) {
    EXPECT_LE(worst([](const TrigValues& v) { return v.sin; },
                    [](double x) { return std::sin(static_cast<long double>(x)); }),
              SINE_BOUND);
}

TEST_P(VectorTrig, CosineKeepsItsBound) {
    EXPECT_LE(worst([](const TrigValues& v) { return v.cos; },
                    [](double x) { return std::cos(static_cast<long double>(x)); }),
              SINE_BOUND);
}

TEST_P(VectorTrig, HyperbolicSineKeepsItsBound) {
    EXPECT_LE(worst([](const TrigValues& v) { return v.sinh; },
                    [](double x) { return std::sinh(static_cast<long double>(x)); }),
              HYPERBOLIC_BOUND);
}

TEST_P(VectorTrig, HyperbolicCosineKeepsItsBound) {
    EXPECT_LE(worst([](const TrigValues& v) { return v.cosh; },
                    [](double x) { return std::cosh(static_cast<long double>(x)); }),
              HYPERBOLIC_BOUND);
}

// The other half of the argument: the scalar functions are within half an ulp.
TEST(ScalarTrig, KeepsItsBound) {
    const ::vector_test::ForcedTarget scalar{vector_test::allTargets().back().bit};
    for (const double x : arguments()) {
        const TrigValues v = evaluateTrig(x, x);
        const auto wide = static_cast<long double>(x);
        EXPECT_LE(unitsOff(v.sin, std::sin(wide)), ROUNDED_BOUND) << x;
        EXPECT_LE(unitsOff(v.cos, std::cos(wide)), ROUNDED_BOUND) << x;
        EXPECT_LE(unitsOff(v.sinh, std::sinh(wide)), ROUNDED_BOUND) << x;
        EXPECT_LE(unitsOff(v.cosh, std::cosh(wide)), ROUNDED_BOUND) << x;
    }
}

std::string targetLabel(const testing::TestParamInfo<std::size_t>& target) {
    return vector_test::allTargets()[target.param].name;
}

INSTANTIATE_TEST_SUITE_P(Target, VectorTrig,
                         testing::Range(std::size_t{0}, vector_test::allTargets().size()),
                         targetLabel);

}  // namespace

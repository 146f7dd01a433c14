// The complex numbers of the program text, which is C enough to be compiled in here, in both
// precisions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace in_single {
using std::cos, std::sin, std::cosh, std::sinh, std::exp;
#define REAL float
#include "backends/kernels/complex.cl"
#undef REAL
}  // namespace in_single

namespace in_double {
using std::cos, std::sin, std::cosh, std::sinh, std::exp;
#define REAL double
#include "backends/kernels/complex.cl"
#undef REAL
}  // namespace in_double

namespace {

MATCHER_P2(Is, real, imaginary, "") {
    return double{arg.r} == real && double{arg.i} == imaginary;
}

// Arguments whose sums and products are exact in either precision.
template <class Complex, class Set>
struct Numbers {
    explicit Numbers(Set set) : a(set(3, -2)), b(set(0.5, 4)) {}
    Complex a, b;
};

// Calls `check` with numbers of either precision; the functions are found by their arguments.
template <class Check>
void inBothPrecisions(Check check) {
    check(Numbers<in_single::cuComplex, decltype(&in_single::setComplex)>(in_single::setComplex));
    check(Numbers<in_double::cuComplex, decltype(&in_double::setComplex)>(in_double::setComplex));
}

TEST(DeviceComplex, IsAPairOfTheTextsPrecision) {
    EXPECT_EQ(sizeof(in_single::cuComplex), 2 * sizeof(float));
    EXPECT_EQ(sizeof(in_double::cuComplex), 2 * sizeof(double));
    EXPECT_EQ(sizeof(magnitude2(in_single::cuComplex{})), sizeof(float));
    EXPECT_EQ(sizeof(magnitude2(in_double::cuComplex{})), sizeof(double));
}

TEST(DeviceComplex, HasItsMagnitudeSquared) {
    inBothPrecisions([](const auto& n) { EXPECT_EQ(magnitude2(n.a), 13); });
}

TEST(DeviceComplex, Multiplies) {
    inBothPrecisions([](const auto& n) {
        EXPECT_THAT(mult(n.a, n.b), Is(9.5, 11));
        EXPECT_THAT(mults(-2, n.b), Is(-1, -8));
    });
}

TEST(DeviceComplex, RaisesToWholePowers) {
    inBothPrecisions([](const auto& n) {
        EXPECT_THAT(pow_int(n.a, -1), Is(1, 0));
        EXPECT_THAT(pow_int(n.a, 0), Is(1, 0));
        EXPECT_THAT(pow_int(n.a, 1), Is(3, -2));
        EXPECT_THAT(pow_int(n.a, 2), Is(5, -12));
        EXPECT_THAT(pow_int(n.a, 5), Is(-597, -122));
    });
}

TEST(DeviceComplex, AddsAndSubtracts) {
    inBothPrecisions([](const auto& n) {
        EXPECT_THAT(add(n.a, n.b), Is(3.5, 2));
        EXPECT_THAT(subtract(n.a, n.b), Is(2.5, -6));
        EXPECT_THAT(addScalar(n.a, 0.25), Is(3.25, -2));
        EXPECT_THAT(subtractScalar(n.a, 0.25), Is(2.75, -2));
        EXPECT_THAT(negate(n.a), Is(-3, 2));
    });
}

// What the functions make of r + i j, by the standard library in the precision of the parts.
template <class Real>
struct Functions {
    Real r, j;
    Real cosR = std::cos(r), sinR = std::sin(r), coshR = std::cosh(r), sinhR = std::sinh(r);
    Real cosJ = std::cos(j), sinJ = std::sin(j), coshJ = std::cosh(j), sinhJ = std::sinh(j);
};

TEST(DeviceComplex, HasTheFunctionsInSinglePrecision) {
    using namespace in_single;
    const Functions<float> of{0.75F, 0.5F};
    const auto z = setComplex(of.r, of.j);
    EXPECT_THAT(cosCREAL(z), Is(of.cosR * of.coshJ, -(of.sinR * of.sinhJ)));
    EXPECT_THAT(sinCREAL(z), Is(of.sinR * of.coshJ, of.cosR * of.sinhJ));
    EXPECT_THAT(coshCREAL(z), Is(of.coshR * of.cosJ, of.sinhR * of.sinJ));
    EXPECT_THAT(sinhCREAL(z), Is(of.sinhR * of.cosJ, of.coshR * of.sinJ));
    EXPECT_THAT(expCREAL(z), Is(std::exp(of.r) * of.cosJ, std::exp(of.r) * of.sinJ));
}

TEST(DeviceComplex, HasTheSameFunctionsInDoublePrecision) {
    const auto single = in_single::setComplex(0.75, 0.5);
    const auto z = in_double::setComplex(0.75, 0.5);
    const auto near = [](const auto& wide, const auto& narrow) {
        return std::abs(wide.r - narrow.r) < 1e-6 && std::abs(wide.i - narrow.i) < 1e-6;
    };
    EXPECT_PRED2(near, in_double::cosCREAL(z), in_single::cosCREAL(single));
    EXPECT_PRED2(near, in_double::sinCREAL(z), in_single::sinCREAL(single));
    EXPECT_PRED2(near, in_double::coshCREAL(z), in_single::coshCREAL(single));
    EXPECT_PRED2(near, in_double::sinhCREAL(z), in_single::sinhCREAL(single));
    EXPECT_PRED2(near, in_double::expCREAL(z), in_single::expCREAL(single));
}

}  // namespace

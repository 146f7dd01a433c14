// Numbers with an exponent of their own, against doubles where those reach and against whole powers
// of two where they do not.
#include "compute/wide.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t FAR = 1'000'000'000'000;  // binary places, far beyond any double

void expectIs(Wide x, double mantissa, std::int64_t exponent) {
    EXPECT_EQ(x.mantissa(), mantissa);
    EXPECT_EQ(x.exponent(), exponent);
}

// Doubles of both signs whose exponents lie within `reach` of 0.
class Doubles {
  public:
    explicit Doubles(int reach) : exponent(-reach, reach) {}
    double next() {
        const double value = std::ldexp(mantissa(random), exponent(random));
        return random() % 2 == 0 ? value : -value;
    }

  private:
    std::mt19937_64 random{7};
    std::uniform_real_distribution<double> mantissa{1, 2};
    std::uniform_int_distribution<int> exponent;
};

TEST(WideNumber, HasAMantissaFromOneToTwo) {
    expectIs(Wide(12), 1.5, 3);
    expectIs(Wide(-12), -1.5, 3);
    expectIs(Wide(1), 1, 0);
    expectIs(Wide(0.75, FAR), 1.5, FAR - 1);
    expectIs(Wide(std::numeric_limits<double>::denorm_min()), 1, -1074);
    expectIs(Wide(0x1.8p-1030), 1.5, -1030);
    expectIs(Wide(std::numeric_limits<double>::max()), 0x1.fffffffffffffp0, 1023);
    EXPECT_TRUE(Wide(0.0, FAR).isZero());
    EXPECT_TRUE(Wide().isZero());
    EXPECT_FALSE(Wide(0x1p-1074).isZero());
}

TEST(WideNumber, IsADoubleAgainWithinTheRangeOfNormalOnes) {
    for (const double value : {1.0, -3.25, 0x1p-1022, -0x1.8p1023, 0.0})
        EXPECT_EQ(Wide(value).value(), value);
    EXPECT_EQ(Wide(0x1.8p-1023).value(), 0);
    for (const std::int64_t beyond : {1024LL, 1025LL, 1500LL, 2046LL, 2LL * FAR}) {
        EXPECT_EQ(Wide(1, beyond).value(), INFINITE);
        EXPECT_EQ(Wide(-1, beyond).value(), -INFINITE);
        EXPECT_EQ(Wide(1, -beyond).value(), 0);
    }
    EXPECT_EQ(Wide(1.5, -FAR).value(), 0);
    EXPECT_EQ(Wide(1.5, -FAR).at(FAR + 4), 24);
    EXPECT_EQ(Wide().at(FAR), 0);
}

TEST(WideNumber, RoundsOnceAsDoublesDo) {
    Doubles doubles(60);
    for (int i = 0; i < 20000; ++i) {
        const double a = doubles.next(), b = doubles.next();
        const Wide x(a, FAR), y(b, FAR);
        EXPECT_EQ((x + y).at(-FAR), a + b);
        EXPECT_EQ((x - y).at(-FAR), a - b);
        EXPECT_EQ((x * y).at(-2 * FAR), a * b);
        EXPECT_EQ((x / y).value(), a / b);
        EXPECT_EQ(x < y, a < b);
        EXPECT_EQ(x > y, a > b);
        EXPECT_EQ(abs(x).at(-FAR), std::fabs(a));
    }
}

TEST(WideNumber, IsNotLessThanItself) {
    for (const double value : {-1.0, 0.0, 1.0}) {
        const Wide x(value, FAR);
        EXPECT_FALSE(x < x);
        EXPECT_FALSE(x > x);
    }
    EXPECT_TRUE(Wide(1) < Wide(2));
    EXPECT_TRUE(Wide(-2) < Wide(-1));
    expectIs(abs(Wide(-1, FAR)), 1, FAR);
}

TEST(WideNumber, KeepsTheLargerOfTwoFarApart) {
    for (const std::int64_t apart : {200LL, 201LL, 2000LL, 2LL * FAR}) {
        expectIs(Wide(1.5) + Wide(1.25, -apart), 1.5, 0);
        expectIs(Wide(1.25, -apart) + Wide(1.5), 1.5, 0);
        expectIs(Wide(1.25, -apart) - Wide(1.5), -1.5, 0);
    }
    expectIs(Wide(1, FAR) + Wide(), 1, FAR);
    expectIs(Wide() + Wide(1, -FAR), 1, -FAR);
}

TEST(WideNumber, HasARoot) {
    Doubles doubles(300);
    for (int i = 0; i < 20000; ++i) {
        const double value = std::fabs(doubles.next());
        const double found = root(Wide(value, 2 * FAR)).at(-FAR);
        EXPECT_LE(std::fabs(found - std::sqrt(value)), 0x1p-52 * std::sqrt(value)) << value;
    }
    expectIs(root(Wide(2.25, -FAR)), 1.5, -FAR / 2);
    expectIs(root(Wide(2, 2 * FAR + 1)), 1, FAR + 1);
    expectIs(root(Wide(2, -2 * FAR - 1)), 1, -FAR);
    EXPECT_TRUE(root(Wide()).isZero());
}

TEST(WideNumber, StaysInfiniteOrNoNumberBesideAnyOther) {
    for (const std::int64_t power : {-FAR, std::int64_t{0}, FAR}) {
        const Wide other(1.5, power);
        EXPECT_EQ((Wide(INFINITE) + other).value(), INFINITE);
        EXPECT_EQ((other + Wide(INFINITE)).value(), INFINITE);
        EXPECT_EQ((other - Wide(INFINITE)).value(), -INFINITE);
        EXPECT_EQ((other * Wide(-INFINITE)).value(), -INFINITE);
        EXPECT_TRUE((other / Wide(INFINITE)).isZero());
        EXPECT_TRUE(std::isnan((Wide(NONE) + other).value()));
        EXPECT_TRUE(std::isnan((other + Wide(NONE)).value()));
        EXPECT_TRUE(std::isnan((other * Wide(NONE)).at(-FAR)));
        EXPECT_TRUE(other < Wide(INFINITE));
        EXPECT_TRUE(other > Wide(-INFINITE));
        EXPECT_FALSE(other < Wide(NONE));
        EXPECT_FALSE(other > Wide(NONE));
    }
    EXPECT_TRUE(std::isnan((Wide(INFINITE) - Wide(INFINITE)).value()));
    EXPECT_TRUE(std::isnan((Wide(INFINITE) * Wide()).value()));
    EXPECT_EQ(root(Wide(INFINITE)).value(), INFINITE);
}

}  // namespace

// Values that are known within a bound: what they round to, and when that is certain.
#include "compute/rounded_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

TEST(RoundedQuotients, GiveTheNearestWholeUnit) {
    for (const int units : {0, 1, 1000, 524288, 1048575, 1048576}) {
        for (const double beside : {-0.4, 0.0, 0.4}) {
            const Rounded v = roundedQuotient(7, (units + beside) * VALUE_UNIT, 0);
            EXPECT_EQ(v.value, 6 + units * VALUE_UNIT) << units << ' ' << beside;
            EXPECT_TRUE(v.certain) << units << ' ' << beside;
        }
    }
}

TEST(RoundedQuotients, LieBetweenTheStepBeforeAndTheCount) {
    EXPECT_EQ(roundedQuotient(7, -0.25, 0).value, 6);
    EXPECT_EQ(roundedQuotient(7, -INFINITE, 0).value, 6);
    EXPECT_EQ(roundedQuotient(7, 1.25, 0).value, 7);
    EXPECT_EQ(roundedQuotient(7, INFINITE, 0).value, 7);
    EXPECT_EQ(roundedQuotient(0, 0, 0).value, -1);
}

// The middle between two whole units, and how far from it a quotient lies.
TEST(RoundedQuotients, AreCertainWhereTheBoundEndsBeforeTheMiddleOfTwoUnits) {
    for (const int units : {0, 1, 1000, 1048575}) {
        const double middle = (units + 0.5) * VALUE_UNIT, apart = 0x1p-10 * VALUE_UNIT;
        for (const double side : {-1.0, 1.0}) {
            const double q = middle + side * apart;
            EXPECT_TRUE(roundedQuotient(3, q, 0.75 * apart).certain) << units << ' ' << side;
            EXPECT_FALSE(roundedQuotient(3, q, 1.25 * apart).certain) << units << ' ' << side;
        }
    }
}

TEST(RoundedQuotients, CanBeNoneBelowZeroOrAboveOne) {
    EXPECT_TRUE(roundedQuotient(3, 0, 0.4 * VALUE_UNIT).certain);
    EXPECT_TRUE(roundedQuotient(3, 1, 0.4 * VALUE_UNIT).certain);
    EXPECT_FALSE(roundedQuotient(3, 0, 0.6 * VALUE_UNIT).certain);
    EXPECT_FALSE(roundedQuotient(3, 1, 0.6 * VALUE_UNIT).certain);
    // Whatever is beyond an end is the end.
    EXPECT_TRUE(roundedQuotient(3, -5, 0.4 * VALUE_UNIT).certain);
    EXPECT_TRUE(roundedQuotient(3, 5, 0.4 * VALUE_UNIT).certain);
}

TEST(RoundedValues, FromAStartOfZeroAreTheCount) {
    const Rounded v = roundedValue(5, -INFINITE, 3, 2, 0.5);
    EXPECT_EQ(v.value, 5);
    EXPECT_TRUE(v.certain);
}

TEST(RoundedValues, AreTheLimitsPlaceBetweenTheLogarithms) {
    const Rounded v = roundedValue(5, 1, 9, 3, 0x1p-40);
    EXPECT_EQ(v.value, 4.25);
    EXPECT_TRUE(v.certain);
    EXPECT_EQ(roundedValue(5, -1, 3, 2, 0x1p-40).value, 4.75);
}

TEST(RoundedValues, AreInDoubtWhereTheLogarithmsAreHardlyApart) {
    // The value is a whole number, which no error moves: it is cut off at 1.
    EXPECT_TRUE(roundedValue(5, 1, 2, 1e9, 0x1p-40).certain);
    EXPECT_FALSE(roundedValue(5, 1, 2, 1e9, 0.25).certain);
    EXPECT_FALSE(roundedValue(5, 1, 1, 1e9, 0).certain);
}

// Logarithms before and after a step, and a limit whose quotient lies beside the middle of two
// units.
struct Logs {
    double before, after, limit;

    double quotient() const { return (limit - before) / (after - before); }
};

class BesideTheMiddle : public testing::Test {
  protected:
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }

    // A quotient so far above the middle of two units.
    Logs logs(double above) {
        const double middle = (std::floor(between(0, 1048575)) + 0.5) * VALUE_UNIT;
        Logs x{between(-2, 1), 0, 0};
        x.after = x.before + between(0.5, 8);
        x.limit = x.before + (middle + above) * (x.after - x.before);
        return x;
    }

    std::mt19937 random{3};
};

// Every way in which the logarithms may be off rounds to what was said.
TEST_F(BesideTheMiddle, WhatIsCertainHoldsForEveryErrorWithinTheBound) {
    int certain = 0;
    for (int n = 0; n < 20000; ++n) {
        const Logs x = logs(between(-0.2, 0.2) * VALUE_UNIT);
        const double error = between(0, 0.2) * VALUE_UNIT * (x.after - x.before);
        const Rounded v = roundedValue(9, x.before, x.after, x.limit, error);
        if (!v.certain) continue;
        ++certain;
        for (const double first : {-error, error}) {
            for (const double second : {-error, error}) {
                const Logs other{x.before + first, x.after + second, x.limit};
                const double units = std::floor(other.quotient() / VALUE_UNIT + 0.5);
                ASSERT_EQ(v.value, 8 + units * VALUE_UNIT) << n;
            }
        }
    }
    EXPECT_GT(certain, 5000);
}

// The bound is no larger than it has to be, either.
TEST_F(BesideTheMiddle, IsCertainWhereTheErrorIsALittleLessThanTheDistance) {
    for (int n = 0; n < 20000; ++n) {
        const double above = (n % 2 == 0 ? 1 : -1) * between(0x1p-12, 0.4) * VALUE_UNIT;
        const Logs x = logs(above);
        const double error = 0.999 * std::fabs(above) * (x.after - x.before);
        EXPECT_TRUE(roundedValue(9, x.before, x.after, x.limit, error).certain) << n;
    }
}

// Both logarithms may be off one way, which moves the quotient by as much.
TEST_F(BesideTheMiddle, IsInDoubtWhereTheErrorIsALittleMoreThanTheDistance) {
    for (int n = 0; n < 20000; ++n) {
        const double above = (n % 2 == 0 ? 1 : -1) * between(0x1p-12, 0.49) * VALUE_UNIT;
        const Logs x = logs(above);
        const double error = (1 + 0x1p-24) * std::fabs(above) * (x.after - x.before);
        EXPECT_FALSE(roundedValue(9, x.before, x.after, x.limit, error).certain) << n;
    }
}

// Nothing is rounded here before the bound is added.
TEST(RoundedValues, AreInDoubtWhereTheErrorReachesTheMiddleExactly) {
    for (const double side : {-1.0, 1.0}) {
        const double away = 0.25 * VALUE_UNIT, q = 1000.5 * VALUE_UNIT + side * away;
        EXPECT_FALSE(roundedValue(9, 0, 4, 4 * q, 4 * away).certain) << side;
        EXPECT_TRUE(roundedValue(9, 0, 4, 4 * q, 3.9 * away).certain) << side;
    }
}

TEST(RoundedValues, AreInDoubtWhereTheMagnitudeFell) {
    EXPECT_FALSE(roundedValue(5, 1e9, 1, 3e8, 0x1p-40).certain);
}

// The quotient's own roundings: four of at most 2^-53.
TEST_F(BesideTheMiddle, IsInDoubtWithoutErrorWhereRoundingsMightPassTheMiddle) {
    for (int n = 0; n < 2000; ++n) {
        const Logs x = logs((n % 2 == 0 ? 1 : -1) * 0x1p-52);
        EXPECT_FALSE(roundedValue(9, x.before, x.after, x.limit, 0).certain) << n;
    }
}

}  // namespace

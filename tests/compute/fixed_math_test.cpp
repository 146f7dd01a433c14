// Logarithm, exponential and cube root by fixed operations keep the bounds that their header
// claims.
#include "compute/fixed_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double SMALLEST = std::numeric_limits<double>::denorm_min();
constexpr double LARGEST = std::numeric_limits<double>::max();

// Units of 2^-53 relative to the true value.
long double unitsOff(double value, long double truth) {
    if (truth == 0) return value == 0 ? 0 : INFINITY;
    return std::fabs((static_cast<long double>(value) - truth) / truth) * 0x1p53L;
}

// Numbers of every size, close to 1, at the ends of each binade and where mantissas wrap.
std::vector<double> positiveNumbers() {
    std::vector<double> all = {SMALLEST, 3 * SMALLEST, 0x1p-1022, std::nextafter(0x1p-1022, 0.0),
                               LARGEST,  1.0};
    std::mt19937_64 generator(11);
    const auto uniform = [&] { return static_cast<double>(generator()) / 18446744073709551616.0; };
    for (int i = 0; i < 200000; ++i) all.push_back(std::exp2(2097 * uniform() - 1074));
    for (int i = 0; i < 200000; ++i) all.push_back(0.5 + 2 * uniform());
    for (int i = 0; i < 20000; ++i) all.push_back(1 + std::exp2(-53 * uniform()));
    for (int i = 0; i < 20000; ++i) all.push_back(1 - std::exp2(-54 * uniform() - 1));
    for (int k = -1073; k < 1024; ++k) {
        for (const double start : {1.0, 0.70710678118654752440, 1.41421356237309504880}) {
            const double x = std::ldexp(start, k);
            for (const double to : {0.0, INFINITE}) {
                const double beside = std::nextafter(x, to);
                if (beside > 0 && beside < INFINITE) all.push_back(beside);
            }
        }
    }
    return all;
}

template <class Value, class Truth>
long double worst(const std::vector<double>& arguments, Value&& value, Truth&& truth) {
    long double most = 0;
    for (const double x : arguments) {
        const long double off = unitsOff(value(x), truth(static_cast<long double>(x)));
        EXPECT_FALSE(std::isnan(off)) << x;
        most = std::max(most, off);
    }
    return most;
}

// Numbers that no function has to compute: of every size, and close to 1.
std::vector<double> numbersOfBits() {
    std::vector<double> all;
    std::mt19937_64 generator(17);
    while (all.size() < 20000) {
        const double x = std::bit_cast<double>(generator() >> 1);
        if (x < INFINITE) all.push_back(x);
        all.push_back(
            std::bit_cast<double>(ONE_BITS - (std::uint64_t{1} << 51) + (generator() >> 11)));
    }
    return all;
}

template <class Value>
std::uint64_t hashOf(Value&& value) {
    std::uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a
    for (const double x : numbersOfBits()) {
        hash = (hash ^ std::bit_cast<std::uint64_t>(value(x))) * 0x100000001B3u;
    }
    return hash;
}

// Values are compared bit by bit with those of other machines, and joined with them: a bit that
// changes from one version to the next would be a seam.
TEST(FixedMath, HasTheBitsOfEarlierVersions) {
    EXPECT_EQ(hashOf([](double x) { return fixedLog(x); }), 0x83FDED74FDCD4BE4u);
    EXPECT_EQ(hashOf([](double x) { return fixedLog2(x); }), 0x6D1C1AECD50DF28Bu);
    EXPECT_EQ(hashOf([](double x) { return fixedCubeRoot(x); }), 0x636535F855B8A612u);
    EXPECT_EQ(hashOf([](double x) { return fixedExp(std::fmod(x, 745.0)); }), 0x16A3DD06B5E5F645u);
    EXPECT_EQ(hashOf([](double x) { return fixedExp(-std::fmod(x, 745.0)); }), 0x33206CFC87000527u);
}

TEST(FixedLog, IsWithinThreeUnits) {
    EXPECT_LE(worst(
                  positiveNumbers(), [](double x) { return fixedLog(x); },
                  [](long double x) { return std::log(x); }),
              3.0L);
}

TEST(FixedLog, IsExactlyZeroAtOne) {
    EXPECT_EQ(fixedLog(1.0), 0.0);
}

TEST(FixedLog, HasItsLimitsAtTheEnds) {
    EXPECT_EQ(fixedLog(0.0), -INFINITE);
    EXPECT_EQ(fixedLog(-0.0), -INFINITE);
    EXPECT_EQ(fixedLog(INFINITE), INFINITE);
}

TEST(FixedLog, IsNotANumberWhereThereIsNone) {
    for (const double x : {-SMALLEST, -1.0, -LARGEST, -INFINITE, NOT_A_NUMBER}) {
        EXPECT_TRUE(std::isnan(fixedLog(x))) << x;
    }
}

// Both logarithms share a division, so each is tried beside numbers of other sizes.
TEST(FixedLogs2, AreWithinTenUnits) {
    std::vector<double> numbers = positiveNumbers();
    std::erase_if(numbers, [](double x) { return x < 0x1p-1022; });
    std::vector<double> others = numbers;
    std::shuffle(others.begin(), others.end(), std::mt19937_64(13));
    long double most = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const LogPair<double> logs = fixedLogs2(numbers[i], others[i]);
        const long double x = numbers[i], y = others[i];
        most = std::max(
            {most, unitsOff(logs.first, std::log2(x)), unitsOff(logs.second, std::log2(y))});
    }
    EXPECT_LE(most, 10.0L);
}

TEST(FixedLogs2, AreExactForPowersOfTwo) {
    for (int k = -1074; k < 1024; ++k) ASSERT_EQ(fixedLog2(std::ldexp(1.0, k)), k);
}

TEST(FixedLogs2, OfSubnormalNumbersAreAsGood) {
    std::mt19937_64 generator(14);
    for (int i = 0; i < 20000; ++i) {
        const double x = std::ldexp(1.0 + static_cast<double>(generator() >> 12), -1074);
        const double y = std::ldexp(x, i % 1000);
        const LogPair<double> logs = fixedLogs2OfAny(x, y), other = fixedLogs2OfAny(y, x);
        ASSERT_LE(unitsOff(logs.first, std::log2(static_cast<long double>(x))), 10.0L) << x;
        ASSERT_LE(unitsOff(logs.second, std::log2(static_cast<long double>(y))), 10.0L) << y;
        ASSERT_EQ(other.first, logs.second);
        ASSERT_EQ(other.second, logs.first);
    }
}

// Vectors take the short way where all their numbers are normal.
TEST(FixedLogs2, AreTheSameBitsOnTheShortWay) {
    for (const double x : positiveNumbers()) {
        if (x < 0x1p-1022) continue;
        const LogPair<double> quick = fixedLogs2(x, 3.0), any = fixedLogs2OfAny(x, 3.0);
        ASSERT_EQ(quick.first, any.first) << x;
        ASSERT_EQ(quick.second, any.second) << x;
    }
}

TEST(FixedLogs2, HaveTheirLimitsAtTheEnds) {
    for (const double x : {0.0, -0.0, -1.0, -INFINITE, NOT_A_NUMBER}) {
        EXPECT_EQ(fixedLogs2OfAny(x, 2.0).first, -INFINITE) << x;
        EXPECT_EQ(fixedLogs2OfAny(2.0, x).second, -INFINITE) << x;
    }
    EXPECT_EQ(fixedLogs2OfAny(INFINITE, 2.0).first, INFINITE);
    EXPECT_EQ(fixedLogs2OfAny(2.0, INFINITE).second, INFINITE);
}

TEST(SmoothValue, IsTheWholeStepWhereThereIsNoQuotient) {
    const double four = fixedLog2(4.0);
    EXPECT_EQ(smoothValue(7.0, 0.0, 5.0, four), 7.0);
    EXPECT_EQ(smoothValue(7.0, 0.0, INFINITE, four), 7.0);
    EXPECT_EQ(smoothValue(7.0, 5.0, 6.0, four), 7.0) << "began beyond the limit";
    EXPECT_EQ(smoothValue(7.0, 4.1, 8.0, four), 7.0) << "began just beyond the limit";
    EXPECT_EQ(smoothValue(7.0, 5.0, 5.0, four), 7.0) << "began beyond the limit and rests";
    EXPECT_EQ(smoothValue(7.0, 16.0, 8.0, four), 7.0) << "began beyond the limit and came closer";
    EXPECT_EQ(smoothValue(7.0, 0x1p-1074, 5.0, fixedLog2(0.0)), 7.0);
    EXPECT_EQ(smoothValue(7.0, 3.0, 5.0, fixedLog2(-1.0)), 7.0);
}

TEST(SmoothValue, LiesBetweenTheStepsByTheLogarithms) {
    const double four = fixedLog2(4.0);
    EXPECT_EQ(smoothValue(7.0, 2.0, 8.0, four), 6.5);
    EXPECT_EQ(smoothValue(7.0, 4.0, 8.0, four), 6.0);
    EXPECT_EQ(smoothValue(7.0, 4.0, INFINITE, four), 6.0);
    EXPECT_EQ(smoothValue(7.0, 0x1p-1070, 0x1p10, four), 6.0 + 1072.0 / 1080.0);
    EXPECT_EQ(smoothValue(1.0, 0x1p-1073, 0x1p-1071, fixedLog2(0x1p-1072)), 0.5);
}

TEST(FixedCubeRoot, IsWithinOneAndAHalfUnits) {
    EXPECT_LE(worst(
                  positiveNumbers(), [](double x) { return fixedCubeRoot(x); },
                  [](long double x) { return std::cbrt(x); }),
              1.5L);
}

TEST(FixedCubeRoot, OfACubeIsItsSide) {
    for (int side = -1000; side <= 1000; ++side) {
        EXPECT_EQ(fixedCubeRoot(static_cast<double>(side) * side * side), side);
    }
}

TEST(FixedCubeRoot, OfANegativeNumberIsTheOthersNegative) {
    for (const double x : {SMALLEST, 1e-300, 0.001, 0.125, 0.9, 2.0, 1e300}) {
        EXPECT_EQ(fixedCubeRoot(-x), -fixedCubeRoot(x)) << x;
        EXPECT_LT(fixedCubeRoot(-x), 0.0) << x;
    }
    EXPECT_EQ(fixedCubeRoot(-0.125), -0.5);
}

TEST(FixedCubeRoot, KeepsWhatHasNoRoot) {
    EXPECT_EQ(fixedCubeRoot(INFINITE), INFINITE);
    EXPECT_EQ(fixedCubeRoot(-INFINITE), -INFINITE);
    EXPECT_TRUE(std::isnan(fixedCubeRoot(NOT_A_NUMBER)));
}

TEST(FixedExp, IsWithinTwoUnitsWhereItIsNormal) {
    std::vector<double> arguments = {0.0, -0.0, SMALLEST, 709.7, -708.3};
    std::mt19937_64 generator(12);
    const auto uniform = [&] { return static_cast<double>(generator()) / 18446744073709551616.0; };
    for (int i = 0; i < 200000; ++i) arguments.push_back(1417.9 * uniform() - 708.3);
    for (int i = 0; i < 200000; ++i) arguments.push_back(4 * uniform() - 2);
    for (int i = 0; i < 20000; ++i) arguments.push_back(std::exp2(-60 * uniform()));
    EXPECT_LE(worst(
                  arguments, [](double x) { return fixedExp(x); },
                  [](long double x) { return std::exp(x); }),
              2.0L);
}

TEST(FixedExp, EndsInSubnormalsZeroAndInfinity) {
    EXPECT_NEAR(fixedExp(-740.0) / SMALLEST, std::exp(-740.0) / SMALLEST, 1.0);
    EXPECT_EQ(fixedExp(-745.1), SMALLEST);
    for (const double x : {-745.2, -747.0, -800.0, -1400.0, -1480.0, -1e9}) {
        EXPECT_EQ(fixedExp(x), 0.0) << x;
    }
    for (const double x : {711.0, 800.0, 1400.0, 1419.95, 1e9}) {
        EXPECT_EQ(fixedExp(x), INFINITE) << x;
    }
    EXPECT_EQ(fixedExp(-INFINITE), 0.0);
    EXPECT_EQ(fixedExp(709.8), INFINITE);
    EXPECT_EQ(fixedExp(INFINITE), INFINITE);
    EXPECT_TRUE(std::isnan(fixedExp(NOT_A_NUMBER)));
}

TEST(Rounded32, IsTheNearestNumberOf32Bits) {
    for (const double x : positiveNumbers()) {
        if (x < 0x1p-900 || x > 0x1p900) continue;
        int exponent;
        const double mantissa = std::frexp(x, &exponent);
        const double scaled = std::ldexp(mantissa, 32), below = std::floor(scaled);
        const double rounded = rounded32(x), units = std::ldexp(rounded, 32 - exponent);
        ASSERT_EQ(units, std::floor(units)) << x;
        if (scaled - below == 0.5) continue;  // either side is as near
        ASSERT_EQ(units, std::round(scaled)) << x;
        ASSERT_EQ(rounded32(-x), -rounded) << x;
    }
}

TEST(Rounded32, KeepsZeroAndNoNumber) {
    EXPECT_EQ(rounded32(0.0), 0.0);
    EXPECT_FALSE(std::signbit(rounded32(0.0)));
    EXPECT_TRUE(std::isnan(rounded32(NOT_A_NUMBER)));
}

}  // namespace

// What a disc claims: every state in it steps into the next one, as the rule computes it.
#include "compute/attracting_discs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "compute/rules.h"
#include "tests/compute/boundary_views.h"

namespace {

using vector_test::Random;

template <class T>
constexpr double UNIT = static_cast<double>(std::numeric_limits<T>::epsilon()) / 2;

long double distance(const Point& a, long double r, long double i) {
    return std::hypot(r - static_cast<long double>(a.r), i - static_cast<long double>(a.i));
}

// A number of T in the disc about (r, i), mostly near its rim.
template <class T>
cpuComplex<T> placeIn(Random& random, const Point& middle, double radius) {
    for (;;) {
        const double angle = random.uniform(0, 6.2831853), part = random.uniform(0.97, 1.01);
        const cpuComplex<T> z{static_cast<T>(middle.r + radius * part * std::cos(angle)),
                              static_cast<T>(middle.i + radius * part * std::sin(angle))};
        if (distance(middle, z.r, z.i) <= static_cast<long double>(radius)) return z;
    }
}

// Steps from many places of every disc, for many constants.
template <class T>
void expectStepsIntoTheNext(const Discs& discs, const Constants& about, Random& random) {
    for (std::size_t k = 0; k < discs.count; ++k) {
        const std::size_t next = (k + 1) % discs.count;
        for (int i = 0; i < 200; ++i) {
            const auto z = placeIn<T>(random, discs.middle[k], discs.radius[k]);
            const auto c = placeIn<T>(random, about.middle, about.extent + 2 * about.unit);
            const auto to = JuliaRule::step(z, c);
            ASSERT_LE(distance(discs.middle[next], to.r, to.i),
                      static_cast<long double>(discs.radius[next]))
                << "from disc " << k << " of " << discs.count << ", radius " << discs.radius[k];
            ASSERT_LE(magnitudeSquared(to), T(4));
        }
    }
}

template <class T>
void expectFoundDiscsKeepTheirOrbits(std::size_t points, Point low, Point high) {
    Random random(7);
    int found = 0;
    for (int i = 0; i < 400; ++i) {
        const double extent = i % 3 == 0 ? 0 : std::pow(10.0, -random.uniform(1.5, 9));
        const Constants c{{static_cast<double>(static_cast<T>(random.uniform(low.r, high.r))),
                           static_cast<double>(static_cast<T>(random.uniform(low.i, high.i)))},
                          extent,
                          UNIT<T>};
        Discs discs;
        if (points > 2) {
            findDiscsByTrial(c, discs);
        } else {
            findDiscs(c, discs);
        }
        if (discs.count == 0) continue;
        EXPECT_EQ(discs.count, points);
        ++found;
        expectStepsIntoTheNext<T>(discs, c, random);
        if (testing::Test::HasFatalFailure()) return;
    }
    EXPECT_GT(found, 100);
}

template <class T>
class AttractingDiscs : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(AttractingDiscs, Precisions);

TYPED_TEST(AttractingDiscs, KeepTheOrbitsAboutAFixedPoint) {
    expectFoundDiscsKeepTheirOrbits<TypeParam>(1, {-0.7, -0.5}, {0.24, 0.5});
}

TYPED_TEST(AttractingDiscs, KeepTheOrbitsAboutACycleOfTwoPoints) {
    expectFoundDiscsKeepTheirOrbits<TypeParam>(2, {-1.2, -0.2}, {-0.8, 0.2});
}

TYPED_TEST(AttractingDiscs, KeepTheOrbitsAboutACycleFoundByTrial) {
    expectFoundDiscsKeepTheirOrbits<TypeParam>(3, {-0.15, 0.72}, {-0.1, 0.77});
}

// Radii of some units, where nothing but the roundings of a step counts.
TYPED_TEST(AttractingDiscs, AllowForTheRoundingsOfAStep) {
    Random random(11);
    for (int i = 0; i < 2000; ++i) {
        const Point middle{random.uniform(-0.1, 0.1), random.uniform(-0.1, 0.1)};
        const Point square = middle * middle;
        const Constants c{{static_cast<double>(static_cast<TypeParam>(middle.r - square.r +
                                                                      random.uniform(0.3, 1))),
                           static_cast<double>(static_cast<TypeParam>(middle.i - square.i))},
                          0,
                          UNIT<TypeParam>};
        Discs discs;
        discs.count = 2;
        discs.middle[0] = middle;
        discs.middle[1] = middle * middle + c.middle;
        discs.close(4 * c.unit, c);
        const auto z = placeIn<TypeParam>(random, middle, discs.radius[0]);
        const cpuComplex<TypeParam> constant{static_cast<TypeParam>(c.middle.r),
                                             static_cast<TypeParam>(c.middle.i)};
        const auto to = JuliaRule::step(z, constant);
        ASSERT_LE(distance(discs.middle[1], to.r, to.i), static_cast<long double>(discs.radius[1]));
    }
}

TEST(Discs, DoNotCloseWhereAnOrbitMayLeave) {
    Discs discs;
    discs.count = 1;
    discs.middle[0] = {0, 0};
    const Constants none{{0, 0}, 0, UNIT<double>};
    EXPECT_TRUE(discs.close(0.5, none));
    EXPECT_FALSE(discs.close(1.01, none));  // 1.01^2 > 1.01
    EXPECT_FALSE(discs.close(64 * UNIT<double>, none));
    EXPECT_FALSE(discs.close(0.5, {{0.3, 0}, 0, UNIT<double>}));
    EXPECT_FALSE(discs.close(0.5, {{0, 0}, 0.3, UNIT<double>}));
}

TEST(Discs, AreNoneWhereNothingAttracts) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Point c : {Point{0.26, 0}, Point{-2, 0}, Point{-1.3, 0}, Point{-0.391, -0.587},
                          Point{nan, 0}, Point{0, nan}}) {
        Discs discs;
        findDiscs({c, 0, UNIT<float>}, discs);
        EXPECT_EQ(discs.count, 0u) << c.r;
        findDiscsByTrial({c, 0, UNIT<float>}, discs);
        EXPECT_LT(discs.count, 5u);
        if (c.r != -1.3) {
            EXPECT_EQ(discs.count, 0u) << c.r;
        }
    }
}

// Six points attract, and one of them is so far out that a state beside it might be computed to
// have passed the limit of 4.
TEST(Discs, AreNoneSoFarOutThatRoundingMightPassTheLimit) {
    Discs discs;
    findDiscsByTrial({{-1.9963761377111938, 0}, 0, UNIT<double>}, discs);
    EXPECT_EQ(discs.count, 0u);
    findDiscsByTrial({{-1.9854242530542051, 0}, 0, UNIT<double>}, discs);
    EXPECT_EQ(discs.count, 5u);
}

TEST(Discs, HoldNothingByPlacesBehindTheLast) {
    Discs discs;
    discs.count = 1;
    discs.middle[0] = {0, 0};
    discs.middle[1] = {1, 0};
    discs.radius[0] = discs.radius[1] = 0.25;
    EXPECT_TRUE(discs.hold({0, 0}, 0.125, UNIT<double>));
    EXPECT_FALSE(discs.hold({1, 0}, 0.125, UNIT<double>));
}

TEST(Discs, HoldNothingThatRoundingsMightPutOutside) {
    Discs discs;
    discs.count = 1;
    discs.middle[0] = {0, 0};
    discs.radius[0] = 0.5;
    // 16 units of the radius, and as many of its half.
    EXPECT_EQ(discs.reach(0, 0), 0.5);
    EXPECT_NEAR(discs.reach(0, 0x1p-20), 0.5 - 24 * 0x1p-20, 1e-9);
    EXPECT_TRUE(discs.hold({0.5, 0}, 0, 0));
    EXPECT_FALSE(discs.hold({0.5, 0}, 0, 0x1p-20));
}

TEST(Discs, HoldWhatLiesInOneOfThemAndNothingElse) {
    Discs discs;
    findDiscs({{-1, 0}, 0, UNIT<double>}, discs);
    ASSERT_EQ(discs.count, 2u);
    for (std::size_t k = 0; k < 2; ++k) {
        const double x = discs.middle[k].r, r = discs.radius[k];
        EXPECT_TRUE(discs.hold({x, 0.5 * r}, 0, UNIT<double>));
        EXPECT_TRUE(discs.hold({x, 0.5 * r}, 0.49 * r, UNIT<double>));
        EXPECT_FALSE(discs.hold({x, 0.5 * r}, 0.51 * r, UNIT<double>));
        EXPECT_FALSE(discs.hold({x, r}, 0, UNIT<double>));
    }
    EXPECT_FALSE(discs.hold({std::numeric_limits<double>::quiet_NaN(), 0}, 0, UNIT<double>));
}

}  // namespace

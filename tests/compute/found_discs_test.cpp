// Where discs are found, and how large they are.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "compute/attracting_discs.h"

namespace {

constexpr double UNIT = 0x1p-53, FLOAT_UNIT = 0x1p-24;

double distance(const Point& a, const Point& b) {
    return std::hypot(a.r - b.r, a.i - b.i);
}

// The constant under which a fixed point, or a cycle of two points, has this multiplier.
Point withFixedPoint(const Point& multiplier) {
    const Point square = multiplier * multiplier;
    return {multiplier.r / 2 - square.r / 4, multiplier.i / 2 - square.i / 4};
}
Point withTwoPoints(const Point& multiplier) {
    return {multiplier.r / 4 - 1, multiplier.i / 4};
}

// Calls check(multiplier) all around a circle.
template <class Check>
void forMultipliersOfSize(double size, Check&& check) {
    constexpr int DIRECTIONS = 90;
    for (int n = 0; n < DIRECTIONS; ++n) {
        const double angle = 6.283185307179586 * n / DIRECTIONS;
        check(Point{size * std::cos(angle), size * std::sin(angle)});
    }
}

// Whether the middles follow each other under the constant.
void expectCycle(const Discs& discs, const Point& c) {
    for (std::size_t k = 0; k < discs.count; ++k) {
        const Point to = discs.middle[k] * discs.middle[k] + c;
        EXPECT_LT(distance(discs.middle[(k + 1) % discs.count], to), 1e-12);
    }
}

TEST(Discs, LieAboutEveryFixedPointThatAttractsNoticeably) {
    for (const double size : {0.0, 0.3, 0.9, 0.999}) {
        forMultipliersOfSize(size, [&](const Point& multiplier) {
            const Point c = withFixedPoint(multiplier);
            Discs discs;
            findDiscs({c, 0, UNIT}, discs);
            ASSERT_EQ(discs.count, 1u) << multiplier.r << ' ' << multiplier.i;
            expectCycle(discs, c);
        });
    }
}

TEST(Discs, LieAboutEveryCycleOfTwoPointsThatAttractsWell) {
    for (const double size : {0.0, 0.3, 0.6, 0.8}) {
        forMultipliersOfSize(size, [&](const Point& multiplier) {
            const Point c = withTwoPoints(multiplier);
            Discs discs;
            findDiscs({c, 0, UNIT}, discs);
            ASSERT_EQ(discs.count, 2u) << multiplier.r << ' ' << multiplier.i;
            expectCycle(discs, c);
        });
    }
}

// What is not in them has to be followed: a disc is as large as the contraction allows. With D =
// 1 - 2 |b| that is the larger root of F^2 - D F + off, of which there is none if off > D^2 / 4.
TEST(Discs, OfAFixedPointAreNearlyAsLargeAsTheyCanBe) {
    for (const double part : {0.0, 0.5, 0.99}) {
        forMultipliersOfSize(0.7, [&](const Point& multiplier) {
            const double room = 1 - 0.7, off = part * room * room / 4;
            const Constants c{withFixedPoint(multiplier), off, UNIT};
            Discs discs;
            findDiscs(c, discs);
            ASSERT_EQ(discs.count, 1u);
            const double largest = (room + std::sqrt(room * room - 4 * off)) / 2;
            EXPECT_GT(discs.radius[0], 0.998 * largest);
            EXPECT_LE(discs.radius[0], largest);
        });
    }
}

// About 0 and -1: F follows F^2 (2 + F^2).
TEST(Discs, OfTwoPointsAreWithinAThirdOfTheLargest) {
    const double largest = 0.4533976515164038;
    Discs discs;
    findDiscs({{-1, 0}, 0, UNIT}, discs);
    ASSERT_EQ(discs.count, 2u);
    EXPECT_GT(discs.radius[0], 0.75 * largest);
    EXPECT_LE(discs.radius[0], largest);
}

// About 0 under the constant 0: F^2 follows F.
TEST(Discs, TakeTheFirstRadiusThatCloses) {
    const Constants none{{0, 0}, 0, UNIT};
    Discs discs;
    discs.count = 1;
    discs.middle[0] = {0, 0};
    discs.fit(1.8, 4, none);  // 1.8, 1.35, 1.0125, 0.759375
    EXPECT_EQ(discs.count, 1u);
    EXPECT_NEAR(discs.radius[0], 0.759375, 1e-15);
    discs.fit(1.8, 3, none);
    EXPECT_EQ(discs.count, 0u);
}

TEST(Discs, AreNoneAtFirst) {
    EXPECT_EQ(Discs().count, 0u);
}

TEST(Discs, AreNotFitWithoutATry) {
    Discs discs;
    discs.count = 1;
    discs.middle[0] = {0, 0};
    discs.fit(0.5, 0, {{0, 0}, 0, UNIT});
    EXPECT_EQ(discs.count, 0u);
}

// Far out an orbit is magnified so much that only small discs close.
TEST(Discs, LieAboutCyclesOfUpToEightPoints) {
    const auto count = [](double c) {
        Discs discs;
        findDiscsByTrial({{c, 0}, 0, UNIT}, discs);
        expectCycle(discs, {c, 0});
        return discs.count;
    };
    EXPECT_EQ(count(0), 1u);
    EXPECT_EQ(count(-1.7548776662466927), 3u);
    EXPECT_EQ(count(-1.9771795870062574), 7u);
    EXPECT_EQ(count(-1.9887932743094713), 8u);
    EXPECT_EQ(count(-1.9870043475150469), 0u);  // nine
}

TEST(DiscsOfAView, AreThoseThatATrialFinds) {
    const Point c{-0.1225, 0.745}, other{-1, 0};
    Discs expected;
    findDiscsByTrial({c, 0, FLOAT_UNIT}, expected);
    ASSERT_EQ(expected.count, 3u);
    for (int use = 0; use < 2; ++use) {
        const Discs& discs = discsOfView(c, FLOAT_UNIT);
        ASSERT_EQ(discs.count, 3u);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(discs.radius[k], expected.radius[k]);
            EXPECT_EQ(distance(discs.middle[k], expected.middle[k]), 0);
        }
    }
    EXPECT_EQ(discsOfView(other, FLOAT_UNIT).count, 2u);
}

// Each view after the first differs from the one before it in one number.
TEST(DiscsOfAView, BelongToItsConstantAndItsUnit) {
    const std::vector<Constants> views = {{{-0.1225, 0.745}, 0, UNIT},
                                          {{-0.1225, 0.745}, 0, FLOAT_UNIT},
                                          {{-0.125, 0.745}, 0, FLOAT_UNIT},
                                          {{-0.125, 0.75}, 0, FLOAT_UNIT}};
    for (const Constants& view : views) {
        Discs expected;
        findDiscsByTrial(view, expected);
        ASSERT_EQ(expected.count, 3u);
        const Discs& discs = discsOfView(view.middle, view.unit);
        EXPECT_EQ(discs.radius[1], expected.radius[1]);
        EXPECT_EQ(discs.middle[0].r, expected.middle[0].r);
        EXPECT_EQ(discs.middle[0].i, expected.middle[0].i);
    }
}

// Nobody else marks them: a mark that is still there says that they are kept.
TEST(DiscsOfAView, AreSoughtOnce) {
    const Point c{-0.1225, 0.745};
    const_cast<Discs&>(discsOfView(c, UNIT)).radius[7] = 1234;
    EXPECT_EQ(discsOfView(c, UNIT).radius[7], 1234);
}

}  // namespace

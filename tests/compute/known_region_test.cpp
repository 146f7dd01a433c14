// What a region holds, and when a thread seeks one.
#include <gtest/gtest.h>

#include <limits>

#include "compute/staying_region.h"

namespace {

using Point = cpuComplex<double>;

constexpr int CELLS = StayingRegion::CELLS;
constexpr double SIDE = 1.0 / StayingRegion::PER_UNIT;

TEST(Region, HoldsClosedSquaresOfASixtyFourth) {
    StayingRegion region;
    region.any = true;
    region.row[130][4] = 1u << 3;  // column 131
    EXPECT_EQ(StayingRegion::cellOf(131 * SIDE - 2), 131);
    EXPECT_EQ(StayingRegion::cellOf(132 * SIDE - 2 - 1e-12), 131);
    EXPECT_EQ(StayingRegion::cellOf(-2), 0);
    EXPECT_LT(StayingRegion::cellOf(-2.001), 0);
    EXPECT_LT(StayingRegion::cellOf(2), 0);
    EXPECT_TRUE(region.has(131, 130));
    EXPECT_FALSE(region.has(130, 130) || region.has(132, 130) || region.has(131, 129) ||
                 region.has(131, 131) || region.has(-1, 0) || region.has(0, -1) ||
                 region.has(CELLS, 0) || region.has(0, CELLS));
    const Point middle{131.5 * SIDE - 2, 130.5 * SIDE - 2};
    EXPECT_TRUE(region.holds(middle.r, middle.i));
    EXPECT_FALSE(region.holds(middle.i, middle.r));
    region.any = false;
    EXPECT_FALSE(region.holds(middle.r, middle.i));
}

TEST(Region, HoldsARectangleWhoseCellsItHas) {
    StayingRegion region;
    region.any = true;
    for (int y = 100; y < 103; ++y) region.row[y][3] = 0b1110;  // columns 97 to 99
    const auto at = [](double x, double y) { return Point{x * SIDE - 2, y * SIDE - 2}; };
    EXPECT_TRUE(region.holdsAll(at(97.1, 100.1), at(99.9, 102.9)));
    EXPECT_TRUE(region.holdsAll(at(99.9, 102.9), at(97.1, 100.1)));
    EXPECT_TRUE(region.holdsAll(at(97.1, 102.9), at(99.9, 100.1)));
    EXPECT_FALSE(region.holdsAll(at(96.9, 100.1), at(99.9, 102.9)));
    EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), at(100.1, 102.9)));
    EXPECT_FALSE(region.holdsAll(at(97.1, 99.9), at(99.9, 102.9)));
    EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), at(99.9, 103.1)));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Point bad : {Point{nan, nan}, Point{3, -1}, Point{-1, 3}, Point{nan, -1}}) {
        EXPECT_FALSE(region.holdsAll(bad, at(99.9, 102.9)));
        EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), bad));
        EXPECT_FALSE(region.holdsAll(bad, bad));
    }
    region.row[0][0] = 0b1;
    EXPECT_TRUE(region.holdsAll(at(0.1, 0.1), at(0.9, 0.9)));
    region.row[101][3] = 0b1010;
    EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), at(99.9, 102.9)));
    region.any = false;
    EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), at(97.1, 100.1)));
}

TEST(Horizon, TakesMoreDiscsWhereTheStepsAreMore) {
    EXPECT_EQ((Horizon{{}, 1}.discsPerEdge()), 16);
    EXPECT_EQ((Horizon{{}, 768}.discsPerEdge()), 16);
    EXPECT_EQ((Horizon{{}, 769}.discsPerEdge()), 32);
    EXPECT_EQ((Horizon{{}, Horizon::MOST_STEPS}.discsPerEdge()), 32);
}

TEST(KnownRegionOfAThread, IsSoughtOnceManyOrbitsStayed) {
    constexpr std::size_t MANY = KnownRegion::WORTH_A_SEARCH;
    KnownRegion known;
    known.turnTo({{1, 2}, 100});
    EXPECT_FALSE(known.worthASearch(MANY - 1));
    EXPECT_TRUE(known.worthASearch(1));
    EXPECT_FALSE(known.worthASearch(MANY / 8 - 1));
    EXPECT_TRUE(known.worthASearch(1));
    known.sought = true;
    EXPECT_FALSE(known.worthASearch(MANY));
}

TEST(KnownRegionOfAThread, IsNotSoughtAgainBeforeAnotherOrbitStayed) {
    KnownRegion known;
    known.turnTo({{1, 2}, 100});
    known.next = 1;
    EXPECT_TRUE(known.worthASearch(1));
    EXPECT_FALSE(known.worthASearch(0));
    EXPECT_TRUE(known.worthASearch(1));
}

TEST(KnownRegionOfAThread, IsThatOfOneConstantAndOfNoMoreSteps) {
    KnownRegion known;
    const auto learn = [&] {
        known.turnTo({{1, 2}, 100});
        known.sought = known.region.any = true;
    };
    learn();
    for (const Horizon same : {Horizon{{1, 2}, 100}, Horizon{{1, 2}, 99}}) {
        known.turnTo(same);
        EXPECT_TRUE(known.sought && known.region.any);
        EXPECT_EQ(known.horizon.steps, 100);
    }
    for (const Horizon other : {Horizon{{1, 3}, 100}, Horizon{{2, 2}, 100}, Horizon{{1, 2}, 101}}) {
        learn();
        known.worthASearch(KnownRegion::WORTH_A_SEARCH);
        known.turnTo(other);
        EXPECT_FALSE(known.sought || known.region.any);
        EXPECT_EQ(known.stayed, 0u);
        EXPECT_EQ(known.horizon.steps, other.steps);
        EXPECT_FALSE(known.worthASearch(1));
        known = {};
    }
}

TEST(KnownRegionOfAThread, IsThatOfFewerStepsWhereNoneIsKnown) {
    KnownRegion known;
    known.turnTo({{1, 2}, 100});
    EXPECT_TRUE(known.worthASearch(KnownRegion::WORTH_A_SEARCH));
    known.sought = true;
    known.turnTo({{1, 2}, 60});
    EXPECT_EQ(known.horizon.steps, 60);
    EXPECT_FALSE(known.sought);
    EXPECT_EQ(known.stayed, 0u);
}

}  // namespace

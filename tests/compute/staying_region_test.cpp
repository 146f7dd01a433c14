// How a region is cut out by its outline, what it holds, and when it is sought.
#include "compute/staying_region.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Point = cpuComplex<double>;

constexpr int CELLS = StayingRegion::CELLS;
constexpr double SIDE = 1.0 / StayingRegion::PER_UNIT;
const Horizon DISC{{0, 0}, 10};  // where all that lies within 1 stays

bool fromInside(const CellEdge& edge) {
    for (const int end : {0, 1}) {
        const double x = (edge.x + (edge.across ? end : 0)) * SIDE - 2;
        const double y = (edge.y + (edge.across ? 0 : end)) * SIDE - 2;
        if (std::hypot(x, y) > 0.9) return false;
    }
    return true;
}

int cellsOf(const StayingRegion& region) {
    int cells = 0;
    for (int y = 0; y < CELLS; ++y) {
        for (int x = 0; x < CELLS; ++x) cells += region.has(x, y);
    }
    return cells;
}

TEST(Region, HasAnOutlineThatPassesEverywhere) {
    StayingRegion region;
    EXPECT_TRUE(findStayingRegion(
        DISC, {0.3, 0.2}, [](const Horizon&, const CellEdge& edge) { return fromInside(edge); },
        region));
    ASSERT_TRUE(region.any);
    for (int y = 0; y < CELLS; ++y) {
        for (int x = 0; x < CELLS; ++x) {
            if (!region.has(x, y)) continue;
            ASSERT_TRUE(region.has(x - 1, y) || fromInside({x, y, false})) << x << ", " << y;
            ASSERT_TRUE(region.has(x + 1, y) || fromInside({x + 1, y, false})) << x << ", " << y;
            ASSERT_TRUE(region.has(x, y - 1) || fromInside({x, y, true})) << x << ", " << y;
            ASSERT_TRUE(region.has(x, y + 1) || fromInside({x, y + 1, true})) << x << ", " << y;
        }
    }
    EXPECT_NEAR(cellsOf(region), 3.1416 * 0.81 / (SIDE * SIDE), 400);
}

TEST(Region, IsWhatThePlaceHangsTogetherWith) {
    const Horizon basilica{{-1, 0}, 50};
    const auto always = [](const Horizon&, const CellEdge&) { return true; };
    StayingRegion middle, left;
    EXPECT_TRUE(findStayingRegion(basilica, {0, 0}, always, middle));
    EXPECT_TRUE(findStayingRegion(basilica, {-1, 0}, always, left));
    EXPECT_TRUE(middle.holds(0, 0) && left.holds(-1, 0));
    EXPECT_FALSE(middle.holds(1.9, 0) || left.holds(1.9, 0));
    for (int y = 0; y < CELLS; y += 4) {
        for (int x = 0; x < CELLS; x += 4) {
            if (!middle.has(x, y)) continue;
            Point z{(x + 2) * SIDE - 2, (y + 2) * SIDE - 2};
            for (int n = 0; n < 100; ++n) z = z * z + basilica.c;
            ASSERT_LT(magnitudeSquared(z), 4) << x << ", " << y;
        }
    }
}

TEST(Region, IsNoneWhereItsOutlineIsNotProvenInAModerateNumberOfTests) {
    static int tests = 0;
    StayingRegion region;
    EXPECT_TRUE(findStayingRegion(
        DISC, {0, 0}, [](const Horizon&, const CellEdge&) { return ++tests < 0; }, region));
    EXPECT_FALSE(region.any);
    EXPECT_FALSE(region.holds(0, 0));
    EXPECT_EQ(tests, 5000);
}

// Set in the middle of the outline, it ends the search there; set before, it lets nothing be
// tested.
TEST(Region, IsNoneAndWorthAnotherTryOnceToldToStop) {
    static std::atomic<bool> stop = false;
    static int tests = 0;
    const auto stopsAtTheHundredth = [](const Horizon&, const CellEdge&) {
        if (++tests == 100) stop = true;
        return true;
    };
    StayingRegion region;
    EXPECT_FALSE(findStayingRegion(DISC, {0, 0}, stopsAtTheHundredth, region, &stop));
    EXPECT_FALSE(region.any);
    EXPECT_EQ(tests, 100);
    EXPECT_FALSE(findStayingRegion(DISC, {0, 0}, stopsAtTheHundredth, region, &stop));
    EXPECT_FALSE(region.any);
    EXPECT_EQ(tests, 100);
}

TEST(Region, IsNoneWhereNothingPasses) {
    StayingRegion region;
    const Horizon small{{0.2, 0.5}, 2000};
    EXPECT_TRUE(findStayingRegion(
        small, {0, 0.6}, [](const Horizon&, const CellEdge&) { return false; }, region));
    EXPECT_FALSE(region.any);
}

TEST(Region, IsWorthAnotherTryWhereTheOrbitWasAboutToLeave) {
    const auto never = [](const Horizon&, const CellEdge&) -> bool {
        throw std::logic_error("no outline to test");
    };
    StayingRegion region;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Point place : {Point{1.5, 0}, Point{0, 3}, Point{nan, 0}, Point{0, nan}}) {
        EXPECT_FALSE(findStayingRegion(DISC, place, never, region));
        EXPECT_FALSE(region.any);
    }
    // It stays for the steps asked for, but not for twice as many.
    EXPECT_FALSE(findStayingRegion({{0.26, 0}, 25}, {0.03, 0.03}, never, region));
}

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
    for (const Point bad : {Point{nan, nan}, Point{3, -1}, Point{-1, 3}}) {
        EXPECT_FALSE(region.holdsAll(bad, at(99.9, 102.9)));
        EXPECT_FALSE(region.holdsAll(at(97.1, 100.1), bad));
        EXPECT_FALSE(region.holdsAll(bad, bad));
    }
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

// How a region is found and cut out by its outline.
#include "compute/staying_region.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
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

bool always(const Horizon&, const CellEdge&) {
    return true;
}

bool nowhere(const Horizon&, const CellEdge&) {
    return false;
}

// All but one of eight, without a pattern.
bool nearlyAlways(const Horizon&, const CellEdge& edge) {
    const auto id = static_cast<std::uint32_t>((edge.y * 512 + edge.x) * 2 + edge.across);
    return (id * 2654435761u >> 16) % 8 != 0;
}

// Takes away cells with an outside edge that does not pass, in no clever order.
void peelPlainly(StayingRegion& region, EdgeTest stays, const Horizon& h) {
    for (bool changed = true; changed;) {
        changed = false;
        for (int y = 0; y < CELLS; ++y) {
            for (int x = 0; x < CELLS; ++x) {
                const bool holds = (region.has(x - 1, y) || stays(h, {x, y, false})) &&
                                   (region.has(x + 1, y) || stays(h, {x + 1, y, false})) &&
                                   (region.has(x, y - 1) || stays(h, {x, y, true})) &&
                                   (region.has(x, y + 1) || stays(h, {x, y + 1, true}));
                if (holds || !region.has(x, y)) continue;
                region.row[y][x / StayingRegion::BITS] &= ~(1u << x % StayingRegion::BITS);
                changed = true;
            }
        }
    }
}

// Where all that begins within 2 stays: it meets every side of what a region can cover.
const Horizon NO_STEPS{{0, 0}, 0};
const Horizon TURNING{{-0.390540870218, -0.586787907347}, 40};  // nothing about it is symmetrical

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

TEST(Region, IsTheLargestPartWhoseOutlinePasses) {
    for (const Horizon& h : {TURNING, NO_STEPS}) {
        StayingRegion expected, region;
        ASSERT_TRUE(findStayingRegion(h, {0, 0}, always, expected));
        const int before = cellsOf(expected);
        peelPlainly(expected, nearlyAlways, h);
        ASSERT_TRUE(findStayingRegion(h, {0, 0}, nearlyAlways, region));
        EXPECT_LT(cellsOf(region), before - 50);
        EXPECT_GT(cellsOf(region), before / 2);
        for (int y = 0; y < CELLS; ++y) {
            for (int x = 0; x < CELLS; ++x) {
                ASSERT_EQ(region.has(x, y), expected.has(x, y)) << x << ", " << y;
            }
        }
    }
}

TEST(Region, BeginsAsAllSquaresThatHangTogetherAndStay) {
    for (const Horizon& h : {NO_STEPS, TURNING, Horizon{{-0.123, 0.745}, 60}}) {
        constexpr int SQUARES = CELLS / 4;
        bool hangs[SQUARES + 2][SQUARES + 2] = {};  // with a rim about them
        const auto stays = [&](int x, int y) {
            Point z{(4 * x + 2) * SIDE - 2, (4 * y + 2) * SIDE - 2};
            for (int n = 0; n < (2 * h.steps + 31) / 32 * 32; ++n) z = z * z + h.c;
            return magnitudeSquared(z) < 4;
        };
        hangs[SQUARES / 2 + 1][SQUARES / 2 + 1] = true;
        for (bool changed = true; changed;) {
            changed = false;
            for (int y = 1; y <= SQUARES; ++y) {
                for (int x = 1; x <= SQUARES; ++x) {
                    if (hangs[y][x] || !stays(x - 1, y - 1)) continue;
                    hangs[y][x] =
                        hangs[y - 1][x] || hangs[y + 1][x] || hangs[y][x - 1] || hangs[y][x + 1];
                    changed |= hangs[y][x];
                }
            }
        }
        StayingRegion region;
        ASSERT_TRUE(findStayingRegion(h, {0.01, 0.01}, always, region));
        for (int y = 0; y < CELLS; ++y) {
            for (int x = 0; x < CELLS; ++x) {
                ASSERT_EQ(region.has(x, y), hangs[y / 4 + 1][x / 4 + 1]) << x << ", " << y;
            }
        }
    }
}

TEST(Region, TestsNoEdgeBesideWhatItCanCover) {
    StayingRegion region;
    const auto exists = [](const Horizon&, const CellEdge& edge) {
        EXPECT_TRUE(edge.x >= 0 && edge.y >= 0 && edge.x <= CELLS && edge.y <= CELLS);
        EXPECT_TRUE(edge.across ? edge.x < CELLS : edge.y < CELLS);
        return true;
    };
    EXPECT_TRUE(findStayingRegion(NO_STEPS, {0, 0}, exists, region));
    for (int n = 0; n < CELLS; n += CELLS - 1) {
        EXPECT_TRUE(region.has(n, CELLS / 2) && region.has(CELLS / 2, n));
    }
    EXPECT_EQ(cellsOf(region), 16 * 3228);  // squares whose middle is within 2
}

// A place in the outermost cells is one, a place beyond them is not.
TEST(Region, IsSoughtAboutAPlaceThatACellHolds) {
    StayingRegion region;
    for (const Point place : {Point{-1.99, 0}, Point{0, -1.99}, Point{1.99, 0}, Point{0, 1.99}}) {
        EXPECT_TRUE(findStayingRegion(NO_STEPS, place, always, region));
        EXPECT_TRUE(region.holds(place.r, place.i));
    }
    for (const Point place : {Point{-2.01, 0}, Point{0, -2.01}, Point{2.01, 0}, Point{0, 2.01}}) {
        EXPECT_FALSE(findStayingRegion(NO_STEPS, place, always, region));
        EXPECT_FALSE(region.any);
    }
}

// Under the one constant the middle of the place's square is 3.23 from zero, squared, after twice
// the steps and gone four steps later; under the other it was at 1.1 four steps before and is at
// 4.4 then, which only both parts together show.
TEST(Region, IsSoughtWhereAnOrbitStaysForTwiceTheSteps) {
    StayingRegion region;
    EXPECT_TRUE(findStayingRegion({{-0.75, 0.02456}, 64}, {0.03, 0.03}, always, region));
    EXPECT_TRUE(region.any);
    EXPECT_FALSE(findStayingRegion({{-0.75, 0.02464}, 64}, {0.03, 0.03}, always, region));
    EXPECT_FALSE(region.any);
}

TEST(Region, HoldsNothingOfTheOneBefore) {
    StayingRegion region;
    region.any = true;
    region.row[0][0] = region.row[CELLS - 1][7] = ~0u;
    EXPECT_FALSE(findStayingRegion(DISC, {1.5, 0}, always, region));
    EXPECT_EQ(cellsOf(region), 0);
    region.row[0][0] = region.row[CELLS - 1][7] = ~0u;
    EXPECT_TRUE(findStayingRegion(DISC, {0, 0}, always, region));
    EXPECT_FALSE(region.has(0, 0) || region.has(CELLS - 1, CELLS - 1));
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
    EXPECT_TRUE(findStayingRegion(small, {0, 0.6}, nowhere, region));
    EXPECT_FALSE(region.any);
    // So few squares that all are taken away within the number of tests.
    EXPECT_TRUE(findStayingRegion({{-1.7549, 0}, 60}, {0, 0}, always, region));
    EXPECT_TRUE(region.any && region.holds(0, 0));
    EXPECT_LT(cellsOf(region), 1000);
    EXPECT_TRUE(findStayingRegion({{-1.7549, 0}, 60}, {0, 0}, nowhere, region));
    EXPECT_FALSE(region.any);
    EXPECT_EQ(cellsOf(region), 0);
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

}  // namespace

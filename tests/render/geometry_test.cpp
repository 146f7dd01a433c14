#include "render/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "render/failure.h"

namespace {

using render::Fit;
using render::fitted;
using render::heightFor;
using render::Size;

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

fractal view(double xMin, double xMax, double yMin, double yMax) {
    fractal f;
    f.xMin = xMin, f.xMax = xMax, f.yMin = yMin, f.yMax = yMax;
    return f;
}

bool sameRectangle(const fractal& a, const fractal& b) {
    const auto same = [](double p, double q) {
        return p == q ? std::signbit(p) == std::signbit(q) : std::isnan(p) && std::isnan(q);
    };
    return same(a.xMin, b.xMin) && same(a.xMax, b.xMax) && same(a.yMin, b.yMin) &&
           same(a.yMax, b.yMax);
}

TEST(Contain, LetsTheWidthGrowAboutItsCentre) {
    const auto f = fitted(view(1, 3, -1, 1), {200, 100}, Fit::contain);
    EXPECT_TRUE(sameRectangle(f, view(0, 4, -1, 1)));
}

TEST(Contain, LetsTheHeightGrowAboutItsCentre) {
    const auto f = fitted(view(-2, 2, 0, 2), {100, 100}, Fit::contain);
    EXPECT_TRUE(sameRectangle(f, view(-2, 2, -1, 3)));
}

TEST(Cover, LetsTheWidthShrinkAboutItsCentre) {
    const auto f = fitted(view(0, 4, -1, 1), {100, 100}, Fit::cover);
    EXPECT_TRUE(sameRectangle(f, view(1, 3, -1, 1)));
}

TEST(Cover, LetsTheHeightShrinkAboutItsCentre) {
    const auto f = fitted(view(0, 4, -1, 3), {200, 100}, Fit::cover);
    EXPECT_TRUE(sameRectangle(f, view(0, 4, 0, 2)));
}

TEST(Stretch, LeavesTheRectangleAsItIs) {
    const auto odd = view(0.1, 0.7, 5, 5.3);
    EXPECT_TRUE(sameRectangle(fitted(odd, {17, 3}, Fit::stretch), odd));
}

TEST(AFittingRectangle, KeepsItsBits) {
    const auto start = view(-2, 2, -1.5, 1.5);
    EXPECT_TRUE(sameRectangle(fitted(start, {2048, 1536}, Fit::contain), start));
    EXPECT_TRUE(sameRectangle(fitted(start, {400, 300}, Fit::cover), start));
}

TEST(TheOtherSide, KeepsItsBits) {
    const double low = 0.1, high = std::nextafter(0.3, 1);
    const auto grown = fitted(view(low, high, -1, 1), {100, 300}, Fit::contain);
    EXPECT_EQ(grown.yMin, -1);
    EXPECT_EQ(grown.yMax, 1);
    const auto shrunk = fitted(view(low, high, -1, 1), {100, 300}, Fit::cover);
    EXPECT_EQ(shrunk.xMin, low);
    EXPECT_EQ(shrunk.xMax, high);
}

TEST(Orientation, IsKept) {
    const auto mirrored = fitted(view(3, 1, 1, -1), {200, 100}, Fit::contain);
    EXPECT_TRUE(sameRectangle(mirrored, view(4, 0, 1, -1)));
    const auto upright = fitted(view(0, 4, 1, -1), {100, 100}, Fit::contain);
    EXPECT_TRUE(sameRectangle(upright, view(0, 4, 2, -2)));
}

TEST(ARectangleWithoutProportions, StaysAsItIs) {
    for (const auto& flat :
         {view(1, 1, 0, 1), view(0, 1, 2, 2), view(0, INF, 0, 1), view(0, 1, -INF, 0),
          view(NOT_A_NUMBER, 1, 0, 1), view(-1.7e308, 1.7e308, 0, 1)}) {
        EXPECT_TRUE(sameRectangle(fitted(flat, {100, 50}, Fit::contain), flat));
        EXPECT_TRUE(sameRectangle(fitted(flat, {100, 50}, Fit::cover), flat));
    }
}

// Growing would leave the range of numbers, shrinking that of their distances.
TEST(ARectangleThatWouldLoseItsProportions, StaysAsItIs) {
    const auto huge = view(0, 1.5e308, 0, 1.5e308);
    EXPECT_TRUE(sameRectangle(fitted(huge, {2, 1}, Fit::contain), huge));
    const auto tiny = view(1, std::nextafter(1.0, 2), 0, 1);
    EXPECT_TRUE(sameRectangle(fitted(tiny, {1, 65535}, Fit::stretch), tiny));
}

TEST(ACentreBetweenHugeEnds, IsFound) {
    const auto f = fitted(view(1e308, 1.5e308, 1e308, 1.25e308), {1, 1}, Fit::contain);
    EXPECT_TRUE(std::isfinite(f.yMin) && std::isfinite(f.yMax));
    EXPECT_NEAR((f.yMax - f.yMin) / 0.5e308, 1, 1e-15);
}

TEST(WhatIsFittedOnce, IsFittedForGood) {
    std::mt19937_64 random(1);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    for (int i = 0; i < 100000; ++i) {
        const double x = between(-2, 2), y = between(-2, 2), wide = std::exp2(between(-36, 3));
        const double high = wide * std::exp2(between(-2, 2));
        const auto any = view(x, x + wide, y + high, y);
        const Size size{1 + static_cast<int>(random() % 3000),
                        1 + static_cast<int>(random() % 3000)};
        if (size.width > 8 * size.height || size.height > 8 * size.width) continue;
        for (const Fit fit : {Fit::contain, Fit::cover}) {
            const auto once = fitted(any, size, fit);
            for (const Fit again : {Fit::contain, Fit::cover}) {
                ASSERT_TRUE(sameRectangle(fitted(once, size, again), once)) << i;
            }
        }
    }
}

TEST(Height, FollowsTheProportionsOfTheView) {
    EXPECT_EQ(heightFor(view(-2, 2, -1.5, 1.5), 2048), 1536);
    EXPECT_EQ(heightFor(view(2, -2, 1.5, -1.5), 2048), 1536);
    EXPECT_EQ(heightFor(view(0, 3, 0, 1), 100), 33);
    EXPECT_EQ(heightFor(view(0, 4, 0, 1), 10), 3);  // 2.5, away from zero
}

TEST(Height, IsAtLeastOne) {
    EXPECT_EQ(heightFor(view(0, 1, 0, 1e-9), 100), 1);
    EXPECT_EQ(heightFor(view(0, 1, 5, 5), 100), 1);
}

TEST(Height, BeyondTheLargestSideIsAFailure) {
    EXPECT_EQ(heightFor(view(0, 1, 0, 65535), 1), 65535);
    EXPECT_THROW(heightFor(view(0, 1, 0, 65536), 1), render::Failure);
    EXPECT_THROW(heightFor(view(1, 1, 0, 1), 100), render::Failure);
    EXPECT_THROW(heightFor(view(0, 1, 0, INF), 100), render::Failure);
    EXPECT_THROW(heightFor(view(0, NOT_A_NUMBER, 0, 1), 100), render::Failure);
}

}  // namespace

// Smooth values whose orbits turn about a point for long are the scalar ones, with a region and
// while one is sought; and pictures and values of one thread share what it knows.
#include <gtest/gtest.h>

#include <thread>

#include "compute/staying_region.h"
#include "compute/value_tile.h"
#include "tests/compute/turning_views.h"
#include "tests/compute/value_support.h"
#include "tests/compute/vector_support.h"

namespace {

using turning::PARABOLIC;
using turning::seekAtOnce;
using turning::SIEGEL;
using value_test::Numbers;
using value_test::scalarNumbers;
using value_test::vectorNumbers;
using value_test::View;

constexpr auto juliaView = turning::juliaView<View>;

// How many orbits take all their steps while the numbers are made.
std::size_t orbitsFollowedToTheEnd(const View& v) {
    const std::size_t before = lastRegion.stayed;
    vectorNumbers(v);
    return lastRegion.stayed - before;
}

TEST(RegionValues, AreTheScalarOnes) {
    for (const bool doublePrecision : {false, true}) {
        for (const auto c : {SIEGEL, PARABOLIC}) {
            for (const double limit : {4.0, 65536.0}) {
                View v = juliaView(c, doublePrecision, 300);
                v.limit = limit;
                const Numbers expected = scalarNumbers(v);
                for (const auto& target : vector_test::allTargets()) {
                    if (target.name == "scalar") continue;
                    SCOPED_TRACE(testing::Message() << target.name << ", " << v);
                    const vector_test::ForcedTarget forced(target.bit);
                    seekAtOnce(v);
                    EXPECT_TRUE(sameNumbers(vectorNumbers(v), expected, v.width));
                    EXPECT_TRUE(lastRegion.region.any);
                    EXPECT_TRUE(sameNumbers(vectorNumbers(v), expected, v.width));
                }
            }
        }
    }
}

TEST(RegionValues, FollowFewerOrbitsOnceARegionIsKnown) {
    const View v = juliaView(PARABOLIC, false, 300);
    lastRegion = {};
    const std::size_t without = orbitsFollowedToTheEnd(v);
    EXPECT_FALSE(lastRegion.sought);
    seekAtOnce(v);
    vectorNumbers(v);
    ASSERT_TRUE(lastRegion.region.any);
    EXPECT_LT(orbitsFollowedToTheEnd(v), without / 4);
}

vector_test::View pictureOf(const View& v) {
    vector_test::View picture;
    picture.type = v.type;
    picture.doublePrecision = v.doublePrecision;
    picture.xMin = v.xMin, picture.xMax = v.xMax;
    picture.yMin = v.yMin, picture.yMax = v.yMax;
    picture.cx = v.cx, picture.cy = v.cy;
    picture.maxSize = static_cast<int>(v.limit);
    picture.maxIters = v.maxIters;
    picture.width = v.width, picture.height = v.height;
    picture.tileWidth = picture.tileHeight = 8;
    return picture;
}

TEST(RegionValues, KnowWhatThePictureHasFound) {
    const View v = juliaView(PARABOLIC, true, 300);
    lastRegion = {};
    const std::size_t without = orbitsFollowedToTheEnd(v);
    seekAtOnce(v);
    vector_test::vectorPicture(pictureOf(v));
    ASSERT_TRUE(lastRegion.region.any);
    EXPECT_TRUE(sameNumbers(vectorNumbers(v), scalarNumbers(v), v.width));
    EXPECT_LT(orbitsFollowedToTheEnd(v), without / 4);
}

// Under another constant, another number of steps and the first again, whichever kind comes first.
TEST(RegionValues, AreTheScalarOnesAfterAnyOtherView) {
    const View first = juliaView(PARABOLIC, false, 200);
    View more = first, other = juliaView(SIEGEL, false, 200);
    more.maxIters = 500;
    seekAtOnce(first);
    vectorNumbers(first);
    ASSERT_TRUE(lastRegion.region.any);
    for (const View& v : {first, more, first, other, first}) {
        EXPECT_TRUE(sameNumbers(vectorNumbers(v), scalarNumbers(v), v.width)) << v;
        const auto picture = pictureOf(v);
        EXPECT_TRUE(samePicture(vector_test::vectorPicture(picture),
                                vector_test::scalarPicture(picture), "region-other-view"));
        lastRegion.next = 1;
    }
}

TEST(RegionValues, OfAnotherThreadKnowNothingOfThisOnes) {
    const View v = juliaView(PARABOLIC, false, 300);
    lastRegion = {};
    const std::size_t without = orbitsFollowedToTheEnd(v);
    seekAtOnce(v);
    vectorNumbers(v);
    ASSERT_TRUE(lastRegion.region.any);
    const std::size_t stayed = lastRegion.stayed;
    std::thread([&] {
        EXPECT_FALSE(lastRegion.region.any);
        EXPECT_EQ(orbitsFollowedToTheEnd(v), without);
        lastRegion = {};
    }).join();
    EXPECT_TRUE(lastRegion.region.any);
    EXPECT_EQ(lastRegion.stayed, stayed);
}

}  // namespace

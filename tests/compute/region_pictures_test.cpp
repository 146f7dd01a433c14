// Pictures whose orbits turn about a point for long are the scalar ones, with a region and while
// one is sought.
#include <gtest/gtest.h>

#include <complex>
#include <string>

#include "compute/staying_region.h"
#include "tests/compute/turning_views.h"
#include "tests/compute/vector_support.h"

namespace {

using turning::CATALOGUE;
using turning::NEAR_TWO;
using turning::PARABOLIC;
using turning::seekAtOnce;
using turning::SIEGEL;
using vector_test::scalarPicture;
using vector_test::vectorPicture;
using vector_test::View;

View juliaView(std::complex<double> c, bool doublePrecision, int limit) {
    View v = turning::juliaView<View>(c, doublePrecision, limit);
    v.width = v.height = 96;
    return v;
}

void expectTheScalarPictureWithARegion(const View& v) {
    const auto expected = scalarPicture(v);
    for (const auto& target : vector_test::allTargets()) {
        if (target.name == "scalar") continue;
        SCOPED_TRACE(target.name);
        const vector_test::ForcedTarget forced(target.bit);
        seekAtOnce(v);
        EXPECT_TRUE(samePicture(vectorPicture(v), expected, "region-sought"));
        EXPECT_TRUE(lastRegion.region.any);
        EXPECT_TRUE(samePicture(vectorPicture(v), expected, "region-known"));
    }
}

TEST(RegionPictures, AreTheScalarOnes) {
    for (const bool doublePrecision : {false, true}) {
        for (const auto c : {SIEGEL, CATALOGUE, PARABOLIC, NEAR_TWO}) {
            for (const int limit : {100, 768}) {
                SCOPED_TRACE(testing::Message() << c << " " << limit);
                expectTheScalarPictureWithARegion(juliaView(c, doublePrecision, limit));
            }
        }
    }
}

TEST(RegionPictures, AreTheScalarOnesUnderFewerStepsThanTheRegionIsFor) {
    View v = juliaView(SIEGEL, true, 500);
    expectTheScalarPictureWithARegion(v);
    v.maxIters = 120;
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-fewer"));
    EXPECT_TRUE(lastRegion.region.any);
}

// An orbit that stays for the steps of one limit may leave under a higher one.
TEST(RegionPictures, ForgetTheRegionUnderMoreSteps) {
    View v = juliaView(NEAR_TWO, false, 50);
    expectTheScalarPictureWithARegion(v);
    v.maxIters = 400;
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-more"));
    EXPECT_FALSE(lastRegion.region.any);
}

TEST(RegionPictures, ForgetTheRegionOfAnotherConstant) {
    View v = juliaView(PARABOLIC, false, 200);
    expectTheScalarPictureWithARegion(v);
    v.cx = 0.27;
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-other"));
    EXPECT_FALSE(lastRegion.region.any);
}

// Below an escape limit of 4 what stays within 2 may escape; beyond so many steps discs would be
// too many; and who looks for no cycles wants every step.
TEST(RegionPictures, AreMadeWithoutARegionWhereItProvesNothing) {
    View v = juliaView(PARABOLIC, false, 300);
    v.maxSize = 3;
    seekAtOnce(v);
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-limit"));
    EXPECT_FALSE(lastRegion.region.any);
    v.maxSize = 4;
    vector_control::detectCycles(false);
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-undetected"));
    vector_control::detectCycles(true);
    EXPECT_FALSE(lastRegion.region.any);
    v.maxIters = Horizon::MOST_STEPS + 1;
    v.width = v.height = 32;
    seekAtOnce(v);
    EXPECT_TRUE(samePicture(vectorPicture(v), scalarPicture(v), "region-long"));
    EXPECT_FALSE(lastRegion.region.any);
}

TEST(RegionPictures, SeekNoRegionForFewOrbits) {
    const View v = juliaView(PARABOLIC, false, 300);
    lastRegion = {};
    vectorPicture(v);
    EXPECT_FALSE(lastRegion.sought);
    EXPECT_GT(lastRegion.stayed, 1000u);
}

}  // namespace

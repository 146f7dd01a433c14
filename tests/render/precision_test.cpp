#include "render/precision.h"

#include <gtest/gtest.h>

#include <vector>

#include "frac/json_entry.h"
#include "render/exact_picture.h"

namespace {

using render::Job;
using render::Precision;

Job jobOf(const std::string& width, int maxIters) {
    Job job;
    placeExactly(job.view, {"0", "1", width, {}, {}});
    job.view.maxIters = maxIters;
    job.view.maxSize = 4;
    job.size = {4, 4};
    choosePrecision(job, Precision::exact);
    return job;
}

struct Made {
    render::HeldPicture picture;
    std::vector<std::int32_t> counts;
};

Made made(const Job& job) {
    Made all{nullptr, std::vector<std::int32_t>(16)};
    job.exact->compute({0, 4}, all.counts.data(), nullptr, nullptr, all.picture);
    return all;
}

TEST(AFlightAboutOnePoint, FollowsItsFramesFromTheReferenceOfTheDeepest) {
    const std::vector<Job> jobs = {jobOf("1e-20", 200), jobOf("1e-40", 200), jobOf("1e-30", 200)};
    shareReferences(jobs);
    const Made first = made(jobs[0]), deepest = made(jobs[1]), last = made(jobs[2]);
    EXPECT_TRUE(first.picture->sharesReference(*deepest.picture));
    EXPECT_TRUE(last.picture->sharesReference(*deepest.picture));
}

TEST(AFlightAboutOnePoint, LendsWhatHasTheMostSteps) {
    const std::vector<Job> jobs = {jobOf("1e-20", 100), jobOf("1e-20", 300)};
    shareReferences(jobs);
    const Made few = made(jobs[0]), many = made(jobs[1]);
    EXPECT_TRUE(few.picture->sharesReference(*many.picture));
}

TEST(AFlightAboutOnePoint, MakesItsReferenceOnceWhileFramesFollowEachOther) {
    const std::vector<Job> jobs = {jobOf("1e-20", 200), jobOf("1e-30", 200), jobOf("1e-40", 200)};
    shareReferences(jobs);
    const Made first = made(jobs[0]), second = made(jobs[1]);
    EXPECT_TRUE(second.picture->sharesReference(*first.picture));
}

TEST(AFlightAboutOnePoint, HasTheCountsOfFramesAlone) {
    const std::vector<Job> jobs = {jobOf("1e-20", 200), jobOf("1e-40", 200)};
    shareReferences(jobs);
    EXPECT_EQ(made(jobs[0]).counts, made(jobOf("1e-20", 200)).counts);
}

TEST(Precision, IsExactWhereSamplesAreTooCloseForDoubles) {
    fractal view;
    view.xMin = 0.5, view.xMax = 1, view.yMin = 0, view.yMax = 0.5;
    EXPECT_FALSE(render::isBeyondDouble(view, {65535, 65535}));
    view.xMin = 1 - 0x1p-30;
    EXPECT_FALSE(render::isBeyondDouble(view, {1024, 1024}));
    EXPECT_TRUE(render::isBeyondDouble(view, {1025, 1025}));
}

TEST(Precision, CountsTheConstantOfAJuliaSetAmongTheCoordinates) {
    fractal view;
    view.xMin = -0x1p-31, view.xMax = 0x1p-31, view.yMin = -0x1p-31, view.yMax = 0x1p-31;
    view.cx = 1;
    EXPECT_FALSE(render::isBeyondDouble(view, {2048, 2048}));
    view.fractalType = 1;
    EXPECT_TRUE(render::isBeyondDouble(view, {2048, 2048}));
}

TEST(Precision, IsExactForWidthsThatNoDoubleHolds) {
    fractal view;
    placeExactly(view, {"0", "0", "1e-400", {}, {}});
    EXPECT_TRUE(render::isBeyondDouble(view, {1, 1}));
}

TEST(Precision, FramesAPlaceInTheProportionsOfThePicture) {
    fractal view;
    placeExactly(view, {"1", "-2", "4", {}, {}});
    const fractal framed = render::framed(view, {200, 100});
    EXPECT_EQ(framed.xMin, -1);
    EXPECT_EQ(framed.xMax, 3);
    EXPECT_EQ(framed.yMin, -3);
    EXPECT_EQ(framed.yMax, -1);
}

}  // namespace

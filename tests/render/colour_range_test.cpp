// The values that occur in a picture.
#include "render/colour_range.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

#include "render/colour_rows.h"
#include "render/encoder.h"
#include "tests/render/render_support.h"

namespace {

using render::Job;
using render::ValueRange;

// Of five bands, and rows of samples that no piece divides.
Job tallJob(bool smooth) {
    const auto& row = test_support::catalogueRows()[0];
    Job job = test_support::jobOf(row, {64, 301}, render::Precision::doubles);
    job.view.maxIters = 60;
    render::WantedColours colours;
    colours.smooth = smooth;
    colours.gradient =
        std::make_shared<const render::Gradient>(render::readGradient("#000000 0, #ffffff 1"));
    job.colouring = std::make_shared<const render::Colouring>(colours);
    return job;
}

// By all numbers at once.
ValueRange rangeOfAll(const Job& job) {
    const std::atomic<bool> never{false};
    const bool smooth = job.colouring->isSmooth();
    render::NumberRows numbers;
    computeNumbers(job, {0, wholeSize(job).height * job.supersample}, smooth, never, numbers);
    std::vector<double> values = numbers.values;
    if (!smooth) values.assign(numbers.counts.begin(), numbers.counts.end());
    ValueRange range{1e300, -1e300};
    for (const double value : values) {
        if (std::isnan(value) || (!smooth && value == job.view.maxIters)) continue;
        range = {std::min(range.least, value), std::max(range.greatest, value)};
    }
    return range;
}

void expectTheRangeOfAll(const Job& job) {
    const ValueRange expected = rangeOfAll(job);
    ASSERT_LT(expected.least, expected.greatest);
    for (const int threads : {1, 3}) {
        const ValueRange range = valuesIn(job, threads);
        EXPECT_EQ(range.least, expected.least);
        EXPECT_EQ(range.greatest, expected.greatest);
    }
}

// The view's own place, so that the least or the greatest lies in its first or last row alone.
void zoomTo(Job& job, double yMin, double yMax) {
    job.view.xMin = -1.3;
    job.view.xMax = -1.2;
    job.view.yMin = yMin;
    job.view.yMax = yMax;
}

TEST(TheValuesOfAPicture, LieBetweenTheLeastAndTheGreatest) {
    for (const bool smooth : {true, false}) {
        Job job = tallJob(smooth);
        expectTheRangeOfAll(job);
        zoomTo(job, 0.05, 1.5);
        expectTheRangeOfAll(job);
        zoomTo(job, -1.5, -0.05);
        expectTheRangeOfAll(job);
        job.supersample = 3;
        expectTheRangeOfAll(job);
        job.supersample = 1;
        zoomTo(job, 0.05, 0.2);  // no value is as small as one of no pixel
        expectTheRangeOfAll(job);
    }
}

TEST(TheValuesOfABand, AreThoseOfAllThePicture) {
    Job job = tallJob(false);
    zoomTo(job, 0.05, 1.5);
    const ValueRange whole = valuesIn(job, 1);
    job.band = render::Band{.number = 2, .count = 3, .first = 100, .whole = job.size};
    job.size.height = 100;
    EXPECT_EQ(valuesIn(job, 1).least, whole.least);
    EXPECT_EQ(valuesIn(job, 1).greatest, whole.greatest);
}

TEST(WhereAllEscapeAtOnce, TheRangeIsTheirCount) {
    Job job = tallJob(false);
    job.size = {1, 1};
    zoomTo(job, 0.1, 0.2);
    const ValueRange range = valuesIn(job, 1);
    EXPECT_GT(range.least, 1);
    EXPECT_EQ(range.least, range.greatest);
}

TEST(WhereNothingEscapes, TheRangeIsEmpty) {
    for (const bool smooth : {true, false}) {
        Job job = tallJob(smooth);
        job.view.xMin = job.view.yMin = -0.1;
        job.view.xMax = job.view.yMax = 0.1;
        EXPECT_EQ(valuesIn(job, 1).least, 0);
        EXPECT_EQ(valuesIn(job, 1).greatest, 0);
    }
}

TEST(AStretchedJob, HasOneTurnOverTheRange) {
    const Job job = stretched(tallJob(true), {10, 30});
    EXPECT_EQ(job.colouring->of(10)[0], 0);
    EXPECT_NEAR(job.colouring->of(20)[0], job.colouring->atPlace(0.5)[0], 1e-12);
    EXPECT_EQ(job.colouring->wanted().range->greatest, 30);
}

}  // namespace

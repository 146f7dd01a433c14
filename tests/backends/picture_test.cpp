// Every built-in view at full size, through the real queue and the real workers, against plain
// arithmetic. Where the whole picture would take long, a share of its tiles is queued; the rest of
// the picture must then stay untouched.
#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>

#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"
#include "tests/support/catalogue_table.h"
#include "tests/support/picture.h"
#include "tests/support/reference_fractal.h"
#include "tests/support/sanitized.h"
#include "tests/support/stdout_capture.h"

namespace {

using test_support::CatalogueRow;
using test_support::Picture;
using test_support::ReferenceView;

constexpr unsigned char CANARY = 0xA5;

constexpr std::size_t SLOWDOWN = SANITIZED ? 15 : 1;

// One tile in how many is rendered. All are odd, so that the sample wanders over the rows of 256
// tiles; 1 is the whole picture.
std::size_t sampleStride(const CatalogueRow& row) {
    if (row.type >= 2 && row.type <= 5) return 101;
    const bool costly = row.type == 0 || row.type == 10 || row.preset == 101 || row.preset == 102;
    return costly ? 7 : 1;
}

ReferenceView referenceView(const CatalogueRow& row, bool doublePrecision) {
    return {.type = row.type,
            .doublePrecision = doublePrecision,
            .xMin = row.xMin,
            .xMax = row.xMax,
            .yMin = row.yMin,
            .yMax = row.yMax,
            .cx = row.cx,
            .cy = row.cy,
            .maxSize = row.maxSize,
            .maxIters = row.maxIters};
}

fractal entry(const CatalogueRow& row) {
    fractal f = test_support::makeView(row.type, row.xMin, row.xMax, row.yMin, row.yMax,
                                       row.maxIters, row.maxSize);
    f.cx = row.cx;
    f.cy = row.cy;
    f.paletteType = row.paletteType;
    return f;
}

// Keeps one queued tile in `stride` and returns those kept. Call under mutex.
std::deque<params> thinQueue(std::size_t stride) {
    std::deque<params> kept;
    for (std::size_t i = 0; i < workQ.size(); i += stride) kept.push_back(workQ[i]);
    workQ.clear();
    for (const params& tile : kept) workQ.push_back(tile);
    task_count = static_cast<std::int32_t>(kept.size());
    return kept;
}

std::deque<params> renderSample(std::size_t stride) {
    const test_support::StdoutCapture silence;
    std::deque<params> tiles;
    {
        const std::lock_guard lock(mutex);
        queueFrame();
        tiles = thinQueue(stride);
    }
    waitForFrame();
    return tiles;
}

Picture expectedSample(const ReferenceView& v, const std::deque<params>& tiles) {
    Picture expected(v.width, v.height, CANARY);
    for (const params& tile : tiles) {
        for (int y = tile.yStart; y < tile.yEnd; ++y) {
            for (int x = tile.xStart; x < tile.xEnd; ++x) {
                test_support::referencePixel(v, cpuPalette, x, y, expected.pixel(x, y));
            }
        }
    }
    return expected;
}

class CataloguePicture : public testing::TestWithParam<std::tuple<std::size_t, bool>> {};

std::string caseName(const testing::TestParamInfo<std::tuple<std::size_t, bool>>& info) {
    const auto [row, doublePrecision] = info.param;
    return test_support::catalogueRows()[row].label + (doublePrecision ? "Double" : "Single");
}

TEST_P(CataloguePicture, IsThatOfPlainArithmeticByteForByte) {
    const auto [index, doublePrecision] = GetParam();
    const CatalogueRow& row = test_support::catalogueRows()[index];
    const test_support::ViewGuard view;
    const test_support::ImageGuard image(2048, 2048, CANARY);
    InitColours(row.paletteType);
    copyToView(entry(row));
    bDoublePrecision = doublePrecision;
    const test_support::Pool pool(2);
    const auto tiles = renderSample(sampleStride(row) * SLOWDOWN);
    const Picture expected = expectedSample(referenceView(row, doublePrecision), tiles);
    EXPECT_TRUE(samePicture(image.picture(), expected,
                            "picture." + row.label + (doublePrecision ? ".double" : ".single")));
}

INSTANTIATE_TEST_SUITE_P(Catalogue, CataloguePicture,
                         testing::Combine(testing::Range(std::size_t{0}, std::size_t{18}),
                                          testing::Bool()),
                         caseName);

}  // namespace

// What stands in the files: the window's own pixels, and those of plain arithmetic.
#include <gtest/gtest.h>

#include <tuple>

#include "compute/tile_renderer.h"
#include "tests/render/render_support.h"
#include "tests/support/backend_globals.h"
#include "tests/support/catalogue_table.h"
#include "tests/support/files.h"
#include "tests/support/reference_fractal.h"
#include "tests/support/stdout_capture.h"

namespace {

using render::Precision;
using test_support::CatalogueRow;
using test_support::Picture;
using test_support::ReferenceView;

class StillPicture : public testing::TestWithParam<std::tuple<std::size_t, bool>> {
  protected:
    const CatalogueRow& row = test_support::catalogueRows()[std::get<0>(GetParam())];
    const bool doubles = std::get<1>(GetParam());
    const Precision precision = doubles ? Precision::doubles : Precision::singles;
    const std::string name = "still." + row.label + (doubles ? ".double" : ".single");
};

// The picture as the window's queue and workers make it.
Picture windowPicture(const CatalogueRow& row, bool doublePrecision, int width, int height) {
    const test_support::ViewGuard guard;
    const test_support::ImageGuard image(width, height);
    const test_support::StdoutCapture silence;
    InitColours(row.paletteType);
    copyToView(test_support::jobOf(row, {}, Precision::doubles).view);
    bDoublePrecision = doublePrecision;
    const test_support::Pool pool(2);
    queueFrame();
    waitForFrame();
    return image.picture();
}

TEST_P(StillPicture, IsTheWindowsBuffer) {
    const auto job = test_support::jobOf(row, {2048, 2048}, precision);
    const test_support::TemporaryFolder folder;
    test_support::writePicture(job, folder / "still.png", 2);
    EXPECT_TRUE(samePicture(test_support::readPng(folder / "still.png"),
                            windowPicture(row, doubles, 2048, 2048), name));
}

// The same view in a size that no tile, vector or band divides.
TEST_P(StillPicture, IsThatOfPlainArithmetic) {
    const auto job = test_support::jobOf(row, {97, 53}, precision);
    Picture expected(97, 53, 0);
    const ReferenceView view{.type = row.type,
                             .doublePrecision = doubles,
                             .width = 97,
                             .height = 53,
                             .xMin = row.xMin,
                             .xMax = row.xMax,
                             .yMin = row.yMin,
                             .yMax = row.yMax,
                             .cx = row.cx,
                             .cy = row.cy,
                             .maxSize = row.maxSize,
                             .maxIters = row.maxIters};
    for (int y = 0; y < 53; ++y) {
        for (int x = 0; x < 97; ++x) {
            test_support::referencePixel(view, job.palette->table.data(), x, y,
                                         expected.pixel(x, y));
        }
    }
    EXPECT_TRUE(samePicture(test_support::renderedRows(job), expected, name + ".odd"));
}

std::string caseName(const testing::TestParamInfo<std::tuple<std::size_t, bool>>& info) {
    const auto [row, doublePrecision] = info.param;
    return test_support::catalogueRows()[row].label + (doublePrecision ? "Double" : "Single");
}

INSTANTIATE_TEST_SUITE_P(Catalogue, StillPicture,
                         testing::Combine(testing::Range(std::size_t{0}, std::size_t{18}),
                                          testing::Bool()),
                         caseName);

// The picture by one call of the tile renderer or, much slower, of the scalar one.
enum class By { tiles, scalar };

Picture inOnePiece(const render::Job& job, By by) {
    const auto [width, height] = job.size;
    const fractal& v = job.view;
    auto palette = job.palette->table;
    Picture whole(width, height, 0);
    const auto compute = by == By::tiles ? threadCPU<double> : threadScalar<double>;
    compute(0, 0, width, height, width, height, v.xMin, v.xMax, v.yMin, v.yMax, v.cx, v.cy,
            static_cast<int>(v.maxSize), v.maxIters, whole.bytes.data(), palette.data(),
            v.fractalType);
    return whole;
}

Picture throughAFile(const render::Job& job) {
    const test_support::TemporaryFolder folder;
    test_support::writePicture(job, folder / "still.png", 3);
    return test_support::readPng(folder / "still.png");
}

TEST(APoster, IsThePictureInOnePiece) {
    const auto& rows = test_support::catalogueRows();
    for (const std::size_t row : {std::size_t{0}, rows.size() - 1}) {
        const auto job = test_support::jobOf(rows[row], {4099, 3011}, Precision::doubles);
        EXPECT_TRUE(samePicture(throughAFile(job), inOnePiece(job, By::tiles), "still.poster"));
    }
}

TEST(OddSizes, AreThePictureInOnePiece) {
    for (const render::Size size : {render::Size{1, 1},
                                    {1, 65535},
                                    {65535, 1},
                                    {2, 3},
                                    {15, 17},
                                    {17, 4099},
                                    {8191, 7},
                                    {127, 131},
                                    {64, 64}}) {
        const auto job =
            test_support::jobOf(test_support::catalogueRows()[0], size, Precision::doubles);
        EXPECT_TRUE(samePicture(throughAFile(job), inOnePiece(job, By::scalar), "still.size"))
            << size.width << "x" << size.height;
    }
}

// The escape bound counts by its whole part, and a number beyond all integers saturates.
TEST(EscapeBound, IsTruncatedAsInTheWindow) {
    CatalogueRow row = test_support::catalogueRows()[0];
    for (const double bound : {4.9, -3.7, 1e300, 0.5}) {
        row.maxSize = bound;
        const auto job = test_support::jobOf(row, {256, 256}, Precision::doubles);
        EXPECT_TRUE(samePicture(test_support::renderedRows(job), windowPicture(row, true, 256, 256),
                                "still.bound"))
            << bound;
    }
}

TEST(UnknownFormula, IsBlackAsInTheWindow) {
    auto job = test_support::jobOf(test_support::catalogueRows()[0], {16, 16}, Precision::doubles);
    job.view.fractalType = 14;
    Picture black(16, 16, 0);
    for (int n = 0; n < 16 * 16; ++n) black.pixel(n % 16, n / 16)[3] = 255;
    EXPECT_TRUE(samePicture(test_support::renderedRows(job), black, "still.unknown"));
}

}  // namespace

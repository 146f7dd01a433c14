// Pictures of a real device against plain arithmetic.
//
// OpenCL lets a device fuse a product and a sum into one rounding, so a few orbits end a step
// earlier or later than in plain arithmetic. What the tests hold is the share of such pixels, rule
// by rule; with fusing switched off in the text nothing may differ but trigonometry.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "backends/opencl_backend.h"
#include "tests/backends/opencl/child.h"
#include "tests/backends/opencl/device_reference.h"
#include "tests/support/backend_globals.h"
#include "tests/support/catalogue_table.h"

namespace {

using device_reference::View;
using test_support::CatalogueRow;
using test_support::Picture;

constexpr int SIDE = 256;

// A device set up for one precision with an image of SIDE x SIDE pixels, and a palette in which
// every entry is another colour.
class Device {
  public:
    explicit Device(bool doublePrecision, const std::string& prefix = "") : image(SIDE, SIDE) {
        get_list_of_devices(devices, device_names, fp64_support, types, false);
        nCudaDevice = 0;
        bDoublePrecision = doublePrecision;
        for (int n = 0; n < PALETTE_ENTRIES; ++n) {
            badAssColourPalette[static_cast<std::size_t>(4 * n)] = static_cast<unsigned char>(n);
            badAssColourPalette[static_cast<std::size_t>(4 * n + 1)] =
                static_cast<unsigned char>(n >> 8);
            badAssColourPalette[static_cast<std::size_t>(4 * n + 2)] = 200;
            badAssColourPalette[static_cast<std::size_t>(4 * n + 3)] = 99;  // never read
        }
        setupOpenCL(prefix + load_kernel());
    }
    ~Device() {
        release_opencl_resource(bDoublePrecision);
        devices.clear();
        device_names.clear();
        fp64_support.clear();
        types.clear();
        nCudaDevice = -1;
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    Picture draw(const View& view) {
        xMin = view.xMin, xMax = view.xMax, yMin = view.yMin, yMax = view.yMax;
        cx = view.cx, cy = view.cy;
        maxSize = view.maxSize;
        maxIters = view.maxIters;
        currentFractalType = view.type;
        renderFrameOpenCL();
        return image.picture();
    }

    Picture expected(const View& view) const {
        return device_reference::picture(view, bDoublePrecision, badAssColourPalette.get());
    }

    long differing(const View& view) {
        return device_reference::differingPixels(draw(view), expected(view));
    }

  private:
    test_support::ViewGuard guard;
    test_support::ImageGuard image;
};

View viewOf(const CatalogueRow& row) {
    return {row.type, SIDE,   SIDE,   row.xMin,    row.xMax,    row.yMin,
            row.yMax, row.cx, row.cy, row.maxSize, row.maxIters};
}

View viewOf(int type) {
    for (const CatalogueRow& row : test_support::catalogueRows()) {
        if (row.type == type) return viewOf(row);
    }
    return {};
}

// Thousandths of the pixels of a catalogue view that differ, in order of catalogueRows(), as
// measured on pocl 3.1 with fused products. Another processor may fuse elsewhere: half as many
// again are let pass.
struct Share {
    double single, doubles;
};

constexpr Share shares[] = {
    {0.977, 0},       // Mandelbrot
    {0.946, 0},       // JuliaSanMarco
    {0.0305, 0},      // JuliaRabbit
    {5.07, 0},        // JuliaSiegelDisk
    {0, 0},           // JuliaDendrite
    {31.3, 0.549},    // JuliaDefault
    {2.75, 0.122},    // Sine
    {2.59, 0.0305},   // Cosine
    {2.5, 0},         // HyperbolicSine
    {3.3, 0.061},     // HyperbolicCosine
    {13.2, 0.0305},   // Barnsley1
    {0.565, 0.0305},  // Barnsley2
    {0, 0},           // Barnsley3
    {0.87, 0},        // BarnsleySierpinski
    {60.2, 6.33},     // Dragon
    {0, 0},           // Chebyshev
    {0, 0},           // Hermite
    {0, 0},           // Legendre
};

constexpr double allowed(double measured) {
    return 1.5 * measured + 0.1;
}

class CatalogueView : public testing::TestWithParam<std::size_t> {
  protected:
    const CatalogueRow& row() const { return test_support::catalogueRows()[GetParam()]; }
    static double thousandths(long pixels) {
        return 1000.0 * static_cast<double>(pixels) / (SIDE * SIDE);
    }
};

TEST_P(CatalogueView, DiffersInSinglePrecisionByNoMoreThanItsShare) {
    Device device(false);
    const double share = thousandths(device.differing(viewOf(row())));
    RecordProperty("thousandths", std::to_string(share));
    EXPECT_LE(share, allowed(shares[GetParam()].single));
}

TEST_P(CatalogueView, DiffersInDoublePrecisionByNoMoreThanItsShare) {
    Device device(true);
    const double share = thousandths(device.differing(viewOf(row())));
    RecordProperty("thousandths", std::to_string(share));
    EXPECT_LE(share, allowed(shares[GetParam()].doubles));
}

INSTANTIATE_TEST_SUITE_P(Each, CatalogueView,
                         testing::Range(std::size_t{0}, test_support::catalogueRows().size()),
                         [](const auto& test) {
                             return test_support::catalogueRows()[test.param].label;
                         });

// Rules whose steps are products and sums: exact once nothing is fused.
class ExactRule : public testing::TestWithParam<int> {
  protected:
    static constexpr char unfused[] = "#pragma OPENCL FP_CONTRACT OFF\n";
};

TEST_P(ExactRule, IsTheSameToTheByteInSinglePrecisionWithoutFusing) {
    Device device(false, unfused);
    const View view = viewOf(GetParam());
    EXPECT_TRUE(samePicture(device.draw(view), device.expected(view), "unfused_single"));
}

TEST_P(ExactRule, IsTheSameToTheByteInDoublePrecisionWithoutFusing) {
    Device device(true, unfused);
    const View view = viewOf(GetParam());
    EXPECT_TRUE(samePicture(device.draw(view), device.expected(view), "unfused_double"));
}

INSTANTIATE_TEST_SUITE_P(Each, ExactRule, testing::Values(0, 1, 6, 7, 8, 9, 10, 11, 12, 13));

class BothPrecisions : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Each, BothPrecisions, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "Double" : "Single");
});

long pixelsLike(const Picture& picture, const unsigned char (&colour)[4]) {
    long count = 0;
    for (std::size_t at = 0; at < picture.bytes.size(); at += 4) {
        count += std::memcmp(&picture.bytes[at], colour, 4) == 0;
    }
    return count;
}

constexpr unsigned char black[4] = {0, 0, 0, 255};
constexpr long all = static_cast<long>(SIDE) * SIDE;

TEST_P(BothPrecisions, AFractionalEscapeLimitIsNotTruncated) {
    // With |z|^2 growing slowly through 4 .. 4.9 the limit decides the count of many pixels.
    Device device(GetParam());
    View view = viewOf(0);
    view.maxSize = 4.9;
    const Picture fractional = device.draw(view);
    view.maxSize = 4.0;
    const Picture whole = device.draw(view);
    EXPECT_GT(device_reference::differingPixels(fractional, whole), all / 100);
}

TEST_P(BothPrecisions, AFractionalEscapeLimitIsTheOneOfPlainArithmetic) {
    Device device(GetParam());
    View view = viewOf(0);
    view.maxSize = 4.9;
    EXPECT_LE(device.differing(view), all / 200);
}

TEST_P(BothPrecisions, HermiteAddsThePixelsPoint) {
    // Without the point the first step of p = 0.5 gives 16/16 - 12 + 12 = 1, with it 1.5; a limit
    // between their squares tells them apart.
    Device device(GetParam());
    const View view{12, SIDE, SIDE, 0.5, 0.5, 0.0, 0.0, 0.0, 0.0, 2.0, 1};
    const unsigned char escapedAtOnce[4] = {0, 0, 200, 255};
    EXPECT_EQ(pixelsLike(device.draw(view), escapedAtOnce), all);
}

TEST_P(BothPrecisions, AnUnknownRuleIsBlack) {
    Device device(GetParam());
    View view = viewOf(0);
    view.type = 14;
    EXPECT_EQ(pixelsLike(device.draw(view), black), all);
}

TEST_P(BothPrecisions, NoIterationsAreBlack) {
    Device device(GetParam());
    View view = viewOf(0);
    view.maxIters = 0;
    EXPECT_EQ(pixelsLike(device.draw(view), black), all);
}

TEST_P(BothPrecisions, ANegativeIterationLimitIsBlackForJuliaToo) {
    Device device(GetParam());
    View view = viewOf(1);
    view.maxIters = -5;
    EXPECT_EQ(pixelsLike(device.draw(view), black), all);
}

TEST_P(BothPrecisions, ACountOneBelowTheLimitTakesItsColour) {
    // z = 1, 2, 5: the orbit of c = 1 leaves |z|^2 <= 4 with its third step.
    Device device(GetParam());
    const View view{0, SIDE, SIDE, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 4.0, 3};
    const unsigned char entryTwo[4] = {2, 0, 200, 255};
    EXPECT_EQ(pixelsLike(device.draw(view), entryTwo), all);
}

TEST_P(BothPrecisions, ACountAtTheLimitIsBlack) {
    Device device(GetParam());
    const View view{0, SIDE, SIDE, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 4.0, 2};
    EXPECT_EQ(pixelsLike(device.draw(view), black), all);
}

TEST_P(BothPrecisions, AnEscapeNeedsMoreThanTheLimit) {
    // c = 2: |z|^2 is 4 after the first step and 36 after the second.
    Device device(GetParam());
    const View view{0, SIDE, SIDE, 2.0, 2.0, 0.0, 0.0, 0.0, 0.0, 4.0, 5};
    const unsigned char entryOne[4] = {1, 0, 200, 255};
    EXPECT_EQ(pixelsLike(device.draw(view), entryOne), all);
}

TEST_P(BothPrecisions, CountsBeyondThePaletteStartAgain) {
    // Near c = 1/4 an orbit takes about pi / sqrt(distance) steps: more than 768 here.
    Device device(GetParam());
    const View view{0, SIDE, SIDE, 0.250009, 0.250009, 0.0, 0.0, 0.0, 0.0, 4.0, 4000};
    EXPECT_LE(device.differing(view), GetParam() ? 0 : all);
    EXPECT_EQ(pixelsLike(device.draw(view), black), 0);
}

TEST_P(BothPrecisions, RowZeroIsTheRowAtTheMinimum) {
    // A half plane: c with an imaginary part beyond 2 escapes with the first step.
    Device device(GetParam());
    const View view{0, SIDE, SIDE, 0.0, 0.0, 0.0, 16.0, 0.0, 0.0, 4.0, 1};
    const Picture picture = device.draw(view);
    EXPECT_EQ(std::memcmp(picture.pixel(0, 0), black, 4), 0);
    EXPECT_NE(std::memcmp(picture.pixel(0, SIDE - 1), black, 4), 0);
}

TEST_P(BothPrecisions, TheMaximumIsNeverReached) {
    // Column 255 of 256 over -4 .. 4 is 3.96875: |z|^2 is 15.75, never 16.
    Device device(GetParam());
    const View view{0, SIDE, SIDE, -4.0, 4.0, 0.0, 0.0, 0.0, 0.0, 15.9, 1};
    const Picture picture = device.draw(view);
    EXPECT_EQ(std::memcmp(picture.pixel(SIDE - 1, 0), black, 4), 0);
    EXPECT_NE(std::memcmp(picture.pixel(0, 0), black, 4), 0);
}

TEST_P(BothPrecisions, AViewThatIsNotANumberStillEnds) {
    Device device(GetParam());
    View view = viewOf(0);
    view.xMin = std::nan("");
    EXPECT_EQ(pixelsLike(device.draw(view), black), all);
}

}  // namespace

// Pictures of a real device against the CPU's, and against plain arithmetic where the two are meant
// to differ.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "backends/opencl_backend.h"
#include "tests/backends/opencl/child.h"
#include "tests/backends/opencl/cpu_picture.h"
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
    explicit Device(bool doublePrecision) : image(SIDE, SIDE) {
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
        setupOpenCL(load_kernel());
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

    Picture drawnByTheCpu(const View& view) const {
        return cpu_picture::picture(view, bDoublePrecision, badAssColourPalette.get());
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

std::string rowName(const testing::TestParamInfo<std::size_t>& test) {
    return test_support::catalogueRows()[test.param].label;
}

std::vector<std::size_t> rowsWhere(bool (*wanted)(int)) {
    std::vector<std::size_t> found;
    const auto& rows = test_support::catalogueRows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (wanted(rows[i].type)) found.push_back(i);
    }
    return found;
}

// ---- rules that are made of sums and products

class ExactView : public testing::TestWithParam<std::size_t> {
  protected:
    View view() const { return viewOf(test_support::catalogueRows()[GetParam()]); }

    // A piece of the plane near the start view, of any size, under any limits.
    View randomView(std::mt19937& random) const {
        const auto number = [&random](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(random);
        };
        View v = view();
        const double x = number(v.xMin, v.xMax), y = number(v.yMin, v.yMax);
        const double width = std::exp(number(-12.0, 1.0));
        v.xMin = x - width, v.xMax = x + width;
        v.yMin = y - number(0.3, 3.0) * width, v.yMax = y + number(0.3, 3.0) * width;
        v.maxSize = std::floor(number(1.0, 40.0));
        v.maxIters = static_cast<int>(number(1.0, 1000.0));
        return v;
    }
};

TEST_P(ExactView, IsTheCpusToTheByteInSinglePrecision) {
    Device device(false);
    EXPECT_TRUE(samePicture(device.draw(view()), device.drawnByTheCpu(view()), "exact_single"));
}

TEST_P(ExactView, IsTheCpusToTheByteInDoublePrecision) {
    Device device(true);
    EXPECT_TRUE(samePicture(device.draw(view()), device.drawnByTheCpu(view()), "exact_double"));
}

TEST_P(ExactView, AndThoseAroundItAreToo) {
    for (const bool doublePrecision : {false, true}) {
        Device device(doublePrecision);
        std::mt19937 random(1);
        for (int i = 0; i < 25; ++i) {
            const View v = randomView(random);
            ASSERT_TRUE(samePicture(device.draw(v), device.drawnByTheCpu(v), "random_view"))
                << "view " << i << (doublePrecision ? " in double" : " in single");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Each, ExactView, testing::ValuesIn(rowsWhere(cpu_picture::isExact)),
                         rowName);

TEST(Hermite, IsPlainArithmeticWithThePointInBothPrecisions) {
    for (const bool doublePrecision : {false, true}) {
        Device device(doublePrecision);
        const View view = viewOf(12);
        EXPECT_TRUE(samePicture(device.draw(view), device.expected(view), "hermite"));
    }
}

TEST(EveryDevice, OfThisMachineDrawsTheCpusBytes) {
    const child::Environment machine = {{"OCL_ICD_VENDORS", "/etc/OpenCL/vendors"}};
    const auto found = child::lines(child::run("list", machine).out).size();
    ASSERT_GE(found, 1u);
    for (std::size_t number = 0; number < found; ++number) {
        const auto run = child::run("device " + std::to_string(number) + " exact", machine);
        const auto different = child::linesThatStart(run.out, "different ");
        EXPECT_THAT(different, testing::IsEmpty()) << "device " << number;
        EXPECT_GE(child::linesThatStart(run.out, "same ").size(), 13u) << run.out << run.err;
    }
}

// ---- trigonometry, which a device has functions of its own for

// Thousandths of the pixels of a start view that differ from the CPU's, as measured on pocl 3.1. In
// single precision the CPU takes its functions in double and a device in float.
struct Share {
    const char* label;
    double single, doubles;
};

constexpr Share shares[] = {
    {"Sine", 2.81, 0.122},
    {"Cosine", 2.5, 0.0305},
    {"HyperbolicSine", 2.69, 0},
    {"HyperbolicCosine", 3.08, 0.061},
};

// Another processor, or another version of the device's library, may round elsewhere.
constexpr double allowed(double measured) {
    return 1.5 * measured + 0.1;
}

class TrigonometricView : public testing::TestWithParam<Share> {
  protected:
    // Thousandths of the pixels that differ.
    double share(bool doublePrecision) const {
        Device device(doublePrecision);
        for (const CatalogueRow& row : test_support::catalogueRows()) {
            if (row.label != GetParam().label) continue;
            const View v = viewOf(row);
            const long pixels =
                device_reference::differingPixels(device.draw(v), device.drawnByTheCpu(v));
            const double found = 1000.0 * static_cast<double>(pixels) / (SIDE * SIDE);
            RecordProperty("thousandths", std::to_string(found));
            return found;
        }
        return 1000;
    }
};

TEST_P(TrigonometricView, DiffersInSinglePrecisionByNoMoreThanItsShare) {
    EXPECT_LE(share(false), allowed(GetParam().single));
}

TEST_P(TrigonometricView, DiffersInDoublePrecisionByNoMoreThanItsShare) {
    EXPECT_LE(share(true), allowed(GetParam().doubles));
}

INSTANTIATE_TEST_SUITE_P(Each, TrigonometricView, testing::ValuesIn(shares),
                         [](const auto& test) { return std::string(test.param.label); });

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
    EXPECT_EQ(device.differing(view), 0);
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
    EXPECT_EQ(device.differing(view), 0);
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

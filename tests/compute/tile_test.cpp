#include "compute/tile_renderer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/compute/count_palette.h"
#include "tests/support/picture.h"
#include "tests/support/reference_fractal.h"

namespace {

using test_support::Picture;
using test_support::ReferenceView;
using test_support::samePicture;

constexpr int INT_LOWEST = std::numeric_limits<int>::min();
constexpr int INT_MOST = std::numeric_limits<int>::max();
constexpr unsigned char CANARY = 0xA5;

struct Tile {
    int xStart, yStart, xEnd, yEnd;
};

// A small view in which every formula shows escaping and staying points.
ReferenceView smallView(int type, int width = 20, int height = 12) {
    return {.type = type,
            .width = width,
            .height = height,
            .xMin = -2,
            .xMax = 2,
            .yMin = -1.5,
            .yMax = 1.5,
            .cx = -0.5,
            .cy = 0.25,
            .maxSize = 4,
            .maxIters = 60};
}

// A picture with a page of canary bytes before and after it.
class GuardedPicture {
  public:
    GuardedPicture(int w, int h)
        : width(w), height(h), bytes(2 * PAGE + Picture(w, h, 0).bytes.size(), CANARY) {}

    unsigned char* pixels() { return bytes.data() + PAGE; }

    Picture picture() const {
        Picture p(width, height, 0);
        std::copy_n(bytes.data() + PAGE, p.bytes.size(), p.bytes.data());
        return p;
    }

    bool canariesLive() const {
        const auto alive = [](unsigned char b) { return b == CANARY; };
        return std::all_of(bytes.begin(), bytes.begin() + PAGE, alive) &&
               std::all_of(bytes.end() - PAGE, bytes.end(), alive);
    }

  private:
    static constexpr std::ptrdiff_t PAGE = 65536;
    int width, height;
    std::vector<unsigned char> bytes;
};

// The type of all arithmetic, and one of the two functions that render a tile in it.
template <class T, auto FUNCTION>
struct Way {
    using Number = T;
    static constexpr auto RENDER = FUNCTION;
};

template <class W>
void render(const ReferenceView& v, const Tile& t, unsigned char* pixels, PaletteBytes palette) {
    using T = typename W::Number;
    W::RENDER(t.xStart, t.yStart, t.xEnd, t.yEnd, v.width, v.height, static_cast<T>(v.xMin),
              static_cast<T>(v.xMax), static_cast<T>(v.yMin), static_cast<T>(v.yMax),
              static_cast<T>(v.cx), static_cast<T>(v.cy), static_cast<int>(v.maxSize), v.maxIters,
              pixels, palette.data(), v.type);
}

// The picture that rendering this tile of the view must leave: canary wherever the tile is not.
Picture expectedTile(const ReferenceView& v, const Tile& t) {
    const PaletteBytes palette = countPalette();
    Picture expected(v.width, v.height, CANARY);
    for (int y = std::max(t.yStart, 0); y < std::min(t.yEnd, v.height); ++y) {
        for (int x = std::max(t.xStart, 0); x < std::min(t.xEnd, v.width); ++x) {
            test_support::referencePixel(v, palette.data(), x, y, expected.pixel(x, y));
        }
    }
    return expected;
}

template <class W>
class TileTest : public testing::Test {
  protected:
    static ReferenceView view(int type) {
        ReferenceView v = smallView(type);
        v.doublePrecision = std::is_same_v<typename W::Number, double>;
        return v;
    }

    // Renders the tile and checks every byte of the picture and around it.
    static void expectTile(const ReferenceView& v, const Tile& t) {
        GuardedPicture guarded(v.width, v.height);
        render<W>(v, t, guarded.pixels(), countPalette());
        EXPECT_TRUE(guarded.canariesLive());
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        EXPECT_TRUE(samePicture(guarded.picture(), expectedTile(v, t), "tile." + name));
    }

    // The count that pixel (0, 0) shows, or -1 for black.
    static int cornerCount(const ReferenceView& v) {
        GuardedPicture guarded(v.width, v.height);
        render<W>(v, {0, 0, 1, 1}, guarded.pixels(), countPalette());
        return countOf(guarded.pixels());
    }
};

using Ways = testing::Types<Way<float, &threadCPU<float>>, Way<double, &threadCPU<double>>,
                            Way<float, &threadScalar<float>>, Way<double, &threadScalar<double>>>;
TYPED_TEST_SUITE(TileTest, Ways);

TYPED_TEST(TileTest, EveryFormulaPaintsItsTileAndNothingElse) {
    for (int type = 0; type <= 13; ++type) this->expectTile(this->view(type), {3, 2, 11, 9});
}

TYPED_TEST(TileTest, TilesOfEverySmallWidthAndHeightAreWhole) {
    for (int type = 0; type <= 13; ++type) {
        for (int size = 1; size <= 19; ++size) {
            this->expectTile(this->view(type), {1, 0, 1 + size, std::min(size, 12)});
        }
    }
}

TYPED_TEST(TileTest, AnEmptyTileChangesNothing) {
    this->expectTile(this->view(0), {5, 2, 5, 9});
    this->expectTile(this->view(0), {7, 2, 5, 9});
    this->expectTile(this->view(0), {5, 4, 9, 4});
    this->expectTile(this->view(0), {5, 6, 9, 4});
}

TYPED_TEST(TileTest, BoundsPastThePictureAreClipped) {
    this->expectTile(this->view(0), {16, 8, 24, 16});
    this->expectTile(this->view(0), {-4, -4, 4, 4});
    this->expectTile(this->view(0), {-100, -100, 1000, 1000});
}

TYPED_TEST(TileTest, BoundsWhollyOutsideThePictureWriteNothing) {
    this->expectTile(this->view(0), {20, 0, 28, 8});
    this->expectTile(this->view(0), {0, 12, 8, 20});
    this->expectTile(this->view(0), {-16, -16, -8, -8});
    this->expectTile(this->view(0), {0, -16, 8, 0});
}

TYPED_TEST(TileTest, APictureWithoutPixelsIsLeftAlone) {
    for (const auto& [width, height] : {std::pair(0, 0), {0, 12}, {20, 0}, {-1, 12}, {20, -1}}) {
        ReferenceView v = this->view(0);
        v.width = width, v.height = height;
        unsigned char pixel[4] = {CANARY, CANARY, CANARY, CANARY};
        render<TypeParam>(v, {0, 0, 8, 8}, pixel, countPalette());
        EXPECT_THAT(pixel, testing::Each(CANARY)) << width << " x " << height;
    }
}

TYPED_TEST(TileTest, ExtremeBoundsAreClipped) {
    this->expectTile(this->view(0), {INT_LOWEST, INT_LOWEST, INT_MOST, INT_MOST});
    this->expectTile(this->view(0), {INT_MOST, INT_MOST, INT_LOWEST, INT_LOWEST});
}

TYPED_TEST(TileTest, FormulasOutsideTheTablePaintOpaqueBlack) {
    for (const int type : {-1, 14, 15, INT_LOWEST, INT_MOST}) {
        this->expectTile(this->view(type), {0, 0, 20, 12});
    }
}

TYPED_TEST(TileTest, MandelbrotCountsItsSteps) {
    ReferenceView v = this->view(0);
    v.xMin = 1, v.xMax = 2, v.yMin = 0, v.yMax = 1;
    EXPECT_EQ(this->cornerCount(v), 2);  // 1, 2, 5
    v.maxSize = 3;
    EXPECT_EQ(this->cornerCount(v), 1);  // 2 squared is above 3
}

TYPED_TEST(TileTest, MandelbrotAtTheOriginStays) {
    ReferenceView v = this->view(0);
    v.xMin = 0, v.xMax = 1, v.yMin = 0, v.yMax = 1, v.maxSize = 0;
    EXPECT_EQ(this->cornerCount(v), -1);
}

TYPED_TEST(TileTest, NoIterationsPaintBlack) {
    for (const int limit : {0, -1, INT_LOWEST}) {
        for (int type = 0; type <= 13; ++type) {
            ReferenceView v = this->view(type);
            v.maxIters = limit;
            this->expectTile(v, {0, 0, 20, 12});
        }
    }
}

TYPED_TEST(TileTest, ANegativeEscapeLimitLetsEveryOrbitEscapeAtOnce) {
    for (int type = 0; type <= 13; ++type) {
        ReferenceView v = this->view(type);
        v.maxSize = -1;
        EXPECT_EQ(this->cornerCount(v), 0) << type;
        this->expectTile(v, {0, 0, 20, 12});
    }
}

TYPED_TEST(TileTest, TheLargestEscapeLimitIsUsedAsItIs) {
    for (int type = 0; type <= 13; ++type) {
        ReferenceView v = this->view(type);
        v.maxSize = INT_MOST;
        this->expectTile(v, {0, 0, 20, 12});
    }
}

TYPED_TEST(TileTest, AJuliaOrbitThatStaysIsBlackThoughItsCountIsPastTheLimit) {
    ReferenceView v = this->view(1);
    v.xMin = 0, v.xMax = 1, v.yMin = 0, v.yMax = 1, v.cx = v.cy = 0;
    EXPECT_EQ(this->cornerCount(v), -1);
}

TYPED_TEST(TileTest, AJuliaOrbitThatEscapesAtTheLargestLimitIsColoured) {
    ReferenceView v = this->view(1);
    v.xMin = 1.5, v.xMax = 2, v.yMin = 1.5, v.yMax = 2, v.maxIters = INT_MOST;
    this->expectTile(v, {0, 0, 20, 12});
}

TYPED_TEST(TileTest, CountsTakeTheirPaletteEntryModulo768) {
    // Just right of the cusp an orbit takes about pi / sqrt(0.00001) = 993 steps to leave.
    ReferenceView v = this->view(0);
    v.xMin = 0.25 + 0.00001, v.xMax = 0.2501, v.yMin = 0, v.yMax = 1, v.maxIters = 5000;
    const auto n = test_support::referenceCount(v, 0, 0);
    ASSERT_GT(n, 768);
    ASSERT_LT(n, 1536);
    EXPECT_EQ(this->cornerCount(v), n - 768);
}

TYPED_TEST(TileTest, ACountOneBelowTheLimitIsColouredAndTheLimitItselfIsBlack) {
    ReferenceView v = this->view(0);
    v.xMin = 1, v.xMax = 2, v.yMin = 0, v.yMax = 1;  // count 2
    v.maxIters = 3;
    EXPECT_EQ(this->cornerCount(v), 2);
    v.maxIters = 2;
    EXPECT_EQ(this->cornerCount(v), -1);
}

TYPED_TEST(TileTest, AlphaIs255WhateverThePalettesFourthByte) {
    GuardedPicture guarded(20, 12);
    render<TypeParam>(this->view(0), {0, 0, 20, 12}, guarded.pixels(), countPalette());
    const Picture picture = guarded.picture();
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 20; ++x) ASSERT_EQ(picture.pixel(x, y)[3], 255) << x << ' ' << y;
    }
}

TYPED_TEST(TileTest, NanAndInfiniteViewsAgreeWithPlainArithmetic) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int type = 0; type <= 13; ++type) {
        for (const double odd : {inf, -inf, nan}) {
            ReferenceView v = this->view(type);
            v.xMax = odd;
            this->expectTile(v, {0, 0, 20, 12});
            v = this->view(type);
            v.yMin = odd;
            this->expectTile(v, {0, 0, 20, 12});
            v = this->view(type);
            v.cx = odd;
            this->expectTile(v, {0, 0, 20, 12});
        }
    }
}

TYPED_TEST(TileTest, EmptyAndInvertedViewsAgreeWithPlainArithmetic) {
    for (int type = 0; type <= 13; ++type) {
        ReferenceView v = this->view(type);
        v.xMax = v.xMin;
        this->expectTile(v, {0, 0, 20, 12});
        v = this->view(type);
        std::swap(v.xMin, v.xMax);
        std::swap(v.yMin, v.yMax);
        this->expectTile(v, {0, 0, 20, 12});
    }
}

// A tile of canaries after the scalar renderer was told to stop.
template <class T>
std::vector<unsigned char> stoppedTile(int type) {
    std::vector<unsigned char> pixels(4 * 8 * 8, CANARY);
    PaletteBytes palette = countPalette();
    const std::atomic<bool> stop{true};
    renderScalarUntilStopped<T>({0, 0, 8, 8, 8, 8, T(-2), T(2), T(-2), T(2), T(0), T(0), T(4), 10,
                                 pixels.data(), palette.data(), &stop},
                                type);
    return pixels;
}

TEST(AScalarTile, WritesNothingOnceItIsToStop) {
    for (const int type : {0, 1, 2, 99}) {
        EXPECT_THAT(stoppedTile<float>(type), testing::Each(CANARY)) << type;
        EXPECT_THAT(stoppedTile<double>(type), testing::Each(CANARY)) << type;
    }
}

TYPED_TEST(TileTest, APictureOfOnePixelIsRendered) {
    ReferenceView v = this->view(0);
    v.width = v.height = 1;
    this->expectTile(v, {0, 0, 8, 8});
}

}  // namespace

// The trigonometric renderers draw the yardstick's pictures where a single unit in the last place
// decides, and over wide views at limits around the lengths of their blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "compute/tile_renderer.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/count_palette.h"
#include "tests/compute/trig_claims.h"
#include "tests/compute/trig_pictures.h"

namespace {

using vector_test::Random;
using vector_test::View;

template <class T>
testing::AssertionResult drawsTheYardsticksPicture(const View& v) {
    auto palette = countPalette();
    const auto size = static_cast<std::size_t>(4 * v.width * v.height);
    std::vector<unsigned char> actual(size, 0xA5), expected(size, 0xA5);
    VectorTile<T> tile{0,
                       0,
                       v.width,
                       v.height,
                       v.width,
                       v.height,
                       static_cast<T>(v.xMin),
                       static_cast<T>(v.xMax),
                       static_cast<T>(v.yMin),
                       static_cast<T>(v.yMax),
                       static_cast<T>(v.cx),
                       static_cast<T>(v.cy),
                       static_cast<T>(v.maxSize),
                       v.maxIters,
                       expected.data(),
                       palette.data()};
    renderScalarUntilStopped(tile, v.type);
    tile.buffer = actual.data();
    trig_pictures::draw(tile, v.type);
    if (actual == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << v;
}

testing::AssertionResult drawsTheYardsticksPicture(View v) {
    v.maxSize = std::min(v.maxSize, 90000);
    return v.doublePrecision ? drawsTheYardsticksPicture<double>(v)
                             : drawsTheYardsticksPicture<float>(v);
}

int boundaryViews() {
    const char* asked = std::getenv("TESSARY_BOUNDARY_VIEWS");
    return asked != nullptr ? std::atoi(asked) : 150;
}

class TrigPictures : public testing::TestWithParam<std::size_t> {
  protected:
    TrigPictures() { trig_claims::forceTarget(trig_claims::targets()[GetParam()].bit); }
    ~TrigPictures() override { trig_claims::forceTarget(0); }
};

TEST_P(TrigPictures, AreTheYardsticksWhereOneUnitDecides) {
    Random random(7);
    const int count = boundaryViews();
    for (int i = 0; i < count; ++i) {
        for (int type = 2; type <= 5; ++type) {
            const bool doublePrecision = random.pick(0, 3) != 0;
            ASSERT_TRUE(
                drawsTheYardsticksPicture(vector_test::boundaryView(random, type, doublePrecision)))
                << "view " << i;
        }
    }
}

TEST_P(TrigPictures, AreTheYardsticksOverWideViews) {
    Random random(8);
    for (int type = 2; type <= 5; ++type) {
        for (const bool doublePrecision : {false, true}) {
            for (const int limit : {-1, 0, 1, 2, 23, 24, 25, 50, 300}) {
                View v;
                v.type = type;
                v.doublePrecision = doublePrecision;
                v.xMin = random.uniform(-4, -1);
                v.xMax = random.uniform(1, 4);
                v.yMin = random.uniform(-4, -1);
                v.yMax = random.uniform(1, 4);
                v.width = random.pick(1, 60);
                v.height = random.pick(1, 60);
                v.maxSize = random.among({4, 128, 90000});
                v.maxIters = limit;
                EXPECT_TRUE(drawsTheYardsticksPicture(v));
            }
        }
    }
}

// On the real axis one part of the state returns at every step, and says nothing of the orbit.
TEST_P(TrigPictures, AreTheYardsticksOfRealOrbitsThatEscapeLate) {
    View v;
    v.doublePrecision = true;
    v.yMin = v.yMax = 0;
    v.maxIters = 400;
    v.height = 3;
    v.type = 4;
    v.xMin = 0.001;
    v.xMax = 0.005;
    EXPECT_TRUE(drawsTheYardsticksPicture(v));
    v.type = 5;
    v.xMin = -0.5325;
    v.xMax = -0.530;
    EXPECT_TRUE(drawsTheYardsticksPicture(v));
}

// A tile of one chunk.
View square(int type, bool doublePrecision, double r, double i, double width) {
    View v;
    v.type = type;
    v.doublePrecision = doublePrecision;
    v.xMin = r, v.xMax = r + width;
    v.yMin = i, v.yMax = i + width;
    v.width = v.height = 8;
    v.maxSize = 128;
    v.maxIters = 256;
    return v;
}

// Orbits of the first view take 29 to 51 steps to escape, far more than float can tell. Most of the
// second escape with the first or second step: a chunk that kept what the one before it counted
// would show it.
TEST_P(TrigPictures, TheStageInFloatIsLeftOutOfAFewChunksBehindOneThatItDoesNotSettle) {
    for (const bool doublePrecision : {false, true}) {
        const View hard = square(5, doublePrecision, -0.567275, 3.780912, 1e-5);
        const View easy = square(5, doublePrecision, 1.5, 1.0, 1.0);
        for (int n = 0; n < 9; ++n) ASSERT_TRUE(drawsTheYardsticksPicture(easy));
        const int none = trig_pictures::chunksWithoutFloat();
        if (none < 0) return;
        ASSERT_EQ(none, 0);
        ASSERT_TRUE(drawsTheYardsticksPicture(hard));
        const int some = trig_pictures::chunksWithoutFloat();
        ASSERT_GT(some, 0);
        for (int n = some - 1; n >= 0; --n) {
            ASSERT_TRUE(drawsTheYardsticksPicture(easy));
            ASSERT_EQ(trig_pictures::chunksWithoutFloat(), n);
        }
        ASSERT_TRUE(drawsTheYardsticksPicture(easy));
        ASSERT_EQ(trig_pictures::chunksWithoutFloat(), 0);
    }
}

// Real orbits that neither escape nor rest magnify every error until only exact steps tell.
TEST_P(TrigPictures, PaintNothingOfAChunkThatIsGivenUp) {
    constexpr unsigned char CANARY = 0xA5;
    std::vector<unsigned char> pixels(4 * 8 * 8, CANARY);
    auto palette = countPalette();
    const std::size_t left = trig_pictures::giveUpHyperbolicCosine(
        {0, 0, 8, 8, 8, 8, -3.3, -3.2, 0, 0, 0, 0, 128, 3000, pixels.data(), palette.data()});
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), CANARY), 4 * 8 * 8);
    EXPECT_EQ(left > 0, trig_pictures::chunksWithoutFloat() >= 0);
}

INSTANTIATE_TEST_SUITE_P(Target, TrigPictures,
                         testing::Range(std::size_t{0}, trig_claims::targets().size()),
                         [](const testing::TestParamInfo<std::size_t>& target) {
                             return trig_claims::targets()[target.param].name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TrigPictures);

}  // namespace

// The vector renderer draws the scalar renderer's picture, byte for byte, on every instruction set.
#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <string>
#include <tuple>

#include "tests/compute/random_views.h"
#include "tests/compute/vector_support.h"
#include "tests/support/catalogue_table.h"

namespace {

using vector_test::allTargets;
using vector_test::allTargetsAgree;
using vector_test::scalarPicture;
using vector_test::vectorPicture;
using vector_test::View;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

View catalogueView(std::size_t index, bool doublePrecision) {
    const test_support::CatalogueRow& row = test_support::catalogueRows()[index];
    View view;
    view.type = row.type;
    view.doublePrecision = doublePrecision;
    view.xMin = row.xMin;
    view.xMax = row.xMax;
    view.yMin = row.yMin;
    view.yMax = row.yMax;
    view.cx = row.cx;
    view.cy = row.cy;
    view.maxSize = static_cast<int>(row.maxSize);
    view.maxIters = row.maxIters;
    return view;
}

std::string caseLabel(const testing::TestParamInfo<std::tuple<std::size_t, bool>>& info) {
    const auto [index, doublePrecision] = info.param;
    return test_support::catalogueRows()[index].label + (doublePrecision ? "Double" : "Single");
}

class EveryCatalogueView : public testing::TestWithParam<std::tuple<std::size_t, bool>> {
  protected:
    View view() const { return catalogueView(std::get<0>(GetParam()), std::get<1>(GetParam())); }
};

TEST_P(EveryCatalogueView, IsTheScalarPicture) {
    View v = view();
    v.width = v.height = 192;
    EXPECT_TRUE(allTargetsAgree(v, "catalogue"));
}

TEST_P(EveryCatalogueView, IsTheScalarPictureInTilesOfAnyShape) {
    View v = view();
    v.width = 61;
    v.height = 47;
    v.maxIters = 60;
    for (const auto& [tileWidth, tileHeight] : {std::pair{1, 1},
                                                {1, 40},
                                                {3, 5},
                                                {7, 9},
                                                {15, 2},
                                                {16, 16},
                                                {17, 31},
                                                {61, 47},
                                                {90, 90}}) {
        v.tileWidth = tileWidth;
        v.tileHeight = tileHeight;
        EXPECT_TRUE(allTargetsAgree(v, "shape"));
    }
}

TEST_P(EveryCatalogueView, IsTheScalarPictureAtEveryKindOfLimit) {
    View v = view();
    v.width = v.height = 24;
    for (const int limit : {INT_MIN, -1, 0, 1, 2, 3, 5, 11, 23, 72, 73, 97, 150, 1000}) {
        v.maxIters = limit;
        EXPECT_TRUE(allTargetsAgree(v, "limit"));
    }
}

TEST_P(EveryCatalogueView, IsTheScalarPictureAtEveryEscapeLimit) {
    View v = view();
    v.width = v.height = 24;
    v.maxIters = 100;
    for (const int size :
         {INT_MIN, -1, 0, 1, 2, 3, 4, 1899, 1900, 1901, 65536, 90000, 90001, 1000000, INT_MAX}) {
        v.maxSize = size;
        EXPECT_TRUE(allTargetsAgree(v, "escape"));
    }
}

TEST_P(EveryCatalogueView, IsTheSamePictureWithoutTheSearchForCycles) {
    View v = view();
    v.maxIters = 600;
    const auto expected = vectorPicture(v);
    vector_control::detectCycles(false);
    const auto actual = vectorPicture(v);
    vector_control::detectCycles(true);
    EXPECT_TRUE(samePicture(actual, expected, "detection"));
}

TEST_P(EveryCatalogueView, IsTheScalarPictureOverDegenerateRectangles) {
    View v = view();
    v.width = v.height = 24;
    v.maxIters = 400;
    const double edges[][4] = {{2, -2, 1.5, -1.5},  // inverted
                               {0.25, 0.25, 0, 0},  // a point
                               {0, 0, -1, 1},       // a line
                               {-1e30, 1e30, -1e30, 1e30},
                               {-1e308, 1e308, -1, 1},  // a width past the largest number
                               {-INFINITE, INFINITE, -1, 1},
                               {NOT_A_NUMBER, 1, -1, 1},
                               {-1, 1, -1, NOT_A_NUMBER},
                               {-1e-40, 1e-40, -1e-40, 1e-40},
                               {-1e-320, 1e-320, -1e-320, 1e-320},
                               {-0.0, 0.0, 0.0, -0.0}};
    for (const auto& e : edges) {
        std::tie(v.xMin, v.xMax, v.yMin, v.yMax) = std::tie(e[0], e[1], e[2], e[3]);
        EXPECT_TRUE(allTargetsAgree(v, "degenerate"));
    }
}

TEST_P(EveryCatalogueView, IsTheScalarPictureWithAnyConstant) {
    View v = view();
    v.width = v.height = 24;
    v.maxIters = 400;
    for (const double c : {-0.0, 1e-45, 1e20, -1e300, INFINITE, NOT_A_NUMBER}) {
        v.cx = c;
        EXPECT_TRUE(allTargetsAgree(v, "constant"));
        std::swap(v.cx, v.cy);
        EXPECT_TRUE(allTargetsAgree(v, "constant"));
    }
}

INSTANTIATE_TEST_SUITE_P(Vector, EveryCatalogueView,
                         testing::Combine(testing::Range(std::size_t{0}, std::size_t{18}),
                                          testing::Bool()),
                         caseLabel);

// Pixels far outside escape at once, so that the largest limit can be asked for.
TEST(LargestLimit, IsReachableByNoneAndCountsTheFirstSteps) {
    for (int type = 0; type < 14; ++type) {
        View v;
        v.type = type;
        v.xMin = 30.1;
        v.xMax = 31.3;
        v.yMin = 40.2;
        v.yMax = 41.7;
        v.cx = 9.1;
        v.cy = 8.3;
        v.maxIters = INT_MAX;
        v.width = v.height = 16;
        for (const bool doublePrecision : {false, true}) {
            v.doublePrecision = doublePrecision;
            EXPECT_TRUE(allTargetsAgree(v, "largest"));
        }
    }
}

// Whether every instruction set shows that no orbit of the view escapes, at a limit that would take
// hours to reach.
testing::AssertionResult staysAtTheLargestLimit(View v) {
    v.width = v.height = 16;
    v.maxIters = 100;
    const auto black = scalarPicture(v);
    v.maxIters = INT_MAX;
    for (const vector_control::Target& target : allTargets()) {
        if (target.name == "scalar") continue;
        const vector_test::ForcedTarget forced(target.bit);
        auto result = samePicture(vectorPicture(v), black, "stays." + target.name);
        if (!result) return result << " on " << target.name << ", " << v;
    }
    return testing::AssertionSuccess();
}

TEST(OrbitThatRepeats, EndsLongBeforeTheLargestLimit) {
    // Formulas and the middle of a square of constants with an attracting point.
    const std::tuple<int, double, double> middles[] = {
        {0, -0.1, 0.0}, {1, 0.0, 0.0}, {2, 0.5, 0.0}, {3, 0.0, 0.0}, {4, 0.0, 0.5}, {5, -1.0, 0.0}};
    for (const auto& [type, x, y] : middles) {
        View v;
        v.type = type;
        v.xMin = x - 0.01;
        v.xMax = x + 0.01;
        v.yMin = y - 0.01;
        v.yMax = y + 0.01;
        v.cx = 0.1;
        for (const bool doublePrecision : {false, true}) {
            v.doublePrecision = doublePrecision;
            EXPECT_TRUE(staysAtTheLargestLimit(v));
        }
    }
}

TEST(OrbitOfNoNumber, EndsLongBeforeTheLargestLimit) {
    for (int type = 0; type < 14; ++type) {
        View v;
        v.type = type;
        v.xMin = NOT_A_NUMBER;
        for (const bool doublePrecision : {false, true}) {
            v.doublePrecision = doublePrecision;
            EXPECT_TRUE(staysAtTheLargestLimit(v));
        }
    }
}

TEST(UnknownFormula, IsBlack) {
    for (const int type : {-1, 14, INT_MAX, INT_MIN}) {
        View v;
        v.type = type;
        EXPECT_TRUE(allTargetsAgree(v, "unknown"));
    }
}

class RandomViews {
  public:
    View next() {
        View v;
        vector_test::choosePlace(v, random);
        v.maxSize = random.pick(0, 5) == 0       ? random.pick(0, 400)
                    : v.type >= 2 && v.type <= 5 ? 128
                                                 : 4;
        vector_test::chooseSizes(v, random, 20);
        return v;
    }

  private:
    vector_test::RandomNumbers random{20260101};
};

TEST(RandomView, IsTheScalarPicture) {
    RandomViews views;
    const int count = vector_test::randomViews();
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(allTargetsAgree(views.next(), "random")) << "view " << i;
    }
}

}  // namespace

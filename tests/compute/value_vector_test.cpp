// Smooth values on vectors have the bits of the scalar renderer's, on every instruction set.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <tuple>

#include "compute/value_tile.h"
#include "tests/compute/random_views.h"
#include "tests/compute/value_support.h"
#include "tests/compute/vector_support.h"
#include "tests/support/catalogue_table.h"

namespace {

using value_test::allTargetsAgree;
using value_test::catalogueView;
using value_test::Numbers;
using value_test::View;
using value_test::Wanted;
using vector_test::allTargets;
using vector_test::ForcedTarget;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

class EveryCatalogueView : public testing::TestWithParam<std::tuple<std::size_t, bool>> {
  protected:
    View view() const { return catalogueView(std::get<0>(GetParam()), std::get<1>(GetParam())); }

    View smallView() const {
        View v = view();
        v.width = v.height = 24;
        v.maxIters = 100;
        return v;
    }
};

TEST_P(EveryCatalogueView, HasTheScalarValues) {
    View v = view();
    v.width = v.height = 128;
    EXPECT_TRUE(allTargetsAgree(v));
}

TEST_P(EveryCatalogueView, HasTheScalarNumbersWhereOneKindIsWantedAlone) {
    View v = view();
    v.width = v.height = 64;
    EXPECT_TRUE(allTargetsAgree(v, Wanted::COUNTS));
    EXPECT_TRUE(allTargetsAgree(v, Wanted::VALUES));
}

TEST_P(EveryCatalogueView, HasTheScalarValuesInTilesOfAnyShape) {
    View v = view();
    v.width = 61;
    v.height = 47;
    v.maxIters = 60;
    for (const auto& [tileWidth, tileHeight] :
         {std::pair{1, 1}, {1, 40}, {3, 5}, {7, 9}, {15, 2}, {17, 31}, {61, 47}, {90, 90}}) {
        v.tileWidth = tileWidth;
        v.tileHeight = tileHeight;
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

TEST_P(EveryCatalogueView, HasTheScalarValuesAtEveryKindOfIterationLimit) {
    View v = smallView();
    for (const int limit : {INT_MIN, -1, 0, 1, 2, 3, 5, 11, 23, 72, 73, 97, 150, 1000}) {
        v.maxIters = limit;
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

TEST_P(EveryCatalogueView, HasTheScalarValuesAtEveryKindOfEscapeLimit) {
    View v = smallView();
    for (const double limit : {-1.0, 0.0, 1e-300, 0.3, 1.0, 2.5, 4.0, 9e4, 90000.5, 1e30, 1e300,
                               INFINITE, -INFINITE, NOT_A_NUMBER}) {
        v.limit = limit;
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

TEST_P(EveryCatalogueView, HasTheScalarValuesOverDegenerateRectangles) {
    View v = smallView();
    const double edges[][4] = {{2, -2, 1.5, -1.5},
                               {0.25, 0.25, 0, 0},
                               {0, 0, -1, 1},
                               {-1e30, 1e30, -1e30, 1e30},
                               {-1e308, 1e308, -1, 1},
                               {-INFINITE, INFINITE, -1, 1},
                               {NOT_A_NUMBER, 1, -1, 1},
                               {-1e-40, 1e-40, -1e-40, 1e-40},
                               {-1e-320, 1e-320, -1e-320, 1e-320}};
    for (const auto& e : edges) {
        std::tie(v.xMin, v.xMax, v.yMin, v.yMax) = std::tie(e[0], e[1], e[2], e[3]);
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

TEST_P(EveryCatalogueView, HasTheScalarValuesWithAnyConstant) {
    View v = smallView();
    for (const double c : {-0.0, 1e-45, 1e20, -1e300, INFINITE, NOT_A_NUMBER}) {
        v.cx = c;
        EXPECT_TRUE(allTargetsAgree(v));
        std::swap(v.cx, v.cy);
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

std::string caseLabel(const testing::TestParamInfo<std::tuple<std::size_t, bool>>& test) {
    const auto [index, doublePrecision] = test.param;
    return test_support::catalogueRows()[index].label + (doublePrecision ? "Double" : "Single");
}

INSTANTIATE_TEST_SUITE_P(Values, EveryCatalogueView,
                         testing::Combine(testing::Range(std::size_t{0}, std::size_t{18}),
                                          testing::Bool()),
                         caseLabel);

TEST(UnknownFormula, HasNoValues) {
    for (const int type : {-1, 14, INT_MAX, INT_MIN}) {
        View v;
        v.type = type;
        EXPECT_TRUE(allTargetsAgree(v));
    }
}

// Fills what the next function called has for its own variables.
[[gnu::noinline]] void poisonTheStack() {
    volatile unsigned char room[1 << 18];
    for (volatile unsigned char& byte : room) byte = 0x5A;
}

// No step writes a count then, so that someone else must.
TEST(NoIterations, LeaveCountsOfZeroWhateverTheMemoryHeld) {
    for (const int limit : {INT_MIN, -1, 0}) {
        for (int type = 0; type < 28; ++type) {
            View v;
            v.type = type % 14;
            v.doublePrecision = type >= 14;
            v.maxIters = limit;
            v.width = v.height = 16;
            const Numbers expected = value_test::scalarNumbers(v);
            for (const vector_control::Target& target : allTargets()) {
                const ForcedTarget forced(target.bit);
                poisonTheStack();
                const Numbers actual = value_test::vectorNumbers(v);
                EXPECT_TRUE(value_test::sameNumbers(actual, expected, v.width))
                    << target.name << ", " << v;
            }
        }
    }
}

class RandomViews {
  public:
    View next() {
        View v;
        vector_test::choosePlace(v, random);
        v.limit = std::pow(10.0, random.uniform(-1, v.type >= 2 && v.type <= 5 ? 4 : 6));
        vector_test::chooseSizes(v, random, 40);
        return v;
    }

  private:
    vector_test::RandomNumbers random{20260202};
};

TEST(RandomView, HasTheScalarValues) {
    const int count = vector_test::randomViews();
    RandomViews views;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(allTargetsAgree(views.next())) << "view " << i;
    }
}

// A rule, and a piece of the real axis whose orbits neither escape nor come to rest. Those of the
// hyperbolic cosine drift apart everywhere here: they leave every bound of their place soon, all of
// them, so that a later stage has them in work.
struct Endless {
    const char* name;
    int type;
    double xMin, xMax;
};

constexpr Endless ENDLESS[] = {
    {"mandelbrot", 0, -1.99, -1.9}, {"sine", 2, -0.5, 0.5}, {"hyperbolic cosine", 5, -3.3, -3.299}};

// A tile of such orbits: only the flag ends it.
class EndlessTile : public testing::TestWithParam<bool> {
  protected:
    EndlessTile() { alarm(120); }  // one that hangs ends the process
    ~EndlessTile() override { alarm(0); }

    template <class Meanwhile>
    void onEveryTarget(Meanwhile&& meanwhile) {
        vector_control::detectCycles(false);
        for (const vector_control::Target& target : allTargets()) {
            for (const Endless& orbits : ENDLESS) {
                SCOPED_TRACE(target.name + " " + orbits.name);
                const ForcedTarget forced(target.bit);
                counts.assign(SIDE * SIDE, Numbers::CANARY);
                values.assign(SIDE * SIDE, Numbers::CANARY);
                meanwhile([&] { GetParam() ? render<double>(orbits) : render<float>(orbits); });
                EXPECT_EQ(std::count(counts.begin(), counts.end(), Numbers::CANARY), SIDE * SIDE);
                EXPECT_EQ(std::count(values.begin(), values.end(), Numbers::CANARY), SIDE * SIDE);
            }
        }
        vector_control::detectCycles(true);
    }

    template <class T>
    void render(const Endless& orbits) {
        const T xMin = static_cast<T>(orbits.xMin), xMax = static_cast<T>(orbits.xMax);
        renderValues(
            ValueTile<T>{0,    0,    SIDE, SIDE, SIDE,   SIDE,    xMin,          xMax,
                         T(0), T(0), T(0), T(0), T(128), INT_MAX, counts.data(), values.data(),
                         0,    0,    SIDE, &stop},
            orbits.type);
    }

    static constexpr int SIDE = 40;
    std::vector<std::int32_t> counts;
    std::vector<double> values;
    std::atomic<bool> stop{false};
};

TEST_P(EndlessTile, IsGivenUpInWork) {
    onEveryTarget([&](auto&& render) {
        stop = false;
        std::thread stopper([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            stop = true;
        });
        render();
        stopper.join();
    });
}

TEST_P(EndlessTile, IsNotBegunWhenTheFlagIsSet) {
    stop = true;
    onEveryTarget([&](auto&& render) { render(); });
}

INSTANTIATE_TEST_SUITE_P(Precision, EndlessTile, testing::Bool(),
                         [](const auto& test) { return test.param ? "Double" : "Single"; });

}  // namespace

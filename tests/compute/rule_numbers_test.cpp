// Counts by a rule's number, as the renderers take them: the Mandelbrot rule has no function of its
// own. Long orbits as well.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>

#include "compute/formulas.h"
#include "tests/support/reference_fractal.h"

namespace {

using test_support::referenceCount;
using test_support::ReferenceView;

// The count of a pixel, -2 for a number without a rule.
template <class T>
int countOf(const ReferenceView& v, int x, int y, StopFlag stop = nullptr) {
    int count = -2;
    visitRule(v.type, [&](auto rule) {
        count = pixelCount<decltype(rule)>(
            x, y, v.width, v.height, static_cast<T>(v.xMin), static_cast<T>(v.xMax),
            static_cast<T>(v.yMin), static_cast<T>(v.yMax), static_cast<T>(v.cx),
            static_cast<T>(v.cy), static_cast<T>(v.maxSize), v.maxIters, stop);
    });
    return count;
}

template <class T>
class RuleNumbers : public testing::Test {
  protected:
    static ReferenceView view(int type) {
        return {.type = type,
                .doublePrecision = std::is_same_v<T, double>,
                .width = 40,
                .height = 30,
                .xMin = -2,
                .xMax = 2,
                .yMin = -1.5,
                .yMax = 1.5,
                .cx = -0.5,
                .cy = 0.25,
                .maxSize = 16,
                .maxIters = 60};
    }
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(RuleNumbers, Precisions);

TYPED_TEST(RuleNumbers, FindTheRuleThatPlainArithmeticFollows) {
    for (int type = 0; type <= 13; ++type) {
        const ReferenceView v = this->view(type);
        for (int y = 0; y < v.height; ++y) {
            for (int x = 0; x < v.width; ++x) {
                ASSERT_EQ(countOf<TypeParam>(v, x, y), referenceCount(v, x, y)) << type;
            }
        }
    }
}

TEST(UnknownRules, AreNotVisited) {
    for (const int type : {-1, 14, 1000}) {
        EXPECT_FALSE(visitRule(type, [](auto) { ADD_FAILURE() << "visited"; })) << type;
    }
}

TEST(KnownRules, AreVisitedOnce) {
    for (int type = 0; type <= 13; ++type) {
        int visits = 0;
        EXPECT_TRUE(visitRule(type, [&](auto) { ++visits; })) << type;
        EXPECT_EQ(visits, 1) << type;
    }
}

// The stop flag is looked at every 1024 steps.
TYPED_TEST(RuleNumbers, CountUpToALimitOfAnyLength) {
    for (const int limit : {1023, 1024, 1025, 1500, 2048, 3000}) {
        for (int type = 0; type <= 13; ++type) {
            ReferenceView v = this->view(type);
            v.xMin = v.yMin = v.cx = v.cy = std::numeric_limits<double>::quiet_NaN();
            v.maxIters = limit;
            EXPECT_EQ(countOf<TypeParam>(v, 0, 0), type == 1 ? limit + 1 : limit) << type;
        }
    }
}

TYPED_TEST(RuleNumbers, GiveUpAnOrbitThatStaysOnceTheyAreToStop) {
    const std::atomic<bool> stop{true};
    for (int type = 0; type <= 13; ++type) {
        ReferenceView v = this->view(type);
        v.xMin = v.yMin = v.cx = v.cy = std::numeric_limits<double>::quiet_NaN();
        v.maxIters = std::numeric_limits<int>::max();
        EXPECT_EQ(countOf<TypeParam>(v, 0, 0, &stop), GIVEN_UP) << type;
    }
}

// A view whose first pixel escapes at this step, found by halving.
ReferenceView escapingAt(int step, ReferenceView v) {
    double low = 1e-6, high = 1;
    for (int halvings = 0; halvings < 60; ++halvings) {
        const double beyond = std::sqrt(low * high);
        v.xMin = v.type == 0 ? 0.25 + beyond : 0, v.xMax = v.xMin + 1, v.yMin = 0;
        v.cx = 0.25 + beyond, v.cy = 0, v.maxIters = 20000;
        const auto count = referenceCount(v, 0, 0);
        if (count == step) return v;
        (count > step ? low : high) = beyond;
    }
    ADD_FAILURE() << "no orbit escapes at step " << step;
    return v;
}

// In double, for the floats beside the cusp pass over steps.
using InDouble = RuleNumbers<double>;
TEST_F(InDouble, StopAfterAsManyStepsAsLieBetweenLooks) {
    const std::atomic<bool> stop{true};
    for (const int type : {0, 1}) {
        const ReferenceView last = escapingAt(STEPS_BETWEEN_LOOKS - 1, view(type));
        EXPECT_EQ(countOf<double>(last, 0, 0, &stop), STEPS_BETWEEN_LOOKS - 1) << type;
        const ReferenceView next = escapingAt(STEPS_BETWEEN_LOOKS, view(type));
        EXPECT_EQ(countOf<double>(next, 0, 0, &stop), GIVEN_UP) << type;
    }
}

// Right of the cusp an orbit creeps for about pi / sqrt(c - 1/4) steps.
TYPED_TEST(RuleNumbers, CountTheStepsOfALongOrbit) {
    for (const int type : {0, 1}) {
        ReferenceView v = this->view(type);
        v.xMin = type == 0 ? 0.25 + 1e-6 : 0, v.xMax = v.xMin + 1, v.yMin = 0;
        v.cx = 0.25 + 1e-6, v.cy = 0, v.maxIters = 20000;
        EXPECT_EQ(countOf<TypeParam>(v, 0, 0), referenceCount(v, 0, 0)) << type;
        EXPECT_NEAR(countOf<TypeParam>(v, 0, 0), 3140, 120) << type;
    }
}

}  // namespace

#include "backends/view_state.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/backend_globals.h"

namespace {

class ViewState : public testing::Test {
  protected:
    test_support::ViewGuard view;
};

TEST_F(ViewState, TakesEveryNumberOfAnEntry) {
    copyToView({.xMax = 1,
                .xMin = 2,
                .yMax = 3,
                .yMin = 4,
                .cx = 5,
                .cy = 6,
                .fractalType = 7,
                .maxIters = 8,
                .maxSize = 9.5,
                .paletteType = 10,
                .name = "",
                .fractalID = 11});
    EXPECT_EQ(xMax, 1);
    EXPECT_EQ(xMin, 2);
    EXPECT_EQ(yMax, 3);
    EXPECT_EQ(yMin, 4);
    EXPECT_EQ(cx, 5);
    EXPECT_EQ(cy, 6);
    EXPECT_EQ(currentFractalType, 7);
    EXPECT_EQ(maxIters, 8);
    EXPECT_EQ(maxSize, 9.5);
    EXPECT_EQ(paletteType, 10);
}

TEST_F(ViewState, OwesNoRenderForANewView) {
    update_count = 3;
    copyToView({});
    EXPECT_EQ(update_count, 3);
}

TEST_F(ViewState, OwesOneRenderMoreEachTime) {
    update_count = 0;
    addUpdate();
    EXPECT_EQ(update_count, 1);
    addUpdate();
    EXPECT_EQ(update_count, 2);
}

TEST_F(ViewState, OwesNoMoreThanCanBeCounted) {
    constexpr std::int32_t MOST = std::numeric_limits<std::int32_t>::max();
    update_count = MOST - 1;
    addUpdate();
    EXPECT_EQ(update_count, MOST);
    addUpdate();
    EXPECT_EQ(update_count, MOST);
}

}  // namespace

// How layout values become whole pixels.
#include "GlutMenu/Truncate.h"

#include <gtest/gtest.h>

#include <limits>

using GlutMenu::Truncate;
using GlutMenu::TruncateToFloat;

namespace {

constexpr int least = std::numeric_limits<int>::min();
constexpr int most = std::numeric_limits<int>::max();

TEST(Truncate, CutsOffTowardsZero) {
    EXPECT_EQ(Truncate(2.99), 2);
    EXPECT_EQ(Truncate(-2.99), -2);
    EXPECT_EQ(Truncate(-0.5), 0);
    EXPECT_EQ(TruncateToFloat(-2.5), -2.0F);
}

TEST(Truncate, HoldsAtTheNearestIntWhatNoneCanHold) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {2147483647.0, 2147483648.0, 1e300, infinity}) {
        EXPECT_EQ(Truncate(value), most) << value;
        EXPECT_EQ(Truncate(-value - 1.0), least) << value;
    }
    EXPECT_EQ(Truncate(2147483646.5), most - 1);
    EXPECT_EQ(Truncate(-2147483647.5), least + 1);
}

TEST(Truncate, TakesWhatIsNoNumberForZero) {
    EXPECT_EQ(Truncate(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(TruncateToFloat(std::numeric_limits<double>::quiet_NaN()), 0.0F);
}

}  // namespace

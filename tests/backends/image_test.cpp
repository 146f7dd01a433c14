#include "backends/image.h"

#include <gtest/gtest.h>

#include <limits>

#include "compute/saturate.h"

namespace {

TEST(ImageSide, AMultipleOfEightStays) {
    EXPECT_EQ(roundImageSide(2048), 2048);
    EXPECT_EQ(roundImageSide(256), 256);
    EXPECT_EQ(roundImageSide(1000), 1000);
}

TEST(ImageSide, AnythingElseGoesUpToTheNextMultipleOfEight) {
    EXPECT_EQ(roundImageSide(2041), 2048);
    EXPECT_EQ(roundImageSide(2047), 2048);
    EXPECT_EQ(roundImageSide(2049), 2056);
}

TEST(ImageSide, ASideTooShortForTilingBecomes256) {
    for (const std::int64_t side : {255, 248, 100, 1, 0, -1, -2048}) {
        EXPECT_EQ(roundImageSide(side), 256) << side;
    }
}

TEST(ImageSide, StartsAt2048) {
    EXPECT_EQ(winX, 2048);
    EXPECT_EQ(winY, 2048);
    EXPECT_EQ(imageBytes(), 2048u * 2048u * 4u);
}

TEST(TruncateToInt, DropsTheFraction) {
    EXPECT_EQ(truncateToInt(4.9), 4);
    EXPECT_EQ(truncateToInt(0.9), 0);
    EXPECT_EQ(truncateToInt(-0.9), 0);
    EXPECT_EQ(truncateToInt(-4.9), -4);
}

TEST(TruncateToInt, SaturatesWhatIsBeyondAnInt) {
    constexpr int low = std::numeric_limits<int>::min();
    constexpr int high = std::numeric_limits<int>::max();
    EXPECT_EQ(truncateToInt(1e300), high);
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::infinity()), high);
    EXPECT_EQ(truncateToInt(2147483648.0), high);
    EXPECT_EQ(truncateToInt(2147483647.5), high);
    EXPECT_EQ(truncateToInt(2147483646.5), high - 1);
    EXPECT_EQ(truncateToInt(-1e300), low);
    EXPECT_EQ(truncateToInt(-std::numeric_limits<double>::infinity()), low);
    EXPECT_EQ(truncateToInt(-2147483648.5), low);
}

TEST(TruncateToInt, TurnsNanIntoZero) {
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::quiet_NaN()), 0);
}

}  // namespace

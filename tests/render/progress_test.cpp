#include "render/progress.h"

#include <gtest/gtest.h>

namespace {

using render::progressLine;

TEST(ProgressLine, TellsPicturesASecondAndTheTimeLeft) {
    EXPECT_EQ(progressLine({3, 12, 30, 120}, 6, 59),
              "[####............] 3/12 pictures, 0.50 a second, 0:18 left");
}

TEST(ProgressLine, CountsAlsoWhatIsNotYetAWholePicture) {
    EXPECT_EQ(progressLine({0, 1, 50, 100}, 100, 57),
              "[#######........] 0/1 pictures, 0.01 a second, 1:40 left");
}

TEST(ProgressLine, KnowsNothingBeforeTheFirstBand) {
    EXPECT_EQ(progressLine({0, 2, 0, 10}, 1, 50),
              "[...........] 0/2 pictures, 0.00 a second, ? left");
}

TEST(ProgressLine, ShowsLongTimesInHours) {
    const auto line = progressLine({1, 1000, 1, 1000}, 100, 200);
    EXPECT_NE(line.find(" 27:45:00 left"), std::string::npos) << line;
}

TEST(ProgressLine, LeavesTheLastColumnFree) {
    for (int columns = 0; columns < 120; ++columns) {
        const auto line = progressLine({1, 3, 10, 30}, 5, columns);
        EXPECT_TRUE(line.empty() || static_cast<int>(line.size()) < columns) << columns;
    }
    EXPECT_EQ(progressLine({1, 3, 10, 30}, 5, 30), "");
}

}  // namespace

// How a frame is split and queued; no worker runs here.
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "backends/image.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"
#include "tests/support/stdout_capture.h"

namespace {

using test_support::StdoutCapture;

class QueueTest : public testing::Test {
  protected:
    QueueTest() {
        copyToView(test_support::makeView(0, -3, 2, -5, 4, 20));
        cx = 6;
        cy = 7;
    }
    ~QueueTest() override { test_support::clearQueue(); }

    // Queues a frame of this size and returns what was printed.
    static std::string queue(std::int64_t width, std::int64_t height) {
        winX = width;
        winY = height;
        const StdoutCapture capture;
        queueFrame();
        return capture.text();
    }

    static std::vector<int> bounds(const params& tile) {
        return {tile.xStart, tile.xEnd, tile.yStart, tile.yEnd};
    }

    test_support::ViewGuard view;
    test_support::ImageGuard image{8, 8};
};

using Bounds = std::vector<int>;

TEST_F(QueueTest, TheUsualImageGives65536TilesAndSaysSo) {
    EXPECT_EQ(queue(2048, 2048), "Enqueuing 65536\n");
    EXPECT_EQ(workQ.size(), 65536u);
    EXPECT_EQ(task_count, 65536);
}

TEST_F(QueueTest, TilesAreEightByEightAndGoColumnByColumnDownwards) {
    queue(2048, 2048);
    EXPECT_EQ(bounds(workQ[0]), (Bounds{0, 8, 0, 8}));
    EXPECT_EQ(bounds(workQ[1]), (Bounds{0, 8, 8, 16}));
    EXPECT_EQ(bounds(workQ[255]), (Bounds{0, 8, 2040, 2048}));
    EXPECT_EQ(bounds(workQ[256]), (Bounds{8, 16, 0, 8}));
    EXPECT_EQ(bounds(workQ[65535]), (Bounds{2040, 2048, 2040, 2048}));
}

TEST_F(QueueTest, EveryTileCarriesTheViewOfItsTime) {
    queue(256, 256);
    xMin = 99;
    for (const params& tile : workQ) {
        ASSERT_EQ(
            std::vector<double>({tile.xMin, tile.xMax, tile.yMin, tile.yMax, tile.cx, tile.cy}),
            std::vector<double>({-3, 2, -5, 4, 6, 7}));
    }
}

TEST_F(QueueTest, WidthAndHeightHaveStepsOfTheirOwn) {
    EXPECT_EQ(queue(512, 1024), "Enqueuing 65536\n");
    EXPECT_EQ(bounds(workQ.front()), (Bounds{0, 2, 0, 4}));
    EXPECT_EQ(bounds(workQ.back()), (Bounds{510, 512, 1020, 1024}));
}

TEST_F(QueueTest, SizesThatAreNoMultipleOf256GetMoreTilesThatReachPastTheEdge) {
    // Steps of 7 and 1: 292 strips of 264 tiles.
    EXPECT_EQ(queue(2040, 264), "Enqueuing 77088\n");
    EXPECT_EQ(bounds(workQ.back()), (Bounds{2037, 2044, 263, 264}));
    test_support::clearQueue();
    // Steps of 1 and 7.
    EXPECT_EQ(queue(264, 2040), "Enqueuing 77088\n");
    EXPECT_EQ(bounds(workQ.back()), (Bounds{263, 264, 2037, 2044}));
}

TEST_F(QueueTest, AnImageTooSmallForTheSplitStillEnds) {
    EXPECT_EQ(queue(100, 3), "Enqueuing 300\n");
    EXPECT_EQ(bounds(workQ.back()), (Bounds{99, 100, 2, 3}));
}

TEST_F(QueueTest, AnImageOfNoWidthOrHeightQueuesNothing) {
    EXPECT_EQ(queue(0, 256), "Enqueuing 0\n");
    EXPECT_EQ(queue(256, 0), "Enqueuing 0\n");
    EXPECT_TRUE(workQ.empty());
}

TEST_F(QueueTest, TheCountStartsAgainWithEachFrame) {
    task_count = 12345;
    queue(256, 256);
    EXPECT_EQ(task_count, 65536);
}

// Each picture has more tiles than the ones before it, whose memory the queue keeps.
TEST_F(QueueTest, AllocatesNothingAfterRoomWasMadeForThePicture) {
    const std::vector<std::vector<std::int64_t>> sizes = {
        {767, 767}, {767, 511}, {511, 767}, {511, 511}};
    for (const auto& size : sizes) {
        winX = size[0];
        winY = size[1];
        reserveTiles();
        workQ.push_back({});
        const params* const memory = workQ.begin();
        workQ.clear();
        queue(winX, winY);
        EXPECT_EQ(workQ.begin(), memory) << winX << " x " << winY;
        test_support::clearQueue();
    }
}

TEST_F(QueueTest, WithNothingQueuedTheWaitEndsAtOnce) {
    task_count = 0;
    waitForFrame();
    EXPECT_EQ(task_count, 0);
}

TEST_F(QueueTest, WithNoWorkerTheWaitDoesTheWork) {
    const test_support::ImageGuard small(256, 256, 0xA5);
    InitColours(1);
    currentFractalType = 0;
    queue(256, 256);
    waitForFrame();
    EXPECT_EQ(task_count, 0);
    EXPECT_TRUE(workQ.empty());
    EXPECT_EQ(small.picture().pixel(255, 255)[3], 255);
}

TEST_F(QueueTest, DrainingOnTheCallingThreadEmptiesTheQueueAndLeavesTheCount) {
    const test_support::ImageGuard small(256, 256, 0xA5);
    InitColours(1);
    queue(256, 256);
    EXPECT_EQ(appleThread(nullptr), nullptr);
    EXPECT_TRUE(workQ.empty());
    EXPECT_EQ(task_count, 65536);
    const auto picture = small.picture();
    for (std::size_t at = 3; at < picture.bytes.size(); at += 4) ASSERT_EQ(picture.bytes[at], 255);
}

TEST_F(QueueTest, DrainingAnEmptyQueueDoesNothing) {
    EXPECT_EQ(appleThread(this), nullptr);
}

}  // namespace

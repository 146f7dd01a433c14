#include "backends/worker_pool.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <iostream>
#include <limits>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "compute/vector_renderer.h"
#include "tests/support/backend_globals.h"
#include "tests/support/picture.h"
#include "tests/support/stdout_capture.h"

namespace {

using namespace std::chrono_literals;
using test_support::expectedPicture;
using test_support::Picture;
using test_support::Pool;
using test_support::samePicture;
using test_support::StdoutCapture;

using Clock = std::chrono::steady_clock;

class PoolTest : public testing::Test {
  protected:
    PoolTest() {
        copyToView(test_support::makeView(0, -0.8, -0.7, 0.1, 0.2, 40));
        bDoublePrecision = true;
        InitColours(1);
    }

    static void renderFrame() {
        const StdoutCapture silence;
        queueFrame();
        waitForFrame();
    }

    testing::AssertionResult pictureIsRight() const {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        return samePicture(image.picture(), expectedPicture(), "pool." + name);
    }

    static void queueOneTile(const params& tile) {
        const std::lock_guard lock(mutex);
        workQ.push_back(tile);
        ++task_count;
    }

    test_support::ViewGuard view;
    test_support::ImageGuard image{256, 256, 0xA5};
};

class PoolThreads : public PoolTest, public testing::WithParamInterface<int> {};

TEST_P(PoolThreads, AFrameIsWhole) {
    const Pool pool(GetParam());
    renderFrame();
    EXPECT_EQ(task_count, 0);
    EXPECT_TRUE(workQ.empty());
    EXPECT_TRUE(pictureIsRight());
}

TEST_P(PoolThreads, OneFrameAfterAnotherIsWhole) {
    const Pool pool(GetParam());
    for (int frame = 0; frame < 4; ++frame) {
        xMin += 0.01;
        bDoublePrecision = frame % 2 == 0;
        renderFrame();
        ASSERT_TRUE(pictureIsRight()) << frame;
    }
}

TEST_P(PoolThreads, AnImageThatIsNoMultipleOf256IsWhole) {
    const test_support::ImageGuard odd(520, 264, 0xA5);
    InitColours(1);
    const Pool pool(GetParam());
    renderFrame();
    EXPECT_TRUE(samePicture(odd.picture(), expectedPicture(), "pool.odd"));
}

TEST_P(PoolThreads, AsManyThreadsAreThereAsWereAskedFor) {
    const Pool pool(GetParam());
    EXPECT_EQ(max_threads, GetParam());
    EXPECT_EQ(vThreads.size(), static_cast<std::size_t>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Counts, PoolThreads, testing::Values(1, 2, 3, 7));

TEST_F(PoolTest, NoThreadAtAllStillRendersAndOffersACountOfOne) {
    const Pool pool(0);
    EXPECT_EQ(max_threads, 1);
    renderFrame();
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(PoolTest, ANegativeCountStartsNoThread) {
    const Pool pool(-3);
    EXPECT_EQ(max_threads, 1);
    EXPECT_TRUE(vThreads.empty());
}

TEST_F(PoolTest, WorkersAboveTheAllowedCountDoNotWork) {
    const Pool pool(2);
    numCPUThreads = 0;
    std::this_thread::sleep_for(30ms);  // a worker may be on its way through the queue
    queueOneTile({0, 8, 0, 8, -1, 1, -1, 1, 0, 0});
    std::this_thread::sleep_for(80ms);
    EXPECT_EQ(task_count, 1);
    numCPUThreads = 1;
    waitForFrame();
    EXPECT_EQ(task_count, 0);
}

double cpuSeconds(std::thread& thread) {
    clockid_t clock;
    pthread_getcpuclockid(thread.native_handle(), &clock);
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

TEST_F(PoolTest, WithOneThreadAllowedTheFirstWorkerDoesAllTheWork) {
    const Pool pool(3);
    numCPUThreads = 1;
    std::this_thread::sleep_for(30ms);
    maxIters = 2000;
    const double first = cpuSeconds(*vThreads[0]);
    const double second = cpuSeconds(*vThreads[1]) + cpuSeconds(*vThreads[2]);
    renderFrame();
    const double byFirst = cpuSeconds(*vThreads[0]) - first;
    const double byOthers = cpuSeconds(*vThreads[1]) + cpuSeconds(*vThreads[2]) - second;
    EXPECT_TRUE(pictureIsRight());
    EXPECT_GT(byFirst, 20 * byOthers);
}

TEST_F(PoolTest, AllowingMoreThreadsThanThereAreStartsNone) {
    const Pool pool(2);
    numCPUThreads = 50;
    renderFrame();
    EXPECT_EQ(vThreads.size(), 2u);
    EXPECT_EQ(max_threads, 2);
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(PoolTest, TheThreadCountMayChangeWhileAFrameIsRendered) {
    const Pool pool(3);
    std::atomic<bool> done{false};
    std::thread changer([&] {
        for (int n = 0; !done; n = (n + 1) % 4) {
            numCPUThreads = n;
            std::this_thread::sleep_for(1ms);
        }
        numCPUThreads = 3;
    });
    for (int frame = 0; frame < 3; ++frame) renderFrame();
    done = true;
    changer.join();
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(PoolTest, LoweringTheThreadCountStopsAWorkerAfterTheTileInHand) {
    copyToView(test_support::slowView());
    const Pool pool(1);
    const StdoutCapture silence;
    queueFrame();
    std::this_thread::sleep_for(30ms);
    numCPUThreads = 0;
    std::this_thread::sleep_for(50ms);
    const int left = task_count;
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(task_count, left);
    EXPECT_GT(left, 0);
}

// An output that takes its time over the line and then looks whether a tile was taken meanwhile.
class SlowOutput : public std::stringbuf {
  public:
    std::size_t waiting = 0;

  private:
    int sync() override {
        std::this_thread::sleep_for(50ms);
        waiting = workQ.size();  // under the caller's lock
        return std::stringbuf::sync();
    }
};

TEST_F(PoolTest, NoTileIsTakenBeforeTheLineOfTheFrameIsOut) {
    const Pool pool(4);
    SlowOutput output;
    std::streambuf* const before = std::cout.rdbuf(&output);
    queueFrame();
    std::cout.rdbuf(before);
    waitForFrame();
    EXPECT_EQ(output.str(), "Enqueuing 65536\n");
    EXPECT_EQ(output.waiting, 65536u);
}

TEST(Params, AreTheBoundsThenTheViewThenTheConstant) {
    const params tile{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    EXPECT_EQ((std::vector<int>{tile.xStart, tile.xEnd, tile.yStart, tile.yEnd}),
              (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ((std::vector<double>{tile.xMin, tile.xMax, tile.yMin, tile.yMax, tile.cx, tile.cy}),
              (std::vector<double>{5, 6, 7, 8, 9, 10}));
}

TEST_F(PoolTest, AnEmptyTileRendersNothingAndIsCountedDown) {
    const Pool pool(1);
    const Picture before = image.picture();
    queueOneTile({8, 8, 0, 8, -1, 1, -1, 1, 0, 0});
    waitForFrame();
    EXPECT_EQ(task_count, 0);
    EXPECT_TRUE(samePicture(image.picture(), before, "pool.empty"));
}

TEST_F(PoolTest, TheWaitLooksNoSoonerThanAfter20Milliseconds) {
    const Pool pool(1);
    const auto start = Clock::now();
    queueOneTile({8, 8, 0, 8, -1, 1, -1, 1, 0, 0});
    waitForFrame();
    EXPECT_GE(Clock::now() - start, 20ms);
}

TEST_F(PoolTest, AShutdownEndsTheWaitThoughTilesRemain) {
    const Pool pool(1);
    numCPUThreads = 0;
    std::this_thread::sleep_for(30ms);
    queueOneTile({0, 8, 0, 8, -1, 1, -1, 1, 0, 0});
    std::thread closer([] {
        std::this_thread::sleep_for(50ms);
        shutdown_threads = true;
    });
    waitForFrame();
    EXPECT_EQ(task_count, 1);
    closer.join();
}

TEST_F(PoolTest, AShutdownBeforeTheWaitEndsItAtOnce) {
    const Pool pool(1);
    shutdown_threads = true;
    task_count = 5;
    waitForFrame();
    EXPECT_EQ(task_count, 5);
}

TEST_F(PoolTest, StoppingAbandonsWhatIsStillQueued) {
    copyToView(test_support::slowView());
    const Pool pool(2);
    {
        const StdoutCapture silence;
        queueFrame();
    }
    std::this_thread::sleep_for(5ms);
    stopWorkers(false);
    EXPECT_TRUE(vThreads.empty());
    EXPECT_GT(task_count, 0);
    EXPECT_FALSE(workQ.empty());
}

// A frame whose every tile takes longer than anybody waits.
fractal endlessView() {
    return test_support::makeView(5, -3.3, -3.2, 0, 0, std::numeric_limits<int>::max(), 128);
}

// Searching for repeats would end the orbits of that view after some hundred million steps.
class EndlessTiles : public PoolTest {
  protected:
    EndlessTiles() {
        copyToView(endlessView());
        vector_control::detectCycles(false);
        alarm(60);  // a test that hangs ends the process
    }
    ~EndlessTiles() override {
        alarm(0);
        vector_control::detectCycles(true);
    }

    void queue() {
        const StdoutCapture silence;
        queueFrame();
    }
};

TEST_F(EndlessTiles, AreGivenUpWhenThePoolStops) {
    for (const bool precision : {false, true}) {
        bDoublePrecision = precision;
        const Pool pool(2);
        queue();
        std::this_thread::sleep_for(20ms);
        stopWorkers(false);
        EXPECT_GT(task_count, 0);
    }
}

TEST_F(EndlessTiles, AreGivenUpByAMainThreadThatHasNoWorkers) {
    const Pool pool(0);
    queue();
    std::thread closer([] {
        std::this_thread::sleep_for(20ms);
        shutdown_threads = true;
    });
    waitForFrame();
    closer.join();
    EXPECT_TRUE(shutdown_threads);
}

TEST_F(EndlessTiles, AreGivenUpByWhoeverDrainsTheQueue) {
    const Pool pool(0);
    queue();
    std::thread closer([] {
        std::this_thread::sleep_for(20ms);
        shutdown_threads = true;
    });
    EXPECT_EQ(appleThread(nullptr), nullptr);
    closer.join();
    EXPECT_TRUE(workQ.empty());
}

TEST_F(PoolTest, WhoeverDrainsTheQueueAfterTheShutdownStillRendersIt) {
    const Pool pool(0);
    shutdown_threads = true;
    const StdoutCapture silence;
    queueFrame();
    appleThread(nullptr);
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(EndlessTiles, AreNotWaitedForWhenTheCallerSaysSo) {
    const Pool pool(2);
    queue();
    int looks = 0;
    waitForFrame([&looks] { return ++looks == 3; });
    EXPECT_EQ(looks, 3);
    EXPECT_TRUE(shutdown_threads);
    EXPECT_GT(task_count, 0);
}

TEST_F(PoolTest, StoppingTwiceIsHarmless) {
    const Pool pool(2);
    stopWorkers(false);
    stopWorkers(true);
    EXPECT_TRUE(vThreads.empty());
}

TEST_F(PoolTest, AWorkerThatFindsTheShutdownSetReturnsAtOnce) {
    const Pool pool(0);
    queueOneTile({0, 8, 0, 8, -1, 1, -1, 1, 0, 0});
    shutdown_threads = true;
    threadContainer(1)();
    EXPECT_EQ(task_count, 1);
}

TEST_F(PoolTest, AWorkerLeavesWhenTheShutdownComesWhileItSleeps) {
    const Pool pool(0);
    numCPUThreads = 1;
    std::thread allowed(threadContainer(1));
    std::thread surplus(threadContainer(2));
    std::this_thread::sleep_for(10ms);
    shutdown_threads = true;
    allowed.join();
    surplus.join();
    SUCCEED();
}

// Draining on the calling thread shows what a worker makes of the globals, without a race.
class TileGlobals : public PoolTest {
  protected:
    void renderHere() {
        const StdoutCapture silence;
        queueFrame();
        changeAfterQueueing();
        appleThread(nullptr);
        test_support::clearQueue();
    }
    void (*changeAfterQueueing)() = [] {};
};

TEST_F(TileGlobals, TheViewIsThatOfTheQueueing) {
    const Picture wanted = expectedPicture();
    changeAfterQueueing = [] { xMin = xMax = yMin = yMax = cx = cy = 1.5; };
    renderHere();
    EXPECT_TRUE(samePicture(image.picture(), wanted, "pool.view"));
}

TEST_F(TileGlobals, LimitFormulaPrecisionAndPaletteAreThoseOfTheWork) {
    changeAfterQueueing = [] {
        maxIters = 25;
        maxSize = 9;
        currentFractalType = 11;
        bDoublePrecision = false;
        InitColours(0);
    };
    renderHere();
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(TileGlobals, TheEscapeBoundLosesItsFraction) {
    xMax = 2, xMin = -2, yMax = 2, yMin = -2;
    maxSize = 4.0;
    const Picture wanted = expectedPicture();
    maxSize = 4.9;
    renderHere();
    EXPECT_TRUE(samePicture(image.picture(), wanted, "pool.fraction"));
}

TEST_F(TileGlobals, ABoundBelowOneLetsAllButTheOriginEscapeAtOnce) {
    xMax = 2, xMin = -2, yMax = 2, yMin = -2;
    maxSize = 0.9;
    renderHere();
    const Picture picture = image.picture();
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            // Count 0 is black in this palette as well; blue and red never show.
            ASSERT_EQ(picture.pixel(x, y)[1], 0) << x << ' ' << y;
        }
    }
    EXPECT_TRUE(pictureIsRight());
}

TEST_F(TileGlobals, BoundsBeyondAnIntSaturate) {
    xMax = 2, xMin = -2, yMax = 2, yMin = -2;
    for (const double bound :
         {1e300, std::numeric_limits<double>::infinity(), -1e300,
          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        maxSize = bound;
        renderHere();
        EXPECT_TRUE(pictureIsRight()) << bound;
    }
}

TEST_F(TileGlobals, AnUnknownFormulaIsBlack) {
    for (const int type : {-1, 14}) {
        currentFractalType = type;
        renderHere();
        EXPECT_TRUE(pictureIsRight()) << type;
    }
}

TEST_F(TileGlobals, SinglePrecisionRoundsTheViewFirst) {
    xMin = -0.75, xMax = -0.75 + 1e-9;  // one float for both edges
    bDoublePrecision = false;
    renderHere();
    EXPECT_TRUE(pictureIsRight());
    const Picture picture = image.picture();
    for (int y = 0; y < 256; ++y) {
        ASSERT_TRUE(
            std::equal(picture.pixel(0, y), picture.pixel(0, y) + 4, picture.pixel(255, y)));
    }
}

}  // namespace

// Many small frames and many shutdowns, with fewer and far more workers than there are cores, each
// picture held against plain arithmetic. $TESSARY_POOL_FRAMES and $TESSARY_POOL_SHUTDOWNS are how
// many, $TESSARY_POOL_SEED other ones.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"
#include "tests/support/picture.h"
#include "tests/support/stdout_capture.h"

namespace {

using test_support::expectedPicture;
using test_support::Picture;
using test_support::Pool;
using test_support::samePicture;
using test_support::StdoutCapture;

constexpr std::array<int, 7> THREAD_COUNTS = {1, 2, 3, 5, 16, 64, 256};
constexpr int FORMULAS = 14;
constexpr int SIDE = 24;
constexpr unsigned char UNTOUCHED = 0xA5;

int setting(const char* name, int otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::atoi(text);
}

class PoolLoad : public testing::TestWithParam<int> {
  protected:
    PoolLoad() {
        InitColours(1);
        alarm(3000);  // a wait that never ends ends the process
    }
    ~PoolLoad() override { alarm(0); }

    int randomUpTo(int last) { return std::uniform_int_distribution<int>(0, last)(random); }

    double randomBetween(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }

    // A view of a formula at random, in either precision.
    void chooseView() {
        const double x = randomBetween(-2, 2), y = randomBetween(-2, 2);
        const double width = randomBetween(0.01, 2), height = randomBetween(0.01, 2);
        copyToView(test_support::makeView(randomUpTo(FORMULAS - 1), x, x + width, y, y + height,
                                          5 + randomUpTo(60)));
        cx = randomBetween(-1, 1);
        cy = randomBetween(-1, 1);
        bDoublePrecision = randomUpTo(1) == 0;
    }

    static void renderFrame() {
        const StdoutCapture silence;
        queueFrame();
        waitForFrame();
    }

    testing::AssertionResult pictureIsRight() const {
        return samePicture(image.picture(), expectedPicture(), "pool_load");
    }

    std::string repeat() const {
        return "TESSARY_POOL_SEED=" + std::to_string(seed) + ", formula " +
               std::to_string(currentFractalType);
    }

    const unsigned seed = static_cast<unsigned>(setting("TESSARY_POOL_SEED", 2048));
    std::mt19937 random{seed};
    test_support::ViewGuard view;
    test_support::ImageGuard image{SIDE, SIDE, UNTOUCHED};
};

// ---- frame after frame

class Frames : public PoolLoad {
  protected:
    const int frames = setting("TESSARY_POOL_FRAMES", 280) / static_cast<int>(THREAD_COUNTS.size());
};

TEST_P(Frames, AreAllRight) {
    const Pool pool(GetParam());
    for (int frame = 0; frame < frames; ++frame) {
        chooseView();
        renderFrame();
        ASSERT_EQ(task_count, 0);
        ASSERT_TRUE(workQ.empty());
        ASSERT_TRUE(pictureIsRight()) << "frame " << frame << ", " << repeat();
    }
}

// Lets another number of workers work every moment, while it lives.
class RestlessUser {
  public:
    RestlessUser(int threads, unsigned seed)
        : hand([this, threads, seed] { fidget(threads, seed); }) {}
    ~RestlessUser() {
        done = true;
        hand.join();
    }
    RestlessUser(const RestlessUser&) = delete;
    RestlessUser& operator=(const RestlessUser&) = delete;

  private:
    void fidget(int threads, unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> count(1, threads), moment(0, 2000);
        while (!done) {
            numCPUThreads = count(random);
            std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        }
        numCPUThreads = threads;
    }

    std::atomic<bool> done{false};
    std::thread hand;
};

TEST_P(Frames, AreAllRightWhileTheThreadCountChanges) {
    const Pool pool(GetParam());
    const RestlessUser user(GetParam(), seed);
    for (int frame = 0; frame < frames; ++frame) {
        chooseView();
        renderFrame();
        ASSERT_EQ(task_count, 0);
        ASSERT_TRUE(pictureIsRight()) << "frame " << frame << ", " << repeat();
    }
}

INSTANTIATE_TEST_SUITE_P(Threads, Frames, testing::ValuesIn(THREAD_COUNTS));

// ---- shutdowns

class Shutdowns : public PoolLoad {
  protected:
    Shutdowns() {
        copyToView(test_support::slowView());
        maxIters = 20000;
        bDoublePrecision = true;
        whole = expectedPicture();
    }

    // Stops the pool while another thread waits for a frame; answers when both are done.
    void stopInTheMiddle(int threads) {
        const StdoutCapture silence;
        const Pool pool(threads);
        queueFrame();
        std::thread waiting([] { waitForFrame(); });
        std::this_thread::sleep_for(std::chrono::microseconds(randomUpTo(25000)));
        stopWorkers(false);
        waiting.join();
        left = task_count;
        none = vThreads.empty();
        shown = image.picture();
        std::fill_n(buffer.get(), imageBytes(), UNTOUCHED);
    }

    // Whether every pixel is the frame's or was left alone, and no more of them left alone than
    // there are tiles, of one pixel each, that wait or that a worker had in hand.
    testing::AssertionResult pixelsAreRightOrUntouched(int threads) const {
        int untouched = 0;
        for (std::size_t at = 0; at < shown.bytes.size(); ++at) {
            if (shown.bytes[at] == UNTOUCHED) {
                untouched += at % 4 == 3 ? 1 : 0;
            } else if (shown.bytes[at] != whole.bytes[at]) {
                return testing::AssertionFailure() << "byte " << at << " is wrong";
            }
        }
        if (untouched <= left + threads) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << untouched << " pixels are untouched, but only " << left << " tiles wait";
    }

    Picture whole, shown;
    int left = 0;
    bool none = false;
};

TEST_F(Shutdowns, AtAnyMomentLeaveNoWorkerAndNoWrongPixel) {
    const int shutdowns = setting("TESSARY_POOL_SHUTDOWNS", 70);
    int inTheMiddle = 0;
    for (int shutdown = 0; shutdown < shutdowns; ++shutdown) {
        const int threads =
            THREAD_COUNTS[static_cast<std::size_t>(shutdown) % THREAD_COUNTS.size()];
        stopInTheMiddle(threads);
        ASSERT_TRUE(none);
        ASSERT_TRUE(pixelsAreRightOrUntouched(threads))
            << "shutdown " << shutdown << ", " << repeat();
        inTheMiddle += left > 0 && left < SIDE * SIDE ? 1 : 0;
    }
    std::cout << inTheMiddle << " of " << shutdowns << " in the middle of a frame\n";
}

}  // namespace

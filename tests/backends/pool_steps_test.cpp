// In which order the pool works and how long it sleeps in between, step by step: a worker runs on
// the test's own thread, and what changes during a sleep is up to the test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <latch>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "backends/image.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/backends/thread_watch.h"
#include "tests/support/backend_globals.h"

namespace {

using namespace std::chrono_literals;
using test_support::Pool;
using test_support::ThreadWatch;
using testing::ElementsAre;
using testing::IsEmpty;

using Sleeps = std::vector<std::chrono::nanoseconds>;
using Step = std::function<void()>;

const Step NOTHING = [] {};

void allow(int threads) {
    numCPUThreads = threads;
}

class PoolSteps : public testing::Test {
  protected:
    PoolSteps() {
        InitColours(1);
        maxIters = 10;
        maxSize = 4;
        currentFractalType = 0;
        bDoublePrecision = true;
        shutdown_threads = false;
    }
    ~PoolSteps() override {
        test_support::clearQueue();
        shutdown_threads = false;
    }

    // Queues a tile of the whole image with every pixel at this point of the plane.
    static void queueTile(double point = 0) {
        const std::lock_guard lock(mutex);
        workQ.push_back({0, 8, 0, 8, point, point, 0, 0, 0, 0});
        ++task_count;
    }

    // Whether the image shows a tile of that point.
    bool shows(double point) const {
        const test_support::Picture seen = image.picture();
        test_support::clearQueue();
        queueTile(point);
        appleThread(nullptr);
        return seen.bytes == image.picture().bytes;
    }

    // How long this worker sleeps each time. During its first sleep the first step is taken, and so
    // on; during the one after the last step the program ends.
    Sleeps sleepsOfWorker(int number, const std::vector<Step>& steps) {
        watch.duringSleep = [&steps](int sleep) {
            const auto step = static_cast<std::size_t>(sleep - 1);
            if (step < steps.size()) {
                steps[step]();
            } else {
                shutdown_threads = true;
            }
        };
        threadContainer{number}();
        return watch.sleeps;
    }

    test_support::ViewGuard view;
    test_support::ImageGuard image{8, 8, 0xA5};
    ThreadWatch watch;
};

class WorkerSteps : public PoolSteps {};

TEST_F(WorkerSteps, WithNothingToDoItLooksEveryMillisecond) {
    allow(1);
    EXPECT_THAT(sleepsOfWorker(1, {NOTHING, NOTHING}), ElementsAre(1ms, 1ms, 1ms));
}

TEST_F(WorkerSteps, AboveTheAllowedCountItLooksEvery20Milliseconds) {
    allow(1);
    const Step queueOne = [] { queueTile(); };
    EXPECT_THAT(sleepsOfWorker(2, {queueOne, NOTHING}), ElementsAre(20ms, 20ms, 20ms));
    EXPECT_EQ(task_count, 1);
}

TEST_F(WorkerSteps, TheLastAllowedOneWorks) {
    allow(3);
    EXPECT_THAT(sleepsOfWorker(3, {NOTHING}), ElementsAre(1ms, 1ms));
}

TEST_F(WorkerSteps, AfterATileTheNextIsTakenWithoutASleep) {
    allow(1);
    const Step queueThree = [] {
        for (int tile = 0; tile < 3; ++tile) queueTile();
    };
    EXPECT_THAT(sleepsOfWorker(1, {queueThree}), ElementsAre(1ms, 1ms));
    EXPECT_EQ(task_count, 0);
    EXPECT_TRUE(workQ.empty());
}

TEST_F(WorkerSteps, ForbiddenInItsSleepItLooksEvery20MillisecondsFromThenOn) {
    allow(1);
    EXPECT_THAT(sleepsOfWorker(1, {[] { allow(0); }, NOTHING}), ElementsAre(1ms, 20ms, 20ms));
}

TEST_F(WorkerSteps, AllowedInItsSleepItWorksAtTheNextLook) {
    allow(0);
    const Step queueAndAllow = [] {
        queueTile();
        allow(1);
    };
    EXPECT_THAT(sleepsOfWorker(1, {queueAndAllow}), ElementsAre(20ms, 1ms));
    EXPECT_EQ(task_count, 0);
}

TEST_F(WorkerSteps, ForbiddenWithATileInHandItFinishesItAndSleeps20Milliseconds) {
    allow(1);
    queueTile();
    queueTile();
    watch.beforeTryLock = [](int attempt) {
        if (attempt == 2) allow(0);  // the first tile is computed and about to be counted down
    };
    EXPECT_THAT(sleepsOfWorker(1, {}), ElementsAre(20ms));
    EXPECT_EQ(task_count, 1);
    EXPECT_EQ(workQ.size(), 1u);
}

TEST_F(WorkerSteps, ForbiddenOnItsWayToATileItLeavesItAndSleeps20Milliseconds) {
    allow(1);
    queueTile();
    watch.beforeTryLock = [](int) { allow(0); };
    EXPECT_THAT(sleepsOfWorker(1, {}), ElementsAre(20ms));
    EXPECT_EQ(task_count, 1);
}

TEST_F(WorkerSteps, AShutdownWithATileInHandEndsItWithoutASleep) {
    allow(1);
    queueTile();
    queueTile();
    watch.beforeTryLock = [](int attempt) {
        if (attempt == 2) shutdown_threads = true;
    };
    threadContainer{1}();
    EXPECT_THAT(watch.sleeps, IsEmpty());
    EXPECT_EQ(task_count, 1);
    EXPECT_EQ(workQ.size(), 1u);
}

// ---- a lock that another has

// The pool's lock in the hands of another thread, while it lives.
class HeldByAnother {
  public:
    HeldByAnother() { held.wait(); }
    ~HeldByAnother() {
        over.count_down();
        holder.join();
    }
    HeldByAnother(const HeldByAnother&) = delete;
    HeldByAnother& operator=(const HeldByAnother&) = delete;

  private:
    std::latch held{1}, over{1};
    std::thread holder{[this] {
        const std::lock_guard lock(mutex);
        held.count_down();
        over.wait();
    }};
};

class WaitingWorker : public WorkerSteps {
  protected:
    WaitingWorker() {
        allow(1);
        watch.clock = [this](std::chrono::nanoseconds) { return now; };
    }

    std::chrono::nanoseconds now{0};
};

TEST_F(WaitingWorker, TriesAgainWhileItsTimeLastsHoweverOften) {
    const HeldByAnother lock;
    watch.beforeTryLock = [this](int attempt) {
        if (attempt == 5000) now += 1ms;
    };
    watch.duringSleep = [](int) { shutdown_threads = true; };
    threadContainer{1}();
    EXPECT_EQ(watch.lockAttempts, 5000);
}

TEST_F(WaitingWorker, SleepsWhenItsTimeIsUpHoweverSeldomItTried) {
    const HeldByAnother lock;
    watch.beforeTryLock = [this](int) { now += 10us; };
    watch.duringSleep = [](int) { shutdown_threads = true; };
    threadContainer{1}();
    EXPECT_EQ(watch.lockAttempts, 2);
}

TEST_F(WaitingWorker, TriesFor400NanosecondsAfterTheFirst) {
    const HeldByAnother lock;
    watch.beforeTryLock = [this](int) { now += 1ns; };
    watch.duringSleep = [](int) { shutdown_threads = true; };
    threadContainer{1}();
    EXPECT_EQ(watch.lockAttempts, 1 + 400);
}

TEST_F(WaitingWorker, SleepsLongerEachTimeItWaitedInVain) {
    const HeldByAnother lock;
    watch.beforeTryLock = [this](int) { now += 1ms; };
    watch.duringSleep = [](int sleep) { shutdown_threads = sleep == 5; };
    threadContainer{1}();
    EXPECT_THAT(watch.sleeps, ElementsAre(50us, 100us, 200us, 200us, 200us));
}

TEST_F(WaitingWorker, TakesTheTileAfterItsShortSleep) {
    queueTile();
    std::optional<HeldByAnother> lock(std::in_place);
    watch.beforeTryLock = [this](int) { now += 1ms; };
    watch.duringSleep = [&lock](int sleep) {
        lock.reset();
        shutdown_threads = sleep == 2;
    };
    threadContainer{1}();
    EXPECT_THAT(watch.sleeps, ElementsAre(50us, 1ms));
    EXPECT_EQ(task_count, 0);
}

// Two tiles of the same pixels: the one that is computed last is seen.
constexpr double NEVER_ESCAPES = 0, ESCAPES_SOON = 1;

TEST_F(PoolSteps, AWorkerTakesTheTileThatWaitsLongest) {
    allow(1);
    queueTile(NEVER_ESCAPES);
    queueTile(ESCAPES_SOON);
    sleepsOfWorker(1, {});
    EXPECT_TRUE(shows(ESCAPES_SOON));
    EXPECT_FALSE(shows(NEVER_ESCAPES));
}

TEST_F(PoolSteps, WhoeverDrainsTheQueueTakesTheTileThatWaitsLongest) {
    queueTile(ESCAPES_SOON);
    queueTile(NEVER_ESCAPES);
    appleThread(nullptr);
    EXPECT_TRUE(shows(NEVER_ESCAPES));
    EXPECT_FALSE(shows(ESCAPES_SOON));
}

// A wait for a frame whose one tile nobody may take.
class FrameWait : public PoolSteps {
  protected:
    FrameWait() {
        allow(0);
        queueTile();
    }

    static Sleeps sleepsOfWait(ThreadWatch& watch) {
        waitForFrame();
        return watch.sleeps;
    }

    const Pool pool{1};
};

TEST_F(FrameWait, LooksEvery20Milliseconds) {
    watch.duringSleep = [](int sleep) {
        if (sleep == 3) task_count = 0;
    };
    EXPECT_THAT(sleepsOfWait(watch), ElementsAre(20ms, 20ms, 20ms));
}

TEST_F(FrameWait, EndsAtTheNextLookAfterAShutdown) {
    watch.duringSleep = [](int sleep) {
        if (sleep == 2) shutdown_threads = true;
    };
    EXPECT_THAT(sleepsOfWait(watch), ElementsAre(20ms, 20ms));
    EXPECT_EQ(task_count, 1);
}

TEST_F(FrameWait, AsksAtEachLookWhetherToGiveUp) {
    std::vector<std::size_t> askedAfter;
    waitForFrame([&] {
        askedAfter.push_back(watch.sleeps.size());
        return askedAfter.size() == 3;
    });
    EXPECT_THAT(askedAfter, ElementsAre(1u, 2u, 3u));
    EXPECT_THAT(watch.sleeps, ElementsAre(20ms, 20ms, 20ms));
}

TEST_F(FrameWait, AsksNobodyWhenTheFrameIsDone) {
    watch.duringSleep = [](int) { task_count = 0; };
    waitForFrame([] {
        ADD_FAILURE() << "asked";
        return true;
    });
    EXPECT_FALSE(shutdown_threads);
}

TEST_F(FrameWait, DoesNotSleepWhenNothingIsQueued) {
    test_support::clearQueue();
    EXPECT_THAT(sleepsOfWait(watch), IsEmpty());
}

TEST_F(FrameWait, DoesNotSleepAfterAShutdown) {
    shutdown_threads = true;
    EXPECT_THAT(sleepsOfWait(watch), IsEmpty());
    EXPECT_EQ(task_count, 1);
}

}  // namespace

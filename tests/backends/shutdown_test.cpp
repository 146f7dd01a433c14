// The ways a process with a pool ends. Each death test runs in a fresh process whose output it
// matches.
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>

#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"
#include "tests/support/stdout_capture.h"

namespace {

// Threads that may still be created before creation fails; negative for no end.
std::atomic<int> threadsLeft{-1};

// Creations that fail before one succeeds.
std::atomic<int> failuresFirst{0};

// A thread that is created while `newThreadsWait` is set begins when `waitingThreadsBegin` is.
std::atomic<bool> newThreadsWait{false}, waitingThreadsBegin{false};

std::atomic<bool> joinHasBegun{false};

struct Body {
    void* (*function)(void*);
    void* argument;
};

void* beginWhenAllowed(void* heldBody) {
    const std::unique_ptr<Body> body(static_cast<Body*>(heldBody));
    while (!waitingThreadsBegin) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return body->function(body->argument);
}

}  // namespace

// The sanitizers' functions of those names, where one is linked: it must hear of every thread, and
// the stand-in below hides it.
extern "C" [[gnu::weak]] int __interceptor_pthread_create(pthread_t*, const pthread_attr_t*,
                                                          void* (*)(void*), void*);
extern "C" [[gnu::weak]] int __interceptor_pthread_join(pthread_t, void**);

extern "C" int pthread_join(pthread_t thread, void** result) {
    using Function = int (*)(pthread_t, void**);
    static const auto original = __interceptor_pthread_join
                                     ? &__interceptor_pthread_join
                                     : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_join"));
    joinHasBegun = true;
    return original(thread, result);
}

// Stands before the C library's function for std::thread too, so that creation can fail on request.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) {
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto original =
        __interceptor_pthread_create
            ? &__interceptor_pthread_create
            : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    if (threadsLeft == 0) return EAGAIN;
    if (threadsLeft > 0) --threadsLeft;
    if (failuresFirst > 0) {
        --failuresFirst;
        return EAGAIN;
    }
    if (!newThreadsWait) return original(thread, attributes, body, argument);
    return original(thread, attributes, beginWhenAllowed, new Body{body, argument});
}

namespace {

using test_support::Pool;
using test_support::sendStdoutToStderr;
using test_support::StdoutCapture;
using testing::AllOf;
using testing::ContainsRegex;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

class ShutdownTest : public testing::Test {
  protected:
    ShutdownTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        bCPU = true;
        InitColours(1);
    }
    ~ShutdownTest() override {
        threadsLeft = -1;
        waitingThreadsBegin = false;
        shutdown_threads = false;
    }

    // A view that keeps every worker busy for minutes.
    static void queueLongFrame() {
        bDoublePrecision = true;
        copyToView(test_support::slowView());
        queueFrame();
    }

    static std::string linesOfShutdown(int threads) {
        std::string lines = "Releasing OpenCL resources ...[DONE]\nShutting down threads\n";
        for (int i = 0; i < threads; ++i) lines += "Waiting for thread " + std::to_string(i) + "\n";
        return lines + "Thread shutdown complete\n";
    }

    test_support::ViewGuard view;
    test_support::ImageGuard image{256, 256};
};

TEST_F(ShutdownTest, TheScopeObjectStopsThePoolAndSaysSo) {
    const Pool pool(8);
    const StdoutCapture capture;
    { const CThreadShutdown shutdown; }
    EXPECT_EQ(capture.text(), linesOfShutdown(8));
    EXPECT_TRUE(vThreads.empty());
    EXPECT_TRUE(shutdown_threads);
}

TEST_F(ShutdownTest, TheScopeObjectStopsThePoolWhenItsScopeIsLeftByAnException) {
    const Pool pool(2);
    const StdoutCapture capture;
    try {
        const CThreadShutdown shutdown;
        throw 1;
    } catch (int) {
        std::cout << "caught" << std::endl;
    }
    EXPECT_EQ(capture.text(), linesOfShutdown(2) + "caught\n");
    EXPECT_TRUE(vThreads.empty());
}

TEST_F(ShutdownTest, WithoutThreadsNoneIsWaitedFor) {
    const Pool pool(0);
    const StdoutCapture capture;
    { const CThreadShutdown shutdown; }
    EXPECT_EQ(capture.text(), linesOfShutdown(0));
}

TEST_F(ShutdownTest, APlaceWithoutAThreadIsPassedOver) {
    const Pool pool(3);
    vThreads[1]->detach();
    vThreads[1].reset();
    const StdoutCapture capture;
    stopWorkers(true);
    EXPECT_EQ(capture.text(), "Waiting for thread 0\nWaiting for thread 2\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the detached one sees it too
}

TEST_F(ShutdownTest, TheScopeObjectStopsAPoolThatIsBusy) {
    const Pool pool(2);
    const StdoutCapture capture;
    queueLongFrame();
    { const CThreadShutdown shutdown; }
    EXPECT_EQ(capture.text(), "Enqueuing 65536\n" + linesOfShutdown(2));
    EXPECT_GT(task_count, 0);
}

TEST_F(ShutdownTest, ExitFromMainsThreadStopsThePoolAndKeepsTheStatus) {
    EXPECT_EXIT(
        {
            startWorkers(3);
            numCPUThreads = 3;
            queueLongFrame();
            std::exit(5);
        },
        ExitedWithCode(5), Not(HasSubstr("terminate")));
}

TEST_F(ShutdownTest, ExitWhileHoldingTheLockEnds) {
    EXPECT_EXIT(
        {
            startWorkers(3);
            numCPUThreads = 3;
            mutex.lock();
            queueLongFrame();
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            alarm(20);
            std::exit(7);
        },
        ExitedWithCode(7), "");
}

TEST_F(ShutdownTest, ExitAfterTheScopeObjectKeepsTheStatus) {
    EXPECT_EXIT(
        {
            startWorkers(2);
            { const CThreadShutdown shutdown; }
            std::exit(3);
        },
        ExitedWithCode(3), "");
}

// Starts a pool whose workers do not come to an end before `waitingThreadsBegin` is set, and stops
// it on a thread of its own; returns when that has begun to wait.
std::thread stopWorkersThatStay() {
    newThreadsWait = true;
    startWorkers(2);
    newThreadsWait = false;
    joinHasBegun = false;
    std::thread stopper([] { stopWorkers(false); });
    while (!joinHasBegun) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return stopper;
}

TEST_F(ShutdownTest, WhoeverStopsThePoolASecondTimeWaitsUntilNoWorkerIsLeft) {
    std::thread first = stopWorkersThatStay();
    std::atomic<bool> returned{false};
    std::thread second([&] {
        stopWorkers(false);
        returned = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(returned);
    waitingThreadsBegin = true;
    first.join();
    second.join();
    EXPECT_TRUE(vThreads.empty());
}

TEST_F(ShutdownTest, ExitWhileAnotherThreadStopsThePoolKeepsTheStatus) {
    EXPECT_EXIT(
        {
            stopWorkersThatStay().detach();
            std::thread([] {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                waitingThreadsBegin = true;
            }).detach();
            std::exit(3);
        },
        ExitedWithCode(3), Not(HasSubstr("terminate")));
}

TEST_F(ShutdownTest, ExitPrintsNoLines) {
    EXPECT_EXIT(
        {
            sendStdoutToStderr();
            startWorkers(2);
            std::exit(0);
        },
        ExitedWithCode(0), Not(HasSubstr("thread")));
}

TEST_F(ShutdownTest, AThreadThatCannotBeCreatedIsOneLineAndTheRestGoOn) {
    EXPECT_EXIT(
        {
            sendStdoutToStderr();
            threadsLeft = 2;
            startWorkers(5);
            threadsLeft = -1;
            numCPUThreads = 5;
            copyToView(test_support::makeView(0, -2, 2, -2, 2, 10));
            queueFrame();
            waitForFrame();
            std::cout << max_threads << " threads, " << task_count << " left" << std::endl;
            std::exit(0);
        },
        ExitedWithCode(0),
        AllOf(ContainsRegex("Could not start CPU thread 3: .*\n"),
              Not(HasSubstr("Could not start CPU thread 4")), HasSubstr("2 threads, 0 left\n")));
}

TEST_F(ShutdownTest, AFirstThreadThatCannotBeCreatedLeavesThoseAfterItWorking) {
    EXPECT_EXIT(
        {
            sendStdoutToStderr();
            failuresFirst = 2;
            startWorkers(5);
            numCPUThreads = max_threads;
            copyToView(test_support::makeView(0, -2, 2, -2, 2, 10));
            queueFrame();
            waitForFrame();
            std::cout << max_threads << " threads, " << task_count << " left" << std::endl;
            numCPUThreads = 1;  // the first that could be created is number 1
            queueFrame();
            waitForFrame();
            std::exit(0);
        },
        ExitedWithCode(0),
        AllOf(ContainsRegex("Could not start CPU thread 1: .*\n"),
              Not(HasSubstr("Could not start CPU thread 2")), HasSubstr("3 threads, 0 left\n")));
}

TEST_F(ShutdownTest, WhenNoThreadCanBeCreatedTheMainThreadRenders) {
    EXPECT_EXIT(
        {
            sendStdoutToStderr();
            threadsLeft = 0;
            startWorkers(4);
            copyToView(test_support::makeView(0, -2, 2, -2, 2, 10));
            queueFrame();
            waitForFrame();
            std::cout << max_threads << " threads, " << task_count << " left" << std::endl;
            std::exit(0);
        },
        ExitedWithCode(0),
        AllOf(HasSubstr("Could not start CPU thread 1"), HasSubstr("1 threads, 0 left\n")));
}

}  // namespace

#include "app/signals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

#include "backends/worker_pool.h"
#include "tests/support/glut_stand_in.h"
#include "tests/support/stdout_capture.h"

namespace {

// The time as the tests let it pass: it stands still, save for what they add.
std::atomic<bool> timeStandsStill{false};
std::atomic<long> secondsAdded{0};

}  // namespace

// Stands before the C library's function.
extern "C" int clock_gettime(clockid_t clock, timespec* now) {
    static timespec stopped = {};
    if (!timeStandsStill) return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    *now = stopped;
    now->tv_sec += secondsAdded;
    return 0;
}

namespace {

using namespace std::chrono_literals;
using glut_stand_in::callsNamed;
using glut_stand_in::glut;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::KilledBySignal;

class SignalTest : public testing::Test {
  protected:
    SignalTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        glut.echo = true;
    }
    ~SignalTest() override { glut_stand_in::reset(); }
};

TEST_F(SignalTest, ASignalLeavesTheMainLoopAndTheFrameThatIsWaitedFor) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                test_support::sendStdoutToStderr();
                stopMainLoopOnSignals();
                raise(number);
                std::_Exit(shutdown_threads ? 0 : 1);
            },
            ExitedWithCode(0), HasSubstr("glutLeaveMainLoop()\n"))
            << number;
    }
}

TEST_F(SignalTest, TheParentSeesTheSignal) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            raise(SIGTERM);
            endBySignal();
        },
        KilledBySignal(SIGTERM), "");
}

TEST_F(SignalTest, WithoutASignalTheProcessGoesOn) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            endBySignal();
            std::_Exit(4);
        },
        ExitedWithCode(4), "");
}

TEST_F(SignalTest, ASecondSignalASecondLaterEndsTheProcessAtOnce) {
    for (const int second : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                timeStandsStill = true;
                stopMainLoopOnSignals();
                raise(SIGINT);
                secondsAdded = 1;
                raise(second);
                std::_Exit(0);
            },
            KilledBySignal(second), "")
            << second;
    }
}

TEST_F(SignalTest, SignalsThatComeTogetherAreOneWish) {
    for (const int second : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                timeStandsStill = true;
                stopMainLoopOnSignals();
                raise(SIGTERM);
                raise(second);
                raise(SIGHUP);
                endBySignal();
            },
            KilledBySignal(SIGTERM), "")
            << second;
    }
}

std::size_t timesToldToLeave() {
    return callsNamed({"glutLeaveMainLoop"}).size();
}

// Whether the condition comes true within a minute. Between two looks the thread sleeps, where
// signals find it.
bool comesTrue(const std::function<bool()>& condition) {
    for (int look = 0; look < 6000; ++look) {
        if (condition()) return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

TEST_F(SignalTest, TheLoopIsToldAgainUntilItLeaves) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            raise(SIGINT);
            std::_Exit(comesTrue([] { return timesToldToLeave() >= 3; }) ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, AnAlarmWithoutASignalChangesNothing) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            raise(SIGALRM);
            std::_Exit(timesToldToLeave() == 0 && !shutdown_threads ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, NothingTouchesGlutOnceTheLoopHasEnded) {
    EXPECT_EXIT(
        {
            timeStandsStill = true;
            stopMainLoopOnSignals();
            raise(SIGINT);
            leaveMainLoopAlone();
            const std::size_t before = timesToldToLeave();
            raise(SIGINT);
            raise(SIGALRM);
            std::this_thread::sleep_for(150ms);
            std::_Exit(before == 1 && timesToldToLeave() == before ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, NoAlarmRingsOnceTheLoopHasEnded) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            raise(SIGINT);
            leaveMainLoopAlone();
            signal(SIGALRM, SIG_DFL);
            std::this_thread::sleep_for(150ms);
            std::_Exit(0);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, NothingTouchesGlutWhileItTakesItselfDown) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            glut.initialised = false;
            raise(SIGINT);
            std::_Exit(timesToldToLeave() == 0 && shutdown_threads ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, ASignalAfterTheLoopStillReachesTheParentInTheEnd) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            leaveMainLoopAlone();
            raise(SIGTERM);
            endBySignal();
        },
        KilledBySignal(SIGTERM), "");
}

TEST_F(SignalTest, ASignalWhileTheProcessExitsChangesNeitherItsWayNorItsStatus) {
    EXPECT_EXIT(
        {
            std::atexit([] {  // runs behind what was registered later
                raise(SIGTERM);
                raise(SIGALRM);
                if (timesToldToLeave() != 0) std::_Exit(1);
            });
            stopMainLoopOnSignals();
            std::exit(6);
        },
        ExitedWithCode(6), "");
}

TEST_F(SignalTest, TheHandlerRunsOnTheMainThreadWhereverTheSignalArrives) {
    EXPECT_EXIT(
        {
            static std::thread::id handledBy;
            glut.onCall = [](const std::string&) { handledBy = std::this_thread::get_id(); };
            stopMainLoopOnSignals();
            std::thread([] { raise(SIGTERM); }).join();
            comesTrue([] { return timesToldToLeave() > 0; });
            std::_Exit(handledBy == std::this_thread::get_id() ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, AnIgnoredSignalStaysIgnored) {
    EXPECT_EXIT(
        {
            signal(SIGHUP, SIG_IGN);
            stopMainLoopOnSignals();
            raise(SIGHUP);
            std::_Exit(shutdown_threads ? 1 : 0);
        },
        ExitedWithCode(0), "");
}

TEST_F(SignalTest, AClosedPipeEndsTheProcessWithoutAWord) {
    EXPECT_EXIT(
        {
            signal(SIGPIPE, SIG_IGN);  // as a careless parent leaves it
            endQuietlyOnClosedPipe();
            int ends[2];
            if (pipe(ends) != 0) std::_Exit(1);
            close(ends[0]);
            if (write(ends[1], "x", 1) == 1) std::_Exit(2);
            std::_Exit(3);
        },
        KilledBySignal(SIGPIPE), "");
}

}  // namespace

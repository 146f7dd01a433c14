#include "app/signals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "backends/worker_pool.h"
#include "tests/support/glut_stand_in.h"
#include "tests/support/stdout_capture.h"

namespace {

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

TEST_F(SignalTest, ASecondSignalEndsTheProcessAtOnce) {
    EXPECT_EXIT(
        {
            stopMainLoopOnSignals();
            raise(SIGINT);
            raise(SIGINT);
            std::_Exit(0);
        },
        KilledBySignal(SIGINT), "");
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

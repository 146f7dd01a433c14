#include "app/signals.h"

#include <GL/freeglut.h>
#include <pthread.h>
#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "app/standard_streams.h"
#include "backends/worker_pool.h"

namespace {

// The first signal that asked for the end, 0 if none, and when it came. Written by the handler,
// which the main thread alone carries out; the signal is read by the main thread.
volatile sig_atomic_t endingSignal = 0;
volatile std::int64_t endingSince = 0;

// Whether GLUT's main loop runs or is about to. Written by the main thread, read by the handlers.
volatile sig_atomic_t mainLoopRuns = 0;

// The main thread; written before there is a handler that reads it.
pthread_t mainThread;

std::int64_t nanosecondsNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

void wakeEvery(suseconds_t microseconds) {
    const itimerval timer = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

// GLUT takes its own state down before its main loop returns, and ends a process that calls it
// afterwards; whether the state is there is the one question it always answers.
void leaveMainLoop() {
    if (mainLoopRuns != 0 && glutGet(GLUT_INIT_STATE) != 0) glutLeaveMainLoop();
}

void endAtOnce(int signalNumber) {
    signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

// The main loop looks at its stop flag only between events. The alarm wakes it should the signal
// have come after it looked and before it slept.
void onAlarm(int) {
    if (endingSignal != 0) leaveMainLoop();
}

void onEndingSignal(int signalNumber) {
    if (endingSignal == 0) {
        endingSince = nanosecondsNow();
        endingSignal = signalNumber;
        if (mainLoopRuns != 0) wakeEvery(50'000);
    } else if (nanosecondsNow() - endingSince >= 500'000'000) {
        endAtOnce(signalNumber);
    }
    shutdown_threads = true;
    leaveMainLoop();
}

// While the main thread carries out a handler, the next signal of that kind comes to another one.
template <void (*handler)(int)>
void onMainThread(int signalNumber) {
    const int error = errno;
    if (pthread_equal(pthread_self(), mainThread) != 0) {
        handler(signalNumber);
    } else {
        pthread_kill(mainThread, signalNumber);
    }
    errno = error;
}

// A signal that the parent had ignored, as nohup does, stays ignored.
void handle(int signalNumber, void (*handler)(int)) {
    struct sigaction action = {};
    sigaction(signalNumber, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int other : {SIGALRM, SIGINT, SIGTERM, SIGHUP}) sigaddset(&action.sa_mask, other);
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void endQuietlyOnClosedPipe() {
    signal(SIGPIPE, SIG_DFL);
}

void stopMainLoopOnSignals() {
    mainThread = pthread_self();
    mainLoopRuns = 1;
    std::atexit(leaveMainLoopAlone);
    handle(SIGALRM, onMainThread<onAlarm>);
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        handle(signalNumber, onMainThread<onEndingSignal>);
    }
}

void leaveMainLoopAlone() {
    mainLoopRuns = 0;
    wakeEvery(0);
}

void endBySignal() {
    if (endingSignal == 0) return;
    tellOfLostOutput();  // as exit() would
    endAtOnce(endingSignal);
}

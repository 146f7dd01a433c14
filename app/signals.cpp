#include "app/signals.h"

#include <GL/freeglut.h>
#include <signal.h>
#include <unistd.h>

#include "backends/worker_pool.h"

namespace {

// The signal that left the main loop, 0 if none. Written by the handler, read by the main thread.
volatile sig_atomic_t endingSignal = 0;

// The main loop looks at its stop flag only between events. The alarm wakes it should the signal
// have come after it looked and before it slept.
void onSignal(int signalNumber) {
    if (signalNumber != SIGALRM) endingSignal = signalNumber;
    shutdown_threads = true;
    glutLeaveMainLoop();
    alarm(1);
}

// A signal that the parent had ignored, as nohup does, stays ignored.
void handle(int signalNumber, int flags) {
    struct sigaction action = {};
    sigaction(signalNumber, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = onSignal;
    action.sa_flags = flags;
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void endQuietlyOnClosedPipe() {
    signal(SIGPIPE, SIG_DFL);
}

void stopMainLoopOnSignals() {
    handle(SIGALRM, 0);
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        handle(signalNumber, static_cast<int>(SA_RESETHAND));
    }
}

void endBySignal() {
    if (endingSignal == 0) return;
    signal(endingSignal, SIG_DFL);
    raise(endingSignal);
}

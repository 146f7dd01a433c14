// The command line of the program with a window, from its first line to the main loop and back. The
// first byte says which devices there are; the others are the arguments.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "app/signals.h"
#include "app/start_up.h"
#include "backends/image.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "tests/fuzz/arguments.h"
#include "tests/fuzz/require.h"
#include "tests/support/backend_globals.h"
#include "tests/support/device_stand_in.h"
#include "tests/support/explorer_reset.h"
#include "tests/support/glut_stand_in.h"

// No file is read that the input names, nothing is drawn, and the fuzzer keeps its own signals.
void createMenu() {}
void LoadData(std::string) {}
void stopMainLoopOnSignals() {}
void leaveMainLoopAlone() {}

namespace {

using glut_stand_in::glut;

void prepare(int devices) {
    test_support::resetExplorer();
    glut_stand_in::reset();
    glut.recording = false;
    glut.initialised = false;
    glut.mainLoop = [] {
        require(glut.display != nullptr && buffer != nullptr, "the main loop finds all in place");
        require(numCPUThreads >= 1 && !vThreads.empty(), "there are threads that work");
    };
    standInDevices.clear();
    for (int i = 0; i < devices % 4; ++i) standInDevices.push_back((devices >> (2 + i) & 1) != 0);
    winX = winY = 256;
    bCPU = false;
    bDoublePrecision = false;
    shutdown_threads = false;
    test_support::clearQueue();
}

int run(Arguments& arguments) {
    const int status = runTessary(arguments.count(), arguments.values());
    require(status == 0 || status == 1, "the status is one that is told of");
    require(vThreads.empty(), "no thread is left");
    return status;
}

// A number of a device may end the process where it stands.
bool mayExit(Arguments& arguments) {
    for (int i = 0; i < arguments.count(); ++i) {
        if (std::string(arguments.values()[i]).find("--device") != std::string::npos) return true;
    }
    return false;
}

void runApart(Arguments& arguments) {
    const pid_t child = fork();
    require(child >= 0, "there is a process to be had");
    if (child == 0) {
        // Before what a fuzzer does where a target ends its process.
        on_exit([](int status, void*) { _exit(status); }, nullptr);
        _exit(run(arguments));
    }
    int status = 0;
    pid_t ended = 0;
    // A fuzzer's own alarm may come meanwhile.
    do ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    require(ended == child, "the process is waited for");
    require(WIFEXITED(status) && WEXITSTATUS(status) <= 1, "it ends with a status told of");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    Arguments arguments("tessary", data + 1, size - 1);
    prepare(data[0]);
    if (mayExit(arguments)) {
        runApart(arguments);
    } else {
        run(arguments);
    }
    return 0;
}

#include "tests/support/terminal.h"

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace test_support {
namespace {

void flushAll() {
    std::cout.flush();
    std::fflush(stdout);
}

}  // namespace

StdoutTerminal::StdoutTerminal() {
    flushAll();
    termios mode = {};
    cfmakeraw(&mode);
    int terminal = -1;
    savedFd = dup(STDOUT_FILENO);
    if (savedFd < 0 || openpty(&masterFd, &terminal, nullptr, &mode, nullptr) != 0) std::abort();
    dup2(terminal, STDOUT_FILENO);
    close(terminal);
}

StdoutTerminal::~StdoutTerminal() {
    flushAll();
    dup2(savedFd, STDOUT_FILENO);
    close(savedFd);
    close(masterFd);
}

std::string StdoutTerminal::line() const {
    constexpr int PATIENCE_MILLISECONDS = 30000;
    flushAll();
    std::string text;
    pollfd arrival = {masterFd, POLLIN, 0};
    while (!text.ends_with('\n') && poll(&arrival, 1, PATIENCE_MILLISECONDS) == 1) {
        char character = 0;
        if (read(masterFd, &character, 1) != 1) break;
        text += character;
    }
    return text;
}

}  // namespace test_support

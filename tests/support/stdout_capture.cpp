#include "tests/support/stdout_capture.h"

#include <gtest/gtest.h>
#include <stdlib.h>
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

StdoutCapture::StdoutCapture() {
    flushAll();
    char path[] = "/tmp/tessary-stdout-XXXXXX";
    savedFd = dup(STDOUT_FILENO);
    fileFd = mkstemp(path);
    if (savedFd < 0 || fileFd < 0) std::abort();
    unlink(path);
    dup2(fileFd, STDOUT_FILENO);
}

StdoutCapture::~StdoutCapture() {
    flushAll();
    dup2(savedFd, STDOUT_FILENO);
    if (testing::Test::HasFailure()) std::cout << text() << std::flush;
    close(savedFd);
    close(fileFd);
}

std::string StdoutCapture::text() const {
    std::string all;
    char block[4096];
    off_t at = 0;
    for (;;) {
        const ssize_t got = pread(fileFd, block, sizeof block, at);
        if (got <= 0) return all;
        all.append(block, static_cast<std::size_t>(got));
        at += got;
    }
}

void sendStdoutToStderr() {
    flushAll();
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace test_support

// What the program prints, seen from outside: through the file descriptor, so that C and C++ output
// both count and a line that was not flushed is missed.
#pragma once

#include <string>

namespace test_support {

// Redirects standard output while it lives. One at a time. In a test that fails, what was captured
// is passed on at the end, since the test's own messages are in it.
class StdoutCapture {
  public:
    StdoutCapture();
    ~StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    // All that has been written and flushed so far.
    std::string text() const;

  private:
    int savedFd;
    int fileFd;
};

// Makes standard output go where standard error goes, for the rest of the process: the output that
// a death test's matcher sees is standard error.
void sendStdoutToStderr();

}  // namespace test_support

// A terminal in the place of standard output.
#pragma once

#include <string>

namespace test_support {

// Standard output is a terminal, which changes no byte, while it lives.
class StdoutTerminal {
  public:
    StdoutTerminal();
    ~StdoutTerminal();
    StdoutTerminal(const StdoutTerminal&) = delete;
    StdoutTerminal& operator=(const StdoutTerminal&) = delete;

    // Waits for the next line printed; with its end. What there is when no more comes.
    std::string line() const;

  private:
    int savedFd;
    int masterFd = -1;
};

}  // namespace test_support

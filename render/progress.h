// A line on the terminal that tells how far a run has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace render {

// How far a run is: pictures done and to do, and the same in some finer unit of work.
struct Done {
    std::uint64_t pictures, allPictures;
    std::uint64_t work, allWork;
};

// The line for a terminal of so many columns, without a line feed: a bar, pictures a second, time
// left. seconds: since the start. Empty where there is no room for it.
std::string progressLine(const Done& done, double seconds, int columns);

// Shows that line on standard error, ten times a second at most, when standard error is a terminal
// and `wanted`; wipes it away at the end. One thread.
class Progress {
  public:
    explicit Progress(bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const Done& done);

  private:
    using Clock = std::chrono::steady_clock;
    bool visible, drawn = false;
    Clock::time_point start = Clock::now(), last = start;
};

}  // namespace render

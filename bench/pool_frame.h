// Frames through the real tile queue and worker pool, timed.
#pragma once

#include <cstdint>
#include <iostream>

#include "bench/views.h"

namespace bench {

// Keeps the program's own lines out of the table while it lives.
class MutedOutput {
  public:
    MutedOutput() : saved(std::cout.rdbuf(nullptr)) {}
    ~MutedOutput() {
        std::cout.rdbuf(saved);
        std::cout.clear();
    }
    MutedOutput(const MutedOutput&) = delete;
    MutedOutput& operator=(const MutedOutput&) = delete;

  private:
    std::streambuf* saved;
};

// Allocates the picture and the palettes and starts `threads` workers. Once, on the main thread.
void startPool(std::int32_t threads);

// Makes `view` the one that the next frames render; maxIters replaces its iteration limit.
void setView(const View& view, int maxIters, bool doublePrecision);

// What times are: by the clock, or what all threads took of the processors, over the number of
// threads. The same on an idle machine; where other work keeps a frame waiting the second hardly
// minds.
enum class Timing { clock, processors };

// Seconds from queuing the tiles to the end of the last one. Only every `stride`-th tile is queued;
// the time is scaled up to all of them. stride: at least 1, odd so that it visits every row.
// shortest: what such a frame takes at the least; for nine tenths of that the caller sleeps, as its
// looks at the clock would take one of the workers' cores away. 0 when not known.
double frameSeconds(int stride, double shortest, Timing timing = Timing::clock);

// The shortest of some frames of the present view: whatever else the machine does can only add to a
// time.
struct BestFrame {
    explicit BestFrame(int tileStride, Timing which = Timing::clock)
        : stride(tileStride), timing(which) {}

    // Renders one more frame and returns its seconds.
    double renderOnce();

    // The same, and again while the frames of this call are short, four at most.
    void render();

    int stride;  // as frameSeconds takes it
    Timing timing;
    double seconds = 0;  // 0 before the first frame
};

// What one frame took: by the clock, and of the processors in all threads together.
struct FrameTime {
    double seconds, processorSeconds;
};

// A frame of the present view, and one whose tiles are all empty. The workers wait for it.
// shortest: as frameSeconds takes it.
FrameTime wholeFrame(double shortest);
FrameTime emptyFrame(double shortest);

// Lets so many of the workers work, once all have noticed.
void allowThreads(std::int32_t threads);

// Seconds of a frame whose tiles are all empty: what the queue costs by itself.
double emptyFrameSeconds();

}  // namespace bench

#include "bench/pool_frame.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "backends/image.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"

namespace bench {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// What all threads of the process have taken of the processors so far.
double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Waits without the frame loop's 20 ms steps, which would hide what is measured.
double waitForTiles(Clock::time_point start, double shortest) {
    std::this_thread::sleep_until(start + std::chrono::duration<double>(0.9 * shortest));
    while (task_count != 0) std::this_thread::sleep_for(50us);
    return secondsSince(start);
}

struct Start {
    Clock::time_point clock = Clock::now();
    double processors = processorSeconds();
};

// The workers are idle again, polling an empty queue, when the next frame starts.
double finishFrame(const Start& start, double shortest, Timing timing) {
    const double byTheClock = waitForTiles(start.clock, shortest);
    const double ofProcessors = (processorSeconds() - start.processors) / numCPUThreads;
    std::this_thread::sleep_for(3ms);
    return timing == Timing::clock ? byTheClock : ofProcessors;
}

// Queues what keep() leaves of a frame's tiles. Under the lock throughout, so that no worker
// begins.
template <class Keep>
void queueTiles(Keep&& keep) {
    const std::lock_guard lock(mutex);
    queueFrame();
    std::vector<params> kept;
    std::size_t index = 0;
    for (const params& tile : workQ) {
        if (keep(index++, tile)) kept.push_back(tile);
    }
    workQ.clear();
    for (const params& tile : kept) workQ.push_back(tile);
    task_count = static_cast<std::int32_t>(workQ.size());
}

}  // namespace

void startPool(std::int32_t threads) {
    tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
    buffer = makeArray<unsigned char>(imageBytes());
    reserveTiles();
    updatePalette(0);
    bCPU = true;
    startWorkers(threads);
    numCPUThreads = max_threads;
}

void setView(const View& view, int iterationLimit, bool doublePrecision) {
    xMin = view.xMin, xMax = view.xMax, yMin = view.yMin, yMax = view.yMax;
    cx = view.cx, cy = view.cy;
    maxIters = iterationLimit;
    maxSize = view.maxSize;
    currentFractalType = view.type;
    bDoublePrecision = doublePrecision;
}

double frameSeconds(int stride, double shortest, Timing timing) {
    const MutedOutput muted;
    if (stride == 1) {
        const Start start;
        queueFrame();
        return finishFrame(start, shortest, timing);
    }
    const auto every = static_cast<std::size_t>(stride);
    queueTiles([&](std::size_t index, const params&) { return index % every == every / 2; });
    return finishFrame(Start(), shortest / stride, timing) * stride;
}

double BestFrame::renderOnce() {
    const double frame = frameSeconds(stride, seconds, timing);
    seconds = seconds == 0 ? frame : std::min(seconds, frame);
    return frame;
}

void BestFrame::render() {
    constexpr double ENOUGH = 0.1;
    double sum = 0;
    for (int i = 0; i < 4 && sum < ENOUGH; ++i) sum += renderOnce();
}

FrameTime wholeFrame(double shortest) {
    const MutedOutput muted;
    const double processor = processorSeconds();
    const auto start = Clock::now();
    queueFrame();
    const double seconds = waitForTiles(start, shortest);
    return {seconds, processorSeconds() - processor};
}

FrameTime emptyFrame(double shortest) {
    const MutedOutput muted;
    const double processor = processorSeconds();
    std::unique_lock lock(mutex);
    const auto start = Clock::now();
    queueFrame();
    for (params& tile : workQ) tile.xEnd = tile.xStart;
    lock.unlock();
    const double seconds = waitForTiles(start, shortest);
    return {seconds, processorSeconds() - processor};
}

void allowThreads(std::int32_t threads) {
    numCPUThreads = threads;
    std::this_thread::sleep_for(30ms);  // who may not work looks every 20
}

double emptyFrameSeconds() {
    double best = 1e9;
    for (int i = 0; i < 7; ++i) {
        best = std::min(best, emptyFrame(0).seconds);
        std::this_thread::sleep_for(3ms);
    }
    return best;
}

}  // namespace bench

#include "backends/worker_pool.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <system_error>

#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "compute/saturate.h"
#include "compute/tile_renderer.h"

using namespace std::chrono_literals;

constinit PoolWords poolWords;
std::atomic<bool> shutdown_threads{false};
std::int32_t max_threads = 1;
std::atomic<std::int32_t> numCPUThreads{1};
std::vector<std::unique_ptr<std::thread>> vThreads;

namespace {

using Clock = std::chrono::steady_clock;
using Lock = std::unique_lock<std::recursive_mutex>;

// The tile at the front, removed; nothing when the queue is empty. Call under mutex. With two
// workers the tile after the next is the one that this worker takes next: it is asked for before
// others can have the lock, so that it is here when it is copied under the lock.
std::optional<params> takeTile() {
    if (workQ.empty()) return std::nullopt;
    const params tile = workQ.front();
    workQ.pop_front();
    if (!workQ.empty()) __builtin_prefetch(workQ.begin() + 1);
    return tile;
}

// Under mutex: nobody else writes meanwhile, and a plain store is far cheaper than a subtraction
// that other cores could interrupt.
void countTileDown() {
    task_count.store(task_count.load(std::memory_order_relaxed) - 1, std::memory_order_release);
}

// Leaves the processor to a sibling and the memory to whoever holds the lock.
void pauseFor(int turns) {
    for (int i = 0; i < turns; ++i) {
#if defined(__x86_64__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }
}

// A tile changes hands in far less time than a sleep takes, so a lock that is held is tried for
// again until SPIN is over: time and not tries, for a pause is ten times as long on one processor
// as on another. A holder that is not done by then has lost its processor, or more workers wait
// than the lock can serve; whoever waits in vain time after time sleeps longer each time,
// but not so long that a frame is begun late when the lock was held to queue it.
constexpr auto SPIN = 400ns;
constexpr auto SHORTEST_NAP = 50us, LONGEST_NAP = 200us;

// Tries for the lock until SPIN is over, with longer pauses each time.
bool lockSoon(Lock& lock) {
    constexpr int LONGEST_PAUSE = 16;
    const auto start = Clock::now();
    int turns = 1;
    do {
        pauseFor(turns);
        if (lock.try_lock()) return true;
        turns = std::min(2 * turns, LONGEST_PAUSE);
    } while (Clock::now() - start < SPIN);
    return false;
}

// Locks `mutex` for a worker, or gives up when the program is ending: exit() can be reached by a
// thread that holds the lock, and it joins the workers.
Lock lockUnlessStopping() {
    Lock lock(mutex, std::try_to_lock);
    for (auto nap = SHORTEST_NAP; !lock && !shutdown_threads && !lockSoon(lock);
         nap = std::min(2 * nap, LONGEST_NAP)) {
        std::this_thread::sleep_for(nap);
    }
    return lock;
}

template <class T>
void renderTileAs(const params& tile, StopFlag stop) {
    renderTileUntilStopped<T>(
        {tile.xStart, tile.yStart, tile.xEnd, tile.yEnd, static_cast<int>(winX),
         static_cast<int>(winY), static_cast<T>(tile.xMin), static_cast<T>(tile.xMax),
         static_cast<T>(tile.yMin), static_cast<T>(tile.yMax), static_cast<T>(tile.cx),
         static_cast<T>(tile.cy), static_cast<T>(truncateToInt(maxSize)), maxIters, buffer.get(),
         cpuPalette, stop},
        currentFractalType);
}

void renderTile(const params& tile, StopFlag stop) {
    if (bDoublePrecision) {
        renderTileAs<double>(tile, stop);
    } else {
        renderTileAs<float>(tile, stop);
    }
}

// Why a worker takes no further tile.
enum class NoTile { queueEmpty, notAllowed, stopping };

// Works tile after tile and answers why it takes no more. Each tile is counted down under the same
// lock that takes the next one: with 65,536 tiles a frame, every second lock would be waste.
NoTile workWhileAllowed(std::int32_t number) {
    for (bool finished = false;; finished = true) {
        std::optional<params> tile;
        {
            const auto lock = lockUnlessStopping();
            if (!lock) return NoTile::stopping;
            if (finished) countTileDown();
            if (shutdown_threads) return NoTile::stopping;
            if (numCPUThreads < number) return NoTile::notAllowed;
            tile = takeTile();
        }
        if (!tile) return NoTile::queueEmpty;
        renderTile(*tile, &shutdown_threads);
    }
}

// Workers that were started and have not left; what exit() must wait for. Counted by startWorkers
// and by each worker as its last act.
std::atomic<std::int32_t> workersAlive{0};

// Guards the places of vThreads while the pool stops, which two may do at a time. Recursive, for
// the second may be a callback of the first one's output.
std::recursive_mutex stopLock;

// Starts one worker and keeps its handle. Throws when the system has no thread to give.
void startWorker(std::int32_t number) {
    ++workersAlive;
    try {
        vThreads.push_back(std::make_unique<std::thread>([number] {
            threadContainer{number}();
            --workersAlive;
        }));
    } catch (...) {
        --workersAlive;
        throw;
    }
}

// How many handles there are; also while another thread stops the pool.
std::size_t workerPlaces() {
    const std::lock_guard lock(stopLock);
    return vThreads.size();
}

// Takes the handle at `place`; null when it is taken already.
std::unique_ptr<std::thread> takeWorker(std::size_t place) {
    const std::lock_guard lock(stopLock);
    return place < vThreads.size() ? std::move(vThreads[place]) : nullptr;
}

// Width or height of the tiles of a picture that is so wide or high.
std::int32_t tileSide(std::int64_t side) {
    return static_cast<std::int32_t>(std::max<std::int64_t>(side >> 8, 1));
}

// Computes tiles on the calling thread until the queue is empty.
void drainQueue(StopFlag stop) {
    for (;;) {
        std::optional<params> tile;
        {
            const std::lock_guard lock(mutex);
            tile = takeTile();
        }
        if (!tile) return;
        renderTile(*tile, stop);
    }
}

}  // namespace

void threadContainer::operator()() const {
    if (shutdown_threads) return;
    do {
        if (numCPUThreads < number) {
            std::this_thread::sleep_for(20ms);
            continue;
        }
        // One that is no longer allowed goes straight to its longer sleep.
        const NoTile reason = workWhileAllowed(number);
        if (reason == NoTile::stopping) return;
        if (reason == NoTile::queueEmpty) std::this_thread::sleep_for(1ms);
    } while (!shutdown_threads);
}

void startWorkers(std::int32_t count) {
    vThreads.reserve(static_cast<std::size_t>(std::max(count, 0)));
    bool complained = false;
    std::int32_t started = 0;
    for (std::int32_t attempt = 1; attempt <= count; ++attempt) {
        try {
            startWorker(started + 1);
            ++started;
        } catch (const std::system_error& error) {
            if (complained) continue;
            std::cout << "Could not start CPU thread " << attempt << ": " << error.what()
                      << std::endl;
            complained = true;
        }
    }
    max_threads = std::max(started, std::int32_t{1});
    std::atexit([] { stopWorkers(false); });
}

void stopWorkers(bool print) {
    shutdown_threads = true;
    for (std::size_t i = 0; i < workerPlaces(); ++i) {
        const std::unique_ptr<std::thread> worker = takeWorker(i);
        if (!worker) continue;
        if (print) std::cout << "Waiting for thread " << i << std::endl;
        worker->join();
    }
    // Nobody returns from here, perhaps to end the process, while a worker that another one joins
    // still writes to the picture.
    while (workersAlive > 0) std::this_thread::sleep_for(1ms);
    const std::lock_guard lock(stopLock);
    vThreads.clear();
}

CThreadShutdown::~CThreadShutdown() {
    std::cout << "Releasing OpenCL resources ...";
    if (!bCPU) release_opencl_resource(bDoublePrecision);
    std::cout << "[DONE]" << std::endl;
    std::cout << "Shutting down threads" << std::endl;
    stopWorkers(true);
    std::cout << "Thread shutdown complete" << std::endl;
}

void reserveTiles() {
    const std::int64_t columns = (winX + tileSide(winX) - 1) / tileSide(winX);
    const std::int64_t rows = (winY + tileSide(winY) - 1) / tileSide(winY);
    const std::lock_guard lock(mutex);
    workQ.reserve(static_cast<std::size_t>(columns * rows));
}

void queueFrame() {
    const std::lock_guard lock(mutex);
    task_count = 0;
    const std::int32_t xStep = tileSide(winX), yStep = tileSide(winY);
    std::int32_t count = 0;
    // Columns stop when a strip's end reaches the edge, rows when a tile's start does.
    std::int32_t x0 = 0;
    while (winX != 0) {
        const std::int32_t x1 = x0 + xStep;
        for (std::int32_t y0 = 0; y0 < winY; y0 += yStep) {
            workQ.push_back({x0, x1, y0, y0 + yStep, xMin, xMax, yMin, yMax, cx, cy});
            ++count;
        }
        x0 = x1;
        if (x1 >= winX) break;
    }
    task_count = count;
    std::cout << "Enqueuing " << count << std::endl;
}

void waitForFrame(const std::function<bool()>& givesUp) {
    if (workerPlaces() == 0 && !shutdown_threads) {
        drainQueue(&shutdown_threads);
        const std::lock_guard lock(mutex);
        task_count = 0;
    }
    if (task_count == 0 || shutdown_threads) return;
    do {
        std::this_thread::sleep_for(20ms);
        if (task_count != 0 && givesUp()) shutdown_threads = true;
    } while (task_count != 0 && !shutdown_threads);
}

void* appleThread(void*) {
    drainQueue(shutdown_threads ? nullptr : &shutdown_threads);
    return nullptr;
}

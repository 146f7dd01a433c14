// The CPU worker pool: a frame is split into tiles, the tiles are queued, and a fixed set of
// threads computes them into `buffer`.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "backends/pool_words.h"

// Set once, at exit or by a signal; read by workers and the waiting GLUT thread, no lock.
extern std::atomic<bool> shutdown_threads;

// Worker threads created (1 when there is none, so that menus offer a count). Written at start-up
// by the main thread, read by it alone.
extern std::int32_t max_threads;

// Workers allowed to work; worker k works while this is at least k. Written by the GLUT thread
// (start-up, menu), read by workers, no lock.
extern std::atomic<std::int32_t> numCPUThreads;

// The workers in creation order. Written at start-up by the main thread; its places are emptied at
// shutdown by whoever stops the pool, under a lock of its own.
extern std::vector<std::unique_ptr<std::thread>> vThreads;

// The body of a worker thread: takes tiles until shutdown_threads is set. With the queue empty it
// looks again after 1 ms, while it is not allowed to work after 20 ms; after a tile at once.
class threadContainer {
  public:
    explicit threadContainer(std::int32_t threadNumber) : number(threadNumber) {}
    void operator()() const;

  private:
    std::int32_t number;  // 1 for the first thread created
};

// Stops the pool when main ends: prints what it does, releases the OpenCL objects when the OpenCL
// renderer is in use, joins the workers in creation order.
class CThreadShutdown {
  public:
    CThreadShutdown() = default;
    CThreadShutdown(const CThreadShutdown&) = delete;
    CThreadShutdown& operator=(const CThreadShutdown&) = delete;
    ~CThreadShutdown();
};

// Starts `count` workers, numbered from 1 as they start, sets max_threads to the number started and
// has exit() stop the pool. When some cannot be started the first of them is one line on standard
// output, and the pool goes on without them. Main thread, once.
void startWorkers(std::int32_t count);

// Sets shutdown_threads and joins every worker in creation order; with `print`, a line before each
// join. A tile in work is given up within some milliseconds. Safe to call again, also before an
// earlier call has returned: all return when no worker is left. Any thread but a worker.
void stopWorkers(bool print);

// Makes room for the tiles of a picture of winX x winY, so that queuing them allocates nothing.
// Throws std::bad_alloc. Main thread, before the first frame.
void reserveTiles();

// The frame split: queues all tiles of the present view, column by column, prints "Enqueuing " and
// their number. The workers begin when it returns. GLUT thread.
void queueFrame();

// Waits for the queued frame, looking every 20 ms, until it is done or shutdown_threads is set. It
// is set here when givesUp(), asked at each look, says that the program is about to end. With no
// worker at all the calling thread does the work and asks nobody. GLUT thread.
void waitForFrame(const std::function<bool()>& givesUp = [] { return false; });

// A worker body that empties the queue on the calling thread: neither sleeps nor counts tiles down.
// Gives up its tiles if shutdown_threads is set meanwhile; set before, it changes nothing. Ignores
// its argument, returns 0. Any thread.
void* appleThread(void*);

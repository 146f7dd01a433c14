// What workers write for every tile, and what guards it, in one cache line: it comes to a worker
// with the lock, and no word that they only read comes and goes with it.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "backends/tile_queue.h"

struct alignas(CACHE_LINE) PoolWords {
    std::recursive_mutex mutex;
    std::atomic<std::int32_t> task_count{0};
    TileQueue workQ;
};

// The only one. Used under the names below alone, which say who writes and reads it; it has its
// cache lines to itself.
extern PoolWords poolWords;

// Guards fractals, currentFractal where it is checked against the size, workQ and task_count.
// Never held together with update_lock.
inline std::recursive_mutex& mutex = poolWords.mutex;

// Tiles of this frame not yet finished. Changed under mutex (set by the GLUT thread, counted down
// by workers), read by the waiting GLUT thread without it.
inline std::atomic<std::int32_t>& task_count = poolWords.task_count;

// Tiles waiting. Pushed at the back by the GLUT thread, taken from the front by workers, always
// under mutex.
inline TileQueue& workQ = poolWords.workQ;

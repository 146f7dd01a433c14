// The tiles that wait for a worker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/auto_array.h"

// One tile of work: its pixel bounds (ends exclusive) and a copy of the view when it was queued. In
// memory each is one cache line.
struct alignas(CACHE_LINE) params {
    std::int32_t xStart, xEnd, yStart, yEnd;
    double xMin, xMax, yMin, yMax;
    double cx, cy;
};
static_assert(sizeof(params) == CACHE_LINE);

// Tiles in the order in which they were pushed, one after the other in memory that the queue keeps
// from frame to frame. Whoever takes a tile touches the tile and the first two words here, nothing
// else. No lock of its own; an index or a front must exist.
class TileQueue {
  public:
    constexpr TileQueue() = default;
    TileQueue(const TileQueue&) = delete;
    TileQueue& operator=(const TileQueue&) = delete;

    bool empty() const { return first == last; }
    std::size_t size() const { return static_cast<std::size_t>(last - first); }
    const params& operator[](std::size_t index) const { return first[index]; }
    const params& front() const { return *first; }
    const params& back() const { return last[-1]; }
    const params* begin() const { return first; }
    const params* end() const { return last; }
    params* begin() { return first; }
    params* end() { return last; }

    void push_back(const params& tile) {
        if (empty()) clear();
        if (last == endOfMemory) makeRoom();
        *last++ = tile;
    }
    void pop_front() { ++first; }
    void clear() { first = last = memory.data(); }

    // Makes room for so many tiles in all: filling an empty queue up to them allocates nothing.
    // Throws std::bad_alloc, and nothing has changed.
    void reserve(std::size_t tiles);

  private:
    void makeRoom();
    void moveTo(params* place);

    params* first = nullptr;
    params* last = nullptr;
    params* endOfMemory = nullptr;
    std::vector<params> memory;
};

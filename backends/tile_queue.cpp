#include "backends/tile_queue.h"

#include <algorithm>

void TileQueue::moveTo(params* place) {
    const std::size_t waiting = size();
    std::copy(first, last, place);
    first = place;
    last = place + waiting;
}

void TileQueue::reserve(std::size_t tiles) {
    if (tiles <= memory.size()) return;
    std::vector<params> larger(tiles);
    moveTo(larger.data());
    memory.swap(larger);
    endOfMemory = memory.data() + memory.size();
}

// At the front, if half of the memory is free there; else it grows.
void TileQueue::makeRoom() {
    constexpr std::size_t FIRST_ROOM = 1024;
    if (2 * size() < memory.size()) {
        moveTo(memory.data());
    } else {
        reserve(std::max(2 * memory.size(), FIRST_ROOM));
    }
}

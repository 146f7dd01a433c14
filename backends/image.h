// The picture: its size and its pixels.
#pragma once

#include <cstdint>

#include "backends/auto_array.h"

// Width and height of the picture in pixels. Written once at start-up before any worker runs (and
// by tests while the pool is idle), read by the GLUT thread and the workers, no lock.
extern std::int64_t winX, winY;

// winX * winY * 4 bytes: red, green, blue, alpha; rows without gaps, row 0 at yMin. Allocated at
// start-up; workers write disjoint tiles during a frame, the GLUT thread reads between frames.
extern auto_array<unsigned char> buffer;

// Size of `buffer` in bytes for the present winX and winY.
inline std::size_t imageBytes() {
    return static_cast<std::size_t>(winX) * static_cast<std::size_t>(winY) * 4u;
}

// A picture side made fit for tiling: the next multiple of 8, and at least 256, below which a frame
// could not be split into tiles. Any input, also negative.
std::int64_t roundImageSide(std::int64_t side);

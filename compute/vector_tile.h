// What the vector renderer takes.
#pragma once

#include "compute/stop_flag.h"

// One tile, clipped to the picture, and all that its pixels depend on. Fields as the arguments of
// threadCPU; limit is maxSizeSquared in T. Once `stop` is set the tile is given up within some
// milliseconds, whatever its limit; pixels that have no count by then are not written.
template <class T>
struct VectorTile {
    int xStart, yStart, xEnd, yEnd;
    int width, height;
    T xMin, xMax, yMin, yMax, cx, cy;
    T limit;
    int maxIters;
    unsigned char* buffer;
    const unsigned char* palette;
    StopFlag stop = nullptr;
};

// What the vector renderer takes.
#pragma once

// One tile, clipped to the picture, and all that its pixels depend on. Fields as the arguments of
// threadCPU; limit is maxSizeSquared in T.
template <class T>
struct VectorTile {
    int xStart, yStart, xEnd, yEnd;
    int width, height;
    T xMin, xMax, yMin, yMax, cx, cy;
    T limit;
    int maxIters;
    unsigned char* buffer;
    const unsigned char* palette;
};

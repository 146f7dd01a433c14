#include "compute/tile_renderer.h"

#include <algorithm>

#include "compute/vector_renderer.h"

template <class T>
void threadCPU(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
               T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters, unsigned char* buffer,
               unsigned char* palette, int type) {
    const VectorTile<T> tile{std::max(xStart, 0),
                             std::max(yStart, 0),
                             std::min(xEnd, width),
                             std::min(yEnd, height),
                             width,
                             height,
                             xMin,
                             xMax,
                             yMin,
                             yMax,
                             cx,
                             cy,
                             static_cast<T>(maxSizeSquared),
                             maxIters,
                             buffer,
                             palette};
    if (tile.xStart >= tile.xEnd || tile.yStart >= tile.yEnd) return;
    if (renderWithVectors(tile, type)) return;
    threadScalar(xStart, yStart, xEnd, yEnd, width, height, xMin, xMax, yMin, yMax, cx, cy,
                 maxSizeSquared, maxIters, buffer, palette, type);
}

template void threadCPU(int, int, int, int, int, int, float, float, float, float, float, float, int,
                        int, unsigned char*, unsigned char*, int);
template void threadCPU(int, int, int, int, int, int, double, double, double, double, double,
                        double, int, int, unsigned char*, unsigned char*, int);

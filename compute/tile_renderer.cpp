#include "compute/tile_renderer.h"

#include <algorithm>

namespace {

template <class T>
VectorTile<T> clipped(VectorTile<T> tile) {
    tile.xStart = std::max(tile.xStart, 0);
    tile.yStart = std::max(tile.yStart, 0);
    tile.xEnd = std::min(tile.xEnd, tile.width);
    tile.yEnd = std::min(tile.yEnd, tile.height);
    return tile;
}

}  // namespace

template <class T>
void renderTileUntilStopped(const VectorTile<T>& unclipped, int type) {
    const VectorTile<T> tile = clipped(unclipped);
    if (tile.xStart >= tile.xEnd || tile.yStart >= tile.yEnd) return;
    if (renderWithVectors(tile, type)) return;
    renderScalarUntilStopped(tile, type);
}

template <class T>
void threadCPU(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
               T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters, unsigned char* buffer,
               unsigned char* palette, int type) {
    renderTileUntilStopped<T>({xStart, yStart, xEnd, yEnd, width, height, xMin, xMax, yMin, yMax,
                               cx, cy, static_cast<T>(maxSizeSquared), maxIters, buffer, palette},
                              type);
}

template void renderTileUntilStopped(const VectorTile<float>&, int);
template void renderTileUntilStopped(const VectorTile<double>&, int);
template void threadCPU(int, int, int, int, int, int, float, float, float, float, float, float, int,
                        int, unsigned char*, unsigned char*, int);
template void threadCPU(int, int, int, int, int, int, double, double, double, double, double,
                        double, int, int, unsigned char*, unsigned char*, int);

#include <algorithm>
#include <cstddef>

#include "compute/formulas.h"
#include "compute/pixels.h"
#include "compute/tile_renderer.h"

namespace {

// Calls paint(x, y) with the address of every pixel of the tile, column by column.
template <class T, class Paint>
void forEachPixel(const VectorTile<T>& tile, Paint&& paint) {
    const int yEnd = std::min(tile.yEnd, tile.height);
    for (int x = std::max(tile.xStart, 0); x < std::min(tile.xEnd, tile.width); ++x) {
        for (int y = std::max(tile.yStart, 0); y < yEnd; ++y) {
            const auto pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(tile.width) +
                               static_cast<std::size_t>(x);
            paint(x, y, tile.buffer + 4 * pixel);
            if (isSet(tile.stop)) return;
        }
    }
}

}  // namespace

template <class T>
void renderScalarUntilStopped(const VectorTile<T>& t, int type) {
    const bool known = visitRule(type, [&](auto rule) {
        forEachPixel(t, [&](int x, int y, unsigned char* pixel) {
            const int n =
                pixelCount<decltype(rule)>(x, y, t.width, t.height, t.xMin, t.xMax, t.yMin, t.yMax,
                                           t.cx, t.cy, t.limit, t.maxIters, t.stop);
            if (!isSet(t.stop)) colourPixel(pixel, n, t.maxIters, t.palette);
        });
    });
    if (!known) {
        forEachPixel(t,
                     [&](int, int, unsigned char* pixel) { colourPixel(pixel, 0, 0, t.palette); });
    }
}

template <class T>
void threadScalar(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
                  T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters,
                  unsigned char* buffer, unsigned char* palette, int type) {
    renderScalarUntilStopped<T>({xStart, yStart, xEnd, yEnd, width, height, xMin, xMax, yMin, yMax,
                                 cx, cy, static_cast<T>(maxSizeSquared), maxIters, buffer, palette},
                                type);
}

template void renderScalarUntilStopped(const VectorTile<float>&, int);
template void renderScalarUntilStopped(const VectorTile<double>&, int);
template void threadScalar(int, int, int, int, int, int, float, float, float, float, float, float,
                           int, int, unsigned char*, unsigned char*, int);
template void threadScalar(int, int, int, int, int, int, double, double, double, double, double,
                           double, int, int, unsigned char*, unsigned char*, int);

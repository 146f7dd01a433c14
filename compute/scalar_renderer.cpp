#include <algorithm>
#include <cstddef>

#include "compute/formulas.h"
#include "compute/pixels.h"
#include "compute/tile_renderer.h"

namespace {

// Calls paint(x, y) with the address of every pixel of the tile, column by column.
template <class Paint>
void forEachPixel(int xStart, int yStart, int xEnd, int yEnd, int width, int height,
                  unsigned char* buffer, Paint&& paint) {
    for (int x = std::max(xStart, 0); x < std::min(xEnd, width); ++x) {
        for (int y = std::max(yStart, 0); y < std::min(yEnd, height); ++y) {
            const auto pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                               static_cast<std::size_t>(x);
            paint(x, y, buffer + 4 * pixel);
        }
    }
}

}  // namespace

template <class T>
void threadScalar(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
                  T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters,
                  unsigned char* buffer, unsigned char* palette, int type) {
    const T limit = static_cast<T>(maxSizeSquared);
    const auto paintTile = [&](auto&& paint) {
        forEachPixel(xStart, yStart, xEnd, yEnd, width, height, buffer, paint);
    };
    const bool known = visitRule(type, [&](auto rule) {
        paintTile([&](int x, int y, unsigned char* pixel) {
            const int n = pixelCount<decltype(rule)>(x, y, width, height, xMin, xMax, yMin, yMax,
                                                     cx, cy, limit, maxIters);
            colourPixel(pixel, n, maxIters, palette);
        });
    });
    if (!known) {
        paintTile([&](int, int, unsigned char* pixel) { colourPixel(pixel, 0, 0, palette); });
    }
}

template void threadScalar(int, int, int, int, int, int, float, float, float, float, float, float,
                           int, int, unsigned char*, unsigned char*, int);
template void threadScalar(int, int, int, int, int, int, double, double, double, double, double,
                           double, int, int, unsigned char*, unsigned char*, int);

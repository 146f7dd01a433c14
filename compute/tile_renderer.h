// One tile of the picture, in plain arguments: the seam between the pool and the renderers.
#pragma once

#include "compute/vector_renderer.h"

// Renders the pixels with xStart <= x < xEnd, yStart <= y < yEnd, clipped to the picture: computes
// each count by rule `type` (0..13; any other number paints opaque black) and writes its four bytes
// at (y * width + x) * 4 of buffer.
//   T               float or double, the type of all arithmetic
//   width, height   size of the picture that `buffer` holds; below 1 there is nothing to render
//   xMin .. yMax    view rectangle, any values
//   maxSizeSquared  escape limit as a whole number, converted to T
//   maxIters        iteration limit, any int
//   buffer          width * height * 4 bytes
//   palette         768 entries of four bytes
// Allocates nothing and takes no lock; any thread, on disjoint tiles at the same time.
template <class T>
void threadCPU(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
               T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters, unsigned char* buffer,
               unsigned char* palette, int type);

// The same from a tile that need not be clipped, and may be told to stop: see VectorTile.
template <class T>
void renderTileUntilStopped(const VectorTile<T>& tile, int type);

// The same pixels from the scalar functions of compute/formulas.h, one at a time: the yardstick of
// threadCPU in tests and benchmarks. Same contracts.
template <class T>
void threadScalar(int xStart, int yStart, int xEnd, int yEnd, int width, int height, T xMin, T xMax,
                  T yMin, T yMax, T cx, T cy, int maxSizeSquared, int maxIters,
                  unsigned char* buffer, unsigned char* palette, int type);
template <class T>
void renderScalarUntilStopped(const VectorTile<T>& tile, int type);

#include "tests/compute/trig_pictures.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/trig_pictures.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_tile-inl.h"
#include "compute/vector_trig_tile-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
void drawTrig(const VectorTile<T>& tile, int type) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    (void)tile, (void)type;
#else
    if (type == 2) renderTile<SinRule>(tile, true);
    if (type == 3) renderTile<CosRule>(tile, true);
    if (type == 4) renderTile<SinhRule>(tile, true);
    if (type == 5) renderTile<CoshRule>(tile, true);
#endif
}

void drawFloat(const VectorTile<float>& tile, int type) {
    drawTrig(tile, type);
}
void drawDouble(const VectorTile<double>& tile, int type) {
    drawTrig(tile, type);
}

std::size_t giveUp(const VectorTile<double>& tile) {
    std::size_t left = 0;
#if TESSARY_HAS_LEAN
    renderChunkInStages<CoshRule>(tile, {0, 0, tile.width, tile.height}, true,
                                  [&](const FollowedPixels& pixels) {
                                      left = pixels.used;
                                      return false;
                                  });
#else
    (void)tile;
#endif
    return left;
}

int withoutFloat() {
#if TESSARY_HAS_LEAN
    return chunksWithoutFloat;
#else
    return -1;
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {

HWY_EXPORT(drawFloat);
HWY_EXPORT(drawDouble);
HWY_EXPORT(giveUp);
HWY_EXPORT(withoutFloat);

void draw(const VectorTile<float>& tile, int type) {
    HWY_DYNAMIC_DISPATCH(drawFloat)(tile, type);
}
void draw(const VectorTile<double>& tile, int type) {
    HWY_DYNAMIC_DISPATCH(drawDouble)(tile, type);
}
std::size_t pixelsLeft(const VectorTile<double>& tile) {
    return HWY_DYNAMIC_DISPATCH(giveUp)(tile);
}
int chunksLeft() {
    return HWY_DYNAMIC_DISPATCH(withoutFloat)();
}

}  // namespace tessary_vector

namespace trig_pictures {

void draw(const VectorTile<float>& tile, int type) {
    tessary_vector::draw(tile, type);
}
void draw(const VectorTile<double>& tile, int type) {
    tessary_vector::draw(tile, type);
}
std::size_t giveUpHyperbolicCosine(const VectorTile<double>& tile) {
    return tessary_vector::pixelsLeft(tile);
}
int chunksWithoutFloat() {
    return tessary_vector::chunksLeft();
}

}  // namespace trig_pictures

#endif  // HWY_ONCE

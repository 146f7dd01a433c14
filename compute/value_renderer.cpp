#include <algorithm>

#include "compute/value_tile.h"
#include "compute/vector_renderer.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "compute/value_renderer.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_trig_values-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
bool valuesAs(const ValueTile<T>& tile, int type, bool detect) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    (void)tile, (void)type, (void)detect;
    return false;
#else
    bool done = false;
    // The limit of renderAs, for the same reason.
    visitRule(type, [&](auto rule) HWY_ATTR {
        using R = decltype(rule);
        if (usesTrig<R> && !(tile.limit <= MAX_ARGUMENT * MAX_ARGUMENT)) return;
        renderValueTile<R>(tile, detect);
        done = true;
    });
    return done;
#endif
}

bool valuesFloat(const ValueTile<float>& tile, int type, bool detect) {
    return valuesAs(tile, type, detect);
}

bool valuesDouble(const ValueTile<double>& tile, int type, bool detect) {
    return valuesAs(tile, type, detect);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
namespace {

HWY_EXPORT(valuesFloat);
HWY_EXPORT(valuesDouble);

}  // namespace

bool values(const ValueTile<float>& tile, int type) {
    return HWY_DYNAMIC_DISPATCH(valuesFloat)(tile, type, vector_control::detectsCycles());
}

bool values(const ValueTile<double>& tile, int type) {
    return HWY_DYNAMIC_DISPATCH(valuesDouble)(tile, type, vector_control::detectsCycles());
}

}  // namespace tessary_vector

namespace {

template <class T>
void renderClipped(ValueTile<T> tile, int type) {
    tile.xStart = std::max(tile.xStart, 0);
    tile.yStart = std::max(tile.yStart, 0);
    tile.xEnd = std::min(tile.xEnd, tile.width);
    tile.yEnd = std::min(tile.yEnd, tile.height);
    if (tile.xStart >= tile.xEnd || tile.yStart >= tile.yEnd) return;
    const bool done = vector_control::usesVectors() && tessary_vector::values(tile, type);
    if (!done) renderValuesScalar(tile, type);
}

}  // namespace

void renderValues(const ValueTile<float>& tile, int type) {
    renderClipped(tile, type);
}

void renderValues(const ValueTile<double>& tile, int type) {
    renderClipped(tile, type);
}

#endif  // HWY_ONCE

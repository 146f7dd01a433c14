// How chunks of trigonometric pictures are rendered: in stages where the lean functions hold, else
// by the way that compute/vector_tile-inl.h has for every rule in float, and by certified orbits in
// double.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TRIG_TILE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TRIG_TILE_INL_H
#undef TESSARY_COMPUTE_VECTOR_TRIG_TILE_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TRIG_TILE_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "compute/vector_certified-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_stages-inl.h"
#include "compute/vector_tile-inl.h"
#include "compute/vector_trig_floats-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class R>
void renderTrigChunk(const VectorTile<float>& tile, const Chunk& chunk, bool detect) {
#if TESSARY_HAS_LEAN
    if (static_cast<double>(tile.limit) <= LEAN_LIMIT) {
        using Kind = typename KindOf<R>::Kind;
        const int limit = std::max(tile.maxIters, 0);
        return renderChunkInStages<R>(tile, chunk, detect, [&](FollowedPixels& pixels) HWY_ATTR {
            return followFloats<Kind>(pixels, tile.limit, limit, detect, tile.stop);
        });
    }
#endif
    renderChunk<R>(tile, chunk, detect);
}

template <class R>
void renderTrigChunk(const VectorTile<double>& tile, const Chunk& chunk, bool detect) {
#if TESSARY_HAS_LEAN
    if (tile.limit <= LEAN_LIMIT) {
        using Kind = typename KindOf<R>::Kind;
        const int limit = std::max(tile.maxIters, 0);
        return renderChunkInStages<R>(tile, chunk, detect, [&](FollowedPixels& pixels) HWY_ATTR {
            return followAll<Kind>(pixels, tile.limit, limit, detect, tile.stop);
        });
    }
#endif
    renderChunkCertified<R>(tile, chunk, detect);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

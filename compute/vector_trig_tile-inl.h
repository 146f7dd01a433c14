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

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

#if TESSARY_HAS_LEAN

// Iterates the slots to their end by exact steps. Returns whether it was not told to stop.
template <class R, class Finish>
bool iterateExactly(Slots<float>& s, Finish& finish, const VectorTile<float>& tile, bool detect) {
    const auto close = [&]() HWY_ATTR { closeRanks<R>(s, finish); };
    const int limit = std::max(tile.maxIters, 0);
    const bool done = iterateSlots<KeepCounts, R>(s, tile, limit, detect, close);
    if (done) finishAll(s, finish);
    return done;
}

// The count of a pixel by the scalar rule, x and row counted from the chunk's first one; returns
// whether it was not told to stop.
template <class R>
bool countExactly(const VectorTile<double>& tile, const Chunk& chunk, bool detect, std::size_t x,
                  std::size_t row, std::uint32_t& count) {
    using Kind = typename KindOf<R>::Kind;
    const auto p = pixelPoint(chunk.x0 + static_cast<int>(x), chunk.y0 + static_cast<int>(row),
                              tile.width, tile.height, tile.xMin, tile.xMax, tile.yMin, tile.yMax);
    const int limit = std::max(tile.maxIters, 0);
    const int found = followScalar<Kind>({p.r, p.i}, tile.limit, limit, detect, tile.stop).count;
    count = static_cast<std::uint32_t>(found);
    return found != GIVEN_UP;
}

#endif  // TESSARY_HAS_LEAN

template <class R>
void renderTrigChunk(const VectorTile<float>& tile, const Chunk& chunk, bool detect) {
#if TESSARY_HAS_LEAN
    if (static_cast<double>(tile.limit) <= LEAN_LIMIT) {
        return renderChunkInStages<R>(tile, chunk, detect,
                                      [&](Slots<float>& s, auto& finish) HWY_ATTR {
                                          return iterateExactly<R>(s, finish, tile, detect);
                                      });
    }
#endif
    renderChunk<R>(tile, chunk, detect);
}

template <class R>
void renderTrigChunk(const VectorTile<double>& tile, const Chunk& chunk, bool detect) {
#if TESSARY_HAS_LEAN
    if (tile.limit <= LEAN_LIMIT) {
        return renderChunkInStages<R>(
            tile, chunk, detect, [&](std::size_t x, std::size_t row, std::uint32_t& count) {
                return countExactly<R>(tile, chunk, detect, x, row, count);
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

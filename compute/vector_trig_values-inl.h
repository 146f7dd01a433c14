// How chunks of values under the trigonometric rules are made: in stages where the lean functions
// hold, else by the way that compute/vector_values-inl.h has for every rule in float, and by
// certified orbits in double.
//
// The first stage is that of pictures (compute/vector_stages-inl.h). What it proves is proven of
// the scalar rule's own |z|^2 against the tile's own limit, whichever that is: a pixel that stays
// there has reached the iteration limit or returned below the escape limit for ever, and has the
// count max(maxIters, 0) and no value. So nothing more needs to be known of it. Of an escape it
// knows the step but not the magnitudes; that pixel, and one in doubt, is followed from its start
// by the way that knows them, as if there were no first stage: each orbit has a lane of its own,
// which does not mind its neighbours.
//
// Included once for each instruction set (see compute/value_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TRIG_VALUES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TRIG_VALUES_INL_H
#undef TESSARY_COMPUTE_VECTOR_TRIG_VALUES_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TRIG_VALUES_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>

#include "compute/value_tile.h"
#include "compute/vector_certified_values-inl.h"
#include "compute/vector_stages-inl.h"
#include "compute/vector_values-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

#if TESSARY_HAS_LEAN

// The first stage. Where only counts are wanted an escape settles a pixel, too. Returns whether it
// came to its end.
template <class R, class T>
bool settleInFloat(ChunkCounts<T>& counts, const ValueTile<T>& tile, const VectorTile<T>& geometry,
                   bool detect) {
    if (!countInFloat<R>(counts, geometry, detect)) return false;
    if (tile.values != nullptr) counts.doubtEscaped(std::max(tile.maxIters, 0));
    return true;
}

// In stages; returns whether the first settled a pixel, or was given up.
template <class R>
bool renderValueChunkInStages(const ValueTile<float>& tile, const VectorTile<float>& geometry,
                              const Chunk& chunk, bool detect) {
    ChunkCounts<float> counts(geometry, chunk);
    if (!settleInFloat<R>(counts, tile, geometry, detect)) return true;
    ValueSlots<float> s;
    std::size_t places[ChunkCounts<float>::ROOM];
    const std::size_t left = counts.takeDoubtful(s, places);
    const int limit = std::max(tile.maxIters, 0);
    if (left > 0 && !iterateSlots<KeepMagnitudes, R>(s, geometry, limit, detect)) return true;
    Known<float> known;
    counts.copyTo(known.count);
    for (std::size_t n = 0; n < left; ++n) {
        known.count[places[n]] = s.count[n];
        known.before[places[n]] = s.before[n];
        known.after[places[n]] = s.after[n];
    }
    finishChunk<float>(tile, chunk, {known.count, known.before, known.after}, counts.size());
    return left < counts.size();
}

template <class R>
bool renderValueChunkInStages(const ValueTile<double>& tile, const VectorTile<double>& geometry,
                              const Chunk& chunk, bool detect) {
    ChunkCounts<double> counts(geometry, chunk);
    if (!settleInFloat<R>(counts, tile, geometry, detect)) return true;
    const int limit = std::max(tile.maxIters, 0);
    CertifiedValueSlots slots;
    std::size_t places[ChunkCounts<double>::ROOM];
    const std::size_t left = counts.takeDoubtful(slots.s, places);
    startAtZero(slots.s, limit);
    CertifiedKnown known;
    counts.copyTo(known.count);
    const auto move = [&](std::size_t n) { moveKnown(slots, n, places[slots.s.place[n]], known); };
    if (!followCertified<R>(slots, geometry, limit, detect, move)) return true;
    CertifiedChunk<typename KindOf<R>::Kind>(tile, geometry, chunk, detect).finish(known);
    return left < counts.size();
}

// Chunks of a tile that are made at once behind one in which the first stage settled nothing,
// before it is tried again: neighbours are alike, and where no pixel stays the stage is lost.
inline constexpr int CHUNKS_AT_ONCE = 3;

#endif  // TESSARY_HAS_LEAN

// As renderValueChunk, in one stage.
template <class R>
void renderValueChunkAtOnce(const ValueTile<float>& tile, const VectorTile<float>& geometry,
                            const Chunk& chunk, bool detect) {
    renderValueChunk<R>(tile, geometry, chunk, detect);
}

template <class R>
void renderValueChunkAtOnce(const ValueTile<double>& tile, const VectorTile<double>& geometry,
                            const Chunk& chunk, bool detect) {
    renderValueChunkCertified<R>(tile, geometry, chunk, detect);
}

// atOnce: how many chunks from this one on are made in one stage.
template <class R, class T>
void renderTrigValueChunk(const ValueTile<T>& tile, const VectorTile<T>& geometry,
                          const Chunk& chunk, bool detect, [[maybe_unused]] int& atOnce) {
#if TESSARY_HAS_LEAN
    if (static_cast<double>(tile.limit) <= LEAN_LIMIT && atOnce-- <= 0) {
        atOnce = renderValueChunkInStages<R>(tile, geometry, chunk, detect) ? 0 : CHUNKS_AT_ONCE;
        return;
    }
#endif
    renderValueChunkAtOnce<R>(tile, geometry, chunk, detect);
}

template <class R, class T>
void renderValueTile(const ValueTile<T>& tile, bool detect) {
    const VectorTile<T> geometry = geometryOf(tile);
    [[maybe_unused]] int atOnce = 0;
    forEachChunk(geometry, [&](const Chunk& chunk) HWY_ATTR {
        if constexpr (usesTrig<R>) {
            renderTrigValueChunk<R>(tile, geometry, chunk, detect, atOnce);
        } else {
            renderValueChunk<R>(tile, geometry, chunk, detect);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

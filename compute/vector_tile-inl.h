// The vector renderer's main loop: the pixels of a tile advance together, a vector of them per
// instruction, until each has escaped, is known to stay, or the iteration limit is reached.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TILE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TILE_INL_H
#undef TESSARY_COMPUTE_VECTOR_TILE_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TILE_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "compute/vector_blocks-inl.h"
#include "compute/vector_certified-inl.h"
#include "compute/vector_discs-inl.h"
#include "compute/vector_own_discs-inl.h"
#include "compute/vector_paint-inl.h"
#include "compute/vector_region-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_tile.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Whether an orbit repeated in the chunk that this thread rendered last. Each thread writes and
// reads its own, no lock. A guess for the next chunk, which mostly lies beside it: the picture does
// not depend on it.
inline thread_local bool lastChunkRepeated = false;

// How many steps to take before looking again, after `steps` steps. Short at first, when many
// orbits escape; later a multiple of 12, so that orbits of period 1, 2, 3, 4, 6 and 12 repeat
// within one block. A trigonometric step costs so much that none may be wasted on orbits that have
// ended.
template <class R>
int blockLength(int steps) {
    if (usesTrig<R>) return steps < 24 ? 2 : 4;
    return steps < 24 ? 8 : 24;
}

// The step from which to look for repeats. An orbit that repeats needs some dozens of steps to come
// to rest. Where none does the search is waste: looking late then keeps it below 3 % of the time.
// Beside a trigonometric step its cost vanishes.
template <class R>
int detectFrom() {
    return usesTrig<R> || lastChunkRepeated ? 48 : 192;
}

// The cost of so many vectors in units of one: a group that is not full costs as much as a full one
// when it has more than two.
inline std::size_t costOf(std::size_t vectors) {
    return vectors % GROUP > 2 ? vectors / GROUP * GROUP + GROUP : vectors;
}

template <class T>
bool worthClosing(const Slots<T>& s) {
    const std::size_t needed = (s.alive + Slots<T>::LANES - 1) / Slots<T>::LANES;
    return 2 * costOf(needed) <= costOf(s.vectors());
}

// Gives every pixel of a chunk that has just been taken the limit for its count.
template <class T>
void reachLimit(Slots<T>& s, int limit) {
    const typename Slots<T>::DU du;
    fill(du, s.count, s.used, hn::Set(du, static_cast<typename Slots<T>::Word>(limit)));
}

// Iterates the pixels in the slots to their end. With `detect`, Brent's algorithm looks for orbits
// that return to a saved state: states are saved at steps that double. Saves wait for calm blocks,
// which are rare where no orbit stays. Returns whether all came to their end, rather than being
// told to stop.
template <class Keep, class R, class S, class T>
HWY_INLINE bool iterateSlots(S& s, const VectorTile<T>& tile, int limit, bool detect) {
    const Shared<T> view(tile);
    int saveAt = detectFrom<R>();
    bool repeated = false, calm = false, asked = false, noReturn = false;
    s.stride = s.columns;  // counts lie by pixel
    const ChunkDiscs<R, T> discs(s, tile, detect);
    if (limit == 0 || discs.holdAll(s)) {
        reachLimit(s, limit);
        lastChunkRepeated = limit > 0;
        return true;
    }
    const ViewRegion<R, T> region(tile, limit, detect && !discs.any());
    if (region.holdAll(s)) {
        reachLimit(s, limit);
        return true;
    }
    for (int steps = 0; steps < limit && s.alive > 0;) {
        if (isSet(tile.stop)) return false;
        const int block = std::min(blockLength<R>(steps), limit - steps);
        const std::size_t alive = s.alive;
        if (calm && !asked) {
            noReturn = cannotReturn<R>(s, view, tile.limit);
            asked = true;
        }
        advance<Keep, R>(s, view, {block, steps, limit, calm && !usesTrig<R>, calm && noReturn});
        steps += block;
        calm = s.alive == alive;
        if (discs.any()) repeated |= discs.end(s);
        region.end(s, steps);
        if (s.suspect) repeated |= endRepeats(s);
        if (detect && calm && steps >= saveAt) {
            // What is not a number comes from the view's own numbers, within a few steps.
            if (!s.saved) repeated |= endNotNumbers(s);
            if (!discs.any()) repeated |= endInOwnDiscs<R>(s, tile.limit);
            saveStates(s);
            saveAt = steps > (1 << 29) ? steps : 2 * steps;
        }
        if (s.alive > 0 && worthClosing(s)) {
            if (s.saved) saveAt = steps;  // cheaper to save anew than to move along
            s.saved = false;
            packOrbits<R>(s);
        }
    }
    region.note(s);
    lastChunkRepeated = repeated;
    return true;
}

// Iterates all pixels of the chunk to their end and paints them.
template <class R, class T>
void renderChunk(const VectorTile<T>& tile, const Chunk& chunk, bool detect) {
    const int limit = std::max(tile.maxIters, 0), rows = chunk.y1 - chunk.y0;
    unsigned char* corner =
        tile.buffer + 4 * (std::ptrdiff_t{chunk.y0} * tile.width + std::ptrdiff_t{chunk.x0});
    prefetchRows(corner, rows, tile.width);
    Slots<T> s;
    takePixels(s, tile, chunk);
    if (!iterateSlots<KeepCounts, R>(s, tile, limit, detect)) return;
    paintChunk(s, static_cast<std::size_t>(rows), corner, static_cast<std::size_t>(tile.width),
               limit, tile.palette);
}

// As renderChunk, for the trigonometric rules: see compute/vector_trig_tile-inl.h.
template <class R>
void renderTrigChunk(const VectorTile<float>& tile, const Chunk& chunk, bool detect);
template <class R>
void renderTrigChunk(const VectorTile<double>& tile, const Chunk& chunk, bool detect);

// The end of the first of `parts` nearly equal pieces of [from, to).
inline int firstPiece(int from, int to, int most) {
    const int parts = (to - from - 1) / most + 1;
    return from + (to - from - 1) / parts + 1;
}

// Cuts the tile into chunks and has each rendered by render(chunk).
template <class T, class RenderChunk>
HWY_INLINE void forEachChunk(const VectorTile<T>& tile, RenderChunk&& render) {
    // The place of a pixel in its chunk has to fit into 30 bits.
    const int mostRows = std::max((1 << 30) / tile.width, 1);
    for (int x = tile.xStart; x < tile.xEnd;) {
        const int xEnd = firstPiece(x, tile.xEnd, MAX_COLUMNS);
        const int rows = std::min(MAX_PIXELS / (xEnd - x), mostRows);
        for (int y = tile.yStart; y < tile.yEnd && !isSet(tile.stop);) {
            const int yEnd = firstPiece(y, tile.yEnd, rows);
            render(Chunk{x, y, xEnd, yEnd});
            y = yEnd;
        }
        x = xEnd;
    }
}

template <class R, class T>
void renderTile(const VectorTile<T>& tile, bool detect) {
    forEachChunk(tile, [&](const Chunk& chunk) HWY_ATTR {
        if constexpr (usesTrig<R>) {
            renderTrigChunk<R>(tile, chunk, detect);
        } else {
            renderChunk<R>(tile, chunk, detect);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

// Trigonometric pictures in two stages: lean orbits in float settle most pixels, and what they
// leave in doubt is counted by a way that is slower and knows more.
//
// In a double picture the constant of an orbit in float is the pixel's point rounded to float. That
// is at most u |c|_1 away, the error of the bounds' own orbit in float; and the scalar rule rounds
// to double, not twice to float, which leaves more than that (see compute/vector_ball-inl.h).
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_STAGES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_STAGES_INL_H
#undef TESSARY_COMPUTE_VECTOR_STAGES_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_STAGES_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "compute/vector_ball-inl.h"
#include "compute/vector_claims-inl.h"
#include "compute/vector_slots-inl.h"

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The counts of a chunk's pixels, row by row without gaps, and what paints them.
template <class T>
class ChunkCounts {
  public:
    static constexpr std::uint32_t DOUBT = ~std::uint32_t{0};

    ChunkCounts(const VectorTile<T>& ofTile, const Chunk& which)
        : tile(ofTile),
          chunk(which),
          columns(static_cast<std::size_t>(which.x1 - which.x0)),
          pixels(columns * static_cast<std::size_t>(which.y1 - which.y0)) {}

    // Keeps what slots of the first or second stage found.
    template <class Word>
    void operator()(std::size_t place, Word found) {
        count[place] = static_cast<std::uint32_t>(found);
    }

    bool anyInDoubt() const { return std::find(count, count + pixels, DOUBT) != count + pixels; }

    // Calls visit(x, row, count) for every pixel in doubt, x and row counted from the chunk's first
    // pixel, until it returns false; returns whether it never did.
    template <class Visit>
    bool forDoubtful(Visit&& visit) {
        for (std::size_t n = 0, row = 0; n < pixels; ++row) {
            for (std::size_t x = 0; x < columns; ++x, ++n) {
                if (count[n] == DOUBT && !visit(x, row, count[n])) return false;
            }
        }
        return true;
    }

    // Gives a slot to every pixel in doubt, and to no other.
    void takeDoubtful(Slots<T>& s) {
        const Points<T> points(tile, chunk);
        std::size_t n = 0;
        forDoubtful([&](std::size_t x, std::size_t row, std::uint32_t&) {
            s.cr[n] = points.re[x];
            s.ci[n] = points.im[row];
            s.place[n++] = static_cast<typename Slots<T>::Word>(row * columns + x);
            return true;
        });
        holdFirst(s, n);
        s.placed = true;
    }

    // Gives every pixel a slot with its point rounded to float.
    void takeAll(Slots<float>& s) const {
        const Points<T> points(tile, chunk);
        for (std::size_t n = 0, row = 0; n < pixels; n += columns, ++row) {
            for (std::size_t x = 0; x < columns; ++x) {
                s.cr[n + x] = static_cast<float>(points.re[x]);
                s.ci[n + x] = static_cast<float>(points.im[row]);
            }
        }
        holdFirst(s, pixels);
        s.placed = false;
    }

    void paint(const Painter& painter) const {
        std::size_t row = 0;
        for (std::size_t n = 0; n < pixels;
             n += columns, row += static_cast<std::size_t>(tile.width)) {
            for (std::size_t x = 0; x < columns; ++x) painter(row + x, count[n + x]);
        }
    }

  private:
    // The first n slots hold a pixel each.
    template <class U>
    void holdFirst(Slots<U>& s, std::size_t n) const {
        constexpr std::size_t GROUP_LANES = GROUP * Slots<U>::LANES;
        const typename Slots<U>::D d;
        s.used = s.alive = n;
        s.saved = s.suspect = false;
        s.columns = s.stride = columns;
        fill(d, s.cr + n, GROUP_LANES, hn::Zero(d));
        fill(d, s.ci + n, GROUP_LANES, hn::Zero(d));
    }

    const VectorTile<T>& tile;
    const Chunk chunk;
    const std::size_t columns, pixels;
    std::uint32_t count[MAX_PIXELS];
};

// Puts every orbit at its start, zero. limit: the iteration limit.
template <class T>
void startAtZero(Slots<T>& s, int limit) {
    const typename Slots<T>::D d;
    const typename Slots<T>::DU du;
    fill(d, s.zr, s.used, hn::Zero(d));
    fill(d, s.zi, s.used, hn::Zero(d));
    fill(du, s.count, s.used, hn::Set(du, static_cast<typename Slots<T>::Word>(limit)));
    reviveUsed(s);
}

// Counts the orbits of slots that hold a pixel each. Returns whether all came to their end, rather
// than being told to stop.
template <class R, class T, class U>
bool countLean(CertifiedSlotsOf<T>& slots, ChunkCounts<U>& counts, const VectorTile<U>& tile,
               bool detect) {
    using Kind = typename KindOf<R>::Kind;
    const int limit = std::max(tile.maxIters, 0);
    startAtZero(slots.s, limit);
    const auto close = [&]() HWY_ATTR { closeCertifiedRanks<R>(slots, counts); };
    const bool done = iterateLean<Kind, T>(slots, static_cast<double>(tile.limit), limit, detect,
                                           tile.stop, close);
    if (done) finishAll(slots.s, counts);
    return done;
}

// The first stage.
template <class R, class T>
bool countInFloat(ChunkCounts<T>& counts, const VectorTile<T>& tile, bool detect) {
    CertifiedSlotsOf<float> slots;
    counts.takeAll(slots.s);
    return countLean<R>(slots, counts, tile, detect);
}

// The second stage of a float picture: exact(slots, counts) iterates the slots by the way that
// leaves no doubt.
template <class R, class Exact>
bool countDoubtful(ChunkCounts<float>& counts, const VectorTile<float>&, bool, Exact&& exact) {
    Slots<float> s;
    counts.takeDoubtful(s);
    return exact(s, counts);
}

// The second and third of a double picture: exact(x, row, count) counts one pixel.
template <class R, class Exact>
bool countDoubtful(ChunkCounts<double>& counts, const VectorTile<double>& tile, bool detect,
                   Exact&& exact) {
    CertifiedSlots slots;
    counts.takeDoubtful(slots.s);
    return countLean<R>(slots, counts, tile, detect) && counts.forDoubtful(exact);
}

// Renders a chunk. exact() is for what is in doubt at last, and returns whether it came to an end.
template <class R, class T, class Exact>
void renderChunkInStages(const VectorTile<T>& tile, const Chunk& chunk, bool detect,
                         Exact&& exact) {
    ChunkCounts<T> counts(tile, chunk);
    if (!countInFloat<R>(counts, tile, detect)) return;
    if (counts.anyInDoubt() && !countDoubtful<R>(counts, tile, detect, exact)) return;
    const std::int64_t corner = std::int64_t{chunk.y0} * tile.width + chunk.x0;
    counts.paint(Painter(tile.buffer + 4 * corner, std::max(tile.maxIters, 0), tile.palette));
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif

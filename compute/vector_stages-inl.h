// Trigonometric pictures in two stages: lean orbits in float settle most pixels, and what they
// leave in doubt is counted by a way that is slower and knows more.
//
// In a double picture the constant of an orbit in float is the pixel's point rounded to float. That
// is at most u |c|_1 away, the error of the bounds' own orbit in float; and the scalar rule rounds
// to double, not twice to float, which leaves more than that (see compute/vector_ball-inl.h). A
// point below the range of float is off by less than the 3 u cosh h that the bounds have to spare,
// and one beyond it has an infinite bound, so that it stays in doubt.
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
#include "compute/vector_paint-inl.h"
#include "compute/vector_rounded-inl.h"
#include "compute/vector_slots-inl.h"

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The counts of a chunk's pixels, row by row without gaps.
template <class T>
class ChunkCounts {
  public:
    static constexpr std::uint32_t DOUBT = ~std::uint32_t{0};
    static constexpr std::size_t ROOM = Slots<float>::ROOM;

    ChunkCounts(const VectorTile<T>& ofTile, const Chunk& which)
        : tile(ofTile),
          chunk(which),
          columns(static_cast<std::size_t>(which.x1 - which.x0)),
          pixels(columns * static_cast<std::size_t>(which.y1 - which.y0)) {}

    // Keeps what was found of the pixel at a place.
    template <class Word>
    void operator()(std::size_t place, Word found) {
        count[place] = static_cast<std::uint32_t>(found);
    }

    // Has every pixel that escaped counted anew: those below the limit.
    void doubtEscaped(int limit) {
        const auto stays = static_cast<std::uint32_t>(limit);
        for (std::size_t n = 0; n < pixels; ++n) count[n] = count[n] < stays ? DOUBT : count[n];
    }

    void doubtAll() { std::fill(count, count + pixels, DOUBT); }

    // Whether less than one pixel in 16 is settled.
    bool nearlyAllInDoubt() const {
        const auto settled =
            std::count_if(count, count + pixels, [](auto n) { return n != DOUBT; });
        return 16 * static_cast<std::size_t>(settled) < pixels;
    }

    // The count of each pixel, DOUBT included.
    template <class Word>
    void copyTo(Word* counts) const {
        std::copy_n(count, pixels, counts);
    }

    std::size_t size() const { return pixels; }

    bool anyInDoubt() const { return std::find(count, count + pixels, DOUBT) != count + pixels; }

    // Calls visit(place, r, i) for every pixel in doubt.
    template <class Visit>
    void forDoubtful(Visit&& visit) const {
        const Points<T> points(tile, chunk);
        for (std::size_t place = 0, row = 0; place < pixels; ++row) {
            for (std::size_t x = 0; x < columns; ++x, ++place) {
                if (count[place] == DOUBT) visit(place, points.re[x], points.im[row]);
            }
        }
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
    }

    // Gives a slot to each pixel in doubt and to no other, writes which to `places` and returns how
    // many they are. To the slots they are one row.
    std::size_t takeDoubtful(Slots<T>& s, std::size_t (&places)[ROOM]) const {
        std::size_t n = 0;
        forDoubtful([&](std::size_t place, T r, T i) {
            s.cr[n] = r;
            s.ci[n] = i;
            places[n++] = place;
        });
        holdFirst(s, n);
        s.columns = s.stride = n;
        return n;
    }

    // Has exact() follow the pixels in doubt, if there are any, and keeps their counts. Returns
    // whether it came to an end.
    template <class Exact>
    bool followDoubtful(Exact&& exact) {
        FollowedPixels left;
        forDoubtful([&](std::size_t place, double r, double i) { left.add(place, r, i); });
        if (left.used == 0) return true;
        if (!exact(left)) return false;
        for (std::size_t k = 0; k < left.used; ++k) (*this)(left.place[k], left.count[k]);
        return true;
    }

    void paint() {
        HWY_ALIGN std::uint32_t colours[ROOM];
        unsigned char* corner =
            tile.buffer + 4 * (std::ptrdiff_t{chunk.y0} * tile.width + std::ptrdiff_t{chunk.x0});
        // The last vector may reach behind the pixels, and looks up what it finds there.
        const hn::ScalableTag<std::uint32_t> d;
        hn::StoreU(hn::Zero(d), d, count + pixels);
        colourCounts(count, pixels, std::max(tile.maxIters, 0), tile.palette, colours);
        writeRows(colours, columns, pixels / columns, corner, static_cast<std::size_t>(tile.width));
    }

  private:
    // The first n slots hold a pixel each.
    template <class U>
    void holdFirst(Slots<U>& s, std::size_t n) const {
        constexpr std::size_t GROUP_LANES = GROUP * Slots<U>::LANES;
        const typename Slots<U>::D d;
        s.used = s.alive = n;
        s.saved = s.suspect = s.placed = false;
        s.columns = s.stride = columns;
        fill(d, s.cr + n, GROUP_LANES, hn::Zero(d));
        fill(d, s.ci + n, GROUP_LANES, hn::Zero(d));
    }

    const VectorTile<T>& tile;
    const Chunk chunk;
    const std::size_t columns, pixels;
    HWY_ALIGN std::uint32_t count[ROOM];
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

// Counts the orbits of slots that hold a pixel each and hands place and count to finish(). Returns
// whether all came to their end, rather than being told to stop.
template <class R, class T, class U, class Finish>
bool countLean(CertifiedSlotsOf<T>& slots, const VectorTile<U>& tile, bool detect,
               Finish&& finish) {
    using Kind = typename KindOf<R>::Kind;
    const int limit = std::max(tile.maxIters, 0);
    startAtZero(slots.s, limit);
    const auto close = [&]() HWY_ATTR { closeCertifiedRanks<R>(slots, finish); };
    const bool done = iterateLean<Kind, T>(slots, static_cast<double>(tile.limit), limit, detect,
                                           tile.stop, close);
    if (done) finishAll(slots.s, finish);
    return done;
}

// The first stage.
template <class R, class T>
bool countInFloat(ChunkCounts<T>& counts, const VectorTile<T>& tile, bool detect) {
    CertifiedSlotsOf<float> slots;
    counts.takeAll(slots.s);
    return countLean<R>(slots, tile, detect, counts);
}

// The second stage of a float picture: exact(pixels) follows pixels by the scalar rule.
template <class R, class Exact>
bool countDoubtful(ChunkCounts<float>& counts, const VectorTile<float>&, bool, Exact&& exact) {
    return counts.followDoubtful(exact);
}

// The second and third of a double picture: exact(pixels) follows pixels by the scalar rule.
template <class R, class Exact>
bool countDoubtful(ChunkCounts<double>& counts, const VectorTile<double>& tile, bool detect,
                   Exact&& exact) {
    CertifiedSlots slots;
    std::size_t places[ChunkCounts<double>::ROOM];
    counts.takeDoubtful(slots.s, places);
    const auto finish = [&](std::size_t k, std::uint64_t found) { counts(places[k], found); };
    if (!countLean<R>(slots, tile, detect, finish)) return false;
    return counts.followDoubtful(exact);
}

// How many chunks this thread makes without the first stage, which settled next to nothing of the
// last one that it was tried on. Each thread writes and reads its own, no lock. A guess for chunks
// that mostly lie near: the picture does not depend on it.
inline thread_local int chunksWithoutFloat = 0;
inline constexpr int WITHOUT_FLOAT = 3;

// Renders a chunk. exact() is for what is in doubt at last, and returns whether it came to an end.
template <class R, class T, class Exact>
void renderChunkInStages(const VectorTile<T>& tile, const Chunk& chunk, bool detect,
                         Exact&& exact) {
    ChunkCounts<T> counts(tile, chunk);
    const std::ptrdiff_t corner = std::ptrdiff_t{chunk.y0} * tile.width + chunk.x0;
    prefetchRows(tile.buffer + 4 * corner, chunk.y1 - chunk.y0, tile.width);
    if (chunksWithoutFloat > 0) {
        --chunksWithoutFloat;
        counts.doubtAll();
    } else {
        if (!countInFloat<R>(counts, tile, detect)) return;
        if (counts.nearlyAllInDoubt()) chunksWithoutFloat = WITHOUT_FLOAT;
    }
    if (counts.anyInDoubt() && !countDoubtful<R>(counts, tile, detect, exact)) return;
    counts.paint();
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif

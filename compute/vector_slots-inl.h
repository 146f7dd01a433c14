// The pixels in work: how they get a slot, close ranks and are known to stay.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_SLOTS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_SLOTS_INL_H
#undef TESSARY_COMPUTE_VECTOR_SLOTS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_SLOTS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compute/formulas.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_tile.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Widest column strip and most pixels that are in work at once. A tile of the default picture has 8
// x 8 pixels and fits whole.
inline constexpr int MAX_COLUMNS = 16;
inline constexpr int MAX_PIXELS = 256;

// Vectors that advance together, so that the latency of one hides behind the others.
inline constexpr std::size_t GROUP = 4;

// One slot for each pixel in work, all after the same number of steps. `used` slots hold a pixel,
// `alive` of them still iterate; the rest of the last group is padding that never lives.
template <class T>
struct Slots {
    using D = typename Number<T>::D;
    using DU = hn::RebindToUnsigned<D>;
    using Word = hn::TFromD<DU>;
    static constexpr std::size_t LANES = hn::MaxLanes(D());
    static constexpr std::size_t ROOM = MAX_PIXELS + GROUP * LANES + MAX_COLUMNS;

    HWY_ALIGN T zr[ROOM], zi[ROOM];          // state of the orbit
    HWY_ALIGN T cr[ROOM], ci[ROOM];          // the pixel's point: the orbit's start or constant
    HWY_ALIGN T savedR[ROOM], savedI[ROOM];  // an earlier state, to see whether it returns
    HWY_ALIGN T live[ROOM];                  // all bits set while the orbit iterates
    HWY_ALIGN Word place[ROOM];              // which pixel: `stride` times its row plus its column
    // Final counts, the iteration limit until known. Of the certified renderer by slot; of every
    // other by pixel, row by row without gaps, wherever the slots move to.
    HWY_ALIGN Word count[ROOM];
    std::size_t used, alive;
    bool saved;                   // whether savedR, savedI hold states
    bool suspect;                 // whether an orbit may be at its saved state
    bool placed;                  // whether place is written: not before slots leave their order
    std::size_t columns, stride;  // of the chunk, and from the place of one row to the next

    std::size_t vectors() const { return (used + LANES - 1) / LANES; }
};

// A rectangle of at most MAX_COLUMNS columns and MAX_PIXELS pixels; the ends are exclusive.
struct Chunk {
    int x0, y0, x1, y1;
};

// Fills whole vectors of row[0..n) with one value, and so perhaps a few slots behind.
template <class D>
HWY_INLINE void fill(D d, hn::TFromD<D>* row, std::size_t n, hn::Vec<D> value) {
    for (std::size_t at = 0; at < n; at += hn::Lanes(d)) hn::StoreU(value, d, row + at);
}

// Makes every used slot live, and the padding behind them dead with a harmless state.
template <class T>
void reviveUsed(Slots<T>& s) {
    const typename Slots<T>::D d;
    constexpr std::size_t LANES = Slots<T>::LANES;
    fill(d, s.live, s.used, hn::VecFromMask(d, hn::Eq(hn::Zero(d), hn::Zero(d))));
    s.alive = s.used;
    if (s.used % (GROUP * LANES) == 0) return;
    for (T* row : {s.zr, s.zi, s.cr, s.ci, s.savedR, s.savedI, s.live}) {
        fill(d, row + s.used, GROUP * LANES, hn::Zero(d));
    }
}

// The points of columns from chunk.x0 on and rows from chunk.y0 on: division by division as the
// scalar functions place their pixels, but once for each column and row.
template <class T>
struct Points {
    HWY_ALIGN T re[MAX_PIXELS], im[MAX_PIXELS];

    Points(const VectorTile<T>& tile, const Chunk& chunk) {
        constexpr int STRIDE = 8;
        const int n = std::max(chunk.x1 - chunk.x0, chunk.y1 - chunk.y0);
        for (int from = 0; from < n; from += STRIDE) {
            for (int i = from; i < from + STRIDE; ++i) {
                const auto p = pixelPoint(ahead(chunk.x0, i), ahead(chunk.y0, i), tile.width,
                                          tile.height, tile.xMin, tile.xMax, tile.yMin, tile.yMax);
                re[i] = p.r;
                im[i] = p.i;
            }
        }
    }

    // start + i, wrapping where a stride runs past the last int.
    static int ahead(int start, int i) {
        return static_cast<int>(static_cast<unsigned>(start) + static_cast<unsigned>(i));
    }
};

// Gives every pixel of the chunk a slot, row by row, and writes its point there. Slots behind the
// last one, to the end of the group, get a harmless point.
template <class T>
void takePixels(Slots<T>& s, const VectorTile<T>& tile, const Chunk& chunk) {
    const typename Slots<T>::D d;
    constexpr std::size_t LANES = Slots<T>::LANES;
    const Points<T> points(tile, chunk);
    s.columns = static_cast<std::size_t>(chunk.x1 - chunk.x0);
    s.stride = static_cast<std::size_t>(tile.width);
    const auto rows = static_cast<std::size_t>(chunk.y1 - chunk.y0);
    for (std::size_t y = 0, n = 0; y < rows; ++y, n += s.columns) {
        const auto im = hn::Set(d, points.im[y]);
        for (std::size_t x = 0; x < s.columns; x += LANES) {
            hn::StoreU(hn::Load(d, points.re + x), d, s.cr + n + x);
            hn::StoreU(im, d, s.ci + n + x);
        }
    }
    s.used = s.alive = s.columns * rows;
    s.saved = s.suspect = s.placed = false;
    if (s.used % (GROUP * LANES) == 0) return;
    fill(d, s.cr + s.used, GROUP * LANES, hn::Zero(d));
    fill(d, s.ci + s.used, GROUP * LANES, hn::Zero(d));
}

// Writes down which pixel each slot holds, while the slots are still in the order of the pixels.
template <class T>
void writePlaces(Slots<T>& s) {
    const typename Slots<T>::DU du;
    using Word = typename Slots<T>::Word;
    for (std::size_t n = 0, row = 0; n < s.used; n += s.columns, row += s.stride) {
        for (std::size_t x = 0; x < s.columns; x += Slots<T>::LANES) {
            const auto place = hn::Iota(du, static_cast<Word>(row + x));
            hn::StoreU(place, du, s.place + n + x);
        }
    }
    s.placed = true;
}

// Takes the pixels of the chunk and puts every orbit at its start by rule R. limit: the iteration
// limit, at least 0.
template <class R, class T>
void fillSlots(Slots<T>& s, const VectorTile<T>& tile, const Chunk& chunk, int limit) {
    const typename Slots<T>::D d;
    const typename Slots<T>::DU du;
    takePixels(s, tile, chunk);
    const bool atPixel = R::start == Start::pixel;
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
        hn::Store(atPixel ? hn::Load(d, s.cr + at) : hn::Zero(d), d, s.zr + at);
        hn::Store(atPixel ? hn::Load(d, s.ci + at) : hn::Zero(d), d, s.zi + at);
    }
    fill(du, s.count, s.used, hn::Set(du, static_cast<typename Slots<T>::Word>(limit)));
    reviveUsed(s);
}

// Moves the lanes of row that are live together at its front.
template <class D, class T>
HWY_INLINE void packRow(D d, hn::TFromD<D>* row, const Slots<T>& s) {
    std::size_t to = 0;
    for (std::size_t at = 0; at < s.used; at += hn::Lanes(d)) {
        const auto live =
            hn::MaskFromVec(hn::BitCast(d, hn::Load(typename Slots<T>::D(), s.live + at)));
        hn::StoreU(hn::Compress(hn::Load(d, row + at), live), d, row + to);
        to += hn::CountTrue(d, live);
    }
}

// A vector of a row: its live lanes go to the slots from `to` on.
template <class D>
HWY_INLINE void packVector(D d, hn::TFromD<D>* row, std::size_t at, std::size_t to,
                           hn::Mask<D> live) {
    hn::StoreU(hn::Compress(hn::Load(d, row + at), live), d, row + to);
}

// Moves the live orbits together at the front, with their places, and their saved states if there
// are any. Counts by pixel stay where they are.
template <class R, class T>
HWY_NOINLINE void packOrbits(Slots<T>& s) {
    const typename Slots<T>::D d;
    const typename Slots<T>::DU du;
    if (!s.placed) writePlaces(s);
    std::size_t to = 0;
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
        const auto live = hn::MaskFromVec(hn::Load(d, s.live + at));
        packVector(d, s.zr, at, to, live);
        packVector(d, s.zi, at, to, live);
        if (R::constant == Constant::pixel) {
            packVector(d, s.cr, at, to, live);
            packVector(d, s.ci, at, to, live);
        }
        if (s.saved) {
            packVector(d, s.savedR, at, to, live);
            packVector(d, s.savedI, at, to, live);
        }
        packVector(du, s.place, at, to, hn::RebindMask(du, live));
        to += hn::CountTrue(d, live);
    }
    s.used = s.alive;
    reviveUsed(s);
}

// Closes ranks where counts are kept by slot: hands the place and count of each ended slot to
// finish() and moves the live ones together at the front.
template <class R, class T, class Finish>
void closeRanks(Slots<T>& s, Finish&& finish) {
    if (!s.placed) writePlaces(s);
    for (std::size_t n = 0; n < s.used; ++n) {
        typename Slots<T>::Word live;
        std::memcpy(&live, s.live + n, sizeof live);
        if (live == 0) finish(s.place[n], s.count[n]);
    }
    packRow(typename Slots<T>::DU(), s.count, s);
    packOrbits<R>(s);
}

// Hands the place and count of every used slot to finish(), where counts are kept by slot.
template <class T, class Finish>
void finishAll(const Slots<T>& s, Finish&& finish) {
    if (s.placed) {
        for (std::size_t n = 0; n < s.used; ++n) finish(s.place[n], s.count[n]);
        return;
    }
    for (std::size_t n = 0, row = 0; n < s.used; n += s.columns, row += s.stride) {
        for (std::size_t x = 0; x < s.columns; ++x) finish(row + x, s.count[n + x]);
    }
}

// Calls f(n) for each lane n of the mask.
template <class D, class F>
HWY_INLINE void forEachLane(D d, hn::Mask<D> lanes, F&& f) {
    std::uint16_t bits = 0;
    static_assert(hn::MaxLanes(D()) <= 16);
    hn::StoreMaskBits(d, lanes, reinterpret_cast<std::uint8_t*>(&bits));
    for (unsigned left = bits; left != 0; left &= left - 1) {
        f(static_cast<std::size_t>(hwy::Num0BitsBelowLS1Bit_Nonzero32(left)));
    }
}

// Writes the lanes of v that are in `which`, of the slots from `at` on, to their pixels in row.
template <class D, class T>
HWY_INLINE void storeByPixel(D d, const Slots<T>& s, std::size_t at, hn::Mask<D> which,
                             hn::Vec<D> v, hn::TFromD<D>* row) {
    if (!s.placed) return hn::BlendedStore(v, which, d, row + at);
    HWY_ALIGN hn::TFromD<D> lanes[Slots<T>::LANES];
    hn::Store(v, d, lanes);
    forEachLane(d, which, [&](std::size_t n) HWY_ATTR { row[s.place[at + n]] = lanes[n]; });
}

// Remembers the present state of every slot.
template <class T>
HWY_INLINE void saveStates(Slots<T>& s) {
    const typename Slots<T>::D d;
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
        hn::Store(hn::Load(d, s.zr + at), d, s.savedR + at);
        hn::Store(hn::Load(d, s.zi + at), d, s.savedI + at);
    }
    s.saved = true;
    s.suspect = false;
}

// Ends every live slot among those that stays(at) picks from the vector of slots at `at`; returns
// whether there was one.
template <class T, class Stays>
HWY_INLINE bool endWhere(Slots<T>& s, Stays&& stays) {
    const typename Slots<T>::D d;
    const std::size_t before = s.alive;
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
        const auto live = hn::MaskFromVec(hn::Load(d, s.live + at));
        const auto ended = hn::And(live, stays(at));
        if (hn::AllFalse(d, ended)) continue;
        s.alive -= hn::CountTrue(d, ended);
        hn::Store(hn::VecFromMask(d, hn::AndNot(ended, live)), d, s.live + at);
    }
    return s.alive < before;
}

// Ends the orbits whose state is the saved one again, for all that followed it follows once more;
// returns whether there was one.
//
// Equal here means ==, which takes 0 and -0 for one value. That is sound: states that differ only
// in signs of zeros lead to states that differ only in signs of zeros under every rule, and |z|^2
// is the same for them.
template <class T>
bool endRepeats(Slots<T>& s) {
    const typename Slots<T>::D d;
    s.suspect = false;
    return endWhere(s, [&](std::size_t at) HWY_ATTR {
        return hn::And(hn::Eq(hn::Load(d, s.zr + at), hn::Load(d, s.savedR + at)),
                       hn::Eq(hn::Load(d, s.zi + at), hn::Load(d, s.savedI + at)));
    });
}

// Ends the orbits whose state is not a number, for it stays so, and |z|^2 with it; returns whether
// there was one.
//
// Under every rule a NaN part leaves a NaN part in the next state: each new part is a sum of
// products with both old parts, save for Barnsley-Sierpinski, where each part follows from itself
// and so stays NaN alone. A live state has no infinite part, so the sum of its parts is NaN just
// when one of them is; or the limit is infinite or NaN, and nobody escapes.
template <class T>
bool endNotNumbers(Slots<T>& s) {
    const typename Slots<T>::D d;
    return endWhere(s, [&](std::size_t at) HWY_ATTR {
        return hn::IsNaN(hn::Add(hn::Load(d, s.zr + at), hn::Load(d, s.zi + at)));
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

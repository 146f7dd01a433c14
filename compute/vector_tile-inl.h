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
#include <cstring>
#include <type_traits>

#include "compute/formulas.h"
#include "compute/pixels.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_renderer.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

#define TESSARY_VECTOR_TEXT
#include "compute/rules.h"
#undef TESSARY_VECTOR_TEXT

// The rules whose step calls the C library in scalar code.
template <class R>
inline constexpr bool usesTrig = std::is_same_v<R, SinRule> || std::is_same_v<R, CosRule> ||
                                 std::is_same_v<R, SinhRule> || std::is_same_v<R, CoshRule>;

// Widest column strip and most pixels that are in work at once. A tile of the default picture has 8
// x 8 pixels and fits whole.
inline constexpr int MAX_COLUMNS = 16;
inline constexpr std::size_t MAX_PIXELS = 256;

// Vectors that advance together, so that the latency of one hides behind the others.
inline constexpr std::size_t GROUP = 4;

// The pixels in work, one slot each, all after the same number of steps. `used` slots hold a pixel,
// `alive` of them are still iterating; the rest of the last group is padding that never lives.
template <class T>
struct Slots {
    using D = typename Number<T>::D;
    using DU = hn::RebindToUnsigned<D>;
    using Word = hn::TFromD<DU>;
    static constexpr std::size_t LANES = hn::MaxLanes(D());
    static constexpr std::size_t ROOM = MAX_PIXELS + GROUP * LANES;

    HWY_ALIGN T zr[ROOM], zi[ROOM];          // state of the orbit
    HWY_ALIGN T cr[ROOM], ci[ROOM];          // constant of the rule, where it is the pixel's point
    HWY_ALIGN T savedR[ROOM], savedI[ROOM];  // an earlier state, to see whether it returns
    HWY_ALIGN T live[ROOM];                  // all bits set while the orbit iterates
    HWY_ALIGN Word count[ROOM];              // final count, once the orbit has ended
    HWY_ALIGN Word place[ROOM];              // row * 256 + column in the chunk of pixels
    std::size_t used, alive;

    // Slots in whole groups of vectors.
    std::size_t vectors() const { return (used + LANES - 1) / LANES; }
};

// What every pixel of a tile shares: the escape limit, and c where the view gives it.
template <class T>
struct Shared {
    Number<T> limit;
    cpuComplex<Number<T>> c;
};

// K vectors of slots in registers.
template <class R, std::size_t K, class T>
struct Group {
    using S = Slots<T>;
    using D = typename S::D;

    HWY_INLINE Group(const S& s, std::size_t first, const Shared<T>& view) : limit(view.limit) {
        const D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * S::LANES;
            z[k] = {Number<T>(hn::Load(d, s.zr + at)), Number<T>(hn::Load(d, s.zi + at))};
            c[k] = R::constant == Constant::view
                       ? view.c
                       : cpuComplex<Number<T>>{Number<T>(hn::Load(d, s.cr + at)),
                                               Number<T>(hn::Load(d, s.ci + at))};
            live[k] = hn::MaskFromVec(hn::Load(d, s.live + at));
        }
    }

    // One step of every lane. A lane is live until |z|^2 is greater than the limit for the first
    // time; "not greater" keeps a NaN alive, which no later step can make greater.
    HWY_INLINE void step() {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            z[k] = R::step(z[k], c[k]);
            live[k] = hn::AndNot(magnitudeSquared(z[k]) > limit, live[k]);
        }
    }

    HWY_INLINE void storeState(S& s, std::size_t first) const {
        const D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * S::LANES;
            hn::Store(z[k].r.v, d, s.zr + at);
            hn::Store(z[k].i.v, d, s.zi + at);
        }
    }

    Number<T> limit;
    cpuComplex<Number<T>> z[K], c[K];
    MaskOf<T> live[K];
};

// Takes `steps` steps and returns whether every live lane is still live; only then the new states
// are stored. The loop holds nothing but the rule and the escape test.
template <class R, std::size_t K, class T>
HWY_NOINLINE HWY_FLATTEN bool allStay(Slots<T>& s, std::size_t first, const Shared<T>& view,
                                      int steps) {
    using S = Slots<T>;
    const typename S::D d;
    Group<R, K, T> g(s, first, view);
    for (int i = 0; i < steps; ++i) g.step();
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + first + k * S::LANES));
        if (!hn::AllFalse(d, hn::AndNot(g.live[k], before))) return false;
    }
    g.storeState(s, first);
    return true;
}

// Takes `steps` steps, writes down the count of every lane that escapes and returns how many did.
// stepsBefore: the steps that all lanes have behind them.
template <class R, std::size_t K, class T>
HWY_NOINLINE HWY_FLATTEN std::size_t countEscapes(Slots<T>& s, std::size_t first,
                                                  const Shared<T>& view, int steps,
                                                  int stepsBefore) {
    using S = Slots<T>;
    const typename S::D d;
    const typename S::DU du;
    Group<R, K, T> g(s, first, view);
    hn::Vec<typename S::DU> count[K];
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        count[k] = hn::Set(du, static_cast<typename S::Word>(stepsBefore));
    }
    for (int i = 0; i < steps; ++i) {
        g.step();
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            count[k] = hn::Sub(count[k], hn::BitCast(du, hn::VecFromMask(d, g.live[k])));
        }
    }
    g.storeState(s, first);
    std::size_t escaped = 0;
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * S::LANES;
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + at));
        const auto gone = hn::AndNot(g.live[k], before);
        if (hn::AllFalse(d, gone)) continue;
        escaped += hn::CountTrue(d, gone);
        hn::BlendedStore(count[k], hn::RebindMask(du, gone), du, s.count + at);
        hn::Store(hn::VecFromMask(d, g.live[k]), d, s.live + at);
    }
    return escaped;
}

// Advances one group; returns how many lanes escaped. `calm` says that none did in the block
// before: then counting would be waste, and a block that proves eventful after all is done again.
template <class R, std::size_t K, class T>
HWY_INLINE std::size_t advanceGroup(Slots<T>& s, std::size_t first, const Shared<T>& view,
                                    int steps, int stepsBefore, bool calm) {
    if (calm && allStay<R, K>(s, first, view, steps)) return 0;
    return countEscapes<R, K>(s, first, view, steps, stepsBefore);
}

// Advances all slots by `steps` steps.
template <class R, class T>
void advance(Slots<T>& s, const Shared<T>& view, int steps, int stepsBefore, bool calm) {
    constexpr std::size_t LANES = Slots<T>::LANES;
    std::size_t vectors = s.vectors(), first = 0;
    std::size_t escaped = 0;
    for (; vectors > 2; vectors -= std::min(vectors, GROUP), first += GROUP * LANES) {
        escaped += advanceGroup<R, GROUP>(s, first, view, steps, stepsBefore, calm);
    }
    if (vectors == 2) {
        escaped += advanceGroup<R, 2>(s, first, view, steps, stepsBefore, calm);
    } else if (vectors == 1) {
        escaped += advanceGroup<R, 1>(s, first, view, steps, stepsBefore, calm);
    }
    s.alive -= escaped;
}

// Marks the slots from `used` to the end of the last group as dead, with a harmless state.
template <class T>
void padSlots(Slots<T>& s) {
    const typename Slots<T>::D d;
    constexpr std::size_t LANES = Slots<T>::LANES;
    const auto zero = hn::Zero(d);
    if (s.used % (GROUP * LANES) == 0) return;
    for (std::size_t at = s.used; at < s.used + GROUP * LANES; at += LANES) {
        for (T* row : {s.zr, s.zi, s.cr, s.ci, s.savedR, s.savedI, s.live}) {
            hn::StoreU(zero, d, row + at);
        }
    }
}

// Makes every used slot live.
template <class T>
void markLive(Slots<T>& s) {
    const typename Slots<T>::D d;
    const auto on = hn::VecFromMask(d, hn::Eq(hn::Zero(d), hn::Zero(d)));
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) hn::Store(on, d, s.live + at);
    s.alive = s.used;
    padSlots(s);
}

// Moves the live slots together at the front and hands each other one to finish(place, count).
template <class T, class Finish>
void compact(Slots<T>& s, Finish&& finish) {
    const typename Slots<T>::D d;
    const typename Slots<T>::DU du;
    constexpr std::size_t LANES = Slots<T>::LANES;
    for (std::size_t n = 0; n < s.used; ++n) {
        typename Slots<T>::Word bits;
        std::memcpy(&bits, s.live + n, sizeof bits);
        if (bits == 0) finish(s.place[n], s.count[n]);
    }
    std::size_t to = 0;
    for (std::size_t at = 0; at < s.used; at += LANES) {
        const auto live = hn::MaskFromVec(hn::Load(d, s.live + at));
        for (T* row : {s.zr, s.zi, s.cr, s.ci, s.savedR, s.savedI}) {
            hn::StoreU(hn::Compress(hn::Load(d, row + at), live), d, row + to);
        }
        for (auto* row : {s.count, s.place}) {
            const auto packed = hn::Compress(hn::Load(du, row + at), hn::RebindMask(du, live));
            hn::StoreU(packed, du, row + to);
        }
        to += hn::CountTrue(d, live);
    }
    s.used = to;
    markLive(s);
}

// Remembers the present state of every slot.
template <class T>
void saveStates(Slots<T>& s) {
    std::memcpy(s.savedR, s.zr, s.used * sizeof(T));
    std::memcpy(s.savedI, s.zi, s.used * sizeof(T));
}

// Ends every live slot whose orbit is known to stay: its state is the saved one again, so all that
// followed the saved state follows once more, or it is not a number and stays so.
//
// Equal here means ==, which takes 0 and -0 for one value. That is sound: states that differ only
// in signs of zeros lead to states that differ only in signs of zeros under every rule, and |z|^2
// is the same for them. A part that is NaN makes |z|^2 NaN, and under every rule a NaN part leaves
// a NaN part in the next state: each new part is a sum of products with both old parts, save for
// Barnsley-Sierpinski, where each part follows from itself and so stays NaN alone.
template <class T>
void endRepeats(Slots<T>& s) {
    const typename Slots<T>::D d;
    constexpr std::size_t LANES = Slots<T>::LANES;
    for (std::size_t at = 0; at < s.used; at += LANES) {
        const auto zr = hn::Load(d, s.zr + at), zi = hn::Load(d, s.zi + at);
        const auto same =
            hn::And(hn::Eq(zr, hn::Load(d, s.savedR + at)), hn::Eq(zi, hn::Load(d, s.savedI + at)));
        const auto live = hn::MaskFromVec(hn::Load(d, s.live + at));
        const auto stays = hn::And(live, hn::Or(same, hn::IsNaN(hn::Add(zr, zi))));
        if (hn::AllFalse(d, stays)) continue;
        s.alive -= hn::CountTrue(d, stays);
        hn::Store(hn::VecFromMask(d, hn::AndNot(stays, live)), d, s.live + at);
    }
}

// A rectangle of pixels that fits into the slots, in pixels of the picture; the ends are exclusive.
struct Chunk {
    int x0, y0, x1, y1;
};

// Gives every pixel of the chunk a slot, row by row, at the start of its orbit.
template <class R, class T>
void fillSlots(Slots<T>& s, const VectorTile<T>& tile, const Chunk& chunk) {
    T re[MAX_COLUMNS];
    const int columns = chunk.x1 - chunk.x0;
    const auto point = [&](int x, int y) HWY_ATTR {
        return pixelPoint(x, y, tile.width, tile.height, tile.xMin, tile.xMax, tile.yMin,
                          tile.yMax);
    };
    for (int x = 0; x < columns; ++x) re[x] = point(chunk.x0 + x, chunk.y0).r;
    std::size_t n = 0;
    for (int y = chunk.y0; y < chunk.y1; ++y) {
        const T im = point(chunk.x0, y).i;
        const int row = (y - chunk.y0) << 8;
        for (int x = 0; x < columns; ++x, ++n) {
            s.zr[n] = R::start == Start::pixel ? re[x] : T(0);
            s.zi[n] = R::start == Start::pixel ? im : T(0);
            if (R::constant == Constant::pixel) {
                s.cr[n] = re[x];
                s.ci[n] = im;
            }
            s.count[n] = static_cast<typename Slots<T>::Word>(tile.maxIters);
            s.place[n] = static_cast<typename Slots<T>::Word>(row | x);
        }
    }
    s.used = n;
    markLive(s);
}

// Colours pixels of a chunk from their place and count.
template <class T>
struct Painter {
    const VectorTile<T>& tile;
    const Chunk& chunk;

    void operator()(std::size_t place, std::size_t count) const {
        const auto y = static_cast<std::size_t>(chunk.y0) + (place >> 8);
        const auto x = static_cast<std::size_t>(chunk.x0) + (place & 255);
        const std::size_t pixel = y * static_cast<std::size_t>(tile.width) + x;
        colourPixel(tile.buffer + 4 * pixel, static_cast<int>(count), tile.maxIters, tile.palette);
    }
};

// How many steps to take before looking again, after `steps` steps. Short at first, when many
// orbits escape; later multiples of 12, so that orbits of period 1, 2, 3, 4, 6 and 12 repeat within
// one block.
inline int blockLength(int steps) {
    if (steps < 8) return 4;
    if (steps < 24) return 8;
    if (steps < 96) return 24;
    return 48;
}

// Looking for repeats costs a few per cent, and an orbit that repeats needs some dozens of steps to
// come to rest: not before this step.
inline constexpr int DETECT_FROM = 72;

// The cost of so many vectors in units of one: a group that is not full costs as much as a full one
// when it has more than two.
inline std::size_t costOf(std::size_t vectors) {
    return vectors % GROUP > 2 ? vectors / GROUP * GROUP + GROUP : vectors;
}

// Iterates all pixels of the chunk to their end and paints them. With `detect`, Brent's algorithm
// looks for orbits that return to a saved state: states are saved at steps that double.
template <class R, class T>
void renderChunk(const VectorTile<T>& tile, const Chunk& chunk, bool detect) {
    Slots<T> s;
    fillSlots<R>(s, tile, chunk);
    const Painter<T> paint{tile, chunk};
    const Shared<T> view{
        Number<T>(static_cast<double>(tile.limit)),
        {Number<T>(static_cast<double>(tile.cx)), Number<T>(static_cast<double>(tile.cy))}};
    int saveAt = DETECT_FROM;
    bool calm = false, saved = false;
    for (int steps = 0; steps < tile.maxIters && s.alive > 0;) {
        const int block = std::min(blockLength(steps), tile.maxIters - steps);
        const std::size_t alive = s.alive;
        advance<R>(s, view, block, steps, calm);
        steps += block;
        calm = s.alive == alive;
        if (detect && steps >= DETECT_FROM) {
            if (saved) endRepeats(s);
            if (steps >= saveAt) {
                saveStates(s);
                saved = true;
                saveAt = steps > (1 << 29) ? steps : 2 * steps;
            }
        }
        const std::size_t needed = (s.alive + Slots<T>::LANES - 1) / Slots<T>::LANES;
        if (s.alive > 0 && 4 * costOf(needed) <= 3 * costOf(s.vectors())) compact(s, paint);
    }
    for (std::size_t n = 0; n < s.used; ++n) paint(s.place[n], s.count[n]);
}

// The end of the first of `parts` nearly equal pieces of [from, to).
inline int firstPiece(int from, int to, int most) {
    const int parts = (to - from - 1) / most + 1;
    return from + (to - from - 1) / parts + 1;
}

// Cuts the tile into chunks.
template <class R, class T>
void renderTile(const VectorTile<T>& tile, bool detect) {
    for (int x = tile.xStart; x < tile.xEnd;) {
        const int xEnd = firstPiece(x, tile.xEnd, MAX_COLUMNS);
        const int rows = static_cast<int>(MAX_PIXELS) / (xEnd - x);
        for (int y = tile.yStart; y < tile.yEnd;) {
            const int yEnd = firstPiece(y, tile.yEnd, rows);
            renderChunk<R>(tile, {x, y, xEnd, yEnd}, detect);
            y = yEnd;
        }
        x = xEnd;
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

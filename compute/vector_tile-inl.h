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
#include <type_traits>

#include "compute/vector_certified-inl.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_tile.h"
#include "compute/vector_trig-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The rules whose step takes four rounded functions in scalar code, and is worth hundreds of plain
// ones.
template <class R>
inline constexpr bool usesTrig = std::is_same_v<R, SinRule> || std::is_same_v<R, CosRule> ||
                                 std::is_same_v<R, SinhRule> || std::is_same_v<R, CoshRule>;

// What every pixel of a tile shares: the escape limit, and c where the view gives it.
template <class T>
struct Shared {
    explicit Shared(const VectorTile<T>& tile)
        : limit(lanes(tile.limit)), c{lanes(tile.cx), lanes(tile.cy)} {}

    static Number<T> lanes(T value) { return Number<T>(hn::Set(typename Number<T>::D(), value)); }

    Number<T> limit;
    cpuComplex<Number<T>> c;
};

// K vectors of slots in registers.
template <class R, std::size_t K, class T>
struct Group {
    using S = Slots<T>;
    using D = typename S::D;
    using C = cpuComplex<Number<T>>;

    // Orbits as the slots hold them, or at their start.
    HWY_INLINE Group(const S& s, std::size_t first, const Shared<T>& view, bool atStart)
        : limit(view.limit) {
        const D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * S::LANES;
            const C point = pair(s.cr + at, s.ci + at);
            c[k] = R::constant == Constant::view ? view.c : point;
            if (atStart) {
                z[k] = R::start == Start::pixel ? point : C{Number<T>(0.0), Number<T>(0.0)};
                live[k] = hn::FirstN(d, s.used - std::min(s.used, at));
            } else {
                z[k] = pair(s.zr + at, s.zi + at);
                live[k] = hn::MaskFromVec(hn::Load(d, s.live + at));
            }
        }
    }

    static HWY_INLINE C pair(const T* r, const T* i) {
        return {Number<T>(hn::Load(D(), r)), Number<T>(hn::Load(D(), i))};
    }

    // One step of every lane. A lane is live until |z|^2 is greater than the limit for the first
    // time; "not greater" keeps a NaN alive, which no later step can make greater.
    HWY_INLINE void step() {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            if constexpr (usesTrig<R>) clearEnded(k);
            z[k] = R::step(z[k], c[k]);
            live[k] = andNotGreater(live[k], magnitudeSquared(z[k]), limit);
        }
    }

    // An ended orbit that went on would soon leave the range where a trigonometric step is cheap.
    HWY_INLINE void clearEnded(std::size_t k) {
        const Number<T> zero(0.0);
        z[k] = {select(live[k], z[k].r, zero), select(live[k], z[k].i, zero)};
    }

    HWY_INLINE bool anyLive() const {
        auto any = live[0];
        HWY_UNROLL(4)
        for (std::size_t k = 1; k < K; ++k) any = hn::Or(any, live[k]);
        return !hn::AllFalse(D(), any);
    }

    // Whether the real part of some live lane is the saved one again: the whole comparison waits
    // for that.
    HWY_INLINE bool mayRepeat(const S& s, std::size_t first) const {
        const D d;
        auto any = hn::And(live[0], hn::Eq(z[0].r.v, hn::Load(d, s.savedR + first)));
        HWY_UNROLL(4)
        for (std::size_t k = 1; k < K; ++k) {
            const auto saved = hn::Load(d, s.savedR + first + k * S::LANES);
            any = hn::Or(any, hn::And(live[k], hn::Eq(z[k].r.v, saved)));
        }
        return !hn::AllFalse(d, any);
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
    C z[K], c[K];
    MaskOf<T> live[K];
};

// Takes `steps` steps and returns whether every live lane is still live; only then the new states
// are stored. The loop holds nothing but the rule and the escape test.
template <class R, std::size_t K, class T>
HWY_NOINLINE HWY_FLATTEN bool allStay(Slots<T>& s, std::size_t first, const Shared<T>& view,
                                      int steps) {
    using S = Slots<T>;
    const typename S::D d;
    Group<R, K, T> g(s, first, view, false);
    if (!g.anyLive()) return true;
    for (int i = 0; i < steps; ++i) g.step();
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + first + k * S::LANES));
        if (!hn::AllFalse(d, hn::AndNot(g.live[k], before))) return false;
    }
    g.storeState(s, first);
    if (s.saved && g.mayRepeat(s, first)) s.suspect = true;
    return true;
}

// A group that counts the steps of each lane while it lives.
template <class R, std::size_t K, class T>
struct CountingGroup : Group<R, K, T> {
    static constexpr std::size_t VECTORS = K;
    using Element = T;
    using S = Slots<T>;
    using DU = typename S::DU;

    HWY_INLINE CountingGroup(const S& s, std::size_t first, const Shared<T>& view, bool atStart,
                             int stepsBefore)
        : Group<R, K, T>(s, first, view, atStart) {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            count[k] = hn::Set(DU(), static_cast<typename S::Word>(stepsBefore));
        }
    }

    // Two steps at a time until `steps` are taken or nobody is left.
    HWY_INLINE void run(int steps) {
        for (; steps > 1; steps -= 2) {
            stepAndCount();
            stepAndCount();
            if (!this->anyLive()) return;
        }
        if (steps == 1) stepAndCount();
    }

    HWY_INLINE void stepAndCount() {
        const typename S::D d;
        this->step();
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const auto alive = hn::VecFromMask(d, this->live[k]);
            count[k] = hn::Sub(count[k], hn::BitCast(DU(), alive));
        }
    }

    // What else is to be kept of the lanes of vector k that are in `ended`, in the slots from `at`.
    HWY_INLINE void storeEnded(S&, std::size_t, std::size_t, MaskOf<T>) const {}

    hn::Vec<DU> count[K];
};

// The first `steps` steps of a group that has only taken its pixels; writes all of its slots, with
// the count `limit` for lanes that are still live, and returns how many are not. G: CountingGroup,
// or a group that keeps more.
template <class G>
HWY_NOINLINE HWY_FLATTEN std::size_t startOrbits(typename G::S& s, std::size_t first,
                                                 const Shared<typename G::Element>& view, int steps,
                                                 int limit) {
    using S = typename G::S;
    constexpr std::size_t K = G::VECTORS;
    const typename S::D d;
    const typename S::DU du;
    G g(s, first, view, true, 0);
    g.run(steps);
    const auto undecided = hn::Set(du, static_cast<typename S::Word>(limit));
    std::size_t staying = 0;
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * S::LANES;
        staying += hn::CountTrue(d, g.live[k]);
        const auto live = hn::RebindMask(du, g.live[k]);
        hn::Store(hn::IfThenElse(live, undecided, g.count[k]), du, s.count + at);
        hn::Store(hn::VecFromMask(d, g.live[k]), d, s.live + at);
        g.storeEnded(s, at, k, hn::Not(g.live[k]));
    }
    if (staying > 0) g.storeState(s, first);
    return std::min(s.used - std::min(s.used, first), K * S::LANES) - staying;
}

// Takes `steps` steps, writes down the count of every lane that escapes and returns how many did.
// stepsBefore: the steps that all lanes have behind them.
template <class G>
HWY_NOINLINE HWY_FLATTEN std::size_t countEscapes(typename G::S& s, std::size_t first,
                                                  const Shared<typename G::Element>& view,
                                                  int steps, int stepsBefore) {
    using S = typename G::S;
    constexpr std::size_t K = G::VECTORS;
    const typename S::D d;
    const typename S::DU du;
    G g(s, first, view, false, stepsBefore);
    g.run(steps);
    g.storeState(s, first);
    std::size_t escaped = 0;
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * S::LANES;
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + at));
        const auto gone = hn::AndNot(g.live[k], before);
        if (hn::AllFalse(d, gone)) continue;
        escaped += hn::CountTrue(d, gone);
        hn::BlendedStore(g.count[k], hn::RebindMask(du, gone), du, s.count + at);
        hn::Store(hn::VecFromMask(d, g.live[k]), d, s.live + at);
        g.storeEnded(s, at, k, gone);
    }
    if (s.saved && g.mayRepeat(s, first)) s.suspect = true;
    return escaped;
}

// What the slots have behind them, and what to do next.
struct Block {
    int steps;        // to take now
    int stepsBefore;  // taken by every slot
    int limit;        // of iterations
    bool calm;        // nobody escaped in the block before, and steps are cheap
};

// What a picture keeps of a pixel: its count.
struct KeepCounts {
    template <class R, std::size_t K, class T>
    using GroupOf = CountingGroup<R, K, T>;
};

// Advances one group; returns how many lanes escaped. After a calm block counting would be waste;
// a block that proves eventful after all is done again. Fewer vectors than a full group wait for
// their own results anyway, and count meanwhile.
template <class Keep, class R, std::size_t K, class S, class T>
HWY_INLINE std::size_t advanceGroup(S& s, std::size_t first, const Shared<T>& view,
                                    const Block& block) {
    using G = typename Keep::template GroupOf<R, K, T>;
    if (block.stepsBefore == 0) return startOrbits<G>(s, first, view, block.steps, block.limit);
    if constexpr (K == GROUP) {
        if (block.calm && allStay<R, K, T>(s, first, view, block.steps)) return 0;
    }
    return countEscapes<G>(s, first, view, block.steps, block.stepsBefore);
}

// Advances all slots by one block.
template <class Keep, class R, class S, class T>
void advance(S& s, const Shared<T>& view, const Block& block) {
    constexpr std::size_t LANES = Slots<T>::LANES;
    std::size_t vectors = s.vectors(), first = 0;
    std::size_t escaped = 0;
    for (; vectors > 2; vectors -= std::min(vectors, GROUP), first += GROUP * LANES) {
        escaped += advanceGroup<Keep, R, GROUP>(s, first, view, block);
    }
    if (vectors == 2) {
        escaped += advanceGroup<Keep, R, 2>(s, first, view, block);
    } else if (vectors == 1) {
        escaped += advanceGroup<Keep, R, 1>(s, first, view, block);
    }
    s.alive -= escaped;
}

// How many steps to take before looking again, after `steps` steps. Short at first, when many
// orbits escape; later a multiple of 12, so that orbits of period 1, 2, 3, 4, 6 and 12 repeat
// within one block. A trigonometric step costs so much that none may be wasted on orbits that have
// ended.
template <class R>
int blockLength(int steps) {
    if (usesTrig<R>) return steps < 24 ? 2 : 4;
    return steps < 24 ? 8 : 24;
}

// Whether an orbit repeated in the chunk that this thread rendered last. Each thread writes and
// reads its own, no lock. A guess for the next chunk, which mostly lies beside it: the picture does
// not depend on it.
inline thread_local bool lastChunkRepeated = false;

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

// Asks for the lines of a chunk's pixels, so that they are at hand when it is painted. Rows are far
// apart, and the neighbouring tiles that share the lines may have been painted by another thread.
inline void prefetchRows(const unsigned char* firstPixel, int rows, int width) {
    for (int y = 0; y < rows; ++y) {
        const unsigned char* row = firstPixel + 4 * std::ptrdiff_t{y} * width;
#if HWY_ARCH_X86
        asm volatile("prefetchw %0" : : "m"(*row));
#else
        __builtin_prefetch(row, 1);
#endif
    }
}

template <class T>
bool worthClosing(const Slots<T>& s) {
    const std::size_t needed = (s.alive + Slots<T>::LANES - 1) / Slots<T>::LANES;
    return 2 * costOf(needed) <= costOf(s.vectors());
}

// Iterates the pixels in the slots to their end; close() closes ranks. With `detect`, Brent's
// algorithm looks for orbits that return to a saved state: states are saved at steps that double.
// Saves wait for calm blocks, which are rare where no orbit stays. Returns whether all came to
// their end, rather than being told to stop.
template <class Keep, class R, class S, class T, class Close>
HWY_INLINE bool iterateSlots(S& s, const VectorTile<T>& tile, int limit, bool detect,
                             Close&& close) {
    const Shared<T> view(tile);
    int saveAt = detectFrom<R>();
    bool repeated = false, calm = false;
    // Counts are written by the first block of steps; without one, all pixels have reached the
    // limit.
    if (limit == 0)
        fill(typename Slots<T>::DU(), s.count, s.used, hn::Zero(typename Slots<T>::DU()));
    for (int steps = 0; steps < limit && s.alive > 0;) {
        if (isSet(tile.stop)) return false;
        const int block = std::min(blockLength<R>(steps), limit - steps);
        const std::size_t alive = s.alive;
        advance<Keep, R>(s, view, {block, steps, limit, calm && !usesTrig<R>});
        steps += block;
        calm = s.alive == alive;
        if (s.suspect) repeated |= endRepeats(s);
        if (detect && calm && steps >= saveAt) {
            // What is not a number comes from the view's own numbers, within a few steps.
            if (!s.saved) repeated |= endNotNumbers(s);
            saveStates(s);
            saveAt = steps > (1 << 29) ? steps : 2 * steps;
        }
        if (s.alive > 0 && worthClosing(s)) {
            if (s.saved) saveAt = steps;  // cheaper to save anew than to move along
            s.saved = false;
            close();
        }
    }
    lastChunkRepeated = repeated;
    return true;
}

// Iterates all pixels of the chunk to their end and paints them.
template <class R, class T>
void renderChunk(const VectorTile<T>& tile, const Chunk& chunk, bool detect) {
    const std::int64_t corner = std::int64_t{chunk.y0} * tile.width + chunk.x0;
    const int limit = std::max(tile.maxIters, 0);
    prefetchRows(tile.buffer + 4 * corner, chunk.y1 - chunk.y0, tile.width);
    Slots<T> s;
    takePixels(s, tile, chunk);
    const Painter paint(tile.buffer + 4 * corner, limit, tile.palette);
    const auto close = [&]() HWY_ATTR { closeRanks<R>(s, paint); };
    if (iterateSlots<KeepCounts, R>(s, tile, limit, detect, close)) finishAll(s, paint);
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

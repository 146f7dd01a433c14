// Smooth values on vectors: the renderer of compute/vector_tile-inl.h, keeping |z|^2 before and
// after the step at which a pixel escapes.
//
// Included once for each instruction set (see compute/value_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_VALUES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_VALUES_INL_H
#undef TESSARY_COMPUTE_VECTOR_VALUES_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_VALUES_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "compute/value_tile.h"
#include "compute/vector_log-inl.h"
#include "compute/vector_tile-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Slots with |z|^2 before and after the step at which an orbit escaped, kept by pixel as counts
// are.
template <class T>
struct ValueSlots : Slots<T> {
    HWY_ALIGN T before[Slots<T>::ROOM], after[Slots<T>::ROOM];
};

// A group that keeps the last two magnitudes of each lane while it lives.
template <class R, std::size_t K, class T>
struct ValueGroup : CountingGroup<R, K, T> {
    using S = ValueSlots<T>;

    HWY_INLINE ValueGroup(const S& s, std::size_t first, const Shared<T>& view, bool atStart,
                          int stepsBefore)
        : CountingGroup<R, K, T>(s, first, view, atStart, stepsBefore) {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) before[k] = after[k] = magnitudeSquared(this->z[k]);
    }

    HWY_INLINE void run(int steps) {
        for (; steps > 1; steps -= 2) {
            stepAndCount();
            stepAndCount();
            if (!this->anyLive()) return;
        }
        if (steps == 1) stepAndCount();
    }

    HWY_INLINE void begin() { advance<R>(); }
    HWY_INLINE void stepAndCount() { advance<Form<R>>(); }

    // Steps: the rule, or a form of it.
    template <class Steps>
    HWY_INLINE void advance() {
        const typename S::D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            if constexpr (usesTrig<R>) this->clearEnded(k);
            auto& live = this->live[k];
            this->z[k] = Steps::step(this->z[k], this->c[k]);
            const Number<T> size = magnitudeSquared(this->z[k]);
            before[k] = select(live, after[k], before[k]);
            after[k] = select(live, size, after[k]);
            live = andNotGreater(live, size, this->limit);
            const auto alive = hn::BitCast(typename S::DU(), hn::VecFromMask(d, live));
            this->count[k] = hn::Sub(this->count[k], alive);
        }
    }

    HWY_INLINE void storeEnded(S& s, std::size_t at, std::size_t k, MaskOf<T> ended) const {
        const typename S::D d;
        storeByPixel(d, s, at, ended, before[k].v, s.before);
        storeByPixel(d, s, at, ended, after[k].v, s.after);
    }

    Number<T> before[K], after[K];
};

struct KeepMagnitudes {
    template <class R, std::size_t K, class T>
    using GroupOf = ValueGroup<R, K, T>;
};

// What is known of the pixels of a chunk in the end, row by row without gaps. A count that reached
// the limit has no magnitudes.
template <class T>
struct Known {
    using Word = typename Slots<T>::Word;
    static constexpr std::size_t ROOM = Slots<T>::ROOM;
    HWY_ALIGN Word count[ROOM];
    HWY_ALIGN T before[ROOM], after[ROOM];
};

// The same arrays, wherever they are.
template <class T>
struct KnownView {
    const typename Slots<T>::Word* count;
    const T *before, *after;
};

// Vectors of double of what was computed in float or double.
HWY_INLINE Real promoted(const double* from) {
    return Real(hn::Load(RealTag(), from));
}

HWY_INLINE Real promoted(const float* from) {
    return Real(hn::PromoteTo(RealTag(), hn::Load(hn::Rebind<float, RealTag>(), from)));
}

HWY_INLINE Real promoted(const std::uint64_t* from) {
    const RealTag d;
    const hn::RebindToUnsigned<RealTag> du;
    const auto bits = hn::Or(hn::Load(du, from), hn::BitCast(du, hn::Set(d, 0x1p52)));
    return Real(hn::Sub(hn::BitCast(d, bits), hn::Set(d, 0x1p52)));
}

HWY_INLINE Real promoted(const std::uint32_t* from) {
    const hn::Rebind<std::int32_t, RealTag> di;
    return Real(hn::PromoteTo(
        RealTag(), hn::BitCast(di, hn::Load(hn::RebindToUnsigned<decltype(di)>(), from))));
}

// Where fixedLogs2() will do. What comes before an escape is no greater than the limit, or infinite
// where an orbit starts there: the quotient is 1 either way.
HWY_INLINE RealMask areNormal(Real before, Real after) {
    const Real smallest(std::numeric_limits<double>::min()),
        largest(std::numeric_limits<double>::max());
    return hn::And(hn::And(before >= smallest, after >= smallest), largest >= after);
}

// smoothValue(), quicker where all numbers that matter are normal.
HWY_INLINE Real valueAt(RealMask matters, Real count, Real before, Real after, Real logLimit) {
    if (HWY_LIKELY(hn::AllFalse(RealTag(), hn::AndNot(areNormal(before, after), matters)))) {
        return valueBetween(count, fixedLogs2(before, after), logLimit);
    }
    return smoothValue(count, before, after, logLimit);
}

// The values of n pixels, and some behind them.
template <class T>
HWY_NOINLINE HWY_FLATTEN void smoothValues(const KnownView<T>& known, std::size_t n, int limit,
                                           double logLimit, double* values) {
    const RealTag d;
    const Real inside(std::numeric_limits<double>::quiet_NaN());
    const Real stays(static_cast<double>(limit)), ln(logLimit);
    for (std::size_t at = 0; at < n; at += hn::Lanes(d)) {
        const Real count = promoted(known.count + at);
        const auto escaped = stays > count;
        Real value = inside;
        if (!hn::AllFalse(d, escaped)) {
            value = valueAt(escaped, count, promoted(known.before + at), promoted(known.after + at),
                            ln);
            value = select(escaped, value, inside);
        }
        hn::Store(value.v, d, values + at);
    }
}

// Writes the pixels of a chunk, which lie row by row without gaps, to where the tile wants them.
template <class T>
void writeChunk(const ValueTile<T>& tile, const Chunk& chunk, const typename Slots<T>::Word* counts,
                const double* values) {
    const auto columns = static_cast<std::size_t>(chunk.x1 - chunk.x0);
    const auto pixels = columns * static_cast<std::size_t>(chunk.y1 - chunk.y0);
    std::ptrdiff_t to = (std::ptrdiff_t{chunk.y0} - tile.yOrigin) * tile.stride +
                        (std::ptrdiff_t{chunk.x0} - tile.xOrigin);
    for (std::size_t from = 0; from < pixels; from += columns, to += tile.stride) {
        if (tile.values != nullptr) std::copy_n(values + from, columns, tile.values + to);
        if (tile.counts == nullptr) continue;
        for (std::size_t x = 0; x < columns; ++x) {
            tile.counts[to + static_cast<std::ptrdiff_t>(x)] =
                static_cast<std::int32_t>(counts[from + x]);
        }
    }
}

template <class T>
double logOfLimit(const ValueTile<T>& tile) {
    return ::fixedLog2(static_cast<double>(tile.limit));
}

template <class T>
void finishChunk(const ValueTile<T>& tile, const Chunk& chunk, const KnownView<T>& known,
                 std::size_t pixels) {
    HWY_ALIGN double values[Known<T>::ROOM];
    if (tile.values != nullptr) {
        smoothValues(known, pixels, std::max(tile.maxIters, 0), logOfLimit(tile), values);
    }
    writeChunk(tile, chunk, known.count, values);
}

// Calls move(n) for every slot that has ended.
template <class T, class Move>
HWY_INLINE void forEachEnded(Slots<T>& s, Move&& move) {
    if (!s.placed) writePlaces(s);
    for (std::size_t n = 0; n < s.used; ++n) {
        typename Slots<T>::Word live;
        std::memcpy(&live, s.live + n, sizeof live);
        if (live == 0) move(n);
    }
}

// The picture that the tile's pixels belong to, for the parts of the renderers that look no
// further.
template <class T>
VectorTile<T> geometryOf(const ValueTile<T>& t) {
    return {t.xStart, t.yStart, t.xEnd, t.yEnd,  t.width,    t.height, t.xMin,  t.xMax, t.yMin,
            t.yMax,   t.cx,     t.cy,   t.limit, t.maxIters, nullptr,  nullptr, t.stop};
}

template <class R, class T>
void renderValueChunk(const ValueTile<T>& tile, const VectorTile<T>& geometry, const Chunk& chunk,
                      bool detect) {
    const int limit = std::max(tile.maxIters, 0);
    ValueSlots<T> s;
    takePixels(s, geometry, chunk);
    const std::size_t pixels = s.used;
    if (!iterateSlots<KeepMagnitudes, R>(s, geometry, limit, detect)) return;
    finishChunk<T>(tile, chunk, {s.count, s.before, s.after}, pixels);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

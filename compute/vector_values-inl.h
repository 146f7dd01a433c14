// Smooth values on vectors: the renderers of compute/vector_tile-inl.h and vector_certified-inl.h,
// keeping |z|^2 before and after the step at which a pixel escapes.
//
// The certified renderer does not know the scalar rule's states, only that they are near. Values
// that are rounded to 32 bits hide the difference nearly always; where they may not, the scalar
// rule follows the pixel from its start.
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
#include "compute/vector_certified-inl.h"
#include "compute/vector_log-inl.h"
#include "compute/vector_tile-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Slots that hold |z|^2 before and after the step at which their orbit escaped.
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

    HWY_INLINE void stepAndCount() {
        const typename S::D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            if constexpr (usesTrig<R>) this->clearEnded(k);
            auto& live = this->live[k];
            this->z[k] = R::step(this->z[k], this->c[k]);
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
        hn::BlendedStore(before[k].v, ended, d, s.before + at);
        hn::BlendedStore(after[k].v, ended, d, s.after + at);
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

// Where fixedLogs2() will do. What comes before an escape is no greater than the limit.
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

template <class T>
HWY_INLINE void moveKnown(const ValueSlots<T>& s, std::size_t slot, Known<T>& known) {
    const std::size_t place = s.place[slot];
    known.count[place] = s.count[slot];
    known.before[place] = s.before[slot];
    known.after[place] = s.after[slot];
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

// Closes ranks; what the ended slots hold goes to the places of their pixels.
template <class R, class T>
void closeValueRanks(ValueSlots<T>& s, Known<T>& known) {
    forEachEnded(s, [&](std::size_t n) { moveKnown(s, n, known); });
    closeRanks<R>(s, [](std::size_t, std::size_t) {});
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
    Known<T> known;
    takePixels(s, geometry, chunk);
    s.stride = s.columns;
    const std::size_t pixels = s.used;
    const auto close = [&]() HWY_ATTR { closeValueRanks<R>(s, known); };
    if (!iterateSlots<KeepMagnitudes, R>(s, geometry, limit, detect, close)) return;
    if (!s.placed) return finishChunk<T>(tile, chunk, {s.count, s.before, s.after}, pixels);
    for (std::size_t n = 0; n < s.used; ++n) moveKnown(s, n, known);
    finishChunk<T>(tile, chunk, {known.count, known.before, known.after}, pixels);
}

// Certified slots that hold |z|^2 before and after the step at which their orbit surely escaped,
// and how far both logarithms together may be from the scalar rule's: |z|^2 within a margin M of
// another has its logarithm within M / (|z|^2 - M) of the other's.
struct CertifiedValueSlots : CertifiedSlots {
    HWY_ALIGN double before[Slots<double>::ROOM], after[Slots<double>::ROOM];
    HWY_ALIGN double spread[Slots<double>::ROOM];

    template <class Orbits>
    HWY_INLINE void noteEscape(std::size_t at, RealMask escaped, const Orbits& last,
                               const Orbits& now) {
        const RealTag d;
        const Real sizeBefore = magnitudeSquared(last.z), sizeAfter = magnitudeSquared(now.z);
        const Real both = spreadOf(last, sizeBefore) + spreadOf(now, sizeAfter);
        hn::BlendedStore(sizeBefore.v, escaped, d, before + at);
        hn::BlendedStore(sizeAfter.v, escaped, d, after + at);
        hn::BlendedStore(both.v, escaped, d, spread + at);
    }

    // Infinite where |z|^2 may be 0 or lose bits to underflow.
    template <class Orbits>
    static HWY_INLINE Real spreadOf(const Orbits& orbits, Real size) {
        const Real margin = orbits.marginOf(size) + Real(0x1p-1000);
        return margin / Real(hn::Max((size - margin).v, hn::Zero(RealTag())));
    }
};

struct CertifiedKnown : Known<double> {
    HWY_ALIGN double spread[ROOM];
};

inline void moveKnown(const CertifiedValueSlots& slots, std::size_t slot, CertifiedKnown& known) {
    const std::size_t place = slots.s.place[slot];
    known.count[place] = slots.s.count[slot];
    known.before[place] = slots.before[slot];
    known.after[place] = slots.after[slot];
    known.spread[place] = slots.spread[slot];
}

// A vector of values, and the lanes where the scalar rule's own is certain to be the same.
struct CertifiedValue {
    Real value;
    RealMask certain;
};

// The values of pixels that escaped at `count`, 1 or later.
//
// Write l for the computed logarithms to base 2 here and l' for the scalar rule's; that of the
// limit is the same. Each is within 10 u of the true one, and `spread` is of natural logarithms, so
// both pairs differ by no more than S = 1.45 spread + 32 u (|l before| + |l after|) in sum. For the
// exact quotients q = N / D of these numbers
//     q' - q = -(b (1 - q) + a q) / D',   a = l'after - l after, b = l'before - l before,
// so that |q' - q| <= S / (D - S) for q in [0, 1]. As computed both have 4 u of their own, and the
// sums with n - 1 round by u n each; 8 u (n + 1) covers these, the two ends below and the bound's
// own roundings. Where both ends round to one number of 32 bits every value between them does, and
// where q is further from 0 and 1 than that, q' is no more cut than q.
HWY_INLINE CertifiedValue certifiedValue(Real count, Real before, Real after, Real spread,
                                         Real logLimit) {
    const Real one(1.0);
    const LogPair<Real> logs = fixedLogs2(before, after);
    const Real sizes = Real(hn::Abs(logs.first.v)) + Real(hn::Abs(logs.second.v));
    const Real sum = Real(1.45) * spread + Real(0x1p-48) * sizes;
    const Real difference = logs.second - logs.first;
    const Real q = (logLimit - logs.first) / difference;
    const Real off = sum / (difference - sum) * Real(1.0 + 0x1p-30) + Real(0x1p-50) * (count + one);
    const Real value = (count - one) + q;
    const Real low = rounded32(value - off), high = rounded32(value + off);
    const RealMask between = hn::And(q > off, one - q > off);
    return {low, hn::And(hn::And(between, difference > sum + sum), hn::Eq(low.v, high.v))};
}

// The values of n pixels, and some behind them; `certain` has all bits set where they are.
HWY_NOINLINE HWY_FLATTEN void certifiedValues(const CertifiedKnown& known, std::size_t n, int limit,
                                              double logLimit, double* values, double* certain) {
    const RealTag d;
    const Real stays(static_cast<double>(limit)), zero(0.0);
    const Real inside(std::numeric_limits<double>::quiet_NaN()), ln(logLimit);
    for (std::size_t at = 0; at < n; at += hn::Lanes(d)) {
        const Real count = promoted(known.count + at);
        const CertifiedValue v =
            certifiedValue(count, promoted(known.before + at), promoted(known.after + at),
                           promoted(known.spread + at), ln);
        // From 0 every orbit starts, and has the value 0 where it escapes at once.
        const RealMask first = count == zero, last = count >= stays;
        hn::Store(select(last, inside, select(first, zero, v.value)).v, d, values + at);
        hn::Store(hn::VecFromMask(d, hn::Or(v.certain, hn::Or(first, last))), d, certain + at);
    }
}

// A chunk of certified orbits at their end. Pixels whose count or value is in doubt are followed
// with the scalar rule.
template <class Kind>
class CertifiedChunk {
  public:
    CertifiedChunk(const ValueTile<double>& ofTile, const VectorTile<double>& geometry,
                   const Chunk& which, bool detect)
        : tile(ofTile), chunk(which), points(geometry, which), detects(detect) {}

    void finish(CertifiedKnown& known) {
        const auto columns = static_cast<std::size_t>(chunk.x1 - chunk.x0);
        const auto pixels = columns * static_cast<std::size_t>(chunk.y1 - chunk.y0);
        const bool wanted = tile.values != nullptr;
        if (wanted) certifiedValues(known, pixels, limit, ln, values, certain);
        for (std::size_t n = 0; n < pixels; ++n) {
            if (known.count[n] != IN_DOUBT && (!wanted || isCertain(n))) continue;
            if (!follow({points.re[n % columns], points.im[n / columns]}, known.count[n], n))
                return;
        }
        writeChunk(tile, chunk, known.count, values);
    }

  private:
    bool isCertain(std::size_t n) const {
        std::uint64_t bits;
        std::memcpy(&bits, certain + n, sizeof bits);
        return bits != 0;
    }

    // Returns whether it came to its end.
    bool follow(const cpuComplex<double>& c, std::uint64_t& count, std::size_t n) {
        const ScalarEscape e = followScalar<Kind>(c, tile.limit, limit, detects, tile.stop);
        if (e.count == GIVEN_UP) return false;
        count = static_cast<std::uint64_t>(e.count);
        values[n] = e.count == limit
                        ? std::numeric_limits<double>::quiet_NaN()
                        : ::rounded32(::smoothValue<double>(e.count, e.before, e.after, ln));
        return true;
    }

    const ValueTile<double>& tile;
    const Chunk chunk;
    const Points<double> points;
    const bool detects;
    const int limit = std::max(tile.maxIters, 0);
    const double ln = logOfLimit(tile);
    HWY_ALIGN double values[CertifiedKnown::ROOM], certain[CertifiedKnown::ROOM];
};

// As renderValueChunk, for the trigonometric rules in double.
template <class R>
void renderValueChunkCertified(const ValueTile<double>& tile, const VectorTile<double>& geometry,
                               const Chunk& chunk, bool detect) {
    static_assert(R::start == Start::zero);
    const int limit = std::max(tile.maxIters, 0);
    CertifiedValueSlots slots;
    CertifiedKnown known;
    fillSlots<R>(slots.s, geometry, chunk, limit);
    slots.s.stride = slots.s.columns;
    const auto move = [&](std::size_t n) { moveKnown(slots, n, known); };
    const auto close = [&]() HWY_ATTR {
        forEachEnded(slots.s, move);
        closeCertifiedRanks<R>(slots, [](std::size_t, std::size_t) {});
    };
    if (!iterateCertified<R>(slots, geometry, limit, detect, close)) return;
    if (!slots.s.placed) writePlaces(slots.s);
    for (std::size_t n = 0; n < slots.s.used; ++n) move(n);
    CertifiedChunk<typename KindOf<R>::Kind>(tile, geometry, chunk, detect).finish(known);
}

template <class R, class T>
void renderValueTile(const ValueTile<T>& tile, bool detect) {
    const VectorTile<T> geometry = geometryOf(tile);
    forEachChunk(geometry, [&](const Chunk& chunk) HWY_ATTR {
        if constexpr (usesTrig<R> && std::is_same_v<T, double>) {
            renderValueChunkCertified<R>(tile, geometry, chunk, detect);
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

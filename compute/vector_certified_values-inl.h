// Smooth values under the trigonometric rules in double, on the renderer of
// compute/vector_certified-inl.h.
//
// It does not know the scalar rule's states, only that they are near. Values that are rounded to 32
// bits hide the difference nearly always; where they may not, the scalar rule follows the pixel
// from its start.
//
// Included once for each instruction set (see compute/value_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_CERTIFIED_VALUES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_CERTIFIED_VALUES_INL_H
#undef TESSARY_COMPUTE_VECTOR_CERTIFIED_VALUES_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_CERTIFIED_VALUES_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "compute/value_tile.h"
#include "compute/vector_certified-inl.h"
#include "compute/vector_rounded-inl.h"
#include "compute/vector_values-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

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

inline void moveKnown(const CertifiedValueSlots& slots, std::size_t slot, std::size_t place,
                      CertifiedKnown& known) {
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
HWY_NOINLINE HWY_FLATTEN inline void certifiedValues(const CertifiedKnown& known, std::size_t n,
                                                     int limit, double logLimit, double* values,
                                                     double* certain) {
    const RealTag d;
    const Real stays(static_cast<double>(limit)), zero(0.0);
    const Real inside(std::numeric_limits<double>::quiet_NaN()), ln(logLimit);
    for (std::size_t at = 0; at < n; at += hn::Lanes(d)) {
        const Real count = promoted(known.count + at);
        // From 0 every orbit starts, and has the value 0 where it escapes at once.
        const RealMask first = count == zero, last = count >= stays;
        CertifiedValue v{inside, last};
        if (!hn::AllTrue(d, last)) {
            v = certifiedValue(count, promoted(known.before + at), promoted(known.after + at),
                               promoted(known.spread + at), ln);
        }
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
        FollowedPixels doubtful;
        for (std::size_t n = 0; n < pixels; ++n) {
            if (known.count[n] != IN_DOUBT<double> && (!wanted || isCertain(n))) continue;
            doubtful.add(n, points.re[n % columns], points.im[n / columns]);
        }
        if (doubtful.used > 0 && !follow(doubtful, known)) return;
        writeChunk(tile, chunk, known.count, values);
    }

  private:
    bool isCertain(std::size_t n) const {
        std::uint64_t bits;
        std::memcpy(&bits, certain + n, sizeof bits);
        return bits != 0;
    }

    // Returns whether all came to their end.
    bool follow(FollowedPixels& doubtful, CertifiedKnown& known) {
        if (!followAll<Kind>(doubtful, tile.limit, limit, detects, tile.stop)) return false;
        HWY_ALIGN double followed[FollowedPixels::ROOM];
        smoothValues<double>({doubtful.count, doubtful.before, doubtful.after}, doubtful.used,
                             limit, ln, followed);
        for (std::size_t n = 0; n < doubtful.used; ++n) {
            const std::size_t at = doubtful.place[n];
            known.count[at] = doubtful.count[n];
            values[at] = ::rounded32(followed[n]);
        }
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

// Follows the slots to their end and calls move(slot) for each at its own. Returns whether all came
// there.
template <class R, class Move>
bool followCertified(CertifiedValueSlots& slots, const VectorTile<double>& geometry, int limit,
                     bool detect, Move&& move) {
    const auto close = [&]() HWY_ATTR {
        forEachEnded(slots.s, move);
        closeCertifiedRanks<R>(slots, [](std::size_t, std::size_t) {});
    };
    if (!iterateCertified<R>(slots, geometry, limit, detect, close)) return false;
    if (!slots.s.placed) writePlaces(slots.s);
    for (std::size_t n = 0; n < slots.s.used; ++n) move(n);
    return true;
}

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
    const auto move = [&](std::size_t n) { moveKnown(slots, n, slots.s.place[n], known); };
    if (!followCertified<R>(slots, geometry, limit, detect, move)) return;
    CertifiedChunk<typename KindOf<R>::Kind>(tile, geometry, chunk, detect).finish(known);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

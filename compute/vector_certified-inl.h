// Double trigonometric rules on vectors, certified: each orbit is followed approximately together
// with a bound of its distance from the orbit of the scalar rule, whose functions are correctly
// rounded. A decision that the bound cannot settle is not taken; such a pixel is counted anew with
// the scalar rule.
//
// Write z for the approximate state, E for the bound, f for the function of the rule. If the scalar
// rule's state lies within E of z, then its next state lies within
//     |f'(z)| E + max|f''| E^2 / 2 + S |f(z)|_1 + S |f(z) + c|_1
// of the next z, where S covers the difference of two evaluations of f (21 u, see
// compute/vector_trig-inl.h) and the two roundings of the sum with c. max|f''| is taken over the
// points within E of z and is at most cosh(|h| + E) <= 1.001 cosh(h) for E <= 2^-10, h being the
// hyperbolic argument. Every constant below is rounded up by more than the roundings of computing
// the bound itself can take away.
//
// A state and bound that return end an orbit: the bound grows with itself, so when z is the saved z
// and E no more than the saved E, all decisions since then, "stays" each, come again.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_CERTIFIED_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_CERTIFIED_INL_H
#undef TESSARY_COMPUTE_VECTOR_CERTIFIED_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_CERTIFIED_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "compute/vector_number-inl.h"
#include "compute/vector_paint-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_tile.h"
#include "compute/vector_trig-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using RealMask = hn::Mask<RealTag>;

// The count of a pixel whose orbit could not be followed to its end.
inline constexpr std::uint64_t IN_DOUBT = ~std::uint64_t{0};

// The function of each rule.
template <class R>
struct KindOf;
template <>
struct KindOf<SinRule> {
    using Kind = SineKind;
};
template <>
struct KindOf<CosRule> {
    using Kind = CosineKind;
};
template <>
struct KindOf<SinhRule> {
    using Kind = HyperbolicSineKind;
};
template <>
struct KindOf<CoshRule> {
    using Kind = HyperbolicCosineKind;
};

// The length of (a, b), |a| and |b| below 2^500. A cheaper bound from above, even one that is 2 %
// too long, would let bounds grow on orbits that contract by less, and cost those pixels a second
// count. Squares that vanish do so beside an evaluation error that is far larger: where the slope
// of one of these functions is 0 its value is not.
HWY_INLINE Real length(Real a, Real b) {
    return Real(hn::Sqrt(multiplyAdd(a, a, b * b).v));
}

HWY_INLINE Real sumOfMagnitudes(const cpuComplex<Real>& z) {
    return Real(hn::Abs(z.r.v)) + Real(hn::Abs(z.i.v));
}

// One vector of orbits in registers.
template <class Kind>
struct CertifiedOrbits {
    cpuComplex<Real> z, c;
    Real bound;
    RealMask live;

    HWY_INLINE void step() {
        const Factors f = Kind::factors(z.r, z.i);
        const cpuComplex<Real> value = Kind::value(f);
        const cpuComplex<Real> slope = Kind::slope(f);
        z = value + c;
        const Real evaluation = (sumOfMagnitudes(value) + sumOfMagnitudes(z)) * Real(0x1p-48);
        const Real growth = multiplyAdd(bound * Real(0.501), f.cosh, length(slope.r, slope.i));
        bound = multiplyAdd(bound, growth, evaluation) * Real(1.0 + 0x1p-30);
    }

    // How far |z|^2 may be from the scalar rule's, both as they were rounded.
    HWY_INLINE Real marginOf(Real size) const {
        const Real reach = multiplyAdd(Real(2.01), sumOfMagnitudes(z), bound);
        return multiplyAdd(bound, reach, size * Real(0x1p-50));
    }

    // Lanes that surely escaped at this state, and those of which nobody knows.
    HWY_INLINE void decide(Real limit, RealMask& escaped, RealMask& doubtful) const {
        const Real size = magnitudeSquared(z);
        const Real margin = marginOf(size);
        const RealMask certain = hn::Le(bound.v, hn::Set(RealTag(), 0x1p-10));
        escaped = hn::And(certain, size - margin > limit);
        const RealMask stays = hn::And(certain, limit >= size + margin);
        doubtful = hn::AndNot(hn::Or(escaped, stays), live);
        escaped = hn::And(escaped, live);
    }
};

// The slots of a chunk and the bound of each orbit, now and when its state was saved.
struct CertifiedSlots {
    Slots<double> s;
    HWY_ALIGN double bound[Slots<double>::ROOM], savedBound[Slots<double>::ROOM];

    // Told of lanes that surely escaped, with the orbits before and after that step.
    template <class Orbits>
    HWY_INLINE void noteEscape(std::size_t, RealMask, const Orbits&, const Orbits&) {}
};

// Takes `steps` steps with one vector of slots. Lanes that escape or fall into doubt end. S:
// CertifiedSlots, or what derives from it with a noteEscape() of its own.
template <class Kind, class S>
HWY_NOINLINE void advanceCertified(S& slots, std::size_t at, Real limit, int steps,
                                   int stepsBefore) {
    const RealTag d;
    const Slots<double>::DU du;
    Slots<double>& s = slots.s;
    CertifiedOrbits<Kind> orbits{{Real(hn::Load(d, s.zr + at)), Real(hn::Load(d, s.zi + at))},
                                 {Real(hn::Load(d, s.cr + at)), Real(hn::Load(d, s.ci + at))},
                                 Real(hn::Load(d, slots.bound + at)),
                                 hn::MaskFromVec(hn::Load(d, s.live + at))};
    for (int i = 0; i < steps; ++i) {
        const CertifiedOrbits<Kind> before = orbits;
        orbits.step();
        RealMask escaped, doubtful;
        orbits.decide(limit, escaped, doubtful);
        const RealMask ended = hn::Or(escaped, doubtful);
        if (HWY_LIKELY(hn::AllFalse(d, ended))) continue;
        const auto count = static_cast<std::uint64_t>(std::int64_t{stepsBefore} + i);
        hn::BlendedStore(hn::Set(du, count), hn::RebindMask(du, escaped), du, s.count + at);
        hn::BlendedStore(hn::Set(du, IN_DOUBT), hn::RebindMask(du, doubtful), du, s.count + at);
        slots.noteEscape(at, escaped, before, orbits);
        s.alive -= hn::CountTrue(d, ended);
        orbits.live = hn::AndNot(ended, orbits.live);
        if (hn::AllFalse(d, orbits.live)) break;
    }
    hn::Store(orbits.z.r.v, d, s.zr + at);
    hn::Store(orbits.z.i.v, d, s.zi + at);
    hn::Store(orbits.bound.v, d, slots.bound + at);
    hn::Store(hn::VecFromMask(d, orbits.live), d, s.live + at);
}

// Ends every live slot whose state is the saved one and whose bound has not grown since.
inline void endCertifiedRepeats(CertifiedSlots& slots) {
    const RealTag d;
    Slots<double>& s = slots.s;
    endWhere(s, [&](std::size_t at) HWY_ATTR {
        const auto same = hn::And(hn::Eq(hn::Load(d, s.zr + at), hn::Load(d, s.savedR + at)),
                                  hn::Eq(hn::Load(d, s.zi + at), hn::Load(d, s.savedI + at)));
        return hn::And(same,
                       hn::Le(hn::Load(d, slots.bound + at), hn::Load(d, slots.savedBound + at)));
    });
}

// Remembers the present states and bounds. A bound may always be raised, and a raised one sinks
// back below itself where the orbit contracts; left alone it would creep up on its rest value for
// ever.
inline void saveCertified(CertifiedSlots& slots) {
    const RealTag d;
    saveStates(slots.s);
    for (std::size_t at = 0; at < slots.s.used; at += Slots<double>::LANES) {
        const auto raised = hn::Mul(hn::Load(d, slots.bound + at), hn::Set(d, 2.0));
        hn::Store(raised, d, slots.bound + at);
        hn::Store(raised, d, slots.savedBound + at);
    }
}

// Moves the live slots together, bounds included.
template <class R, class Finish>
void closeCertifiedRanks(CertifiedSlots& slots, Finish&& finish) {
    const RealTag d;
    packRow(d, slots.bound, slots.s);
    if (slots.s.saved) packRow(d, slots.savedBound, slots.s);
    closeRanks<R>(slots.s, finish);
}

// Where an orbit escaped, and |z|^2 before and after that step; a count alone for one that stays.
struct ScalarEscape {
    int count;
    double before = 0, after = 0;
};

// Follows the pixel at point c with the scalar rule, up to the iteration limit. `detect` looks for
// an orbit that returns to a saved state. The count is GIVEN_UP once `stop` is set.
template <class Kind>
ScalarEscape followScalar(const cpuComplex<double>& c, double maxSizeSquared, int limit,
                          bool detect, StopFlag stop) {
    cpuComplex<double> z{0.0, 0.0}, saved = z;
    double before = 0;
    int saveAt = 8;
    for (int count = 0; count < limit; ++count) {
        if (count % STEPS_BETWEEN_LOOKS == 0 && isSet(stop)) return {GIVEN_UP};
        z = Kind::exact(z) + c;
        const double after = z.r * z.r + z.i * z.i;
        if (after > maxSizeSquared) return {count, before, after};
        before = after;
        if (!detect) continue;
        const bool repeats = z.r == saved.r && z.i == saved.i;
        const bool isNumber = z.r == z.r && z.i == z.i;  // else it never is one again
        if (repeats || !isNumber) return {limit};
        if (count < saveAt) continue;
        saved = z;
        saveAt = count > (1 << 29) ? count : 2 * count;
    }
    return {limit};
}

// The constant of the pixel at a place of the chunk, counted in rows of `stride` pixels.
inline cpuComplex<double> constantAt(const VectorTile<double>& tile, const Chunk& chunk,
                                     std::uint64_t place, std::uint64_t stride) {
    const int x = chunk.x0 + static_cast<int>(place % stride);
    const int y = chunk.y0 + static_cast<int>(place / stride);
    const auto p =
        pixelPoint(x, y, tile.width, tile.height, tile.xMin, tile.xMax, tile.yMin, tile.yMax);
    return {p.r, p.i};
}

// As iterateSlots, for the trigonometric rules in double; close() closes ranks, and counts may be
// IN_DOUBT.
template <class R, class S, class Close>
HWY_INLINE bool iterateCertified(S& slots, const VectorTile<double>& tile, int limit, bool detect,
                                 Close&& close) {
    using Kind = typename KindOf<R>::Kind;
    constexpr int DETECT_CERTIFIED_FROM = 24;
    Slots<double>& s = slots.s;
    fill(RealTag(), slots.bound, s.used, hn::Zero(RealTag()));
    int saveAt = DETECT_CERTIFIED_FROM;
    for (int steps = 0; steps < limit && s.alive > 0;) {
        if (isSet(tile.stop)) return false;
        const int block = std::min(steps < 24 ? 2 : 4, limit - steps);
        for (std::size_t at = 0; at < s.used; at += Slots<double>::LANES) {
            advanceCertified<Kind>(slots, at, Real(tile.limit), block, steps);
        }
        steps += block;
        if (detect && steps >= DETECT_CERTIFIED_FROM) {
            if (s.saved) endCertifiedRepeats(slots);
            if (steps >= saveAt) {
                saveCertified(slots);
                saveAt = steps > (1 << 29) ? steps : 2 * steps;
            }
        }
        const std::size_t needed = (s.alive + Slots<double>::LANES - 1) / Slots<double>::LANES;
        if (s.alive > 0 && 8 * needed <= 7 * s.vectors()) close();
    }
    return true;
}

// As renderChunk, for the trigonometric rules in double.
template <class R>
void renderChunkCertified(const VectorTile<double>& tile, const Chunk& chunk, bool detect) {
    using Kind = typename KindOf<R>::Kind;
    const std::int64_t corner = std::int64_t{chunk.y0} * tile.width + chunk.x0;
    const int limit = std::max(tile.maxIters, 0);
    CertifiedSlots slots;
    fillSlots<R>(slots.s, tile, chunk, limit);
    const Painter paint(tile.buffer + 4 * corner, limit, tile.palette);
    const auto finish = [&](std::uint64_t place, std::uint64_t count) {
        if (count == IN_DOUBT) {
            const auto c = constantAt(tile, chunk, place, static_cast<std::uint64_t>(tile.width));
            const int exact = followScalar<Kind>(c, tile.limit, limit, detect, tile.stop).count;
            if (exact == GIVEN_UP) return;
            count = static_cast<std::uint64_t>(exact);
        }
        paint(place, count);
    };
    const auto close = [&]() HWY_ATTR { closeCertifiedRanks<R>(slots, finish); };
    if (iterateCertified<R>(slots, tile, limit, detect, close)) finishAll(slots.s, finish);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

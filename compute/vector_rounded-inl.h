// The correctly rounded functions of compute/rounded_trig.h on vectors, and orbits of the scalar
// trigonometric rules in double, many at once: for pixels that compute/vector_certified-inl.h
// or compute/vector_stages-inl.h cannot settle.
//
// The sums are those of the scalar text, so their bound is its bound, too. Lanes that they cannot
// decide, and arguments that they are not made for, go to the scalar functions.
//
// Included once for each instruction set (see compute/value_renderer.cpp and vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_ROUNDED_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_ROUNDED_INL_H
#undef TESSARY_COMPUTE_VECTOR_ROUNDED_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_ROUNDED_INL_H
#endif

#include <hwy/highway.h>

#include <bit>
#include <cstddef>
#include <cstdint>

#include "compute/quick_trig.h"  // the plain functions first, then those of the vectors
#include "compute/rounded_trig.h"
#include "compute/stop_flag.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_trig-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

HWY_INLINE Real asFloat(Real x) {
    const hn::Rebind<float, RealTag> narrow;
    return Real(hn::PromoteTo(RealTag(), hn::DemoteTo(narrow, x.v)));
}

#define TESSARY_VECTOR_TEXT
#include "compute/quick_sums.h"
#undef TESSARY_VECTOR_TEXT

using RealMask = hn::Mask<RealTag>;
using Whole = hn::Vec<RealBits>;
using SplitReal = SplitNumber<Real>;

HWY_INLINE Whole whole(std::int64_t n) {
    return hn::Set(RealBits(), n);
}

HWY_INLINE Whole unitsOf(const QuickUnits<Real>& x) {
    return hn::Sub(hn::BitCast(RealBits(), x.shifted.v),
                   whole(std::bit_cast<std::int64_t>(WITHOUT_FRACTION)));
}

HWY_INLINE SplitReal lookUp(const trig_tables::SplitDouble* table, Whole at) {
    const RealTag d;
    const Whole place = hn::Add(at, at);
    return {Real(hn::GatherIndex(d, &table->high, place)),
            Real(hn::GatherIndex(d, &table->low, place))};
}

// Of |x| <= LARGEST.
HWY_INLINE QuickPair<Real> quickSineCosine(Real x, QuickRest<Real>& rest) {
    using namespace trig_tables;
    const QuickUnits<Real> units = inUnits(x, PER_PI, PI_1024_1, PI_1024_2, PI_1024_3);
    const Whole n = unitsOf(units), one = whole(1), all = whole(512);
    const Whole quarter = hn::ShiftRight<9>(n), within = hn::And(n, whole(511));
    // Minus one in odd quarters: their tables run backwards.
    const Whole back = hn::Neg(hn::And(quarter, one));
    const Whole at = hn::Add(hn::Xor(within, back), hn::And(back, whole(513)));
    const SplitReal s = lookUp(SINES, at), c = lookUp(SINES, hn::Sub(all, at));
    const Whole next = hn::Add(quarter, one);
    rest = units.rest;
    return sineCosineBeyond<Real>({turnSign(s.high, quarter), turnSign(s.low, quarter)},
                                  {turnSign(c.high, next), turnSign(c.low, next)}, rest);
}

// 2^(n/256 - 1), |n| < 2^18.
HWY_INLINE SplitReal halfPower(Whole n) {
    const Whole exponent = hn::ShiftRight<8>(hn::Add(n, whole(1022 << 8)));
    const Real power(hn::BitCast(RealTag(), hn::ShiftLeft<52>(exponent)));
    const SplitReal root = lookUp(trig_tables::POWERS, hn::And(n, whole(255)));
    return {root.high * power, root.low * power};
}

// Of 0 <= x <= LARGEST_HYPERBOLIC.
HWY_INLINE QuickPair<Real> quickHyperbolic(Real x, QuickRest<Real>& rest) {
    using namespace trig_tables;
    const QuickUnits<Real> units = inUnits(x, PER_LN2, LN2_256_1, LN2_256_2, LN2_256_3);
    const Whole n = unitsOf(units);
    rest = units.rest;
    return hyperbolicBeyond(halfPower(n), halfPower(hn::Neg(n)), rest);
}

// A pair of functions, and the lanes it is good for.
struct RoundedPair {
    Real sine, cosine;
    RealMask good;
};

// Where an argument of this size and rest is one that the sums are made for, and they decide.
HWY_INLINE RealMask isDecided(const QuickPair<Real>& pair, const QuickRest<Real>& rest, Real size,
                              double largest) {
    const RealMask range = hn::And(size >= Real(quick_trig::SMALLEST), Real(largest) >= size);
    const RealMask apart = Real(hn::Abs(rest.all.v)) >= Real(quick_trig::SMALLEST_REST);
    return hn::And(hn::And(range, apart), hn::And(pair.sine.decided(), pair.cosine.decided()));
}

// x where it is in range, else 1: no table reaches further.
HWY_INLINE Real tamed(Real x, Real size, double largest) {
    return select(Real(largest) >= size, x, Real(1.0));
}

HWY_INLINE RoundedPair roundedSineCosine(Real x) {
    const Real size(hn::Abs(x.v));
    QuickRest<Real> rest;
    const auto pair = quickSineCosine(tamed(x, size, quick_trig::LARGEST), rest);
    return {pair.sine.above(), pair.cosine.above(),
            isDecided(pair, rest, size, quick_trig::LARGEST)};
}

HWY_INLINE RoundedPair roundedHyperbolic(Real x) {
    const Real size(hn::Abs(x.v));
    QuickRest<Real> rest;
    const auto pair = quickHyperbolic(tamed(size, size, quick_trig::LARGEST_HYPERBOLIC), rest);
    return {Real(hn::CopySign(pair.sine.above().v, x.v)), pair.cosine.above(),
            isDecided(pair, rest, size, quick_trig::LARGEST_HYPERBOLIC)};
}

// Has a scalar function give the lanes that are not good.
HWY_NOINLINE inline void repair(Real x, SineCosine (*function)(double), RoundedPair& pair) {
    const RealTag d;
    constexpr std::size_t LANES = hn::MaxLanes(RealTag());
    HWY_ALIGN double arguments[LANES], sines[LANES], cosines[LANES], good[LANES];
    hn::Store(x.v, d, arguments);
    hn::Store(pair.sine.v, d, sines);
    hn::Store(pair.cosine.v, d, cosines);
    hn::Store(hn::IfThenElseZero(pair.good, hn::Set(d, 1.0)), d, good);
    for (std::size_t n = 0; n < hn::Lanes(d); ++n) {
        if (good[n] != 0.0) continue;
        const SineCosine value = function(arguments[n]);
        sines[n] = value.sine;
        cosines[n] = value.cosine;
    }
    pair.sine = Real(hn::Load(d, sines));
    pair.cosine = Real(hn::Load(d, cosines));
}

// The four functions of a step, as the scalar ones are. Lanes outside `live` may be anything.
HWY_INLINE Factors roundedFactors(Real trigonometric, Real hyperbolic, RealMask live) {
    const RealTag d;
    RoundedPair t = roundedSineCosine(trigonometric), h = roundedHyperbolic(hyperbolic);
    t.good = hn::Or(t.good, hn::Not(live));
    h.good = hn::Or(h.good, hn::Not(live));
    if (HWY_UNLIKELY(!hn::AllTrue(d, t.good))) repair(trigonometric, ::sineCosine, t);
    if (HWY_UNLIKELY(!hn::AllTrue(d, h.good))) repair(hyperbolic, ::hyperbolicSineCosine, h);
    return {t.sine, t.cosine, h.sine, h.cosine};
}

// Pixels that are to be followed with the scalar rule: where they lie in their chunk, their points,
// and what comes of them, a count alone for one that stays.
struct FollowedPixels {
    static constexpr std::size_t ROOM = Slots<double>::ROOM;
    std::size_t used = 0;
    std::size_t place[ROOM];
    HWY_ALIGN double re[ROOM], im[ROOM];
    HWY_ALIGN double before[ROOM], after[ROOM];  // |z|^2 before and after the step of escape
    HWY_ALIGN std::uint64_t count[ROOM];

    void add(std::size_t at, double r, double i) {
        place[used] = at;
        re[used] = r;
        im[used++] = i;
    }
};

// One vector of orbits of the scalar rule.
template <class Kind>
struct RoundedOrbits {
    cpuComplex<Real> z, c, saved;
    Real before, after;
    RealMask live;

    HWY_INLINE RoundedOrbits(const FollowedPixels& pixels, std::size_t at)
        : RoundedOrbits(pixels, at, hn::FirstN(RealTag(), pixels.used - at)) {}

    // Lanes behind the last pixel follow the orbit of 0.
    HWY_INLINE RoundedOrbits(const FollowedPixels& pixels, std::size_t at, RealMask some)
        : c{Real(hn::MaskedLoad(some, RealTag(), pixels.re + at)),
            Real(hn::MaskedLoad(some, RealTag(), pixels.im + at))},
          live(some) {
        z = saved = {Real(0.0), Real(0.0)};
        before = after = Real(0.0);
    }

    HWY_INLINE void step() {
        const bool real = Kind::REAL_IS_TRIGONOMETRIC;
        z = Kind::value(roundedFactors(real ? z.r : z.i, real ? z.i : z.r, live)) + c;
        before = after;
        after = magnitudeSquared(z);
    }

    // Where the state has been before, or is not a number and so never will be one.
    HWY_INLINE RealMask stays() const {
        const RealMask repeats = hn::And(z.r == saved.r, z.i == saved.i);
        return hn::Or(repeats, hn::IsNaN((z.r + z.i).v));
    }
};

// Follows the vector of pixels at `at`. Returns whether it came to its end.
template <class Kind>
HWY_NOINLINE HWY_FLATTEN bool followRounded(FollowedPixels& pixels, std::size_t at, Real maxSize,
                                            int limit, bool detect, StopFlag stop) {
    const RealTag d;
    const Slots<double>::DU du;
    RoundedOrbits<Kind> orbits(pixels, at);
    hn::Store(hn::Set(du, static_cast<std::uint64_t>(limit)), du, pixels.count + at);
    int saveAt = 8;
    for (int count = 0; count < limit && !hn::AllFalse(d, orbits.live); ++count) {
        if (count % STEPS_BETWEEN_LOOKS == 0 && isSet(stop)) return false;
        orbits.step();
        const RealMask escaped = hn::And(orbits.live, orbits.after > maxSize);
        if (!hn::AllFalse(d, escaped)) {
            const auto now = hn::Set(du, static_cast<std::uint64_t>(count));
            hn::BlendedStore(now, hn::RebindMask(du, escaped), du, pixels.count + at);
            hn::BlendedStore(orbits.before.v, escaped, d, pixels.before + at);
            hn::BlendedStore(orbits.after.v, escaped, d, pixels.after + at);
            orbits.live = hn::AndNot(escaped, orbits.live);
        }
        if (!detect) continue;
        orbits.live = hn::AndNot(orbits.stays(), orbits.live);
        if (count < saveAt) continue;
        orbits.saved = orbits.z;
        saveAt = count > (1 << 29) ? count : 2 * count;
    }
    return true;
}

// Follows all pixels with the scalar rule, up to the iteration limit; `detect` looks for orbits
// that return to a saved state. Returns whether all came to their end, rather than being told to
// stop.
template <class Kind>
bool followAll(FollowedPixels& pixels, double maxSize, int limit, bool detect, StopFlag stop) {
    for (std::size_t at = 0; at < pixels.used; at += hn::Lanes(RealTag())) {
        if (!followRounded<Kind>(pixels, at, Real(maxSize), limit, detect, stop)) return false;
    }
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

// Sine, cosine and their hyperbolic kin of floats, just good enough for a float: the products of
// two of them are within 2^-42 of themselves. Needs fused operations.
//
// u is 2^-53. Arguments are floats, |x| <= 300, in double.
//
// Reduction: x - k * HEAD is exact. HEAD holds all digits of T; where k is not 0 x is a multiple of
// 2^-26 (by pi/8; 2^-24 by pi/2, 2^-25 by ln 2), so the difference is a multiple of half a unit in
// the last place of HEAD and has 53 bits at most. Subtracting k * REST rounds once: u of the rest.
// What HEAD + REST lack is below 2^-109 k, and k is below 2^10; no float but 0 is closer to a
// multiple of T than 2^-37.6 (by pi/8: the closest one is next to 15 pi/8), so that is nothing.
//
// By multiples of pi/8: (sin y) / y within 2^-44.0 of itself, cos y within 2^-54. The table's sine
// and cosine a and b are rounded. sin x = a cos y + b sin y is at least 0.195 where a is not 0, and
// then at least |b sin y|: 2^-43.9 of itself with all roundings. The cosine likewise.
//
// By multiples of pi/2: sine and cosine of the rest within 2^-47.5 and 2^-43.6 of themselves.
//
// Hyperbolic: t within |t| <= 0.3466 and u; sinh t within 2^-49.3, cosh t within 2^-45.9 of
// themselves. B cosh t + A sinh t with A = cosh(n ln 2), B = sinh(n ln 2): the sum is at least 0.44
// of B cosh t and 0.79 of A sinh t, so the hyperbolic sine is within 2^-44.6 of itself with all
// roundings, and the cosine closer.
//
// A product of the two is within 2^-43.6 + 2^-44.6 and a rounding of itself, below 2^-42.9.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TRIG_SHORT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TRIG_SHORT_INL_H
#undef TESSARY_COMPUTE_VECTOR_TRIG_SHORT_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TRIG_SHORT_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

#include "compute/vector_lean-inl.h"
#include "compute/vector_trig-inl.h"

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Minimax polynomials of the relative error: of (sin y - y) / y^3 and (cos y - 1) / y^2 as
// functions of y^2, and of the hyperbolic ones. SIXTEENTH holds to |y| <= pi/16, QUARTER to pi/4,
// the hyperbolic ones to ln(2) / 2.
struct ShortConstants {
    static constexpr double HALF_PI[] = {1.5707963267948966, 6.123233995736766e-17};
    static constexpr double SIN_SIXTEENTH[] = {-0.16666666663766425, 0.008333328771386712,
                                               -0.0001982086428107009};
    static constexpr double COS_SIXTEENTH[] = {-0.4999999999999573, 0.04166666665592642,
                                               -0.0013888880488536956, 2.477568097249599e-05};
    static constexpr double SIN_QUARTER[] = {-0.1666666666663035, 0.008333333325077507,
                                             -0.00019841263728492586, 2.7555339627524654e-06,
                                             -2.4760452545110925e-08};
    static constexpr double COS_QUARTER[] = {-0.49999999999489375, 0.041666666553426185,
                                             -0.0013888880659364482, 2.4798960720798978e-05,
                                             -2.7174788910703e-07};
    static constexpr double SINH[] = {0.16666666666630428, 0.008333333362711751,
                                      0.00019841195867634153, 2.763068061590312e-06};
    static constexpr double COSH[] = {0.49999999999606043, 0.04166666698749972,
                                      0.0013888807844042658, 2.488215095697471e-05};
};

// sin, cos, sinh, cosh; where there are no tables both hyperbolic ones may have turned their sign,
// for the circular ones, which ought to have. Products of the two kinds are right.
class ShortFactors : public Factors {
  public:
    HWY_INLINE ShortFactors(Real circular, Real hyperbolic) {
        const Bits turn = turned(circular);
        const Reduced<double> n(hyperbolic, LeanConstants<double>::LN2);
        const Real t = n.rest, w = t * t;
        const Real s = fused(t * w, series(w, ShortConstants::SINH), t);
        const Real c = fused(w, series(w, ShortConstants::COSH), Real(1.0));
        const Bits scale = hn::ShiftLeft<LeanConstants<double>::FRACTION>(n.bits());
        const Real rising = LeanFactors<double>::scaled(Real(0.5), hn::Add(turn, scale));
        const Real falling = LeanFactors<double>::scaled(Real(0.5), hn::Sub(turn, scale));
        const Real sum = rising + falling, difference = rising - falling;
        sinh = fused(sum, s, difference * c);
        cosh = fused(difference, s, sum * c);
    }

  private:
    using Bits = hn::Vec<RealBits>;

#if TESSARY_HAS_TABLES
    HWY_INLINE Bits turned(Real x) {
        using Lean = LeanFactors<double>;
        const Reduced<double> k(x, LeanConstants<double>::EIGHTH);
        const Real y = k.rest, w = y * y;
        const Real s = fused(y * w, series(w, ShortConstants::SIN_SIXTEENTH), y);
        const Real c = fused(w, series(w, ShortConstants::COS_SIXTEENTH), Real(1.0));
        const Real a = Lean::eighths(k.bits(), Lean::SINES);
        const Real b = Lean::eighths(k.bits(), Lean::COSINES);
        sin = fused(a, c, b * s);
        cos = fusedNegative(a, s, b * c);
        return hn::Zero(RealBits());
    }
#else
    HWY_INLINE Bits turned(Real x) {
        const Reduced<double> k(x, ShortConstants::HALF_PI);
        const Real y = k.rest, w = y * y;
        const Real s = fused(y * w, series(w, ShortConstants::SIN_QUARTER), y);
        const Real c = fused(w, series(w, ShortConstants::COS_QUARTER), Real(1.0));
        // In odd quarters the two change places, by their differing bits, and the cosine its sign.
        const RealTag d;
        const Bits odd = hn::Neg(hn::And(k.bits(), hn::Set(RealBits(), 1)));
        const auto change = hn::And(hn::Xor(s.v, c.v), hn::BitCast(d, odd));
        sin = Real(hn::Xor(s.v, change));
        cos = Real(hn::Xor(hn::Xor(c.v, change), hn::BitCast(d, hn::ShiftLeft<63>(k.bits()))));
        return hn::ShiftLeft<63>(hn::ShiftRight<1>(k.bits()));
    }
#endif
};

// Half the width, in units in the last place, of what is too close to the middle between two floats
// to be trusted: 2^-41 of a product at least. A power of two.
inline constexpr std::int64_t SHORT_WINDOW = 4096;

// Lanes of a product of short factors that are as close to the middle between two floats.
HWY_INLINE hn::Mask<RealTag> isNearMiddle(Real product) {
    constexpr std::int64_t MIDDLE = 1 << 28;  // of the 29 bits that a float does not keep
    const RealBits di;
    const auto above = hn::Sub(hn::BitCast(di, product.v), hn::Set(di, MIDDLE - SHORT_WINDOW));
    const auto from = hn::Set(di, 2 * MIDDLE - 2 * SHORT_WINDOW);
#if TESSARY_HAS_TABLES
    return hn::Mask<RealTag>{_mm512_testn_epi64_mask(above.raw, from.raw)};
#else
    return hn::RebindMask(RealTag(), hn::Eq(hn::And(above, from), hn::Zero(di)));
#endif
}

// Lanes where a part is so small that a float has fewer bits for it, or none. NaN is not.
HWY_INLINE hn::Mask<RealTag> hasTinyPart(const cpuComplex<Real>& value) {
    const auto least = hn::Min(hn::Abs(value.r.v), hn::Abs(value.i.v));
    return hn::Le(least, hn::Set(RealTag(), 0x1p-126 * (1 + 0x1p-20)));
}

// Lanes of a tiny part that is a float or rounds to one safely nonetheless: an exact zero comes
// from a factor that is exactly zero in the scalar rule too.
HWY_INLINE hn::Mask<RealTag> isZeroOrLarge(Real part) {
    const auto size = hn::Abs(part.v);
    const auto zero = hn::Eq(size, hn::Zero(RealTag()));
    return hn::Or(zero, hn::Gt(size, hn::Set(RealTag(), 0x1p-126 * (1 + 0x1p-20))));
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif

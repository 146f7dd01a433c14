// Sine, cosine and their hyperbolic kin on vectors: fast approximations in double with a known
// bound of their error, and the float functions that are exact with their help.
//
// The bound, in units of u = 2^-53 relative to the true value. Reduction of the sine's argument:
// k * PIO2_1 and k * PIO2_2 are exact for |k| < 2^20 (33 bits each), the two subtractions that
// round leave 2 u; the polynomials are off by less than 2^-57 and round to 4 u more. The hyperbolic
// sum B * C + A * S cancels to no less than 0.28 of its larger term, where its 3 u become 11 u. A
// product of two such factors is within 18 u of the true product. The scalar factors are correctly
// rounded (compute/rounded_trig.h), half an ulp or 1 u each, their product is within 3 u. So the
// two products differ by less than 21 u, relative to either, for every |argument| <= MAX_ARGUMENT.
// docs/performance.md has the derivation; a test holds the factors to less than half of it.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TRIG_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TRIG_INL_H
#undef TESSARY_COMPUTE_VECTOR_TRIG_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TRIG_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "compute/vector_number-inl.h"

#if HWY_TARGET != HWY_SCALAR  // which has no halves of vectors, and renders nothing

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using Real = Number<double>;
using RealTag = Real::D;
using RealBits = hn::RebindToSigned<RealTag>;

// Largest magnitude of an argument for which the error bound is claimed.
inline constexpr double MAX_ARGUMENT = 300.0;

// The four functions of a step, at a trigonometric and a hyperbolic argument.
template <class N>
struct FactorsOf {
    N sin, cos, sinh, cosh;
};
using Factors = FactorsOf<Real>;

HWY_INLINE Real multiplyAdd(Real a, Real b, Real c) {
    return Real(hn::MulAdd(a.v, b.v, c.v));
}

// c[0] + w * (c[1] + w * (... )).
template <std::size_t N>
HWY_INLINE Real polynomial(Real w, const double (&c)[N]) {
    Real sum(c[N - 1]);
    HWY_UNROLL(8)
    for (std::size_t n = N - 1; n > 0; --n) sum = multiplyAdd(sum, w, Real(c[n - 1]));
    return sum;
}

// The nearest whole number to x * scale, and its two's complement bits, good for |x * scale| <
// 2^31: adding 1.5 * 2^52 leaves no room for a fraction.
struct Nearest {
    Real value;
    hn::Vec<RealBits> bits;

    HWY_INLINE Nearest(Real x, double scale) {
        const Real magic(6755399441055744.0);
        const Real shifted = x * Real(scale) + magic;
        value = shifted - magic;
        bits = hn::BitCast(RealBits(), shifted.v);
    }
};

// x with its sign turned where bit 1 of `bits` is set.
HWY_INLINE Real turnSign(Real x, hn::Vec<RealBits> bits) {
    const RealBits di;
    const auto sign = hn::ShiftLeft<62>(hn::And(bits, hn::Set(di, 2)));
    return Real(hn::Xor(x.v, hn::BitCast(RealTag(), sign)));
}

// sin(x) and cos(x): x is brought to |y| <= pi/4 by multiples of pi/2 in three parts; the
// coefficients are those of the kernel functions of FDLIBM (k_sin.c, k_cos.c).
HWY_INLINE void sinCos(Real x, Real& sine, Real& cosine) {
    constexpr double TWO_OVER_PI = 6.36619772367581382433e-01;
    constexpr double PIO2_1 = 1.57079632673412561417e+00;  // first 33 bits of pi/2
    constexpr double PIO2_2 = 6.07710050630396597660e-11;  // the next 33 bits
    constexpr double PIO2_3 = 2.02226624879595063154e-21;  // the rest
    constexpr double S[] = {-1.66666666666666324348e-01, 8.33333333332248946124e-03,
                            -1.98412698298579493134e-04, 2.75573137070700676789e-06,
                            -2.50507602534068634195e-08, 1.58969099521155010221e-10};
    constexpr double C[] = {4.16666666666666019037e-02, -1.38888888888741095749e-03,
                            2.48015872894767294178e-05, -2.75573143513906633035e-07,
                            2.08757232129817482790e-09, -1.13596475577881948265e-11};
    const RealBits di;
    const Nearest k(x, TWO_OVER_PI);
    const Real y = x - k.value * Real(PIO2_1) - k.value * Real(PIO2_2) - k.value * Real(PIO2_3);
    const Real w = y * y;
    const Real s = multiplyAdd(y * w, polynomial(w, S), y);
    const Real c = multiplyAdd(w * w, polynomial(w, C), Real(1.0) - Real(0.5) * w);
    const auto one = hn::Set(di, 1);
    const auto odd = hn::MaskFromVec(hn::BitCast(RealTag(), hn::Neg(hn::And(k.bits, one))));
    sine = turnSign(select(odd, c, s), k.bits);
    cosine = turnSign(select(odd, s, c), hn::Add(k.bits, one));
}

// sinh(x) and cosh(x): x = n ln 2 + t with |t| <= ln(2) / 2, the addition theorems, and Taylor's
// series at t, whose remainders are below 2^-61.
HWY_INLINE void sinhCosh(Real x, Real& hyperbolicSine, Real& hyperbolicCosine) {
    constexpr double LOG2_E = 1.44269504088896338700e+00;
    constexpr double LN2_1 = 6.93147180369123816490e-01;  // first 33 bits of ln 2
    constexpr double LN2_2 = 1.90821492927058770002e-10;  // the rest
    constexpr double S[] = {1.0 / 6,      1.0 / 120,      1.0 / 5040,
                            1.0 / 362880, 1.0 / 39916800, 1.0 / 6227020800.0};
    constexpr double C[] = {1.0 / 2,       1.0 / 24,        1.0 / 720,          1.0 / 40320,
                            1.0 / 3628800, 1.0 / 479001600, 1.0 / 87178291200.0};
    const RealBits di;
    const RealTag d;
    const Nearest n(x, LOG2_E);
    const Real t = x - n.value * Real(LN2_1) - n.value * Real(LN2_2);
    const Real w = t * t;
    const Real s = multiplyAdd(t * w, polynomial(w, S), t);
    const Real c = multiplyAdd(w, polynomial(w, C), Real(1.0));
    // 2^(n - 1) and 2^(-n - 1), made from their exponents.
    const auto exponent = hn::ShiftLeft<52>(n.bits);
    const auto half = hn::Set(di, std::int64_t{1022} << 52);
    const Real up(hn::BitCast(d, hn::Add(half, exponent)));
    const Real down(hn::BitCast(d, hn::Sub(half, exponent)));
    const Real sum = up + down, difference = up - down;
    hyperbolicSine = multiplyAdd(sum, s, difference * c);
    hyperbolicCosine = multiplyAdd(difference, s, sum * c);
}

HWY_INLINE Factors factorsAt(Real trigonometric, Real hyperbolic) {
    Factors f;
    sinCos(trigonometric, f.sin, f.cos);
    sinhCosh(hyperbolic, f.sinh, f.cosh);
    return f;
}

// What tells the four rules apart: which part of z is the trigonometric argument, the value of the
// function and that of its derivative (up to the derivative's sign, which nobody asks for).
struct SineKind {
    static constexpr bool REAL_IS_TRIGONOMETRIC = true;
    static HWY_INLINE Factors factors(Real r, Real i) { return factorsAt(r, i); }
    template <class N>
    static HWY_INLINE cpuComplex<N> value(const FactorsOf<N>& f) {
        return {f.sin * f.cosh, f.cos * f.sinh};
    }
    static HWY_INLINE cpuComplex<Real> slope(const Factors& f) {
        return {f.cos * f.cosh, f.sin * f.sinh};
    }
    template <class T>
    static cpuComplex<T> exact(const cpuComplex<T>& z) {
        return sinC(z);
    }
};

struct CosineKind {
    static constexpr bool REAL_IS_TRIGONOMETRIC = true;
    static HWY_INLINE Factors factors(Real r, Real i) { return factorsAt(r, i); }
    template <class N>
    static HWY_INLINE cpuComplex<N> value(const FactorsOf<N>& f) {
        return {f.cos * f.cosh, -(f.sin * f.sinh)};
    }
    static HWY_INLINE cpuComplex<Real> slope(const Factors& f) {
        return {f.sin * f.cosh, f.cos * f.sinh};
    }
    template <class T>
    static cpuComplex<T> exact(const cpuComplex<T>& z) {
        return cosC(z);
    }
};

struct HyperbolicSineKind {
    static constexpr bool REAL_IS_TRIGONOMETRIC = false;
    static HWY_INLINE Factors factors(Real r, Real i) { return factorsAt(i, r); }
    template <class N>
    static HWY_INLINE cpuComplex<N> value(const FactorsOf<N>& f) {
        return {f.sinh * f.cos, f.cosh * f.sin};
    }
    static HWY_INLINE cpuComplex<Real> slope(const Factors& f) {
        return {f.cosh * f.cos, f.sinh * f.sin};
    }
    template <class T>
    static cpuComplex<T> exact(const cpuComplex<T>& z) {
        return sinhC(z);
    }
};

struct HyperbolicCosineKind {
    static constexpr bool REAL_IS_TRIGONOMETRIC = false;
    static HWY_INLINE Factors factors(Real r, Real i) { return factorsAt(i, r); }
    template <class N>
    static HWY_INLINE cpuComplex<N> value(const FactorsOf<N>& f) {
        return {f.cosh * f.cos, f.sinh * f.sin};
    }
    static HWY_INLINE cpuComplex<Real> slope(const Factors& f) {
        return {f.sinh * f.cos, f.cosh * f.sin};
    }
    template <class T>
    static cpuComplex<T> exact(const cpuComplex<T>& z) {
        return coshC(z);
    }
};

// Lanes of a product that surely round to the same float as the scalar product does. Not those
// within WINDOW units of the middle between two floats, not those that become subnormal or
// overflow. An exact zero comes from a factor that is exactly zero in the scalar rule too.
HWY_INLINE hn::Mask<RealTag> roundsSafely(Real product) {
    constexpr std::int64_t MIDDLE = 1 << 28;  // of the 29 bits that a float does not keep
    constexpr std::int64_t WINDOW = 2048;     // 2048 units in the last place are far above 21 u
    const RealBits di;
    const RealTag d;
    const auto bits = hn::BitCast(di, product.v);
    const auto fromWindow =
        hn::And(hn::Sub(bits, hn::Set(di, MIDDLE - WINDOW)), hn::Set(di, 2 * MIDDLE - 1));
    const auto outside = hn::RebindMask(d, hn::Gt(fromWindow, hn::Set(di, 2 * WINDOW)));
    const auto magnitude = hn::Abs(product.v);
    const auto normal =
        hn::And(hn::Ge(magnitude, hn::Set(d, 0x1p-126)), hn::Lt(magnitude, hn::Set(d, 0x1p127)));
    return hn::Or(hn::And(normal, outside), hn::Eq(magnitude, hn::Zero(d)));
}

// One half of a float vector: the function's value in double, and the lanes it is good for.
struct HalfValue {
    cpuComplex<Real> value;
    hn::Mask<RealTag> safe;
};

template <class Kind, class V>
HWY_INLINE HalfValue halfValue(V r, V i) {
    const RealTag d;
    const hn::Rebind<float, RealTag> narrow;
    const auto zero = hn::Zero(narrow);
    // The start of every orbit, and lanes that ended: these mostly fill the upper half. -0 counts
    // as 0: states that differ in signs of zeros alone have the same |z|^2 for ever.
    if (hn::AllTrue(narrow, hn::And(hn::Eq(r, zero), hn::Eq(i, zero)))) {
        const Real none(0.0), one(1.0);
        return {Kind::value(Factors{none, one, none, one}), hn::Eq(none.v, none.v)};
    }
    const cpuComplex<Real> value =
        Kind::value(Kind::factors(Real(hn::PromoteTo(d, r)), Real(hn::PromoteTo(d, i))));
    return {value, hn::And(roundsSafely(value.r), roundsSafely(value.i))};
}

// Has the scalar rule evaluate the lanes of z that are not safe; `value` holds the others.
template <class Kind>
HWY_NOINLINE void repairLanes(const cpuComplex<Number<float>>& z, const HalfValue& lower,
                              const HalfValue& upper, cpuComplex<Number<float>>& value) {
    using D = Number<float>::D;
    const D d;
    constexpr std::size_t LANES = hn::MaxLanes(D()), HALF = LANES / 2;
    HWY_ALIGN float zr[LANES], zi[LANES], vr[LANES], vi[LANES];
    HWY_ALIGN double safe[LANES];
    hn::Store(z.r.v, d, zr);
    hn::Store(z.i.v, d, zi);
    hn::Store(value.r.v, d, vr);
    hn::Store(value.i.v, d, vi);
    const RealTag dd;
    const auto one = hn::Set(dd, 1.0);
    hn::Store(hn::IfThenElseZero(lower.safe, one), dd, safe);
    hn::Store(hn::IfThenElseZero(upper.safe, one), dd, safe + HALF);
    for (std::size_t n = 0; n < LANES; ++n) {
        if (safe[n] != 0.0) continue;
        const cpuComplex<float> exact = Kind::exact(cpuComplex<float>{zr[n], zi[n]});
        vr[n] = exact.r;
        vi[n] = exact.i;
    }
    value = {Number<float>(hn::Load(d, vr)), Number<float>(hn::Load(d, vi))};
}

// The float function, with the bits of the scalar one. |parts| <= MAX_ARGUMENT, or NaN; a step that
// cannot be decided here costs a scalar evaluation, so ended lanes should hold zeros.
template <class Kind>
HWY_NOINLINE cpuComplex<Number<float>> evaluate(const cpuComplex<Number<float>>& z) {
    using D = Number<float>::D;
    const D d;
    const hn::Half<D> dh;
    const HalfValue lower = halfValue<Kind>(hn::LowerHalf(dh, z.r.v), hn::LowerHalf(dh, z.i.v));
    const HalfValue upper = halfValue<Kind>(hn::UpperHalf(dh, z.r.v), hn::UpperHalf(dh, z.i.v));
    const auto join = [&](Real low, Real high) HWY_ATTR {
        return Number<float>(hn::Combine(d, hn::DemoteTo(dh, high.v), hn::DemoteTo(dh, low.v)));
    };
    cpuComplex<Number<float>> value = {join(lower.value.r, upper.value.r),
                                       join(lower.value.i, upper.value.i)};
    if (!hn::AllTrue(RealTag(), hn::And(lower.safe, upper.safe))) {
        repairLanes<Kind>(z, lower, upper, value);
    }
    return value;
}

HWY_INLINE cpuComplex<Number<float>> sinC(const cpuComplex<Number<float>>& z) {
    return evaluate<SineKind>(z);
}

HWY_INLINE cpuComplex<Number<float>> cosC(const cpuComplex<Number<float>>& z) {
    return evaluate<CosineKind>(z);
}

HWY_INLINE cpuComplex<Number<float>> sinhC(const cpuComplex<Number<float>>& z) {
    return evaluate<HyperbolicSineKind>(z);
}

HWY_INLINE cpuComplex<Number<float>> coshC(const cpuComplex<Number<float>>& z) {
    return evaluate<HyperbolicCosineKind>(z);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

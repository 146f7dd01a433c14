// Sine, cosine and their hyperbolic kin as cheaply as the orbits of compute/vector_ball-inl.h can
// bear: the error is bounded in units of cosh h, h being the hyperbolic argument, not of the value
// itself. Needs fused operations.
//
// u is half a unit in the last place of 1: 2^-53 in double, 2^-24 in float. |arguments| <= 44.
//
// Reduction: x - k * HEAD is exact. HEAD holds all digits of T and k is a whole number; the
// difference is a multiple of half a unit in the last place of HEAD (x is no smaller than half of
// HEAD where k is not 0), and short enough for all digits that leaves. Subtracting k * REST rounds
// once, half a unit in the last place of the result; what HEAD + REST lack of the true number is
// below 2^-18 u * 2^-20 even times k.
//
// By multiples of pi/8, |y| <= pi/16: y is within u/8, sin y within 0.3 u, cos y within 2.4 u (its
// polynomial takes 1.7 u of that), the 16 sines and cosines of the table within u/2. The sums
// sin a cos y + cos a sin y are within 2.4 + 0.3 + 0.6 + 0.7 = 4.0 u.
//
// By multiples of pi, |y| <= pi/2: y is within 1 u, which turns (sin y, cos y) by as much. The
// polynomials and their roundings leave at most 3.0 u and 2.1 u, both at the end of the range, 3.7
// u as a vector. With the turn that is 4.7 u for the vector of both errors.
//
// Hyperbolic, |t| <= 0.3466: t is within u/4; half of cosh t within 0.8 u and half of sinh t within
// 0.4 u; their sum and difference, at least 0.35, round once more, so that each exponential is
// within 3.8 u of itself. Scaling them by a power of two is exact. Sum and difference of the two
// are cosh and sinh, within 3.8 u cosh h and one more rounding, 4.8 u cosh h.
//
// A product with each of the two, as a vector: the circular errors times (cosh h, sinh h) are at
// most 1.42 * 4.0 u cosh h (5.7 u) or 4.7 u cosh h, the hyperbolic ones times (sin, cos) at
// most 4.8 u cosh h. So the value is within 10.5 u cosh h; adding c in a fused operation rounds
// each part once, at most u (cosh h + |c|).
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_LEAN_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_LEAN_INL_H
#undef TESSARY_COMPUTE_VECTOR_LEAN_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_LEAN_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "compute/vector_number-inl.h"
#include "compute/vector_trig-inl.h"

// Registers that hold 16 numbers of a table, or two that do.
#undef TESSARY_HAS_TABLES
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
#define TESSARY_HAS_TABLES 1
#else
#define TESSARY_HAS_TABLES 0
#endif

// What the error of the functions rests on. Targets below keep compute/vector_trig-inl.h.
#undef TESSARY_HAS_LEAN
#if (HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2) || HWY_TARGET == HWY_NEON
#define TESSARY_HAS_LEAN 1
#else
#define TESSARY_HAS_LEAN 0
#endif

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
HWY_INLINE Number<T> fused(Number<T> a, Number<T> b, Number<T> c) {
    return Number<T>(hn::MulAdd(a.v, b.v, c.v));
}

template <class T>
HWY_INLINE Number<T> fusedNegative(Number<T> a, Number<T> b, Number<T> c) {
    return Number<T>(hn::NegMulAdd(a.v, b.v, c.v));
}

template <class T>
HWY_INLINE Number<T> magnitude(Number<T> a) {
    return Number<T>(hn::Abs(a.v));
}

// c[0] + w * (c[1] + w * (... )).
template <class T, std::size_t N>
HWY_INLINE Number<T> series(Number<T> w, const T (&c)[N]) {
    Number<T> sum(static_cast<double>(c[N - 1]));
    HWY_UNROLL(8)
    for (std::size_t n = N - 1; n > 0; --n) {
        sum = fused(sum, w, Number<T>(static_cast<double>(c[n - 1])));
    }
    return sum;
}

// Near-minimax polynomials: of (sin y - y) / y^3 and (cos y - 1) / y^2 as functions of y^2, and of
// half the hyperbolic ones. HALF_CIRCLE holds to |y| <= pi/2, SIXTEENTH to pi/16, HYPERBOLIC to
// ln(2) / 2.
template <class T>
struct LeanConstants;

template <>
struct LeanConstants<double> {
    static constexpr double MAGIC = 6755399441055744.0;  // 1.5 * 2^52
    static constexpr int FRACTION = 52, SIGN = 63;
    static constexpr double PI[] = {3.141592653589793, 1.2246467991473532e-16};
    static constexpr double EIGHTH[] = {0.39269908169872414, 1.5308084989341915e-17};
    static constexpr double LN2[] = {0.6931471805599453, 2.3190468138462996e-17};
    static constexpr double SIN_HALF_CIRCLE[] = {-0.16666666666666666,    0.008333333333333316,
                                                 -0.00019841269841254974, 2.7557319219163234e-06,
                                                 -2.5052107616996182e-08, 1.6058977312464087e-10,
                                                 -7.643970296798572e-13,  2.7314447669863995e-15};
    static constexpr double COS_HALF_CIRCLE[] = {-0.5,
                                                 0.04166666666666634,
                                                 -0.0013888888888860709,
                                                 2.4801587292446213e-05,
                                                 -2.755731776732053e-07,
                                                 2.0876630867422994e-09,
                                                 -1.1464689885720029e-11,
                                                 4.6276759850181716e-14};
    static constexpr double SIN_SIXTEENTH[] = {-0.16666666666666624, 0.008333333332974617,
                                               -0.0001984126518883108, 2.7538009036677057e-06};
    static constexpr double COS_SIXTEENTH[] = {-0.4999999999999952, 0.041666666662721126,
                                               -0.0013888883771620158, 2.478034740778822e-05};
    static constexpr double SINH_HALF[] = {0.08333333333333334, 0.0041666666666650325,
                                           9.920634931520335e-05, 1.3778634240058166e-06,
                                           1.2550187962354858e-08};
    static constexpr double COSH_HALF[] = {0.25000000000000006, 0.020833333333312082,
                                           0.0006944444458598441, 1.2400760661058413e-05,
                                           1.3810037999905326e-07};
};

template <>
struct LeanConstants<float> {
    static constexpr double MAGIC = 12582912.0;  // 1.5 * 2^23
    static constexpr int FRACTION = 23, SIGN = 31;
    static constexpr double PI[] = {3.1415927410125732, -8.742277657347586e-08};
    static constexpr double EIGHTH[] = {0.39269909262657166, -1.0927847071684482e-08};
    static constexpr double LN2[] = {0.6931471824645996, -1.9046542121259336e-09};
    static constexpr float SIN_HALF_CIRCLE[] = {-0.166666657f, 0.0083332425f, -0.000198227397f,
                                                2.63475636e-06f};
    static constexpr float COS_HALF_CIRCLE[] = {-0.5f, 0.0416666605f, -0.00138886517f,
                                                2.47745793e-05f, -2.62975163e-07f};
    static constexpr float SIN_SIXTEENTH[] = {-0.166666627f, 0.00832568761f};
    static constexpr float COS_SIXTEENTH[] = {-0.499999732f, 0.0416131541f};
    static constexpr float SINH_HALF[] = {0.083333157f, 0.00417859992f};
    static constexpr float COSH_HALF[] = {0.25f, 0.0208332334f, 0.00069668208f};
};

// x less the nearest multiple of `number`, of which heads[0] and heads[1] are the leading digits;
// the lowest bits of `bits` are those of which multiple it is.
template <class T>
struct Reduced {
    using Bits = hn::RebindToSigned<typename Number<T>::D>;
    Number<T> rest;
    Number<T> shifted;  // the multiple behind a sum that leaves no room for fractions

    HWY_INLINE Reduced(Number<T> x, const double (&heads)[2]) {
        const Number<T> magic(LeanConstants<T>::MAGIC);
        shifted = fused(x, Number<T>(1.0 / heads[0]), magic);
        const Number<T> multiple = shifted - magic;
        rest = fusedNegative(multiple, Number<T>(heads[0]), x);
        rest = fusedNegative(multiple, Number<T>(heads[1]), rest);
    }

    HWY_INLINE hn::Vec<Bits> bits() const { return hn::BitCast(Bits(), shifted.v); }
};

// sin, cos, sinh, cosh; where there are no tables both hyperbolic ones may have turned their sign,
// for the circular ones, which ought to have. Products of the two kinds are right.
template <class T>
struct LeanFactors {
    using N = Number<T>;
    using K = LeanConstants<T>;
    using Bits = typename Reduced<T>::Bits;
    N sin, cos, sinh, cosh;

    HWY_INLINE LeanFactors(N circular, N hyperbolic) {
        const hn::Vec<Bits> turn = turned(circular);
        // Half of cosh and sinh of the rest, so that their sum is half of an exponential.
        const Reduced<T> n(hyperbolic, K::LN2);
        const N t = n.rest, w = t * t;
        const N s = fused(t * w, series(w, K::SINH_HALF), t * N(0.5));
        const N c = fused(w, series(w, K::COSH_HALF), N(0.5));
        const auto scale = hn::ShiftLeft<K::FRACTION>(n.bits());
        const N rising = scaled(c + s, hn::Add(turn, scale));
        const N falling = scaled(c - s, hn::Sub(turn, scale));
        cosh = rising + falling;
        sinh = rising - falling;
    }

    // x with this added to its bits: to its exponent, and perhaps a turned sign.
    static HWY_INLINE N scaled(N x, hn::Vec<Bits> bits) {
        return N(hn::BitCast(typename N::D(), hn::Add(hn::BitCast(Bits(), x.v), bits)));
    }

#if TESSARY_HAS_TABLES
    HWY_INLINE hn::Vec<Bits> turned(N x) {
        const Reduced<T> k(x, K::EIGHTH);
        const N y = k.rest, w = y * y;
        const N s = fused(y * w, series(w, K::SIN_SIXTEENTH), y);
        const N c = fused(w, series(w, K::COS_SIXTEENTH), N(1.0));
        const N a = eighths(k.bits(), SINES), b = eighths(k.bits(), COSINES);
        sin = fused(a, c, b * s);
        cos = fusedNegative(a, s, b * c);
        return hn::Zero(Bits());
    }

    static constexpr double H = 0.7071067811865476, L = 0.3826834323650898, M = 0.9238795325112867;
    static constexpr T f(double x) {
        return static_cast<T>(x);
    }
    HWY_ALIGN static constexpr T SINES[] = {f(0), f(L),  f(H),  f(M),  f(1),  f(M),  f(H),  f(L),
                                            f(0), f(-L), f(-H), f(-M), f(-1), f(-M), f(-H), f(-L)};
    HWY_ALIGN static constexpr T COSINES[] = {f(1),  f(M),  f(H),  f(L),  f(0), f(-L), f(-H), f(-M),
                                              f(-1), f(-M), f(-H), f(-L), f(0), f(L),  f(H),  f(M)};

    // The entry of each lane, picked by the lowest four bits.
    static HWY_INLINE N eighths(hn::Vec<Bits> k, const T (&table)[16]) {
        const typename N::D d;
        if constexpr (sizeof(T) == sizeof(float)) {
            return N(hn::Vec<typename N::D>{_mm512_permutexvar_ps(k.raw, hn::Load(d, table).raw)});
        } else {
            return N(hn::Vec<typename N::D>{
                _mm512_permutex2var_pd(hn::Load(d, table).raw, k.raw, hn::Load(d, table + 8).raw)});
        }
    }
#else
    HWY_INLINE hn::Vec<Bits> turned(N x) {
        const Reduced<T> k(x, K::PI);
        const N y = k.rest, w = y * y;
        sin = fused(y * w, series(w, K::SIN_HALF_CIRCLE), y);
        cos = fused(w, series(w, K::COS_HALF_CIRCLE), N(1.0));
        return hn::ShiftLeft<K::SIGN>(k.bits());
    }
#endif
};

// What tells the four rules apart: the parts of z, the next state, and the factor o of the slope,
// whose square is o^2 + sinh^2 h.
template <class Kind>
struct LeanRule {
    template <class T>
    static HWY_INLINE LeanFactors<T> factors(const cpuComplex<Number<T>>& z) {
        return Kind::REAL_IS_TRIGONOMETRIC ? LeanFactors<T>(z.r, z.i) : LeanFactors<T>(z.i, z.r);
    }
};

template <class T>
HWY_INLINE cpuComplex<Number<T>> leanNext(SineKind, const LeanFactors<T>& f,
                                          const cpuComplex<Number<T>>& c) {
    return {fused(f.sin, f.cosh, c.r), fused(f.cos, f.sinh, c.i)};
}

template <class T>
HWY_INLINE cpuComplex<Number<T>> leanNext(CosineKind, const LeanFactors<T>& f,
                                          const cpuComplex<Number<T>>& c) {
    return {fused(f.cos, f.cosh, c.r), fusedNegative(f.sin, f.sinh, c.i)};
}

template <class T>
HWY_INLINE cpuComplex<Number<T>> leanNext(HyperbolicSineKind, const LeanFactors<T>& f,
                                          const cpuComplex<Number<T>>& c) {
    return {fused(f.cos, f.sinh, c.r), fused(f.sin, f.cosh, c.i)};
}

template <class T>
HWY_INLINE cpuComplex<Number<T>> leanNext(HyperbolicCosineKind, const LeanFactors<T>& f,
                                          const cpuComplex<Number<T>>& c) {
    return {fused(f.cos, f.cosh, c.r), fused(f.sin, f.sinh, c.i)};
}

// F: LeanFactors, or what has the same functions.
template <class F>
HWY_INLINE auto slopeFactor(SineKind, const F& f) {
    return f.cos;
}
template <class F>
HWY_INLINE auto slopeFactor(HyperbolicSineKind, const F& f) {
    return f.cos;
}
template <class F>
HWY_INLINE auto slopeFactor(CosineKind, const F& f) {
    return f.sin;
}
template <class F>
HWY_INLINE auto slopeFactor(HyperbolicCosineKind, const F& f) {
    return f.sin;
}

// The root of x, of a relative error below 2^-13.9. x: at least 2^-60, below 2^126.
HWY_INLINE Number<float> roughRoot(Number<float> x) {
#if TESSARY_HAS_TABLES
    return x * Number<float>(hn::Vec<Number<float>::D>{_mm512_rsqrt14_ps(x.v.raw)});
#else
    return Number<float>(hn::Sqrt(x.v));
#endif
}

HWY_INLINE Number<double> roughRoot(Number<double> x) {
#if TESSARY_HAS_TABLES
    return x * Number<double>(hn::Vec<Number<double>::D>{_mm512_rsqrt14_pd(x.v.raw)});
#else
    const hn::Rebind<float, RealTag> narrow;
    return Number<double>(hn::PromoteTo(RealTag(), hn::Sqrt(hn::DemoteTo(narrow, x.v))));
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif

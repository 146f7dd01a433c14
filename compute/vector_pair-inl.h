// Vectors of doubles, and of sums of two doubles, as numbers of one text; and many of them in
// memory.
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_PAIR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_PAIR_INL_H
#undef TESSARY_COMPUTE_VECTOR_PAIR_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_PAIR_INL_H
#endif

#include <cmath>
#include <cstdint>

#include "compute/pair.h"
#include "compute/vector_number-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace pair_lanes {

using Real = Number<double>;
using RealTag = Real::D;
using RealMask = MaskOf<double>;

inline constexpr int WIDTH = static_cast<int>(hn::MaxLanes(RealTag()));

// Sums of two doubles and the bounds are for fused operations.
#undef TESSARY_HAS_FUSED
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || \
    (defined(HWY_NATIVE_FMA) && !HWY_NATIVE_FMA)
#define TESSARY_HAS_FUSED 0
#else
#define TESSARY_HAS_FUSED 1
#endif

// In software where the processor has no such instruction.
HWY_INLINE Real mulAdd(Real a, Real b, Real c) {
#if !TESSARY_HAS_FUSED
    const RealTag d;
    HWY_ALIGN double x[WIDTH], y[WIDTH], z[WIDTH];
    hn::Store(a.v, d, x);
    hn::Store(b.v, d, y);
    hn::Store(c.v, d, z);
    for (int l = 0; l < WIDTH; ++l) z[l] = std::fma(x[l], y[l], z[l]);
    return Real(hn::Load(d, z));
#else
    return Real(hn::MulAdd(a.v, b.v, c.v));
#endif
}

HWY_INLINE double mulAdd(double a, double b, double c) {
    return std::fma(a, b, c);
}

#define TESSARY_VECTOR_TEXT
#include "compute/pair.h"
#undef TESSARY_VECTOR_TEXT

// What plain code made, for one lane or the same for all.
template <class R>
HWY_INLINE R of(double x) {
    return R(x);
}
template <class R>
HWY_INLINE Pair<R> of(::Pair<double> x) {
    return {R(x.high), R(x.low)};
}
template <class R, class N>
HWY_INLINE auto of(const ::Complex<N>& z) {
    return Complex<decltype(of<R>(z.re))>{of<R>(z.re), of<R>(z.im)};
}

// A number of one lane or of a vector of them, from where its parts stand.
HWY_INLINE void load(const double* from, double& to) {
    to = *from;
}
HWY_INLINE void load(const double* from, Real& to) {
    to = Real(hn::Load(RealTag(), from));
}
HWY_INLINE void store(double x, double* to) {
    *to = x;
}
HWY_INLINE void store(Real x, double* to) {
    hn::Store(x.v, RealTag(), to);
}

// The same in as many parts as it has, which stand so far apart.
template <int APART, class R>
HWY_INLINE void loadParts(const double* from, R& to) {
    load(from, to);
}
template <int APART, class R>
HWY_INLINE void loadParts(const double* from, Pair<R>& to) {
    load(from, to.high);
    load(from + APART, to.low);
}
template <int APART, class R>
HWY_INLINE void storeParts(R x, double* to) {
    store(x, to);
}
template <int APART, class R>
HWY_INLINE void storeParts(Pair<R> x, double* to) {
    store(x.high, to);
    store(x.low, to + APART);
}

// COUNT complex numbers in PARTS parts each: re, im, and of pairs the lows of both.
template <int PARTS, int COUNT>
struct Lanes {
    HWY_ALIGN double part[2 * PARTS * COUNT];

    template <class R>
    HWY_INLINE Complex<Of<PARTS, R>> get(int l) const {
        Complex<Of<PARTS, R>> z;
        loadParts<2 * COUNT>(part + l, z.re);
        loadParts<2 * COUNT>(part + COUNT + l, z.im);
        return z;
    }
    HWY_INLINE Complex<Of<PARTS, Real>> vector(int v) const { return get<Real>(v * WIDTH); }
    HWY_INLINE Complex<Of<PARTS, double>> operator[](int l) const { return get<double>(l); }
    template <class N>
    HWY_INLINE void set(int l, const Complex<N>& z) {
        storeParts<2 * COUNT>(z.re, part + l);
        storeParts<2 * COUNT>(z.im, part + COUNT + l);
    }
};

// A bit for each lane of a vector that the mask holds for.
HWY_INLINE std::uint32_t bitsOf(RealMask mask) {
    HWY_ALIGN std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(RealTag(), mask, bytes);
    return bytes[0];
}

}  // namespace pair_lanes
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

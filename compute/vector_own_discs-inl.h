// Discs of single pixels of Mandelbrot's rule, as compute/attracting_discs.h has them for a chunk:
// near the rim of what stays, where the pixels of a chunk are too far apart to share any.
//
// No radius is above 0.5 and no point beyond 1.5, so every state stays within 2.
//
// Points and radii are computed in T, in units u of half the last place of 1. There a gap is off by
// less than 20 u; 128 u cover that, the 13 u of a step and the sums of both, and each radius is
// rounded up by 32 u of itself, more than its six operations take away. The test against a point,
// which is itself of T, is that of a chunk's discs.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_OWN_DISCS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_OWN_DISCS_INL_H
#undef TESSARY_COMPUTE_VECTOR_OWN_DISCS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_OWN_DISCS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "compute/vector_discs-inl.h"
#include "compute/vector_group-inl.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
HWY_INLINE Number<T> squareRoot(Number<T> x) {
    return Number<T>(hn::Sqrt(x.v));
}

template <class T>
HWY_INLINE Number<T> lengthOf(const cpuComplex<Number<T>>& z) {
    return squareRoot(magnitudeSquared(z));
}

// Half of the root of z with the real part that is not negative.
template <class T>
HWY_INLINE cpuComplex<Number<T>> halfRootOf(const cpuComplex<Number<T>>& z) {
    const Number<T> re = squareRoot((lengthOf(z) + z.r) * Number<T>(0.125));
    return {re, z.i / (re * Number<T>(8.0))};
}

// The discs about a cycle of N points for each lane, and the lanes where the last one is mapped
// into the first.
template <class T, std::size_t N>
struct OwnDiscs {
    cpuComplex<Number<T>> middle[N];
    Number<T> radius[N];
    MaskOf<T> closed;

    // Sets the radii that follow from the first, rounded up.
    HWY_INLINE void close(Number<T> first, const cpuComplex<Number<T>>& c) {
        Number<T> next = first;
        for (std::size_t k = 0; k < N; ++k) {
            radius[k] = next;
            const auto& from = middle[k];
            const Number<T> gap = lengthOf(from * from + c - middle[(k + 1) % N]);
            const Number<T> growth = Number<T>(2.0) * lengthOf(from) + next;
            next = (next * growth + gap + Number<T>(128 * UNIT<T>)) * Number<T>(1 + 32 * UNIT<T>);
        }
        closed = hn::And(first > Number<T>(0.0), first >= next);
    }

    // The lanes of z in one of the discs.
    HWY_INLINE MaskOf<T> hold(const cpuComplex<Number<T>>& z) const {
        const Number<T> unit(16 * UNIT<T>), less(1 - 16 * UNIT<T>);
        MaskOf<T> in = (radius[0] - unit) * less >= lengthOf(z - middle[0]);
        for (std::size_t k = 1; k < N; ++k) {
            in = hn::Or(in, (radius[k] - unit) * less >= lengthOf(z - middle[k]));
        }
        return hn::And(in, closed);
    }
};

// About the fixed point of c, with half of the room that it has.
template <class T>
HWY_INLINE OwnDiscs<T, 1> aboutFixedPoint(const cpuComplex<Number<T>>& c) {
    const Number<T> half(0.5), one(1.0), four(4.0);
    const auto root = halfRootOf(cpuComplex<Number<T>>{one - four * c.r, -(four * c.i)});
    OwnDiscs<T, 1> discs;
    discs.middle[0] = {half - root.r, -root.i};
    discs.close(half - lengthOf(discs.middle[0]), c);
    return discs;
}

// About the cycle of two points of c.
template <class T>
HWY_INLINE OwnDiscs<T, 2> aboutTwoPoints(const cpuComplex<Number<T>>& c) {
    const Number<T> half(0.5), four(4.0), quarter(0.25);
    const auto root =
        halfRootOf(cpuComplex<Number<T>>{Number<T>(-3.0) - four * c.r, -(four * c.i)});
    OwnDiscs<T, 2> discs;
    discs.middle[0] = {root.r - half, root.i};
    discs.middle[1] = {-root.r - half, -root.i};
    discs.close(quarter - lengthOf(discs.middle[0]) * lengthOf(discs.middle[1]), c);
    return discs;
}

// The lanes whose c may have such a point or such points, and at least some room about it.
template <class T>
HWY_INLINE MaskOf<T> mayAttract(const cpuComplex<Number<T>>& c) {
    const Number<T> x = c.r - Number<T>(0.25), i2 = c.i * c.i, q = x * x + i2;
    const Number<T> left = c.r + Number<T>(1.0);
    return hn::Or(i2 * Number<T>(0.25) > q * (q + x), Number<T>(0.0625) > left * left + i2);
}

// Ends the orbits in discs of their own; returns whether there was one.
template <class R, class T>
HWY_NOINLINE bool endInOwnDiscs(Slots<T>& s, T limit) {
    if (!squares<R> || R::constant != Constant::pixel || !(limit >= T(4))) return false;
    return endWhere(s, [&](std::size_t at) HWY_ATTR {
        const auto z = Group<R, 1, T>::pair(s.zr + at, s.zi + at);
        const auto c = Group<R, 1, T>::pair(s.cr + at, s.ci + at);
        const MaskOf<T> may = mayAttract(c);
        if (hn::AllFalse(typename Slots<T>::D(), may)) return may;
        return hn::And(may, hn::Or(aboutFixedPoint(c).hold(z), aboutTwoPoints(c).hold(z)));
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

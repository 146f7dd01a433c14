// The step of some rules in fewer operations, with the bits of compute/rules.h. A sum with a
// negated term is a difference: the signs of numbers follow their rules also at zero and infinity,
// and those of what is not a number nobody sees.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_FORMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_FORMS_INL_H
#undef TESSARY_COMPUTE_VECTOR_FORMS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_FORMS_INL_H
#endif

#include "compute/vector_number-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// R::step with the same bits in fewer operations, for states that are not greater than the escape
// limit or have a part that is not a number. Any rule without a form of its own takes its step.
template <class R>
struct Form {
    static constexpr bool anywhere = true;  // whether for all other states as well
    template <class N>
    static HWY_INLINE cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return R::step(z, c);
    }
};

// z^2 + c. The rule adds re * im to itself; doubling is exact, and the fused sum with c rounds once
// as the rule's does. It would differ where 2 re im passes the largest number. As it is no greater
// than |z|^2, no state within a finite limit comes there; under a limit that is infinite or not a
// number nobody escapes, and no count tells. A part that is not a number makes every part of the
// next so either way.
struct SquareForm {
    static constexpr bool anywhere = false;
    template <class T>
    static HWY_INLINE cpuComplex<Number<T>> step(const cpuComplex<Number<T>>& z,
                                                 const cpuComplex<Number<T>>& c) {
        const Number<T> re = z.r * z.r - z.i * z.i, product = z.r * z.i;
#if HWY_NATIVE_FMA
        const auto two = hn::Set(typename Number<T>::D(), T(2));
        return {re + c.r, Number<T>(hn::MulAdd(two, product.v, c.i.v))};
#else
        return {re + c.r, product + product + c.i};
#endif
    }
};
template <>
struct Form<MandelbrotRule> : SquareForm {};
template <>
struct Form<JuliaRule> : SquareForm {};

// c z (1 - z), with w + -z.i * v as w - z.i * v.
template <>
struct Form<DragonRule> {
    static constexpr bool anywhere = true;
    template <class N>
    static HWY_INLINE cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        const cpuComplex<N> w = c * z;
        const N u = N(1.0) - z.r;
        return {w.r * u + w.i * z.i, w.i * u - w.r * z.i};
    }
};

// w + c or w - c, with the sign of c chosen before the one addition.
template <class N, class Mask>
HWY_INLINE cpuComplex<N> subtractWhere(Mask mask, const cpuComplex<N>& w, const cpuComplex<N>& c) {
    return {w.r + select(mask, -c.r, c.r), w.i + select(mask, -c.i, c.i)};
}
template <>
struct Form<Barnsley1Rule> {
    static constexpr bool anywhere = true;
    template <class N>
    static HWY_INLINE cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return subtractWhere(z.r >= N(0.0), c * z, c);
    }
};
template <>
struct Form<Barnsley2Rule> {
    static constexpr bool anywhere = true;
    template <class N>
    static HWY_INLINE cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        const cpuComplex<N> w = c * z;
        return subtractWhere(w.i >= N(0.0), w, c);
    }
};

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

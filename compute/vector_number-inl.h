// A vector of lanes as a number: what lets the text of compute/rules.h run on many pixels at once.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_NUMBER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_NUMBER_INL_H
#undef TESSARY_COMPUTE_VECTOR_NUMBER_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_NUMBER_INL_H
#endif

#include <hwy/highway.h>

#include "compute/formulas.h"  // the plain rules first, then those of the vectors

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A full vector of T (float or double). Each operation rounds lane by lane as the scalar one does;
// no two operations are ever fused.
template <class T>
struct Number {
    using D = hn::ScalableTag<T>;
    using V = hn::Vec<D>;

    Number() = default;
    explicit HWY_INLINE Number(V lanes) : v(lanes) {}
    explicit HWY_INLINE Number(double k) : v(hn::Set(D(), static_cast<T>(k))) {}

    V v;
};

template <class T>
using MaskOf = hn::Mask<typename Number<T>::D>;

template <class T>
HWY_INLINE Number<T> operator+(Number<T> a, Number<T> b) {
    return Number<T>(hn::Add(a.v, b.v));
}

template <class T>
HWY_INLINE Number<T> operator-(Number<T> a, Number<T> b) {
    return Number<T>(hn::Sub(a.v, b.v));
}

template <class T>
HWY_INLINE Number<T> operator*(Number<T> a, Number<T> b) {
    return Number<T>(hn::Mul(a.v, b.v));
}

template <class T>
HWY_INLINE Number<T> operator/(Number<T> a, Number<T> b) {
    return Number<T>(hn::Div(a.v, b.v));
}

template <class T>
HWY_INLINE Number<T> operator-(Number<T> a) {
    return Number<T>(hn::Neg(a.v));
}

// Comparisons give a mask; with a NaN every one of them is false, as between scalars.
template <class T>
HWY_INLINE MaskOf<T> operator>(Number<T> a, Number<T> b) {
    return hn::Gt(a.v, b.v);
}

template <class T>
HWY_INLINE MaskOf<T> operator>=(Number<T> a, Number<T> b) {
    return hn::Ge(a.v, b.v);
}

// The lanes of `mask` where a is not greater than b (a NaN is not), in one instruction where the
// machine has it.
template <class T>
HWY_INLINE MaskOf<T> andNotGreater(MaskOf<T> mask, Number<T> a, Number<T> b) {
#if HWY_TARGET == HWY_AVX3
    if constexpr (sizeof(T) == sizeof(float)) {
        return MaskOf<T>{_mm512_mask_cmp_ps_mask(mask.raw, a.v.raw, b.v.raw, _CMP_NGT_UQ)};
    } else {
        return MaskOf<T>{_mm512_mask_cmp_pd_mask(mask.raw, a.v.raw, b.v.raw, _CMP_NGT_UQ)};
    }
#else
    return hn::AndNot(a > b, mask);
#endif
}

template <class T>
HWY_INLINE MaskOf<T> operator==(Number<T> a, Number<T> b) {
    return hn::Eq(a.v, b.v);
}

template <class T>
HWY_INLINE Number<T> select(MaskOf<T> mask, Number<T> a, Number<T> b) {
    return Number<T>(hn::IfThenElse(mask, a.v, b.v));
}

// The rules, over again for this instruction set.
#define TESSARY_VECTOR_TEXT
#include "compute/rules.h"
#undef TESSARY_VECTOR_TEXT

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

// The functions of compute/fixed_math.h on vectors of double.
//
// Included once for each instruction set (see compute/value_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_LOG_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_LOG_INL_H
#undef TESSARY_COMPUTE_VECTOR_LOG_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_LOG_INL_H
#endif

#include <hwy/highway.h>

#include "compute/fixed_math.h"  // the plain functions first, then those of the vectors
#include "compute/vector_number-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

HWY_INLINE BinaryParts<Number<double>> binaryParts(Number<double> x) {
    const Number<double>::D d;
    const hn::RebindToUnsigned<Number<double>::D> du;
    const auto shifted = hn::Add(hn::BitCast(du, x.v), hn::Set(du, ONE_BITS - MANTISSA_START));
    const auto mantissa =
        hn::Add(hn::And(shifted, hn::Set(du, FRACTION_BITS)), hn::Set(du, MANTISSA_START));
    // The bits of 2^52 + e are those of 2^52 with e in their last places.
    const auto biased = hn::Or(hn::ShiftRight<52>(shifted), hn::BitCast(du, hn::Set(d, 0x1p52)));
    return {Number<double>(hn::Sub(hn::BitCast(d, biased), hn::Set(d, 0x1p52 + 1023))),
            Number<double>(hn::BitCast(d, mantissa))};
}

#define TESSARY_VECTOR_TEXT
#include "compute/fixed_math.h"
#undef TESSARY_VECTOR_TEXT

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

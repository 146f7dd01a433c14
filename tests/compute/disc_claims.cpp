#include "tests/compute/disc_claims.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/disc_claims.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_own_discs-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
T lane(Number<T> x) {
    return hn::GetLane(x.v);
}

template <class T, std::size_t N>
disc_claims::Discs<T> laneOf(const OwnDiscs<T, N>& discs) {
    disc_claims::Discs<T> one{N, {}, {}, hn::AllTrue(typename Number<T>::D(), discs.closed)};
    for (std::size_t k = 0; k < N; ++k) {
        one.middle[k] = {lane(discs.middle[k].r), lane(discs.middle[k].i)};
        one.radius[k] = lane(discs.radius[k]);
    }
    return one;
}

template <class T>
disc_claims::Discs<T> discsAt(T re, T im, std::size_t count) {
    const typename Number<T>::D d;
    const cpuComplex<Number<T>> c{Number<T>(hn::Set(d, re)), Number<T>(hn::Set(d, im))};
    return count == 1 ? laneOf(aboutFixedPoint(c)) : laneOf(aboutTwoPoints(c));
}

disc_claims::Discs<float> discsFloat(float re, float im, std::size_t count) {
    return discsAt(re, im, count);
}

disc_claims::Discs<double> discsDouble(double re, double im, std::size_t count) {
    return discsAt(re, im, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
HWY_EXPORT(discsFloat);
HWY_EXPORT(discsDouble);
}  // namespace tessary_vector

namespace disc_claims {

template <>
Discs<float> discsOf(const cpuComplex<float>& c, std::size_t count) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(discsFloat)(c.r, c.i, count);
}

template <>
Discs<double> discsOf(const cpuComplex<double>& c, std::size_t count) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(discsDouble)(c.r, c.i, count);
}

void forceTarget(std::int64_t bit) {
    hwy::SetSupportedTargetsForTest(bit);
    hwy::GetChosenTarget().DeInit();
}

}  // namespace disc_claims

#endif  // HWY_ONCE

// The slots of orbits that are followed approximately, each with a bound of its distance from the
// scalar rule's.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_CLAIMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_CLAIMS_INL_H
#undef TESSARY_COMPUTE_VECTOR_CLAIMS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_CLAIMS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_trig-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The count of a pixel whose orbit could not be followed to its end.
template <class T>
inline constexpr typename Slots<T>::Word IN_DOUBT = ~typename Slots<T>::Word{0};

// The function of each rule.
template <class R>
struct KindOf;
template <>
struct KindOf<SinRule> {
    using Kind = SineKind;
};
template <>
struct KindOf<CosRule> {
    using Kind = CosineKind;
};
template <>
struct KindOf<SinhRule> {
    using Kind = HyperbolicSineKind;
};
template <>
struct KindOf<CoshRule> {
    using Kind = HyperbolicCosineKind;
};

// The slots of a chunk and the bound of each orbit, now and when its state was saved. `ball` is of
// use to compute/vector_ball-inl.h alone.
template <class T>
struct CertifiedSlotsOf {
    Slots<T> s;
    HWY_ALIGN T bound[Slots<T>::ROOM], savedBound[Slots<T>::ROOM], ball[Slots<T>::ROOM];

    // Told of lanes that surely escaped, with the orbits before and after that step.
    template <class Orbits>
    HWY_INLINE void noteEscape(std::size_t, MaskOf<T>, const Orbits&, const Orbits&) {}
};

using CertifiedSlots = CertifiedSlotsOf<double>;

// Moves the live slots together, bounds included.
template <class R, class T, class Finish>
void closeCertifiedRanks(CertifiedSlotsOf<T>& slots, Finish&& finish) {
    const typename Slots<T>::D d;
    packRow(d, slots.bound, slots.s);
    if (slots.s.saved) {
        packRow(d, slots.savedBound, slots.s);
        packRow(d, slots.ball, slots.s);
    }
    closeRanks<R>(slots.s, finish);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif

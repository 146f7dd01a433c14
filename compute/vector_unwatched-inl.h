// Blocks of steps without an escape test, where an orbit that passes the limit never comes back:
// one look at their end tells whether anybody did.
//
// Write L for the limit of |z|^2 and p for its root, L >= 4, so that p <= L / 2.
//
// z^2 + c: from |z| > p follows |z^2 + c| >= |z|^2 - |c| > L - |c|, no less than p where
// |c| <= L - p. Dragon: |c z (1 - z)| >= |c| |z| (|z| - 1) > p where |c| (p - 1) >= 1. So every
// later state passes the limit as well.
//
// As they are computed, a step in float is off by less than 8 v (|z|^2 + |c|), or 8 v of its
// length, v = 2^-24, and |z|^2 by 2 v of itself: together less than 10^-5 L, or 10^-5 p. Both
// conditions are asked for with 10^-4 of |c|, or of 1, to spare: (L - p) 10^-4 >= L / 2 * 10^-4.
// What overflows never becomes a number within the limit again, for in both rules a part that is
// infinite or not a number makes the next real part such a one; "not greater" would not see that,
// so the look at the end asks for "not more than the limit".
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_UNWATCHED_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_UNWATCHED_INL_H
#undef TESSARY_COMPUTE_VECTOR_UNWATCHED_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_UNWATCHED_INL_H
#endif

#include <hwy/highway.h>

#include <cmath>
#include <cstddef>

#include "compute/vector_group-inl.h"
#include "compute/vector_slots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Whether it is known, for some constants, that no orbit of rule R comes back; and the range of
// |c|^2 for which it is, at the limit L of |z|^2.
struct SquaredRange {
    double least, most;  // none where least > most
};
inline constexpr double SPARE = 1.0 + 1e-4;

template <class R>
struct NoReturn {
    static constexpr bool known = false;
};
struct SquareNoReturn {
    static constexpr bool known = true;
    static SquaredRange constants(double limit) {
        const double most = (limit - std::sqrt(limit)) / SPARE;
        return {0.0, most * most};
    }
};
template <>
struct NoReturn<MandelbrotRule> : SquareNoReturn {};
template <>
struct NoReturn<JuliaRule> : SquareNoReturn {};
template <>
struct NoReturn<DragonRule> {
    static constexpr bool known = true;
    static SquaredRange constants(double limit) {
        const double least = SPARE / (std::sqrt(limit) - 1.0);
        return {least * least, 1e30};
    }
};

// Whether it is known that no orbit in the slots comes back once it has passed the limit.
template <class R, class T>
HWY_INLINE bool cannotReturn(const Slots<T>& s, const Shared<T>& view, T limit) {
    if constexpr (NoReturn<R>::known) {
        if (!(limit >= T(4))) return false;
        const auto range = NoReturn<R>::constants(static_cast<double>(limit));
        const Number<T> least(range.least), most(range.most);
        const auto within = [&](const cpuComplex<Number<T>>& c) HWY_ATTR {
            const Number<T> size = magnitudeSquared(c);
            return hn::AllTrue(typename Number<T>::D(), hn::And(size >= least, most >= size));
        };
        if (R::constant == Constant::view) return within(view.c);
        for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
            if (!within(Group<R, 1, T>::pair(s.cr + at, s.ci + at))) return false;
        }
        return true;
    } else {
        (void)s, (void)view, (void)limit;
        return false;
    }
}

// As allStay, where no orbit comes back.
template <class R, std::size_t K, class T>
HWY_NOINLINE HWY_FLATTEN bool allStayUnwatched(Slots<T>& s, std::size_t first,
                                               const Shared<T>& view, int steps) {
    const typename Slots<T>::D d;
    Group<R, K, T> g(s, first, view, false);
    if (!g.anyLive()) return true;
    for (int i = 0; i < steps; ++i) g.move();
    auto gone = hn::AndNot(g.within(0), g.live[0]);
    HWY_UNROLL(4)
    for (std::size_t k = 1; k < K; ++k) gone = hn::Or(gone, hn::AndNot(g.within(k), g.live[k]));
    if (!hn::AllFalse(d, gone)) return false;
    g.storeState(s, first);
    if (s.saved && g.mayRepeat(s, first)) s.suspect = true;
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

// Ends the orbits of a chunk in discs about an attracting cycle (compute/attracting_discs.h), which
// all its pixels share. A chunk whose orbits all start in one takes no step.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_DISCS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_DISCS_INL_H
#undef TESSARY_COMPUTE_VECTOR_DISCS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_DISCS_INL_H
#endif

#include <hwy/highway.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "compute/attracting_discs.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The rules that step to z^2 + c.
template <class R>
inline constexpr bool squares = std::is_same_v<R, MandelbrotRule> || std::is_same_v<R, JuliaRule>;

// Half the last place of 1.
template <class T>
inline constexpr double UNIT = static_cast<double>(std::numeric_limits<T>::epsilon()) / 2;

// The points of a chunk that has just been taken. An extent that vanishes when squared does so
// beside the roundings that are allowed anyway.
template <class T>
Constants constantsOf(const Slots<T>& s) {
    const double left = s.cr[0], right = s.cr[s.columns - 1];
    const double top = s.ci[0], bottom = s.ci[s.used - 1];
    const double across = right - left, down = bottom - top;
    const double length = std::sqrt(across * across + down * down) / 2;
    return {{(left + right) / 2, (top + bottom) / 2}, length * (1 + 1e-6), UNIT<T>};
}

// The discs of a chunk of rule R that has just been taken.
template <class R, class T>
class ChunkDiscs {
  public:
    ChunkDiscs(const Slots<T>& s, const VectorTile<T>& tile, bool wanted) {
        if (!squares<R> || !wanted || !(tile.limit >= T(4))) return;
        if (R::constant == Constant::view) {
            discs = &discsOfView({tile.cx, tile.cy}, UNIT<T>);
        } else if (mayAttract(s)) {
            findDiscs(constantsOf(s), own);
        }
    }

    bool any() const { return squares<R> && discs->count > 0; }

    // Whether all orbits start in one of them.
    bool holdAll(const Slots<T>& s) const {
        if (!any()) return false;
        if (R::start == Start::zero) return discs->hold({0, 0}, 0, UNIT<T>);
        const Constants points = constantsOf(s);
        return discs->hold(points.middle, points.extent, points.unit);
    }

    // Ends the orbits in one of them; returns whether there was one.
    bool end(Slots<T>& s) const {
        const typename Slots<T>::D d;
        return endWhere(s, [&](std::size_t at) HWY_ATTR {
            const auto re = hn::Load(d, s.zr + at), im = hn::Load(d, s.zi + at);
            auto inside = hn::MaskFromVec(hn::Zero(d));
            for (std::size_t k = 0; k < discs->count; ++k) {
                const Point middle = discs->middle[k];
                const double reach = discs->reach(k, UNIT<T>);
                const cpuComplex<Number<T>> off{Number<T>(re) - Number<T>(middle.r),
                                                Number<T>(im) - Number<T>(middle.i)};
                inside = hn::Or(inside, Number<T>(reach * reach) >= magnitudeSquared(off));
            }
            return inside;
        });
    }

  private:
    // Whether a look is worth it: the first point lies in a box about all c that findDiscs knows.
    static bool mayAttract(const Slots<T>& s) {
        return s.cr[0] > T(-1.3) && s.cr[0] < T(0.4) && s.ci[0] > T(-0.7) && s.ci[0] < T(0.7);
    }

    Discs own;
    const Discs* discs = &own;
};

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif

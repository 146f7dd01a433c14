#include "tests/compute/rounded_vectors.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/rounded_vectors.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "compute/vector_rounded-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using rounded_vectors::Escape;
using rounded_vectors::Functions;
using rounded_vectors::Point;

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR

std::vector<Functions> functionsOf(const std::vector<double>&) {
    return {};
}
std::vector<Escape> followed(int, const std::vector<Point>&, double, int, bool, StopFlag) {
    return {};
}

#else

std::vector<Functions> functionsOf(const std::vector<double>& x) {
    const RealTag d;
    const std::size_t lanes = hn::Lanes(d);
    std::vector<Functions> all;
    for (std::size_t at = 0; at < x.size(); at += lanes) {
        HWY_ALIGN double part[4][hn::MaxLanes(RealTag())];
        std::fill_n(part[0], lanes, 1.0);
        std::copy_n(x.data() + at, std::min(lanes, x.size() - at), part[0]);
        const Real argument(hn::Load(d, part[0]));
        const auto live = hn::Eq(hn::Zero(d), hn::Zero(d));
        const Factors f = roundedFactors(argument, argument, live);
        hn::Store(f.sin.v, d, part[0]);
        hn::Store(f.cos.v, d, part[1]);
        hn::Store(f.sinh.v, d, part[2]);
        hn::Store(f.cosh.v, d, part[3]);
        for (std::size_t n = 0; n < std::min(lanes, x.size() - at); ++n) {
            all.push_back({{part[0][n], part[1][n]}, {part[2][n], part[3][n]}});
        }
    }
    return all;
}

template <class Kind>
std::vector<Escape> followedAs(const std::vector<Point>& points, double maxSize, int limit,
                               bool detect, StopFlag stop) {
    FollowedPixels pixels;
    // Backwards, so that a place is not the number of its slot.
    for (std::size_t n = points.size(); n-- > 0;) pixels.add(n, points[n].r, points[n].i);
    std::vector<Escape> all(points.size());
    if (!followAll<Kind>(pixels, maxSize, limit, detect, stop)) return {};
    for (std::size_t n = 0; n < pixels.used; ++n) {
        all[pixels.place[n]] = {pixels.count[n], pixels.before[n], pixels.after[n]};
    }
    return all;
}

std::vector<Escape> followed(int type, const std::vector<Point>& points, double maxSize, int limit,
                             bool detect, StopFlag stop) {
    if (type == 2) return followedAs<SineKind>(points, maxSize, limit, detect, stop);
    if (type == 3) return followedAs<CosineKind>(points, maxSize, limit, detect, stop);
    if (type == 4) return followedAs<HyperbolicSineKind>(points, maxSize, limit, detect, stop);
    return followedAs<HyperbolicCosineKind>(points, maxSize, limit, detect, stop);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {

HWY_EXPORT(functionsOf);
HWY_EXPORT(followed);

}  // namespace tessary_vector

namespace rounded_vectors {

std::vector<Functions> functions(const std::vector<double>& x) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(functionsOf)(x);
}

std::vector<Escape> follow(int type, const std::vector<Point>& points, double maxSize, int limit,
                           bool detect, StopFlag stop) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(followed)(type, points, maxSize, limit, detect, stop);
}

}  // namespace rounded_vectors

#endif  // HWY_ONCE

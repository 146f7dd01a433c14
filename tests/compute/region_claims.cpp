#include "tests/compute/region_claims.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/region_claims.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_region-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

region_claims::Ball stepOf(const region_claims::Ball& ball, const Point& c) {
    using N = Number<float>;
    const auto lanes = [](float x) { return N(static_cast<double>(x)); };
    const auto radius = static_cast<double>(ball.radius);
    Balls balls = ballsAbout({lanes(ball.middle.r), lanes(ball.middle.i)}, radius, c);
    balls.step();
    return {{hn::GetLane(balls.middle.r.v), hn::GetLane(balls.middle.i.v)},
            hn::GetLane(balls.radius.v)};
}

bool stays(const Horizon& horizon, const CellEdge& edge) {
    return edgeStays(horizon, edge);
}

// In the last lane.
template <class T>
bool lastLaneIn(const StayingRegion& region, T re, T im) {
    const typename Number<T>::D d;
    constexpr std::size_t LANES = hn::MaxLanes(d);
    HWY_ALIGN T r[LANES] = {}, i[LANES] = {};
    r[LANES - 1] = re;
    i[LANES - 1] = im;
    const auto in = inRegion<T>(region, {Number<T>(hn::Load(d, r)), Number<T>(hn::Load(d, i))});
    hn::Store(hn::IfThenElse(in, hn::Set(d, T(1)), hn::Zero(d)), d, r);
    return r[LANES - 1] != 0;
}

bool inFloat(const StayingRegion& region, float re, float im) {
    return lastLaneIn(region, re, im);
}

bool inDouble(const StayingRegion& region, double re, double im) {
    return lastLaneIn(region, re, im);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
HWY_EXPORT(stepOf);
HWY_EXPORT(stays);
HWY_EXPORT(inFloat);
HWY_EXPORT(inDouble);
}  // namespace tessary_vector

namespace region_claims {

Ball ballAfterStep(const Ball& ball, const cpuComplex<double>& c) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(stepOf)(ball, c);
}

bool edgeStays(const Horizon& horizon, const CellEdge& edge) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(stays)(horizon, edge);
}

template <>
bool inRegion(const StayingRegion& region, float re, float im) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(inFloat)(region, re, im);
}

template <>
bool inRegion(const StayingRegion& region, double re, double im) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(inDouble)(region, re, im);
}

void forceTarget(std::int64_t bit) {
    hwy::SetSupportedTargetsForTest(bit);
    hwy::GetChosenTarget().DeInit();
}

}  // namespace region_claims

#endif  // HWY_ONCE

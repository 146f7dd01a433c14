#include "tests/compute/float_claims.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/float_claims.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <atomic>

#include "compute/vector_trig_floats-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using float_claims::Claim;
using float_claims::Part;
using float_claims::Point;
using Counts = std::vector<std::uint64_t>;

#if !TESSARY_HAS_LEAN

bool followsFloats() {
    return false;
}
Claim floatStep(int, const Claim& claim, float, float, double) {
    return claim;
}
bool floatStays(const Claim&, double, double, double) {
    return false;
}
vector_control::TrigValues shortFactors(double, double) {
    return {};
}
bool shortIsSafe(double, Part) {
    return false;
}
Counts floatCounts(int, const std::vector<Point>&, float, int, bool, bool) {
    return {};
}

#else

bool followsFloats() {
    return true;
}

template <class Visit>
void visitKind(int type, Visit&& visit) {
    if (type == 2) visit(SineKind{});
    if (type == 3) visit(CosineKind{});
    if (type == 4) visit(HyperbolicSineKind{});
    if (type == 5) visit(HyperbolicCosineKind{});
}

double firstLane(Real x) {
    return hn::GetLane(x.v);
}

// One orbit, in the first lane.
FloatLanes lanesOf(const Claim& claim, float cr, float ci) {
    FloatLanes lanes;
    lanes.begin(0, 0, cr, ci, 0, 0);
    lanes.zr[0] = claim.r;
    lanes.zi[0] = claim.i;
    lanes.ball[0] = claim.ball;
    return lanes;
}

Claim floatStep(int type, const Claim& claim, float cr, float ci, double limit) {
    Claim next = claim;
    visitKind(type, [&](auto kind) HWY_ATTR {
        FloatOrbits<decltype(kind)> orbits;
        orbits.load(lanesOf(claim, cr, ci));
        orbits.template step<true>(LeanLimit<double>(limit));
        next = {static_cast<float>(firstLane(orbits.z.r)),
                static_cast<float>(firstLane(orbits.z.i)), firstLane(orbits.ball)};
        orbits.load(lanesOf(claim, cr, ci));
        orbits.template step<false>(LeanLimit<double>(limit));
        if (firstLane(orbits.ball) != claim.ball) next.ball = -1;  // is to be left alone
    });
    return next;
}

bool floatStays(const Claim& claim, double savedR, double savedI, double radius) {
    FloatLanes lanes = lanesOf(claim, 0, 0);
    lanes.savedR[0] = savedR;
    lanes.savedI[0] = savedI;
    lanes.radius[0] = radius;
    FloatOrbits<SineKind> orbits;
    orbits.load(lanes);
    const RealTag d;
    return !hn::AllFalse(d, hn::And(orbits.stays(lanes), hn::FirstN(d, 1)));
}

vector_control::TrigValues shortFactors(double circular, double hyperbolic) {
    const ShortFactors f{Real(circular), Real(hyperbolic)};
    return {firstLane(f.sin), firstLane(f.cos), firstLane(f.sinh), firstLane(f.cosh)};
}

bool shortIsSafe(double product, Part part) {
    const RealTag d;
    const Real p(product), one(1.0);
    const RealMask all = hn::Eq(one.v, one.v);
    const cpuComplex<Real> value{part == Part::real ? p : one, part == Part::real ? one : p};
    return hn::AllFalse(d, unsafeLanes(value, all));
}

Counts floatCounts(int type, const std::vector<Point>& points, float maxSize, int limit,
                   bool detect, bool stopped) {
    FollowedPixels pixels;
    for (const Point& p : points) pixels.add(pixels.used, p.r, p.i);
    const std::atomic<bool> stop{stopped};
    Counts found;
    visitKind(type, [&](auto kind) HWY_ATTR {
        if (!followFloats<decltype(kind)>(pixels, maxSize, limit, detect, &stop)) return;
        found.assign(pixels.count, pixels.count + pixels.used);
    });
    return found;
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {

HWY_EXPORT(followsFloats);
HWY_EXPORT(floatStep);
HWY_EXPORT(floatStays);
HWY_EXPORT(shortFactors);
HWY_EXPORT(shortIsSafe);
HWY_EXPORT(floatCounts);

namespace {

std::vector<vector_control::Target> targetsWithFloats() {
    std::vector<vector_control::Target> found;
    for (const std::int64_t bit : hwy::SupportedAndGeneratedTargets()) {
        float_claims::forceTarget(bit);
        if (HWY_DYNAMIC_DISPATCH(followsFloats)()) found.push_back({bit, hwy::TargetName(bit)});
    }
    float_claims::forceTarget(0);
    return found;
}

}  // namespace
}  // namespace tessary_vector

namespace float_claims {

using namespace tessary_vector;

const std::vector<vector_control::Target>& targets() {
    static const auto found = targetsWithFloats();
    return found;
}

void forceTarget(std::int64_t bit) {
    hwy::SetSupportedTargetsForTest(bit);
    hwy::GetChosenTarget().DeInit();
}

Claim step(int type, const Claim& claim, float cr, float ci, double limit) {
    return HWY_DYNAMIC_DISPATCH(floatStep)(type, claim, cr, ci, limit);
}

bool stays(const Claim& claim, double savedR, double savedI, double radius) {
    return HWY_DYNAMIC_DISPATCH(floatStays)(claim, savedR, savedI, radius);
}

vector_control::TrigValues factors(double circular, double hyperbolic) {
    return HWY_DYNAMIC_DISPATCH(shortFactors)(circular, hyperbolic);
}

bool roundsSafely(double product, Part part) {
    return HWY_DYNAMIC_DISPATCH(shortIsSafe)(product, part);
}

std::vector<std::uint64_t> counts(int type, const std::vector<Point>& points, float maxSize,
                                  int limit, bool detect, bool stopped) {
    return HWY_DYNAMIC_DISPATCH(floatCounts)(type, points, maxSize, limit, detect, stopped);
}

}  // namespace float_claims

#endif  // HWY_ONCE

#include "tests/compute/trig_claims.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/trig_claims.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_certified-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR

trig_claims::Claim stepOf(int, const trig_claims::Claim& claim, double, double) {
    return claim;
}
trig_claims::Verdict decisionOn(const trig_claims::Claim&, double) {
    return trig_claims::Verdict::doubtful;
}
bool isSafe(double) {
    return false;
}
vector_control::TrigValues factorsOf(double, double) {
    return {};
}
trig_claims::FloatValue floatOf(int, trig_claims::FloatValue z, std::size_t, bool) {
    return z;
}

#else

// Calls visit(SomeRule{}) for the rule of a trigonometric type.
template <class Visit>
void visitTrig(int type, Visit&& visit) {
    if (type == 2) visit(SinRule{});
    if (type == 3) visit(CosRule{});
    if (type == 4) visit(SinhRule{});
    if (type == 5) visit(CoshRule{});
}

template <class Kind>
CertifiedOrbits<Kind> orbitsOf(const trig_claims::Claim& claim, double cr, double ci) {
    const RealTag d;
    return {{Real(claim.r), Real(claim.i)},
            {Real(cr), Real(ci)},
            Real(claim.bound),
            hn::Eq(hn::Zero(d), hn::Zero(d))};
}

trig_claims::Claim stepOf(int type, const trig_claims::Claim& claim, double cr, double ci) {
    trig_claims::Claim next = claim;
    visitTrig(type, [&](auto rule) HWY_ATTR {
        auto orbits = orbitsOf<typename KindOf<decltype(rule)>::Kind>(claim, cr, ci);
        orbits.step();
        next = {hn::GetLane(orbits.z.r.v), hn::GetLane(orbits.z.i.v), hn::GetLane(orbits.bound.v)};
    });
    return next;
}

trig_claims::Verdict decisionOn(const trig_claims::Claim& claim, double limit) {
    RealMask escaped, doubtful;
    orbitsOf<SineKind>(claim, 0.0, 0.0).decide(Real(limit), escaped, doubtful);
    if (!hn::AllFalse(RealTag(), escaped)) return trig_claims::Verdict::escaped;
    return hn::AllFalse(RealTag(), doubtful) ? trig_claims::Verdict::stays
                                             : trig_claims::Verdict::doubtful;
}

bool isSafe(double product) {
    return hn::AllTrue(RealTag(), roundsSafely(Real(product)));
}

vector_control::TrigValues factorsOf(double trigonometric, double hyperbolic) {
    const Factors f = factorsAt(Real(trigonometric), Real(hyperbolic));
    return {hn::GetLane(f.sin.v), hn::GetLane(f.cos.v), hn::GetLane(f.sinh.v),
            hn::GetLane(f.cosh.v)};
}

trig_claims::FloatValue floatOf(int type, trig_claims::FloatValue z, std::size_t lane,
                                bool everywhere) {
    using D = Number<float>::D;
    const D d;
    constexpr std::size_t LANES = hn::MaxLanes(D());
    HWY_ALIGN float r[LANES], i[LANES];
    std::fill(r, r + LANES, everywhere ? z.r : 1.0f);
    std::fill(i, i + LANES, everywhere ? z.i : 1.0f);
    r[lane % LANES] = z.r;
    i[lane % LANES] = z.i;
    const cpuComplex<Number<float> > state{Number<float>(hn::Load(d, r)),
                                           Number<float>(hn::Load(d, i))};
    visitTrig(type, [&](auto rule) HWY_ATTR {
        const auto value = evaluate<typename KindOf<decltype(rule)>::Kind>(state);
        hn::Store(value.r.v, d, r);
        hn::Store(value.i.v, d, i);
    });
    return {r[lane % LANES], i[lane % LANES]};
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {

HWY_EXPORT(stepOf);
HWY_EXPORT(decisionOn);
HWY_EXPORT(isSafe);
HWY_EXPORT(factorsOf);
HWY_EXPORT(floatOf);

namespace {

std::vector<vector_control::Target> targetsWithVectors() {
    std::vector<vector_control::Target> found;
    for (const std::int64_t bit : hwy::SupportedAndGeneratedTargets()) {
        if (bit != HWY_EMU128 && bit != HWY_SCALAR) found.push_back({bit, hwy::TargetName(bit)});
    }
    return found;
}

}  // namespace
}  // namespace tessary_vector

namespace trig_claims {

const std::vector<vector_control::Target>& targets() {
    static const auto found = tessary_vector::targetsWithVectors();
    return found;
}

void forceTarget(std::int64_t bit) {
    hwy::SetSupportedTargetsForTest(bit);
    hwy::GetChosenTarget().DeInit();
}

Claim step(int type, const Claim& claim, double cr, double ci) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(stepOf)(type, claim, cr, ci);
}

Verdict decide(const Claim& claim, double limit) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(decisionOn)(claim, limit);
}

bool roundsSafely(double product) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(isSafe)(product);
}

vector_control::TrigValues factors(double trigonometric, double hyperbolic) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(factorsOf)(trigonometric, hyperbolic);
}

FloatValue floatFunction(int type, FloatValue z, std::size_t lane, bool everywhere) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(floatOf)(type, z, lane, everywhere);
}

}  // namespace trig_claims

#endif  // HWY_ONCE

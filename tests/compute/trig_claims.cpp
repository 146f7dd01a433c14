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

#include <algorithm>
#include <cstring>

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
trig_claims::Slots advanceOf(int, const std::vector<trig_claims::Slot>&, double, int, int) {
    return {};
}
trig_claims::Slots repeatsOf(const std::vector<trig_claims::Slot>&) {
    return {};
}
trig_claims::Slots savedOf(const std::vector<trig_claims::Slot>&) {
    return {};
}
trig_claims::Slots closedOf(const std::vector<trig_claims::Slot>&, bool) {
    return {};
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

// The renderer's slots with these orbits in them, the padding behind them dead.
struct FilledSlots : CertifiedSlots {
    FilledSlots(const std::vector<trig_claims::Slot>& slots, bool saved) : CertifiedSlots{} {
        s.used = slots.size();
        reviveUsed(s);
        s.alive = 0;
        s.saved = saved;
        s.placed = true;
        for (std::size_t n = 0; n < slots.size(); ++n) put(n, slots[n]);
    }

    void put(std::size_t n, const trig_claims::Slot& slot) {
        s.zr[n] = slot.now.r, s.zi[n] = slot.now.i, bound[n] = slot.now.bound;
        s.savedR[n] = slot.saved.r, s.savedI[n] = slot.saved.i, savedBound[n] = slot.saved.bound;
        s.cr[n] = slot.cr, s.ci[n] = slot.ci, s.count[n] = slot.count;
        if (!slot.live) s.live[n] = 0;
        s.alive += slot.live;
    }

    trig_claims::Slots content() const {
        trig_claims::Slots found{{}, s.alive};
        for (std::size_t n = 0; n < s.used; ++n) {
            std::uint64_t live;
            std::memcpy(&live, s.live + n, sizeof live);
            found.slots.push_back({{s.zr[n], s.zi[n], bound[n]},
                                   {s.savedR[n], s.savedI[n], savedBound[n]},
                                   s.cr[n],
                                   s.ci[n],
                                   live != 0,
                                   s.count[n]});
        }
        return found;
    }
};

trig_claims::Slots advanceOf(int type, const std::vector<trig_claims::Slot>& slots, double limit,
                             int steps, int stepsBefore) {
    FilledSlots filled(slots, true);
    visitTrig(type, [&](auto rule) HWY_ATTR {
        for (std::size_t at = 0; at < slots.size(); at += Slots<double>::LANES) {
            advanceCertified<typename KindOf<decltype(rule)>::Kind>(filled, at, Real(limit), steps,
                                                                    stepsBefore);
        }
    });
    return filled.content();
}

trig_claims::Slots repeatsOf(const std::vector<trig_claims::Slot>& slots) {
    FilledSlots filled(slots, true);
    endCertifiedRepeats(filled);
    return filled.content();
}

trig_claims::Slots savedOf(const std::vector<trig_claims::Slot>& slots) {
    FilledSlots filled(slots, false);
    saveCertified(filled);
    return filled.content();
}

trig_claims::Slots closedOf(const std::vector<trig_claims::Slot>& slots, bool saved) {
    FilledSlots filled(slots, saved);
    closeCertifiedRanks<SinRule>(filled, [](std::uint64_t, std::uint64_t) {});
    return filled.content();
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
HWY_EXPORT(advanceOf);
HWY_EXPORT(repeatsOf);
HWY_EXPORT(savedOf);
HWY_EXPORT(closedOf);

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

Slots advance(int type, const std::vector<Slot>& slots, double limit, int steps, int stepsBefore) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(advanceOf)(type, slots, limit, steps, stepsBefore);
}

Slots endRepeats(const std::vector<Slot>& slots) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(repeatsOf)(slots);
}

Slots save(const std::vector<Slot>& slots) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(savedOf)(slots);
}

Slots closeRanks(const std::vector<Slot>& slots, bool saved) {
    using namespace tessary_vector;
    return HWY_DYNAMIC_DISPATCH(closedOf)(slots, saved);
}

}  // namespace trig_claims

#endif  // HWY_ONCE

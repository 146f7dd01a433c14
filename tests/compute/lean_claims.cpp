#include "tests/compute/lean_claims.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/compute/lean_claims.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cstring>

#include "compute/vector_ball-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using lean_claims::Claim;
using lean_claims::Precision;
using lean_claims::Verdict;
using LeanSlots = std::vector<lean_claims::Slot>;

#if !TESSARY_HAS_LEAN

bool hasLean() {
    return false;
}
Claim leanStep(Precision, int, const Claim& claim, double, double) {
    return claim;
}
Verdict leanDecision(Precision, const Claim&, double) {
    return Verdict::doubtful;
}
bool leanStays(Precision, const Claim&, double, double) {
    return false;
}
bool leanReturned(Precision, const Claim&, double, double, double) {
    return false;
}
vector_control::TrigValues leanFactors(Precision, double, double) {
    return {};
}
double leanRoot(Precision, double square) {
    return square;
}
lean_claims::Slots leanAdvance(Precision, int, const LeanSlots&, double, int, int, bool) {
    return {};
}
lean_claims::Slots leanSave(Precision, const LeanSlots&, double) {
    return {};
}

#else

bool hasLean() {
    return true;
}

// Calls visit(T{}) with the number type of the precision.
template <class Visit>
auto visitPrecision(Precision precision, Visit&& visit) {
    return precision == Precision::twice ? visit(double{}) : visit(float{});
}

template <class Visit>
void visitKind(int type, Visit&& visit) {
    if (type == 2) visit(SineKind{});
    if (type == 3) visit(CosineKind{});
    if (type == 4) visit(HyperbolicSineKind{});
    if (type == 5) visit(HyperbolicCosineKind{});
}

template <class T>
double firstLane(Number<T> x) {
    return static_cast<double>(hn::GetLane(x.v));
}

template <class Kind, class T>
LeanOrbits<Kind, T> orbitsOf(const Claim& claim, double cr, double ci) {
    using N = Number<T>;
    const typename N::D d;
    const auto all = hn::Eq(hn::Zero(d), hn::Zero(d));
    return {{N(claim.r), N(claim.i)}, {N(cr), N(ci)}, N(claim.bound), N(claim.ball), all, all};
}

Claim leanStep(Precision precision, int type, const Claim& claim, double cr, double ci) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        Claim next = claim;
        visitKind(type, [&](auto kind) HWY_ATTR {
            auto orbits = orbitsOf<decltype(kind), decltype(zero)>(claim, cr, ci);
            orbits.template step<true>();
            next = {firstLane(orbits.z.r), firstLane(orbits.z.i), firstLane(orbits.bound),
                    firstLane(orbits.ball)};
        });
        return next;
    });
}

Verdict leanDecision(Precision precision, const Claim& claim, double limit) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        using T = decltype(zero);
        const typename Number<T>::D d;
        MaskOf<T> escaped, doubtful;
        orbitsOf<SineKind, T>(claim, 0, 0).decide(Number<T>(limit), escaped, doubtful);
        if (!hn::AllFalse(d, escaped)) return Verdict::escaped;
        return hn::AllFalse(d, doubtful) ? Verdict::stays : Verdict::doubtful;
    });
}

bool leanStays(Precision precision, const Claim& claim, double distance, double limit) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        using T = decltype(zero);
        const auto stays = orbitsOf<SineKind, T>(claim, 0, 0)
                               .staysWithin(Number<T>(distance), LeanLimit<T>(limit));
        return hn::AllTrue(typename Number<T>::D(), stays);
    });
}

bool leanReturned(Precision precision, const Claim& claim, double savedR, double savedI,
                  double radius) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        using T = decltype(zero);
        using N = Number<T>;
        const auto back =
            orbitsOf<SineKind, T>(claim, 0, 0).returned(N(savedR), N(savedI), N(radius));
        return hn::AllTrue(typename N::D(), back);
    });
}

vector_control::TrigValues leanFactors(Precision precision, double circular, double hyperbolic) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        using T = decltype(zero);
        const LeanFactors<T> f{Number<T>(circular), Number<T>(hyperbolic)};
        return vector_control::TrigValues{firstLane(f.sin), firstLane(f.cos), firstLane(f.sinh),
                                          firstLane(f.cosh)};
    });
}

double leanRoot(Precision precision, double square) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        return firstLane(roughRoot(Number<decltype(zero)>(square)));
    });
}

// The renderer's slots with these orbits in them, the padding behind them dead.
template <class T>
struct FilledSlots : CertifiedSlotsOf<T> {
    using CertifiedSlotsOf<T>::s;

    FilledSlots(const LeanSlots& slots) : CertifiedSlotsOf<T>{} {
        s.used = slots.size();
        reviveUsed(s);
        s.alive = 0;
        s.saved = s.placed = true;
        for (std::size_t n = 0; n < slots.size(); ++n) put(n, slots[n]);
    }

    void put(std::size_t n, const lean_claims::Slot& slot) {
        const auto narrow = [](double x) { return static_cast<T>(x); };
        s.zr[n] = narrow(slot.now.r), s.zi[n] = narrow(slot.now.i);
        s.cr[n] = narrow(slot.cr), s.ci[n] = narrow(slot.ci);
        s.savedR[n] = narrow(slot.savedR), s.savedI[n] = narrow(slot.savedI);
        this->bound[n] = narrow(slot.now.bound), this->ball[n] = narrow(slot.now.ball);
        this->savedBound[n] = narrow(slot.savedRadius);
        s.count[n] = static_cast<typename Slots<T>::Word>(slot.count);
        if (!slot.live) s.live[n] = 0;
        s.alive += slot.live;
    }

    lean_claims::Slots content() const {
        lean_claims::Slots found{{}, s.alive};
        for (std::size_t n = 0; n < s.used; ++n) {
            typename Slots<T>::Word live;
            std::memcpy(&live, s.live + n, sizeof live);
            const auto wide = [](T x) { return static_cast<double>(x); };
            found.slots.push_back(
                {{wide(s.zr[n]), wide(s.zi[n]), wide(this->bound[n]), wide(this->ball[n])},
                 wide(s.savedR[n]),
                 wide(s.savedI[n]),
                 wide(this->savedBound[n]),
                 wide(s.cr[n]),
                 wide(s.ci[n]),
                 live != 0,
                 s.count[n] == IN_DOUBT<T> ? lean_claims::DOUBT : s.count[n]});
        }
        return found;
    }
};

lean_claims::Slots leanAdvance(Precision precision, int type, const LeanSlots& slots, double limit,
                               int steps, int stepsBefore, bool balls) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        using T = decltype(zero);
        FilledSlots<T> filled(slots);
        const LeanLimit<T> limits(limit);
        visitKind(type, [&](auto kind) HWY_ATTR {
            using Kind = decltype(kind);
            if (balls) advanceAllLean<Kind, true>(filled, limits, steps, stepsBefore);
            if (!balls) advanceAllLean<Kind, false>(filled, limits, steps, stepsBefore);
        });
        return filled.content();
    });
}

lean_claims::Slots leanSave(Precision precision, const LeanSlots& slots, double radius) {
    return visitPrecision(precision, [&](auto zero) HWY_ATTR {
        FilledSlots<decltype(zero)> filled(slots);
        saveBalls(filled, radius);
        return filled.content();
    });
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {

HWY_EXPORT(hasLean);
HWY_EXPORT(leanStep);
HWY_EXPORT(leanDecision);
HWY_EXPORT(leanStays);
HWY_EXPORT(leanReturned);
HWY_EXPORT(leanFactors);
HWY_EXPORT(leanRoot);
HWY_EXPORT(leanAdvance);
HWY_EXPORT(leanSave);

namespace {

std::vector<vector_control::Target> targetsWithLean() {
    std::vector<vector_control::Target> found;
    for (const std::int64_t bit : hwy::SupportedAndGeneratedTargets()) {
        lean_claims::forceTarget(bit);
        if (HWY_DYNAMIC_DISPATCH(hasLean)()) found.push_back({bit, hwy::TargetName(bit)});
    }
    lean_claims::forceTarget(0);
    return found;
}

}  // namespace
}  // namespace tessary_vector

namespace lean_claims {

using namespace tessary_vector;

const std::vector<vector_control::Target>& targets() {
    static const auto found = targetsWithLean();
    return found;
}

void forceTarget(std::int64_t bit) {
    hwy::SetSupportedTargetsForTest(bit);
    hwy::GetChosenTarget().DeInit();
}

Claim step(Precision precision, int type, const Claim& claim, double cr, double ci) {
    return HWY_DYNAMIC_DISPATCH(leanStep)(precision, type, claim, cr, ci);
}

Verdict decide(Precision precision, const Claim& claim, double limit) {
    return HWY_DYNAMIC_DISPATCH(leanDecision)(precision, claim, limit);
}

bool staysWithin(Precision precision, const Claim& claim, double distance, double limit) {
    return HWY_DYNAMIC_DISPATCH(leanStays)(precision, claim, distance, limit);
}

bool returned(Precision precision, const Claim& claim, double savedR, double savedI,
              double radius) {
    return HWY_DYNAMIC_DISPATCH(leanReturned)(precision, claim, savedR, savedI, radius);
}

vector_control::TrigValues factors(Precision precision, double circular, double hyperbolic) {
    return HWY_DYNAMIC_DISPATCH(leanFactors)(precision, circular, hyperbolic);
}

double root(Precision precision, double square) {
    return HWY_DYNAMIC_DISPATCH(leanRoot)(precision, square);
}

Slots advance(Precision precision, int type, const std::vector<Slot>& slots, double limit,
              int steps, int stepsBefore, bool balls) {
    return HWY_DYNAMIC_DISPATCH(leanAdvance)(precision, type, slots, limit, steps, stepsBefore,
                                             balls);
}

Slots save(Precision precision, const std::vector<Slot>& slots, double radius) {
    return HWY_DYNAMIC_DISPATCH(leanSave)(precision, slots, radius);
}

}  // namespace lean_claims

#endif  // HWY_ONCE

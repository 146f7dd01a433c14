#include "deep/tiers.h"

#include <atomic>
#include <cmath>
#include <optional>

#include "compute/fixed_math.h"

namespace deep {
namespace {

constexpr int ALL = -1;

// The only tier in use, or ALL. Tests and benchmarks write it between pictures.
std::atomic<int> onlyTier{ALL};

}  // namespace

void useAlone(Tier tier) {
    onlyTier = static_cast<int>(tier);
}

void useAllTiers() {
    onlyTier = ALL;
}

bool isInUse(Tier tier) {
    return onlyTier == ALL || onlyTier == static_cast<int>(tier);
}

bool isForVectors(const View& view) {
    return view.limit >= 0x1p-4 && view.limit <= 0x1p62 && view.maxIters > 0;
}

// 56 bits below the spacing are ample for doubles, and pairs have 46 more. In a Julia set a pass by
// 0 squares differences, and nothing is added that would hide it.
long referenceBits(const ExactView& exact) {
    return std::max(160L, 130 - exact.spacingExponent() * (exact.isJulia() ? 2 : 1));
}

template <int PARTS>
TierData<PARTS> makeTier(const Reference& reference, const ExactView& exact, const View& view) {
    constexpr double u = TierData<PARTS>::UNIT;
    constexpr double RADIUS = PARTS == 1 ? 0x1p-52 : 0x1p-95;
    TierData<PARTS> tier;
    // At more digits than any tier keeps; 2^unit is no less than it times W + H.
    Big halfStep(200);
    divide(halfStep, exact.halfStep(), exact.denominator());
    const double all = static_cast<double>(view.pixelsWide) + view.pixelsHigh;
    const std::int64_t unit = wide(halfStep).exponent() + std::ilogb(all) + 2;
    const std::int64_t etaExponent = 7 - reference.bits;
    const bool julia = exact.isJulia();
    tier.offsetExponent = julia ? etaExponent : unit;
    const double eta = Wide(1, etaExponent - tier.offsetExponent).value();
    tier.reference = &reference;
    tier.exact = &exact;
    tier.skips.make(reference, view.limit, u, RADIUS, eta, tier.offsetExponent);
    tier.limit = view.limit;
    tier.maxIters = view.maxIters;
    tier.julia = julia;
    tier.unitExponent = unit;
    mpfr_mul_2si(halfStep, halfStep, -unit, MPFR_RNDN);
    tier.halfStep = cut<PARTS>(split(halfStep));
    tier.wide = view.pixelsWide;
    tier.high = view.pixelsHigh;
    const double own = 6 * u + eta, ofSize = 18 * u, start = 7 * u;
    tier.startSquared = 3 * start * start;
    tier.ownSquared = 3 * own * own * (1 + 0x1p-30);
    tier.sizeFactor = 3 * ofSize * ofSize;
    tier.ownSizeOff = Wide(8 * (400 + 4 * view.limit), -reference.bits);
    tier.sizeOff = tier.ownSizeOff.value() + 0x1p-480;
    tier.logLimit = fixedLog(view.limit);
    return tier;
}

template TierData<1> makeTier<1>(const Reference&, const ExactView&, const View&);
template TierData<2> makeTier<2>(const Reference&, const ExactView&, const View&);

}  // namespace deep

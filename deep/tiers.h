// The ways a pixel's orbit is decided, from the quickest to the one that decides what they leave.
#pragma once

#include <cstdint>

#include "compute/stop_flag.h"
#include "deep/reference.h"
#include "deep/skips.h"
#include "deep/view.h"

namespace deep {

enum class Tier { doubles, pairs, digits };

// For tests and benchmarks only, between pictures: from now on pixels take this tier alone, and
// what it leaves is -1 (with Tier::digits nothing is left that would not be anyway).
void useAlone(Tier tier);
void useAllTiers();
bool isInUse(Tier tier);

// Lanes of a block: pixels that are followed together.
inline constexpr int BLOCK = 16;

// Pixels and what became of them. A count of UNDECIDED is for the next tier, one of INTERRUPTED was
// not followed to its end. Those beyond `used` are not looked at.
struct Block {
    int used = 0;
    std::int32_t x[BLOCK], y[BLOCK];
    std::int32_t count[BLOCK];
    double value[BLOCK];
};

// The constants of a vector tier. Differences start in units of 2^unitExponent, which is no less
// than the largest |dc| (Mandelbrot) or |d_0| (Julia) of the picture. What each step adds is no
// more than Delta = 2^offsetExponent: dc, or in a Julia set the eta of the reference alone.
//
// With u the relative error of an operation of the tier, a step's error is (3) of
// docs/deep-zoom.md:
//     e' <= 2 |z| e + e^2 + 18 u |z||d| + b,   b = 6 u Delta + 128 * 2^-bits.
template <int PARTS>
struct TierData {
    const Reference* reference;
    const ExactView* exact;
    Skips<PARTS> skips;
    double limit;
    int maxIters;
    bool julia;
    std::int64_t unitExponent;
    Of<PARTS, double> halfStep;  // width / (2 W)
    long wide, high;
    std::int64_t offsetExponent;
    double startSquared;  // 3 b^2 of d_0, in units
    double ownSquared;    // 3 b^2, Delta being 1
    double sizeFactor;    // 3 (18 u)^2
    Wide ownSizeOff;      // how far |Z|^2 - L as kept may be off besides 2 u of it
    double sizeOff;       // no less than it and what products of differences lose to underflow
    double logLimit;
    static constexpr double UNIT = PARTS == 1 ? 0x1p-53 : 0x1p-99;
};

// Follows the pixels of the block by a vector tier. Any thread.
void follow(const TierData<1>& tier, Block& block, bool wantsValues, StopFlag stop);
void follow(const TierData<2>& tier, Block& block, bool wantsValues, StopFlag stop);

// A tier of this view on this reference, with its tables; both and `exact` must outlive it.
template <int PARTS>
TierData<PARTS> makeTier(const Reference& reference, const ExactView& exact, const View& view);

// The precision of a reference that serves both vector tiers.
long referenceBits(const ExactView& exact);

// Whether the vector tiers are for such a view: what they say of overflow holds within these
// limits.
bool isForVectors(const View& view);

}  // namespace deep

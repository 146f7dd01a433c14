#include "deep/tiers.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS                                                             \
    (TESSARY_SKIPPED_TARGETS | HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | \
     HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "deep/vector_orbits.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "deep/orbits-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

bool followDoubles(const deep::TierData<1>& tier, deep::Block& block, bool values, StopFlag stop) {
    deep_orbits::Orbits<1>(tier, block, values, stop).follow();
    return true;
}

bool followPairs(const deep::TierData<2>& tier, deep::Block& block, bool values, StopFlag stop) {
    deep_orbits::Orbits<2>(tier, block, values, stop).follow();
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
HWY_EXPORT(followDoubles);
HWY_EXPORT(followPairs);
}  // namespace tessary_vector

namespace deep {

void follow(const TierData<1>& tier, Block& block, bool values, StopFlag stop) {
    using namespace tessary_vector;
    HWY_DYNAMIC_DISPATCH(followDoubles)(tier, block, values, stop);
}

void follow(const TierData<2>& tier, Block& block, bool values, StopFlag stop) {
    using namespace tessary_vector;
    HWY_DYNAMIC_DISPATCH(followPairs)(tier, block, values, stop);
}

}  // namespace deep

#endif  // HWY_ONCE

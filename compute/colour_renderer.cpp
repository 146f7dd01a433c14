#include "compute/value_colours.h"

#include <numeric>

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "compute/colour_renderer.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_colours-inl.h"
#include "compute/vector_renderer.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// NOLINTBEGIN(readability-non-const-parameter): without vectors nothing is written
int coloursOf(const ValueColours& how, const float* roundings, const double* values, int n,
              unsigned char* out, std::int32_t* left) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    (void)how, (void)roundings, (void)values, (void)out;
    std::iota(left, left + n, 0);
    return n;
#else
    const RowOfColours row(how, roundings);
    return how.deep ? colourRow<std::uint16_t>(row, values, n, out, left)
                    : colourRow<std::uint8_t>(row, values, n, out, left);
#endif
}

int averagesOf(const ValueColours& how, const float* roundings, const SampleRows& samples, int n,
               unsigned char* out, std::int32_t* left) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    (void)how, (void)roundings, (void)samples, (void)out;
    std::iota(left, left + n, 0);
    return n;
#else
    const RowOfColours row(how, roundings);
    return how.deep ? colourSamples<std::uint16_t>(row, samples, n, out, left)
                    : colourSamples<std::uint8_t>(row, samples, n, out, left);
#endif
}
// NOLINTEND(readability-non-const-parameter)

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
namespace {

HWY_EXPORT(coloursOf);
HWY_EXPORT(averagesOf);

}  // namespace

int colours(const ValueColours& how, const float* roundings, const double* values, int n,
            unsigned char* out, std::int32_t* left) {
    return HWY_DYNAMIC_DISPATCH(coloursOf)(how, roundings, values, n, out, left);
}

int averages(const ValueColours& how, const float* roundings, const SampleRows& samples, int n,
             unsigned char* out, std::int32_t* left) {
    return HWY_DYNAMIC_DISPATCH(averagesOf)(how, roundings, samples, n, out, left);
}

}  // namespace tessary_vector

int colourValues(const ValueColours& how, const float* roundings, const double* values, int n,
                 unsigned char* out, std::int32_t* left) {
    if (vector_control::usesVectors()) {
        return tessary_vector::colours(how, roundings, values, n, out, left);
    }
    std::iota(left, left + n, 0);
    return n;
}

int colourAverages(const ValueColours& how, const float* roundings, const SampleRows& samples,
                   int n, unsigned char* out, std::int32_t* left) {
    if (vector_control::usesVectors()) {
        return tessary_vector::averages(how, roundings, samples, n, out, left);
    }
    std::iota(left, left + n, 0);
    return n;
}

#endif  // HWY_ONCE

#include "compute/vector_renderer.h"

#include <atomic>

// Highway compiles the rest of this file once for each instruction set. AVX3_DL adds nothing that a
// rule uses; the scalable sets cannot keep vectors in structs.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0  // sanitizer builds skip some: instrumented, each takes minutes
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "compute/vector_renderer.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/rounded_trig.h"
#include "compute/vector_tile-inl.h"
#include "compute/vector_trig_tile-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

template <class T>
bool renderAs(const VectorTile<T>& tile, int type, bool detect) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    (void)tile, (void)type, (void)detect;
    return false;
#else
    bool done = false;
    // Up to the limit tested, both parts of a live state are in the range of the trigonometry.
    visitRule(type, [&](auto rule) HWY_ATTR {
        using R = decltype(rule);
        if (usesTrig<R> && !(tile.limit <= MAX_ARGUMENT * MAX_ARGUMENT)) return;
        renderTile<R>(tile, detect);
        done = true;
    });
    return done;
#endif
}

bool renderFloat(const VectorTile<float>& tile, int type, bool detect) {
    return renderAs(tile, type, detect);
}

bool renderDouble(const VectorTile<double>& tile, int type, bool detect) {
    return renderAs(tile, type, detect);
}

vector_control::TrigValues trigValues(double trigonometric, double hyperbolic) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    const SineCosine t = sineCosine(trigonometric), h = hyperbolicSineCosine(hyperbolic);
    return {t.sine, t.cosine, h.sine, h.cosine};
#else
    const Factors f = factorsAt(Real(trigonometric), Real(hyperbolic));
    return {hn::GetLane(f.sin.v), hn::GetLane(f.cos.v), hn::GetLane(f.sinh.v),
            hn::GetLane(f.cosh.v)};
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_vector {
namespace {

HWY_EXPORT(renderFloat);
HWY_EXPORT(renderDouble);
HWY_EXPORT(trigValues);

// Whether to look for orbits that repeat. Tests and benchmarks write it between frames.
std::atomic<bool> cycleDetection{true};

// Whether vectors are not to be used at all. Tests and benchmarks write it between frames.
std::atomic<bool> scalarAlone{false};

}  // namespace

bool render(const VectorTile<float>& tile, int type) {
    return !scalarAlone && HWY_DYNAMIC_DISPATCH(renderFloat)(tile, type, cycleDetection);
}

bool render(const VectorTile<double>& tile, int type) {
    return !scalarAlone && HWY_DYNAMIC_DISPATCH(renderDouble)(tile, type, cycleDetection);
}

vector_control::TrigValues evaluate(double trigonometric, double hyperbolic) {
    if (!scalarAlone) return HWY_DYNAMIC_DISPATCH(trigValues)(trigonometric, hyperbolic);
    const SineCosine t = sineCosine(trigonometric);
    const SineCosine h = hyperbolicSineCosine(hyperbolic);
    return {t.sine, t.cosine, h.sine, h.cosine};
}

}  // namespace tessary_vector

bool renderWithVectors(const VectorTile<float>& tile, int type) {
    return tessary_vector::render(tile, type);
}

bool renderWithVectors(const VectorTile<double>& tile, int type) {
    return tessary_vector::render(tile, type);
}

namespace vector_control {

std::vector<Target> targets() {
    std::vector<Target> found;
    for (const std::int64_t bit : hwy::SupportedAndGeneratedTargets()) {
        if (bit != HWY_EMU128 && bit != HWY_SCALAR) found.push_back({bit, hwy::TargetName(bit)});
    }
    // Highway generates no target without vectors where every machine of the build has some.
    found.push_back({HWY_SCALAR, "scalar"});
    return found;
}

void forceTarget(std::int64_t bit) {
    tessary_vector::scalarAlone = bit == HWY_SCALAR;
    hwy::SetSupportedTargetsForTest(tessary_vector::scalarAlone ? 0 : bit);
    hwy::GetChosenTarget().DeInit();
}

TrigValues evaluateTrig(double trigonometric, double hyperbolic) {
    return tessary_vector::evaluate(trigonometric, hyperbolic);
}

void detectCycles(bool on) {
    tessary_vector::cycleDetection = on;
}

bool detectsCycles() {
    return tessary_vector::cycleDetection;
}

bool usesVectors() {
    return !tessary_vector::scalarAlone;
}

}  // namespace vector_control

#endif  // HWY_ONCE

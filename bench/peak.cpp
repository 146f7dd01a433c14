#include "bench/peak.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/peak.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_number-inl.h"

HWY_BEFORE_NAMESPACE();
namespace bench {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Takes `steps` steps with K vectors in flight and returns a value that depends on all of them.
template <class T, int K>
HWY_NOINLINE T spin(int steps) {
    const hn::ScalableTag<T> d;
    using V = hn::Vec<decltype(d)>;
    using N = tessary_vector::HWY_NAMESPACE::Number<T>;
    V zr[K], zi[K], rr[K], ii[K];
    hn::Mask<decltype(d)> live[K];
    const V cr = hn::Set(d, T(-0.1)), ci = hn::Set(d, T(0.1)), limit = hn::Set(d, T(4));
    HWY_UNROLL(8)
    for (int k = 0; k < K; ++k) {
        zr[k] = zi[k] = hn::Set(d, static_cast<T>(0.01 * k));
        rr[k] = ii[k] = hn::Mul(zr[k], zr[k]);
        live[k] = hn::Eq(cr, cr);
    }
    for (int i = 0; i < steps; ++i) {
        HWY_UNROLL(8)
        for (int k = 0; k < K; ++k) {
            const V ri = hn::Mul(zr[k], zi[k]);
            zr[k] = hn::Add(hn::Sub(rr[k], ii[k]), cr);
            zi[k] = hn::Add(hn::Add(ri, ri), ci);
            rr[k] = hn::Mul(zr[k], zr[k]);
            ii[k] = hn::Mul(zi[k], zi[k]);
            live[k] = tessary_vector::HWY_NAMESPACE::andNotGreater(
                live[k], N(hn::Add(rr[k], ii[k])), N(limit));
        }
    }
    V sum = zr[0];
    for (int k = 0; k < K; ++k) sum = hn::Add(sum, hn::IfThenElse(live[k], zr[k], zi[k]));
    return hn::GetLane(sum);
}

// Lane steps a second of one thread with K vectors in flight.
template <class T, int K>
double rate() {
    using Clock = std::chrono::steady_clock;
    constexpr int STEPS = 4'000'000;
    const auto start = Clock::now();
    volatile T sink = spin<T, K>(STEPS);
    (void)sink;
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return static_cast<double>(hn::Lanes(hn::ScalableTag<T>())) * K * STEPS / seconds;
}

// The best that any number of vectors in flight reaches.
template <class T>
double bestRate() {
    double best = 0;
    for (int repeat = 0; repeat < 8; ++repeat) {
        best = std::max({best, rate<T, 3>(), rate<T, 4>(), rate<T, 5>(), rate<T, 6>()});
    }
    return best;
}

double bestFloatRate() {
    return bestRate<float>();
}
double bestDoubleRate() {
    return bestRate<double>();
}

}  // namespace HWY_NAMESPACE
}  // namespace bench
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace bench {

HWY_EXPORT(bestFloatRate);
HWY_EXPORT(bestDoubleRate);

double peakStepsPerSecond(bool doublePrecision, std::int32_t threads) {
    std::vector<double> rates(static_cast<std::size_t>(threads));
    std::vector<std::thread> workers;
    for (double& rate : rates) {
        workers.emplace_back([&rate, doublePrecision] {
            rate = doublePrecision ? HWY_DYNAMIC_DISPATCH(bestDoubleRate)()
                                   : HWY_DYNAMIC_DISPATCH(bestFloatRate)();
        });
    }
    double sum = 0;
    for (std::size_t i = 0; i < rates.size(); ++i) {
        workers[i].join();
        sum += rates[i];
    }
    return sum;
}

}  // namespace bench

#endif  // HWY_ONCE

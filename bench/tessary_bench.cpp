// Whole frames of the vector renderer against the scalar one, through the real queue, in one
// process and by turns: only figures of one run compare. docs/performance.md says how to read them.
//
// tessary_bench [--own_limits] [--processors] [options of the benchmark library]
//   --own_limits  each view under its own iteration limit alone: what the page's table shows
//   --processors  times are those of the processors, over the number of threads: for a machine with
//                 other work on it. Names end in /processors, and nothing else is counted.
//
// Names are VIEW/LIMIT/PRECISION/SET, so --benchmark_filter picks by any of them. The time of a row
// is the vector renderer's best frame; its counters:
//   scalar_ms   the scalar renderer's best frame (expensive ones from a sample of the tiles)
//   ratio       scalar_ms over the row's time
//   Gsteps/s    steps that the scalar rules take for the frame, over the row's time
//   peak        that rate as a share of a register-only loop's (z^2 + c only)
//   queue       share of the row's time that a frame of empty tiles takes
//
// Rows that end in /search set the vector renderer against itself, in one thread:
//   search      what the search for orbits that repeat adds to the time without it
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "backends/worker_pool.h"
#include "bench/mean_steps.h"
#include "bench/peak.h"
#include "bench/pool_frame.h"
#include "bench/views.h"
#include "compute/vector_renderer.h"

namespace {

using bench::Timing;
using bench::View;
using vector_control::Target;

struct Case {
    View view;
    int limit;
    bool doublePrecision;
    Target target;
    bool detectCycles;
    std::int32_t threads;
    Timing timing;
};

// What this machine has, asked before anything is forced; the last one is the scalar renderer.
const std::vector<Target>& targets() {
    static const std::vector<Target> all = vector_control::targets();
    return all;
}

std::int64_t scalarBit() {
    return targets().back().bit;
}

// Every how-manieth tile to render so that a frame's sample takes a tenth of a second, at least
// where the frame does. With these strides the tiles lie evenly over the picture, which is 256
// tiles high.
int affordableStride(Timing timing) {
    constexpr double ENOUGH = 0.1;
    for (const int stride : {355, 99, 21, 5}) {
        if (bench::frameSeconds(stride, 0, timing) > ENOUGH * stride) return stride;
    }
    return 1;
}

double peakOf(const Case& c) {
    static std::map<std::pair<std::int64_t, std::pair<bool, std::int32_t>>, double> known;
    double& peak = known[{c.target.bit, {c.doublePrecision, c.threads}}];
    if (peak == 0) peak = bench::peakStepsPerSecond(c.doublePrecision, c.threads);
    return peak;
}

void report(benchmark::State& state, const Case& c, double scalar, double vectors) {
    state.counters["scalar_ms"] = 1e3 * scalar;
    state.counters["vectors_ms"] = 1e3 * vectors;
    state.counters["ratio"] = scalar / vectors;
    if (c.timing == Timing::processors) return;
    const double rate =
        bench::meanSteps(c.view, c.limit, c.doublePrecision) * 2048 * 2048 / vectors;
    state.counters["Gsteps/s"] = 1e-9 * rate;
    if (c.view.type <= 1) state.counters["peak"] = rate / peakOf(c);
    state.counters["queue"] = bench::emptyFrameSeconds() / vectors;
}

// One iteration is a scalar frame and some of the vector renderer's.
void compare(benchmark::State& state, const Case& c) {
    numCPUThreads = c.threads;
    vector_control::detectCycles(c.detectCycles);
    bench::setView(c.view, c.limit, c.doublePrecision);
    vector_control::forceTarget(scalarBit());
    const int scalarStride = affordableStride(c.timing);
    vector_control::forceTarget(c.target.bit);
    const int stride = affordableStride(c.timing);
    bench::BestFrame scalar(scalarStride, c.timing), vectors(stride, c.timing);
    for (auto _ : state) {
        vector_control::forceTarget(scalarBit());
        scalar.render();
        vector_control::forceTarget(c.target.bit);
        vectors.render();
        state.SetIterationTime(vectors.seconds);
    }
    report(state, c, scalar.seconds, vectors.seconds);
    vector_control::detectCycles(true);
    vector_control::forceTarget(0);
    numCPUThreads = max_threads;
}

// By turns with and without the search. One thread, as two would add their own noise to a
// difference of a few per cent.
void compareSearch(benchmark::State& state, const Case& c) {
    numCPUThreads = 1;
    bench::setView(c.view, c.limit, c.doublePrecision);
    vector_control::forceTarget(c.target.bit);
    const int stride = affordableStride(c.timing);
    constexpr double ENOUGH = 0.15;
    bench::BestFrame with(stride, c.timing), without(stride, c.timing);
    for (auto _ : state) {
        for (double sum = 0; sum < ENOUGH; sum += with.seconds) {
            vector_control::detectCycles(true);
            with.renderOnce();
            vector_control::detectCycles(false);
            without.renderOnce();
        }
        state.SetIterationTime(with.seconds);
    }
    state.counters["search"] = with.seconds / without.seconds - 1;
    vector_control::detectCycles(true);
    vector_control::forceTarget(0);
    numCPUThreads = max_threads;
}

std::string nameOf(const Case& c) {
    std::string name = std::string(c.view.label) + "/" + std::to_string(c.limit) +
                       (c.doublePrecision ? "/double/" : "/single/") + c.target.name;
    if (!c.detectCycles) name += "/nodetect";
    if (c.threads != max_threads) name += "/threads" + std::to_string(c.threads);
    if (c.timing == Timing::processors) name += "/processors";
    return name;
}

using Measure = void(benchmark::State&, const Case&);

void add(const std::string& name, const Case& c, Measure* measure) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { measure(state, c); })
        ->UseManualTime()
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
}

void add(const Case& c) {
    add(nameOf(c), c, compare);
}

void addOwnLimit(const View& view, bool doublePrecision, const Target& target, Timing timing) {
    const Case own{view, view.maxIters, doublePrecision, target, true, max_threads, timing};
    add(own);
    add(nameOf(own) + "/search", own, compareSearch);
}

// Each view under its own limit and the three common ones.
void addLimits(const View& view, bool doublePrecision, const Target& target, Timing timing) {
    addOwnLimit(view, doublePrecision, target, timing);
    for (const int limit : {768, 4096, 65536}) {
        if (limit == view.maxIters) continue;
        add({view, limit, doublePrecision, target, true, max_threads, timing});
    }
}

void addOwnLimits(const Target& target, Timing timing) {
    for (const bool doublePrecision : {false, true}) {
        for (const View& view : bench::views) addOwnLimit(view, doublePrecision, target, timing);
        for (const View& view : bench::moreViews) {
            addOwnLimit(view, doublePrecision, target, timing);
        }
    }
}

void addTarget(const Target& target, Timing timing) {
    for (const bool doublePrecision : {false, true}) {
        for (const View& view : bench::views) addLimits(view, doublePrecision, target, timing);
        for (const View& view : bench::moreViews) addLimits(view, doublePrecision, target, timing);
        const View& interior = bench::moreViews.back();
        add({interior, interior.maxIters, doublePrecision, target, false, max_threads, timing});
        for (std::int32_t threads = 1; threads < max_threads; ++threads) {
            const View& start = bench::views.front();
            add({start, start.maxIters, doublePrecision, target, true, threads, timing});
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);  // leaves what is not the library's
    const auto asked = [&](std::string_view option) {
        return std::find(argv + 1, argv + argc, option) != argv + argc;
    };
    const bool ownLimits = asked("--own_limits");
    const Timing timing = asked("--processors") ? Timing::processors : Timing::clock;
    bench::startPool(static_cast<std::int32_t>(std::max(1u, std::thread::hardware_concurrency())));
    for (const Target& target : targets()) {
        if (target.bit != scalarBit()) (ownLimits ? addOwnLimits : addTarget)(target, timing);
    }
    benchmark::RunSpecifiedBenchmarks();
    stopWorkers(false);
    return 0;
}

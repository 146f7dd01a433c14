// Whole frames of the vector renderer against the scalar one, through the real queue, in one
// process and by turns: only figures of one run compare. docs/performance.md says how to read them.
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
#include <array>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/mean_steps.h"
#include "bench/peak.h"
#include "bench/pool_frame.h"
#include "bench/views.h"
#include "compute/vector_renderer.h"
#include "compute/worker_pool.h"

namespace {

using bench::View;
using vector_control::Target;

constexpr std::array<View, 4> MORE_VIEWS = {{
    {"DeepSpiral", 0, -0.743643887, -0.743543887, 0.131825904, 0.131925904, 0, 0, 4096, 4.0},
    {"DeepNeedle", 0, -1.7490863749, -1.7490863748, -0.00000000005, 0.00000000005, 0, 0, 4096, 4.0},
    {"DeepMiniature", 0, -1.7687788005, -1.7687788000, 0.0017389255, 0.0017389260, 0, 0, 4096, 4.0},
    {"AllInterior", 0, -0.1, 0.1, -0.1, 0.1, 0, 0, 768, 4.0},
}};

struct Case {
    View view;
    int limit;
    bool doublePrecision;
    Target target;
    bool detectCycles;
    std::int32_t threads;
};

// What this machine has, asked before anything is forced; the last one is the scalar renderer.
const std::vector<Target>& targets() {
    static const std::vector<Target> all = vector_control::targets();
    return all;
}

std::int64_t scalarBit() {
    return targets().back().bit;
}

// Every how-manieth tile to render so that a frame takes about a third of a second at most.
int affordableStride() {
    constexpr int FIRST_TRY = 4097;
    const double frame = bench::frameSeconds(FIRST_TRY, 0);
    return static_cast<int>(std::min(3 * frame, 4096.0)) | 1;
}

double peakOf(const Case& c) {
    static std::map<std::pair<std::int64_t, std::pair<bool, std::int32_t>>, double> known;
    double& peak = known[{c.target.bit, {c.doublePrecision, c.threads}}];
    if (peak == 0) peak = bench::peakStepsPerSecond(c.doublePrecision, c.threads);
    return peak;
}

void report(benchmark::State& state, const Case& c, double scalar, double vectors) {
    const double rate =
        bench::meanSteps(c.view, c.limit, c.doublePrecision) * 2048 * 2048 / vectors;
    state.counters["scalar_ms"] = 1e3 * scalar;
    state.counters["ratio"] = scalar / vectors;
    state.counters["Gsteps/s"] = 1e-9 * rate;
    if (c.view.type <= 1) state.counters["peak"] = rate / peakOf(c);
    state.counters["queue"] = bench::emptyFrameSeconds() / vectors;
}

// The shortest of the frames rendered so far: whatever else the machine does can only add to a
// time.
struct BestFrame {
    explicit BestFrame(int tileStride) : stride(tileStride) {}

    void render(int frames) {
        for (int i = 0; i < frames; ++i) {
            const double frame = bench::frameSeconds(stride, seconds);
            seconds = seconds == 0 ? frame : std::min(seconds, frame);
        }
    }

    int stride;
    double seconds = 0;
};

// One iteration is a scalar frame and some of the vector renderer's.
void compare(benchmark::State& state, const Case& c) {
    numCPUThreads = c.threads;
    vector_control::detectCycles(c.detectCycles);
    bench::setView(c.view, c.limit, c.doublePrecision);
    vector_control::forceTarget(scalarBit());
    const int scalarStride = affordableStride();
    vector_control::forceTarget(c.target.bit);
    const int stride = affordableStride();
    BestFrame scalar(scalarStride), vectors(stride);
    for (auto _ : state) {
        vector_control::forceTarget(scalarBit());
        scalar.render(1);
        vector_control::forceTarget(c.target.bit);
        vectors.render(4);
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
    const int stride = affordableStride();
    BestFrame with(stride), without(stride);
    for (auto _ : state) {
        for (int i = 0; i < 4; ++i) {
            vector_control::detectCycles(true);
            with.render(1);
            vector_control::detectCycles(false);
            without.render(1);
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

// Each view under its own limit and the three common ones.
void addLimits(const View& view, bool doublePrecision, const Target& target) {
    const Case own{view, view.maxIters, doublePrecision, target, true, max_threads};
    add(own);
    add(nameOf(own) + "/search", own, compareSearch);
    for (const int limit : {768, 4096, 65536}) {
        if (limit != view.maxIters) add({view, limit, doublePrecision, target, true, max_threads});
    }
}

void addTarget(const Target& target) {
    for (const bool doublePrecision : {false, true}) {
        for (const View& view : bench::views) addLimits(view, doublePrecision, target);
        for (const View& view : MORE_VIEWS) addLimits(view, doublePrecision, target);
        const View& interior = MORE_VIEWS.back();
        add({interior, interior.maxIters, doublePrecision, target, false, max_threads});
        for (std::int32_t threads = 1; threads < max_threads; ++threads) {
            const View& start = bench::views.front();
            add({start, start.maxIters, doublePrecision, target, true, threads});
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    bench::startPool(static_cast<std::int32_t>(std::max(1u, std::thread::hardware_concurrency())));
    for (const Target& target : targets()) {
        if (target.bit != scalarBit()) addTarget(target);
    }
    benchmark::RunSpecifiedBenchmarks();
    stopWorkers(false);
    return 0;
}

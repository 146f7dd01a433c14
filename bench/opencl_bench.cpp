// Whole frames of the CPU pool against those of the first OpenCL device, in one process and by
// turns: only figures of one run compare.
//
// Names are VIEW/PRECISION. The time of a row is the device's best frame, with reading the picture
// back; its counters:
//   pool_ms  the CPU pool's best frame, with queuing its tiles
//   ratio    the row's time over pool_ms
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "bench/pool_frame.h"
#include "bench/views.h"

namespace {

using bench::View;

// Sets the device up for the precision when it is not yet.
void useDevice(bool doublePrecision) {
    if (bOpenCLInitialised && bDoublePrecision == doublePrecision) return;
    release_opencl_resource(bDoublePrecision);
    bDoublePrecision = doublePrecision;
    setupOpenCL(load_kernel());
}

double deviceSeconds() {
    using Clock = std::chrono::steady_clock;
    const bench::MutedOutput muted;
    const auto start = Clock::now();
    renderFrameOpenCL();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// One iteration is a frame of the device and some of the pool's.
void compare(benchmark::State& state, const View& view, bool doublePrecision) {
    {
        const bench::MutedOutput muted;
        useDevice(doublePrecision);
    }
    bench::setView(view, view.maxIters, doublePrecision);
    bench::BestFrame pool(1);
    double device = deviceSeconds();  // the first launch compiles for its group size
    for (auto _ : state) {
        pool.render();
        device = std::min({device, deviceSeconds(), deviceSeconds()});
        state.SetIterationTime(device);
    }
    state.counters["pool_ms"] = 1e3 * pool.seconds;
    state.counters["ratio"] = device / pool.seconds;
}

void add(const View& view, bool doublePrecision) {
    const std::string name = std::string(view.label) + (doublePrecision ? "/double" : "/single");
    benchmark::RegisterBenchmark(name.c_str(),
                                 [&view, doublePrecision](benchmark::State& state) {
                                     compare(state, view, doublePrecision);
                                 })
        ->UseManualTime()
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
}

void addAll(bool doublePrecision) {
    for (const View& view : bench::views) add(view, doublePrecision);
    for (const View& view : bench::moreViews) add(view, doublePrecision);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    get_list_of_devices(devices, device_names, fp64_support, types, true);
    if (devices.empty()) return 1;  // the list was printed
    bench::startPool(static_cast<std::int32_t>(std::max(1u, std::thread::hardware_concurrency())));
    nCudaDevice = 0;
    addAll(false);
    if (fp64_support[0]) addAll(true);
    benchmark::RunSpecifiedBenchmarks();
    release_opencl_resource(bDoublePrecision);
    stopWorkers(false);
    return 0;
}

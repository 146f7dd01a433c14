// Seconds a frame, CPU pool against the first OpenCL device, for every built-in view in both
// precisions. One run measures both renderers, since only figures of one run compare.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "app/view_state.h"
#include "bench/views.h"
#include "compute/image.h"
#include "compute/opencl_backend.h"
#include "compute/palette.h"
#include "compute/renderer.h"
#include "compute/worker_pool.h"

namespace {

// Keeps the program's own lines out of the table.
class Muted {
  public:
    Muted() : saved(std::cout.rdbuf(nullptr)) {}
    ~Muted() {
        std::cout.rdbuf(saved);
        std::cout.clear();
    }
    Muted(const Muted&) = delete;
    Muted& operator=(const Muted&) = delete;

  private:
    std::streambuf* saved;
};

void setView(const bench::View& view) {
    xMin = view.xMin, xMax = view.xMax, yMin = view.yMin, yMax = view.yMax;
    cx = view.cx, cy = view.cy;
    maxIters = view.maxIters;
    maxSize = view.maxSize;
    currentFractalType = view.type;
}

// Sets the device up for the precision when it is not yet.
void useDevice(bool doublePrecision) {
    if (bOpenCLInitialised && bDoublePrecision == doublePrecision) return;
    release_opencl_resource(bDoublePrecision);
    bDoublePrecision = doublePrecision;
    setupOpenCL(load_kernel());
}

void renderOnPool() {
    queueFrame();
    waitForFrame();
}

void frameOnDevice(benchmark::State& state, const bench::View& view, bool doublePrecision) {
    const Muted muted;
    useDevice(doublePrecision);
    setView(view);
    renderFrameOpenCL();  // the first launch compiles for its group size
    for (auto _ : state) renderFrameOpenCL();
}

void frameOnPool(benchmark::State& state, const bench::View& view, bool doublePrecision) {
    const Muted muted;
    release_opencl_resource(bDoublePrecision);
    bDoublePrecision = doublePrecision;
    setView(view);
    for (auto _ : state) renderOnPool();
}

using Frame = void (*)(benchmark::State&, const bench::View&, bool);

void add(const bench::View& view, const char* renderer, bool doublePrecision, Frame frame) {
    const std::string name =
        std::string(view.label) + (doublePrecision ? "/double/" : "/single/") + renderer;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [&view, doublePrecision, frame](benchmark::State& state) {
                                     frame(state, view, doublePrecision);
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

// Both renderers of a view in a row, so that whatever else the machine does meets both.
void addAll() {
    for (const bool doublePrecision : {false, true}) {
        const bool onDevice = !devices.empty() && (!doublePrecision || fp64_support[0]);
        for (const bench::View& view : bench::views) {
            add(view, "cpu", doublePrecision, frameOnPool);
            if (onDevice) add(view, "device", doublePrecision, frameOnDevice);
        }
    }
}

void allocate() {
    tempColours = std::make_unique<unsigned char[]>(PALETTE_BYTES);
    badAssColourPalette = std::make_unique<unsigned char[]>(PALETTE_BYTES);
    buffer = std::make_unique<unsigned char[]>(imageBytes());
    updatePalette(0);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    allocate();
    get_list_of_devices(devices, device_names, fp64_support, types, true);
    const auto threads = std::max(1u, std::thread::hardware_concurrency());
    startWorkers(static_cast<std::int32_t>(threads));
    numCPUThreads = max_threads;
    nCudaDevice = 0;
    addAll();
    benchmark::RunSpecifiedBenchmarks();
    release_opencl_resource(bDoublePrecision);
    stopWorkers(false);
    return 0;
}

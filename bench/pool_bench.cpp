// pool_bench [MOST_THREADS [ROUNDS [FRAME...]]]: what the tile queue and the pool cost by
// themselves. Frames through the real queue with 1, 2, 4 ... MOST_THREADS workers (64), the numbers
// of workers by turns, ROUNDS times (7). FRAME is "empty", of empty tiles, or a view of
// bench/views.h, which is measured in both precisions; without one: the empty frame, cheap views, a
// start view and a deep one.
//
// The best round counts. "of 2" is its time beside that of two workers, "CPU" the least processor
// time that all threads of a round took together.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "backends/worker_pool.h"
#include "bench/pool_frame.h"
#include "bench/views.h"

namespace {

constexpr double TILES = 65536;

struct Best {
    std::int32_t threads;
    double seconds = 0, processorSeconds = 0;  // 0 before the first frame

    void add(const bench::FrameTime& time) {
        const bool first = seconds == 0;
        seconds = first ? time.seconds : std::min(seconds, time.seconds);
        processorSeconds =
            first ? time.processorSeconds : std::min(processorSeconds, time.processorSeconds);
    }
};

using Frame = std::function<bench::FrameTime(double shortest)>;

// The frame with each number of workers, by turns.
std::vector<Best> measure(const Frame& frame, int most, int rounds) {
    std::vector<Best> found;
    for (int threads = 1; threads <= most; threads *= 2) found.push_back({threads});
    for (int round = 0; round < rounds; ++round) {
        for (Best& best : found) {
            bench::allowThreads(best.threads);
            best.add(frame(best.seconds));
        }
    }
    return found;
}

void print(const std::string& name, const std::vector<Best>& found) {
    const double two = found[std::min<std::size_t>(1, found.size() - 1)].seconds;
    for (const Best& best : found) {
        std::printf("| %s | %d | %.2f | %.2f | %.2f | %.2f |\n", name.c_str(), best.threads,
                    1e-6 * TILES / best.seconds, 1e3 * best.seconds, best.seconds / two,
                    1e3 * best.processorSeconds);
    }
    std::fflush(stdout);
}

void measureView(const bench::View& view, int most, int rounds) {
    for (const bool doublePrecision : {false, true}) {
        bench::setView(view, view.maxIters, doublePrecision);
        print(std::string(view.label) + (doublePrecision ? " double" : " single"),
              measure(bench::wholeFrame, most, rounds));
    }
}

// Null when no view has that label.
const bench::View* viewNamed(std::string_view label) {
    for (const bench::View& view : bench::views) {
        if (view.label == label) return &view;
    }
    for (const bench::View& view : bench::moreViews) {
        if (view.label == label) return &view;
    }
    return nullptr;
}

void measureFrame(const std::string& name, int most, int rounds) {
    if (name == "empty") {
        print(name, measure(bench::emptyFrame, most, rounds));
    } else if (const bench::View* view = viewNamed(name)) {
        measureView(*view, most, rounds);
    } else {
        std::fprintf(stderr, "pool_bench: there is no view %s\n", name.c_str());
    }
}

int argument(int argc, char** argv, int index, int otherwise) {
    return argc > index ? std::max(1, std::atoi(argv[index])) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
    const int most = argument(argc, argv, 1, 64), rounds = argument(argc, argv, 2, 7);
    std::vector<std::string> frames(argv + std::min(argc, 3), argv + argc);
    if (frames.empty()) {
        frames = {"empty",       "Hermite",    "BarnsleySierpinski",
                  "JuliaRabbit", "Mandelbrot", "DeepSpiral"};
    }
    bench::startPool(most);
    std::printf(
        "| frame | threads | million tiles/s | ms | of 2 | CPU ms |\n"
        "|---|---:|---:|---:|---:|---:|\n");
    for (const std::string& frame : frames) measureFrame(frame, most, rounds);
    stopWorkers(false);
}

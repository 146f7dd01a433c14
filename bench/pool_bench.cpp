// pool_bench [MOST_THREADS [ROUNDS]]: what the tile queue and the pool cost by themselves. Tiles a
// second of frames through the real queue with 1, 2, 4 ... MOST_THREADS workers (64), for a frame
// of empty tiles and for cheap views, the numbers of workers by turns, ROUNDS times (7). The best
// round counts; "of 2" is its time beside that of two workers, "CPU" the least processor time that
// all threads of a round took together.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "backends/worker_pool.h"
#include "bench/pool_frame.h"
#include "bench/views.h"

namespace {

constexpr double TILES = 65536;

struct Best {
    std::int32_t threads;
    double seconds = 1e9, processorSeconds = 1e9;
};

using Frame = std::function<bench::FrameTime()>;

// The frame with each number of workers, by turns.
std::vector<Best> measure(const Frame& frame, int most, int rounds) {
    std::vector<Best> found;
    for (int threads = 1; threads <= most; threads *= 2) found.push_back({threads});
    for (int round = 0; round < rounds; ++round) {
        for (Best& best : found) {
            bench::allowThreads(best.threads);
            const bench::FrameTime time = frame();
            best.seconds = std::min(best.seconds, time.seconds);
            best.processorSeconds = std::min(best.processorSeconds, time.processorSeconds);
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

int argument(int argc, char** argv, int index, int otherwise) {
    return argc > index ? std::max(1, std::atoi(argv[index])) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
    const int most = argument(argc, argv, 1, 64), rounds = argument(argc, argv, 2, 7);
    bench::startPool(most);
    std::printf(
        "| frame | threads | million tiles/s | ms | of 2 | CPU ms |\n"
        "|---|---:|---:|---:|---:|---:|\n");
    print("empty", measure([] { return bench::emptyFrame(); }, most, rounds));
    for (const char* label : {"Hermite", "BarnsleySierpinski", "JuliaRabbit", "Mandelbrot"}) {
        for (const bool doublePrecision : {false, true}) {
            const bench::View& view = *std::ranges::find(
                bench::views, std::string(label), [](const bench::View& v) { return v.label; });
            bench::setView(view, view.maxIters, doublePrecision);
            print(std::string(label) + (doublePrecision ? " double" : " single"),
                  measure([] { return bench::wholeFrame(); }, most, rounds));
        }
    }
    stopWorkers(false);
}

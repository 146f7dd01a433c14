// bare_tiles FILE WIDTH HEIGHT THREADS: how many pictures a second the tile renderer alone makes of
// a catalogue, in double precision, on the bands that tessary-render cuts and with nothing packed
// or written.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "compute/saturate.h"
#include "compute/tile_renderer.h"
#include "render/encoder.h"
#include "render/plan.h"

namespace {

using Pixels = std::vector<unsigned char>;

// Computes the rows of a picture into the memory of one that is as wide.
void renderRows(const render::Job& job, render::RowRange rows, Pixels& picture) {
    const fractal& v = job.view;
    renderTileUntilStopped<double>(
        {0, rows.first, job.size.width, rows.end, job.size.width, job.size.height, v.xMin, v.xMax,
         v.yMin, v.yMax, v.cx, v.cy, static_cast<double>(truncateToInt(v.maxSize)), v.maxIters,
         picture.data(), job.palette->table.data()},
        v.fractalType);
}

// Computes bands of all pictures until there are no more.
void work(const std::vector<render::Job>& jobs, std::atomic<std::size_t>& next) {
    const render::Size size = jobs.front().size;
    const auto bands = static_cast<std::size_t>(render::bandCount(size));
    Pixels picture(4 * static_cast<std::size_t>(size.width) *
                   static_cast<std::size_t>(size.height));
    for (std::size_t index = next++; index < bands * jobs.size(); index = next++) {
        renderRows(jobs[index / bands], render::bandRows(size, static_cast<int>(index % bands)),
                   picture);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    render::Options options;
    options.size = render::WantedSize{std::atoi(argv[2]), std::atoi(argv[3])};
    const render::Source source = render::readSource(argv[1]);
    const auto jobs = render::planStills(options, source);
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> threads;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < std::atoi(argv[4]); ++i) threads.emplace_back([&] { work(jobs, next); });
    for (std::thread& thread : threads) thread.join();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%.2f\n", static_cast<double>(jobs.size()) / seconds.count());
}

// value_bench [ROUNDS]: what counts and smooth values cost beside the picture, for each rule.
//
// Each built-in view, 1920x1080, one thread, in the bands that a picture is cut into: the picture
// with the view's own limit, the values with the same limit and with the one that smooth colours
// take. The three take turns; of each the best processor time of all rounds counts. Prints a row a
// view: milliseconds of the picture, then both ratios, in single and in double precision.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

#include "bench/views.h"
#include "compute/pixels.h"
#include "compute/tile_renderer.h"
#include "compute/value_tile.h"

namespace {

constexpr int WIDTH = 1920, HEIGHT = 1080, BAND = 16;
constexpr std::size_t PIXELS = std::size_t{WIDTH} * HEIGHT;

double smoothLimit(const bench::View& v) {
    return v.type <= 1 || v.type >= 11 ? 65536 : v.maxSize;
}

// Processor time of this thread, in milliseconds: a busy machine does not count.
double threadTime() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

// Runs render(yStart, yEnd) for every band; milliseconds.
template <class Render>
double timed(Render&& render) {
    const double start = threadTime();
    for (int y = 0; y < HEIGHT; y += BAND) render(y, std::min(y + BAND, HEIGHT));
    return threadTime() - start;
}

template <class T>
class Measurement {
  public:
    explicit Measurement(const bench::View& v) : view(v) {}

    void round() {
        bands = std::min(bands, timed([&](int from, int to) { picture(from, to); }));
        same = std::min(same, timed([&](int from, int to) { values(from, to, view.maxSize); }));
        raised =
            std::min(raised, timed([&](int from, int to) { values(from, to, smoothLimit(view)); }));
    }

    void print() const { std::printf(" %8.1f %6.2f %6.2f", bands, same / bands, raised / bands); }

  private:
    void picture(int from, int to) {
        renderTileUntilStopped<T>(
            {0, from, WIDTH, to, WIDTH, HEIGHT, static_cast<T>(view.xMin),
             static_cast<T>(view.xMax), static_cast<T>(view.yMin), static_cast<T>(view.yMax),
             static_cast<T>(view.cx), static_cast<T>(view.cy), static_cast<T>(view.maxSize),
             view.maxIters, pixels.data(), palette.data()},
            view.type);
    }

    void values(int from, int to, double limit) {
        renderValues(ValueTile<T>{0, from, WIDTH, to, WIDTH, HEIGHT, static_cast<T>(view.xMin),
                                  static_cast<T>(view.xMax), static_cast<T>(view.yMin),
                                  static_cast<T>(view.yMax), static_cast<T>(view.cx),
                                  static_cast<T>(view.cy), static_cast<T>(limit), view.maxIters,
                                  nullptr, numbers.data(), 0, from, WIDTH},
                     view.type);
    }

    const bench::View& view;
    double bands = std::numeric_limits<double>::infinity(), same = bands, raised = bands;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(4 * PIXELS);
    std::vector<unsigned char> palette = std::vector<unsigned char>(PALETTE_BYTES, 1);
    std::vector<double> numbers = std::vector<double>(std::size_t{WIDTH} * BAND);
};

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 7;
    for (const bench::View& view : bench::views) {
        Measurement<float> single(view);
        Measurement<double> twice(view);
        for (int i = 0; i < rounds; ++i) {
            single.round();
            twice.round();
        }
        std::printf("%-20s", view.label);
        single.print();
        twice.print();
        std::printf("\n");
        std::fflush(stdout);
    }
}

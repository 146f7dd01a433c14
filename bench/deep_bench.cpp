// deep_bench PIXELS_WIDE PIXELS_HIGH CHECKED < PLACES: what deep pictures cost, tier by tier,
// processor time of one thread. Places are read as tests/deep/places.txt has them, a line each:
// name, "julia" or -, centre, width, constant (or - -), escape limit, iteration limit.
//
// Prints for each milliseconds of the reference with its tables, of the tables alone (what a frame
// of a flight costs before its first pixel) and of the picture, the share of
// pixels that the doubles and the pairs leave, microseconds a pixel, plain vectors of doubles where
// these are worth a look, and CHECKED pixels (0: none) by arithmetic of many digits: their
// microseconds, and how many differ.
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "compute/value_tile.h"
#include "deep/deep_picture.h"
#include "deep/tiers.h"

namespace {

double threadTime() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

struct Place {
    std::string name;
    deep::View view;
};

struct Run {
    double milliseconds;
    std::int64_t left;
    std::vector<std::int32_t> counts;
};

Run run(const deep::Picture& picture, const deep::View& v) {
    const auto pixels =
        static_cast<std::size_t>(v.pixelsWide) * static_cast<std::size_t>(v.pixelsHigh);
    Run r{0, 0, std::vector<std::int32_t>(pixels)};
    const double start = threadTime();
    r.left =
        picture.render(0, 0, v.pixelsWide, v.pixelsHigh, r.counts.data(), nullptr, v.pixelsWide);
    r.milliseconds = threadTime() - start;
    return r;
}

// Some pixels by digits alone.
void check(const deep::Picture& picture, const deep::View& v, const Run& all, int checked) {
    deep::useAlone(deep::Tier::digits);
    std::mt19937 random(1);
    int differing = 0;
    const double start = threadTime();
    for (int n = 0; n < checked; ++n) {
        const int x = static_cast<int>(random() % static_cast<unsigned>(v.pixelsWide));
        const int y = static_cast<int>(random() % static_cast<unsigned>(v.pixelsHigh));
        std::int32_t count = 0;
        picture.render(x, y, x + 1, y + 1, &count, nullptr, 1);
        if (count !=
            all.counts[static_cast<std::size_t>(y) * static_cast<std::size_t>(v.pixelsWide) +
                       static_cast<std::size_t>(x)]) {
            ++differing;
        }
    }
    std::printf("  digits %.1f us a pixel, %d of %d differ", (threadTime() - start) * 1e3 / checked,
                differing, checked);
    deep::useAllTiers();
}

// By the plain vectors of doubles: their time, and how many pixels they get wrong.
void comparePlain(const deep::View& v, const Run& all) {
    const double re = std::stod(v.re), im = std::stod(v.im), half = std::stod(v.width) / 2;
    const double tall = half * v.pixelsHigh / v.pixelsWide;
    std::vector<std::int32_t> counts(all.counts.size());
    const double start = threadTime();
    renderValues(ValueTile<double>{0, 0, v.pixelsWide, v.pixelsHigh, v.pixelsWide, v.pixelsHigh,
                                   re - half, re + half, im - tall, im + tall, 0, 0, v.limit,
                                   v.maxIters, counts.data(), nullptr, 0, 0, v.pixelsWide},
                 0);
    const double time = threadTime() - start;
    std::size_t wrong = 0;
    for (std::size_t n = 0; n < counts.size(); ++n) wrong += counts[n] != all.counts[n];
    std::printf("  plain %.1f ms, %.2f times, wrong %.3f", time, all.milliseconds / time,
                static_cast<double>(wrong) / static_cast<double>(counts.size()));
}

void measure(const Place& place, int checked) {
    const deep::View& v = place.view;
    const double pixels = static_cast<double>(v.pixelsWide) * v.pixelsHigh;
    const double start = threadTime();
    const deep::Picture picture(v);
    const double made = threadTime() - start;
    const deep::Picture next(v, picture);
    const double tables = threadTime() - start - made;
    deep::useAlone(deep::Tier::doubles);
    const Run first = run(picture, v);
    deep::useAlone(deep::Tier::pairs);
    const Run second = run(picture, v);
    deep::useAllTiers();
    const Run all = run(picture, v);
    double steps = 0;
    for (const std::int32_t n : all.counts) steps += n;
    std::printf(
        "%-20s reference %.1f ms, tables %.1f ms, doubles %.1f ms, leaving %.2e, all %.1f ms, "
        "undecided %lld, "
        "%.2f us a pixel, %.0f steps a pixel",
        place.name.c_str(), made, tables, first.milliseconds,
        static_cast<double>(first.left) / pixels, all.milliseconds,
        static_cast<long long>(all.left), (all.milliseconds + made) * 1e3 / pixels, steps / pixels);
    std::printf(", pairs leave %.1e", static_cast<double>(second.left) / pixels);
    if (std::strtod(v.width.c_str(), nullptr) > 1e-15 && v.cRe.empty()) comparePlain(v, all);
    if (checked > 0) check(picture, v, all, checked);
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    std::string name, kind, re, im, width, cRe, cIm;
    double limit = 0;
    int maxIters = 0;
    while (std::cin >> name >> kind >> re >> im >> width >> cRe >> cIm >> limit >> maxIters) {
        const bool julia = kind == "julia";
        measure({name,
                 {re, im, width, julia ? cRe : "", julia ? cIm : "", std::atoi(argv[1]),
                  std::atoi(argv[2]), limit, maxIters}},
                std::atoi(argv[3]));
    }
}

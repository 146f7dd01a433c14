#include "bench/mean_steps.h"

#include <algorithm>
#include <chrono>
#include <random>

#include "compute/formulas.h"
#include "compute/saturate.h"

namespace bench {
namespace {

constexpr int SIDE = 2048;

template <class T>
int countAt(const View& v, int iterationLimit, int x, int y) {
    int count = 0;
    visitRule(v.type, [&](auto rule) {
        count = pixelCount<decltype(rule)>(
            x, y, SIDE, SIDE, static_cast<T>(v.xMin), static_cast<T>(v.xMax),
            static_cast<T>(v.yMin), static_cast<T>(v.yMax), static_cast<T>(v.cx),
            static_cast<T>(v.cy), static_cast<T>(truncateToInt(v.maxSize)), iterationLimit);
    });
    return count;
}

}  // namespace

double meanSteps(const View& view, int iterationLimit, bool doublePrecision) {
    using Clock = std::chrono::steady_clock;
    std::mt19937 generator(1);
    std::uniform_int_distribution<int> place(0, SIDE - 1);
    const auto end = Clock::now() + std::chrono::milliseconds(300);
    double steps = 0;
    int pixels = 0;
    do {
        const int x = place(generator), y = place(generator);
        const int count = doublePrecision ? countAt<double>(view, iterationLimit, x, y)
                                          : countAt<float>(view, iterationLimit, x, y);
        steps += std::min(count + 1, iterationLimit);
        ++pixels;
    } while (pixels < 100 || (pixels < 20000 && Clock::now() < end));
    return steps / pixels;
}

}  // namespace bench

// What random views of both kinds of vector renderers have in common.
#pragma once

#include <cmath>
#include <cstdlib>
#include <random>

namespace vector_test {

// Numbers from a fixed seed. Not from the library's distributions: their results differ from one
// library to the next.
class RandomNumbers {
  public:
    explicit RandomNumbers(unsigned seed) : generator(seed) {}

    double uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(generator()) / 4294967296.0;
    }
    int pick(int low, int high) {
        return low + static_cast<int>(generator() % static_cast<unsigned>(high - low + 1));
    }

  private:
    std::mt19937 generator;
};

// A formula, a precision and a place in the plane, as deep as the precision goes.
template <class View>
void choosePlace(View& v, RandomNumbers& random) {
    v.type = random.pick(0, 13);
    v.doublePrecision = random.pick(0, 1) == 1;
    const double size = std::pow(10.0, -random.uniform(0, v.doublePrecision ? 14 : 6)) * 4;
    const double x = random.uniform(-2.2, 2.2), y = random.uniform(-1.6, 1.6);
    v.xMin = x - size;
    v.xMax = x + size;
    v.yMin = y - size * random.uniform(0.2, 2);
    v.yMax = y + size;
    v.cx = random.uniform(-1.7, 1.7);
    v.cy = random.uniform(-1.2, 1.2);
}

// How many steps and pixels, in tiles of at most `largestTile` pixels a side.
template <class View>
void chooseSizes(View& v, RandomNumbers& random, int largestTile) {
    v.maxIters = static_cast<int>(std::pow(10.0, random.uniform(0, 3.3)));
    v.width = random.pick(1, 50);
    v.height = random.pick(1, 50);
    v.tileWidth = random.pick(1, largestTile);
    v.tileHeight = random.pick(1, largestTile);
}

// How many random views: a few hundred by default, as many as TESSARY_RANDOM_VIEWS says.
inline int randomViews() {
    const char* asked = std::getenv("TESSARY_RANDOM_VIEWS");
    return asked != nullptr ? std::atoi(asked) : 350;
}

}  // namespace vector_test

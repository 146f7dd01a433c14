// Places built so that a condition of a faster way decides: random views do not show what happens
// without it.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <optional>

#include "compute/formulas.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/vector_support.h"

namespace {

using vector_test::allTargetsAgree;
using vector_test::Random;
using vector_test::View;

constexpr int JULIA = 1, DRAGON = 10;

// A view all of whose pixels start at z, so that a whole group of vectors has one orbit.
View pointView(int type, bool doublePrecision, std::complex<double> z, std::complex<double> c) {
    View v;
    v.type = type;
    v.doublePrecision = doublePrecision;
    v.xMin = v.xMax = z.real();
    v.yMin = v.yMax = z.imag();
    v.cx = c.real();
    v.cy = c.imag();
    v.maxIters = 300;
    v.width = v.height = 16;
    v.tileWidth = v.tileHeight = 8;
    return v;
}

// --- blocks without an escape test

// Whether the orbit passes the limit in a block after the first one and is back at that block's
// end, where it would be taken for one that never left.
template <class R, class T>
bool comesBackWithinABlock(cpuComplex<T> z, const cpuComplex<T>& c, T limit) {
    constexpr int ENDS[] = {8, 16, 24, 48, 72, 96};
    bool left = false;
    int steps = 0;
    for (const int end : ENDS) {
        for (; steps < end; ++steps) {
            z = R::step(z, c);
            left |= !(magnitudeSquared(z) <= limit);
        }
        if (left) return end > 8 && magnitudeSquared(z) <= limit;
    }
    return false;
}

// The start of such an orbit, by trial: near a point that repels it is slow to leave.
template <class R, class T>
std::optional<std::complex<double>> startThatComesBack(Random& random, std::complex<double> point,
                                                       std::complex<double> c, double limit) {
    for (int i = 0; i < 1000000; ++i) {
        const double size = std::pow(10.0, -random.uniform(0, sizeof(T) == 8 ? 15 : 6));
        const auto x = static_cast<T>(point.real() + size * random.uniform(-1, 1));
        const auto y = static_cast<T>(point.imag() + size * random.uniform(-1, 1));
        const cpuComplex<T> constant{static_cast<T>(c.real()), static_cast<T>(c.imag())};
        if (comesBackWithinABlock<R, T>({x, y}, constant, static_cast<T>(limit))) {
            return std::complex<double>(x, y);
        }
    }
    return std::nullopt;
}

template <class R>
void expectEscapesAreSeen(int type, std::complex<double> point, std::complex<double> c, int limit) {
    Random random(1);
    for (const bool doublePrecision : {false, true}) {
        const auto z = doublePrecision ? startThatComesBack<R, double>(random, point, c, limit)
                                       : startThatComesBack<R, float>(random, point, c, limit);
        ASSERT_TRUE(z.has_value()) << "no orbit comes back at c = " << c;
        View v = pointView(type, doublePrecision, *z, c);
        v.maxSize = limit;
        EXPECT_TRUE(allTargetsAgree(v, "return"));
    }
}

// The fixed point of z^2 + c that repels.
std::complex<double> squareFixedPoint(std::complex<double> c) {
    const std::complex<double> root = std::sqrt(1.0 - 4.0 * c);
    const std::complex<double> one = (1.0 + root) / 2.0, other = (1.0 - root) / 2.0;
    return std::abs(one) * std::abs(one) <= 4 ? one : other;
}

TEST(OrbitThatComesBack, HasEscapedUnderAConstantTooLargeForTheLimit) {
    constexpr std::complex<double> FAR(-2.05, 0.02), SIEGEL(-0.391, -0.587);
    expectEscapesAreSeen<JuliaRule>(JULIA, squareFixedPoint(FAR), FAR, 4);
    expectEscapesAreSeen<JuliaRule>(JULIA, 0, SIEGEL, 1);
}

TEST(OrbitThatComesBack, HasEscapedUnderAConstantTooSmallForTheDragon) {
    constexpr std::complex<double> SMALL(0.55, 0.1);
    expectEscapesAreSeen<DragonRule>(DRAGON, 1.0 - 1.0 / SMALL, SMALL, 4);
    expectEscapesAreSeen<DragonRule>(DRAGON, 0, {1.2, 0.1}, 1);
}

}  // namespace

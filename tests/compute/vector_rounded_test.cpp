// The correctly rounded functions on vectors, and orbits followed with them, have the bits of the
// scalar ones, with every instruction set.
#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "compute/formulas.h"
#include "compute/rounded_trig.h"
#include "tests/compute/hard_trig_arguments.h"
#include "tests/compute/rounded_vectors.h"
#include "tests/compute/trig_claims.h"

namespace {

using rounded_vectors::Escape;
using rounded_vectors::Point;

class EverySet : public testing::TestWithParam<vector_control::Target> {
  protected:
    EverySet() { trig_claims::forceTarget(GetParam().bit); }
    ~EverySet() override { trig_claims::forceTarget(0); }
};

// Any NaN is as good as another.
std::uint64_t bitsOf(double x) {
    return x != x ? 1 : std::bit_cast<std::uint64_t>(x);
}

void expectScalarFunctions(const std::vector<double>& arguments) {
    const auto found = rounded_vectors::functions(arguments);
    ASSERT_EQ(found.size(), arguments.size());
    for (std::size_t n = 0; n < arguments.size(); ++n) {
        const double x = arguments[n];
        const SineCosine t = sineCosine(x), h = hyperbolicSineCosine(x);
        ASSERT_EQ(bitsOf(found[n].trigonometric.sine), bitsOf(t.sine)) << std::hexfloat << x;
        ASSERT_EQ(bitsOf(found[n].trigonometric.cosine), bitsOf(t.cosine)) << std::hexfloat << x;
        ASSERT_EQ(bitsOf(found[n].hyperbolic.sine), bitsOf(h.sine)) << std::hexfloat << x;
        ASSERT_EQ(bitsOf(found[n].hyperbolic.cosine), bitsOf(h.cosine)) << std::hexfloat << x;
    }
}

TEST_P(EverySet, HasTheScalarFunctionsOfArgumentsOfEverySize) {
    std::mt19937_64 generator(21);
    const auto uniform = [&] { return static_cast<double>(generator()) / 18446744073709551616.0; };
    std::vector<double> arguments;
    for (int i = 0; i < 20000; ++i) {
        const double size = std::exp2(50 * uniform() - 38);
        arguments.push_back(i % 2 == 0 ? size : -size);
        arguments.push_back(16 * uniform() - 8);
    }
    expectScalarFunctions(arguments);
}

TEST_P(EverySet, HasTheScalarFunctionsNextToTheMiddleBetweenNumbers) {
    std::vector<double> arguments;
    for (const double x : HARD_TRIGONOMETRIC) arguments.insert(arguments.end(), {x, -x});
    for (const double x : HARD_HYPERBOLIC) arguments.insert(arguments.end(), {x, -x});
    expectScalarFunctions(arguments);
}

// Where the table's entries change and rests are small, sines are zero, or no table reaches.
TEST_P(EverySet, HasTheScalarFunctionsAtTheEndsOfItsSums) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity(), PI = 0x1.921fb54442d18p+1;
    std::vector<double> arguments = {0.0, -0.0, INFINITE, -INFINITE, INFINITE - INFINITE};
    for (const double end : {0x1p-27, 700.0, 710.0, 711.0, 3000.0, 1e300, 0x1p-1074}) {
        for (const double x : {end, std::nextafter(end, 0.0), std::nextafter(end, INFINITE)}) {
            arguments.insert(arguments.end(), {x, -x});
        }
    }
    for (int n = -2050; n <= 2050; ++n) {
        for (const double half : {0.0, 0.5}) arguments.push_back((n + half) * PI / 1024);
        arguments.push_back(n * std::log(2.0) / 256);
        arguments.push_back(n * PI / 2);
    }
    expectScalarFunctions(arguments);
}

cpuComplex<double> stepOf(int type, const cpuComplex<double>& z, const cpuComplex<double>& c) {
    if (type == 2) return sinC(z) + c;
    if (type == 3) return cosC(z) + c;
    if (type == 4) return sinhC(z) + c;
    return coshC(z) + c;
}

Escape scalarEscape(int type, const Point& p, double maxSize, int limit) {
    cpuComplex<double> z{0.0, 0.0};
    double before = 0;
    for (int count = 0; count < limit; ++count) {
        z = stepOf(type, z, {p.r, p.i});
        const double after = z.r * z.r + z.i * z.i;
        if (after > maxSize) return {static_cast<std::uint64_t>(count), before, after};
        before = after;
    }
    return {static_cast<std::uint64_t>(limit), 0, 0};
}

void expectScalarOrbits(int type, const std::vector<Point>& points, double maxSize, int limit) {
    for (const bool detect : {false, true}) {
        const auto found = rounded_vectors::follow(type, points, maxSize, limit, detect, nullptr);
        ASSERT_EQ(found.size(), points.size());
        for (std::size_t n = 0; n < points.size(); ++n) {
            const Escape truth = scalarEscape(type, points[n], maxSize, limit);
            ASSERT_EQ(found[n].count, truth.count) << points[n].r << ' ' << points[n].i;
            if (truth.count == static_cast<std::uint64_t>(limit)) continue;
            ASSERT_EQ(bitsOf(found[n].before), bitsOf(truth.before));
            ASSERT_EQ(bitsOf(found[n].after), bitsOf(truth.after));
        }
    }
}

TEST_P(EverySet, FollowsOrbitsThatEscapeAndOrbitsThatStay) {
    std::mt19937_64 generator(22);
    const auto uniform = [&] { return static_cast<double>(generator()) / 18446744073709551616.0; };
    for (int type = 2; type <= 5; ++type) {
        std::vector<Point> points;
        for (int n = 0; n < 101; ++n) points.push_back({16 * uniform() - 8, 10 * uniform() - 5});
        expectScalarOrbits(type, points, 128, 200);
        expectScalarOrbits(type, points, 4, 1);
        expectScalarOrbits(type, points, 1e300, 40);
        points.resize(1);
        expectScalarOrbits(type, points, 128, 50);
        expectScalarOrbits(type, points, 128, 0);
    }
}

TEST_P(EverySet, FollowsOrbitsThatAreNoNumbers) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    for (int type = 2; type <= 5; ++type) {
        expectScalarOrbits(type, {{none, 0.5}, {0.25, none}, {0.1, 0.1}, {9.0, 9.0}}, 128, 60);
    }
}

// Without the search for repeats a limit of 2^31 - 1 would take minutes.
TEST_P(EverySet, EndsOrbitsThatRepeat) {
    constexpr int LIMIT = std::numeric_limits<int>::max();
    const auto found = rounded_vectors::follow(3, {{0.1, 0.1}, {0.0, 0.0}, {-0.2, 0.1}}, 128, LIMIT,
                                               true, nullptr);
    ASSERT_EQ(found.size(), 3U);
    for (const Escape& e : found) EXPECT_EQ(e.count, std::uint64_t{LIMIT});
}

TEST_P(EverySet, GivesUpWhenToldToStop) {
    const std::atomic<bool> stop{true};
    EXPECT_TRUE(rounded_vectors::follow(2, {{0.1, 0.1}}, 128, 100, true, &stop).empty());
}

INSTANTIATE_TEST_SUITE_P(Rounded, EverySet, testing::ValuesIn(trig_claims::targets()),
                         [](const auto& of) { return of.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EverySet);

}  // namespace

// What the balls about a region's outline claim: every state in one steps into the next, as the
// rule computes it in either precision; and that an edge passes only where its orbits stay.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "compute/rules.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/region_claims.h"

namespace {

using region_claims::Ball;
using region_claims::ballAfterStep;
using region_claims::edgeStays;
using vector_test::Random;
using Point = cpuComplex<double>;

using Wide = cpuComplex<long double>;

constexpr long double V = 0x1p-24L;

template <class N>
Wide widened(const cpuComplex<N>& z) {
    return {static_cast<long double>(z.r), static_cast<long double>(z.i)};
}

long double lengthOf(const Wide& z) {
    return std::hypot(z.r, z.i);
}

Wide onCircle(Random& random, double radius) {
    const double turn = random.uniform(0, 6.2831853);
    return {radius * std::cos(turn), radius * std::sin(turn)};
}

double anySize(Random& random, double most) {
    return random.pick(0, 3) == 0 ? 0 : most * std::pow(10.0, -random.uniform(0, 5));
}

// What a step from z may round by.
long double rounding(long double size, const Wide& c) {
    return V * (3.7L * size * size + 1.5L * lengthOf(c));
}

template <class T>
cpuComplex<T> narrowed(const Wide& z) {
    return {static_cast<T>(z.r), static_cast<T>(z.i)};
}

TEST(RegionRoundings, AreNoLargerThanTheBallsAllowFor) {
    Random random(2);
    long double largest = 0;
    for (int i = 0; i < 500000; ++i) {
        const auto z = narrowed<float>(onCircle(random, anySize(random, 1.5)));
        const auto c = narrowed<float>(onCircle(random, anySize(random, 2)));
        const Wide exact = widened(z) * widened(z) + widened(c);
        const long double off = lengthOf(widened(JuliaRule::step(z, c)) - exact);
        const long double allowed = rounding(lengthOf(widened(z)), widened(c));
        ASSERT_LE(off, allowed);
        if (allowed > 0) largest = std::max(largest, off / allowed);
    }
    EXPECT_GT(largest, 0.5L);
}

// Balls of all sizes about middles of all sizes, so that each term is at times the largest. The
// state is where a step leads furthest from the middle's, or anywhere; what is added leads further
// still.
void expectStepsIntoTheNext(int tries) {
    Random random(5);
    for (int i = 0; i < tries; ++i) {
        const double turn = random.uniform(0, 6.2831853), size = anySize(random, 1.4);
        const Ball ball{
            {static_cast<float>(size * std::cos(turn)), static_cast<float>(size * std::sin(turn))},
            static_cast<float>(anySize(random, 1))};
        const Wide m = widened(ball.middle), c = onCircle(random, anySize(random, 2));
        const auto radius = static_cast<long double>(ball.radius);
        const Wide way = lengthOf(m) > 0 && random.pick(0, 3) > 0
                             ? Wide{m.r / lengthOf(m), m.i / lengthOf(m)}
                             : onCircle(random, 1);
        const Wide z{m.r + radius * way.r, m.i + radius * way.i};
        const Point constant = narrowed<double>(c);
        const Ball next = ballAfterStep(ball, constant);
        const Wide off = z * z + widened(constant) - widened(next.middle);
        ASSERT_LE(lengthOf(off) + rounding(1.5L, c), static_cast<long double>(next.radius))
            << "|m| " << size << " F " << ball.radius << " |c| " << lengthOf(c);
    }
}

template <class Check>
void onEveryTarget(Check&& check) {
    for (const auto& target : vector_control::targets()) {
        if (target.name == "scalar") continue;
        SCOPED_TRACE(target.name);
        region_claims::forceTarget(target.bit);
        check();
    }
    region_claims::forceTarget(0);
}

TEST(RegionBalls, StepIntoTheNextOnEveryInstructionSet) {
    onEveryTarget([] { expectStepsIntoTheNext(200000); });
}

// The edges of the cells that a point lies in the middle of.
CellEdge edgeAt(Random& random, double re, double im) {
    return {StayingRegion::cellOf(re), StayingRegion::cellOf(im), random.pick(0, 1) == 1};
}

template <class T>
bool staysFrom(cpuComplex<T> z, const cpuComplex<T>& c, int steps) {
    for (int n = 0; n < steps; ++n) {
        z = JuliaRule::step(z, c);
        if (magnitudeSquared(z) > T(2.25)) return false;
    }
    return true;
}

// Whether the orbits stay that begin on the edge or just beside it.
template <class T>
bool allStay(Random& random, const Horizon& h, const CellEdge& edge) {
    const cpuComplex<T> c{static_cast<T>(h.c.r), static_cast<T>(h.c.i)};
    for (int i = 0; i < 100; ++i) {
        const double along = i < 2 ? i : random.uniform(0, 1), beside = random.uniform(-1e-4, 1e-4);
        const double x = edge.x + (edge.across ? along : beside);
        const double y = edge.y + (edge.across ? beside : along);
        if (!staysFrom<T>({static_cast<T>(x / 64 - 2), static_cast<T>(y / 64 - 2)}, c, h.steps)) {
            return false;
        }
    }
    return true;
}

TEST(RegionEdge, PassesOnlyWhereItsOrbitsStay) {
    onEveryTarget([] {
        Random random(9);
        int passed = 0, failed = 0;
        for (int i = 0; i < 300; ++i) {
            const double angle = random.uniform(0, 6.2831853);  // c with a slope of length 1
            const double re = std::cos(angle) / 2, im = std::sin(angle) / 2;
            const Horizon h{{re - re * re + im * im, im - 2 * re * im}, random.pick(1, 900)};
            const CellEdge edge = edgeAt(random, random.uniform(-1, 1), random.uniform(-1, 1));
            if (!edgeStays(h, edge)) {
                ++failed;
                continue;
            }
            ++passed;
            ASSERT_TRUE(allStay<float>(random, h, edge) && allStay<double>(random, h, edge))
                << "c (" << h.c.r << ", " << h.c.i << ") edge " << edge.x << ", " << edge.y;
        }
        EXPECT_GT(passed, 30);
        EXPECT_GT(failed, 30);
    });
}

// The step after which the orbit of zero, which grows, is beyond 3/2.
int firstStepBeyond(double c) {
    int step = 0;
    for (double z = 0; z <= 1.5; ++step) z = z * z + c;
    return step;
}

TEST(RegionEdge, FailsWhereTheLastOfTheStepsLeaves) {
    onEveryTarget([] {
        EXPECT_FALSE(edgeStays({{1.6, 0}, 1}, {128, 128, true}));
        EXPECT_TRUE(edgeStays({{1.4, 0}, 1}, {128, 128, true}));
        EXPECT_FALSE(edgeStays({{1.4, 0}, 2}, {128, 128, true}));
        for (const double c : {0.3, 0.28, 0.27, 0.265, 0.262, 0.26, 0.258}) {
            const Horizon toTheEnd{{c, 0}, firstStepBeyond(c)};
            EXPECT_FALSE(edgeStays(toTheEnd, {128, 128, false})) << c;
            EXPECT_TRUE(edgeStays({{c, 0}, toTheEnd.steps - 2}, {128, 128, false})) << c;
        }
        const double nan = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(edgeStays({{nan, 0}, 5}, {128, 128, true}));
        EXPECT_FALSE(edgeStays({{0, nan}, 5}, {128, 128, true}));
    });
}

// At 95/64 of one part |z| passes 3/2 between 13/64 and 14/64 of the other.
TEST(RegionEdge, IsCoveredFromEndToEnd) {
    onEveryTarget([] {
        const Horizon none{{0, 0}, 0};
        for (const bool across : {false, true}) {
            const auto edge = [&](int far, int along) {
                return across ? CellEdge{128 + along, 128 + far, true}
                              : CellEdge{128 + far, 128 + along, false};
            };
            for (const int far : {95, -95}) {
                EXPECT_TRUE(edgeStays(none, edge(far, 12)));
                EXPECT_FALSE(edgeStays(none, edge(far, 13)));
                EXPECT_FALSE(edgeStays(none, edge(far, -14)));
                EXPECT_TRUE(edgeStays(none, edge(far, -13)));
            }
        }
    });
}

// The square of an end of length 1 is within 3/2 of -c by less than the ball about it reaches.
TEST(RegionEdge, IsCoveredUpToItsEnds) {
    constexpr double APART = 1.0 / 1024;
    onEveryTarget([] {
        for (const bool far : {false, true}) {
            const CellEdge across{far ? 191 : 64, 128, true}, upwards{128, far ? 191 : 64, false};
            EXPECT_FALSE(edgeStays({{0.4999 - 0.02 * APART, 0}, 1}, across));
            EXPECT_TRUE(edgeStays({{0.4999 - 0.2 * APART, 0}, 1}, across));
            EXPECT_FALSE(edgeStays({{-0.4999 + 0.02 * APART, 0}, 1}, upwards));
            EXPECT_TRUE(edgeStays({{-0.4999 + 0.2 * APART, 0}, 1}, upwards));
        }
    });
}

template <class T>
void expectLanesAgree() {
    Random random(3);
    StayingRegion region;
    region.any = true;
    for (auto& line : region.row) {
        for (auto& word : line) {
            const int high = random.pick(0, 0xffff), low = random.pick(0, 0xffff);
            word = static_cast<std::uint32_t>(high) << 16 | static_cast<std::uint32_t>(low);
        }
    }
    for (int y = 0; y < StayingRegion::CELLS; ++y) {
        for (int x = 0; x < StayingRegion::CELLS; ++x) {
            const double re = (x + random.uniform(0.001, 0.999)) / 64 - 2;
            const double im = (y + random.uniform(0.001, 0.999)) / 64 - 2;
            ASSERT_EQ(region_claims::inRegion(region, static_cast<T>(re), static_cast<T>(im)),
                      region.has(x, y))
                << x << ", " << y;
        }
    }
    for (auto& line : region.row) {
        for (auto& word : line) word = 0xffffffff;
    }
    const T inside(0.5), infinite = std::numeric_limits<T>::infinity();
    EXPECT_TRUE(region_claims::inRegion(region, inside, inside));
    for (const T outside : {T(2), T(2.5), T(-2), T(-4.2), T(1e30), infinite, -infinite,
                            std::numeric_limits<T>::quiet_NaN()}) {
        EXPECT_FALSE(region_claims::inRegion(region, outside, inside)) << outside;
        EXPECT_FALSE(region_claims::inRegion(region, inside, outside)) << outside;
    }
}

TEST(RegionLanes, AreThoseWhoseCellsItHas) {
    onEveryTarget([] {
        expectLanesAgree<float>();
        expectLanesAgree<double>();
    });
}

}  // namespace

// Orbits of the scalar trigonometric rules in float that are followed on vectors are the scalar
// rules' to the bit, and a ball about one holds what it says it holds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "compute/formulas.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/float_claims.h"
#include "tests/compute/hard_floats.h"

namespace {

using float_claims::Claim;
using float_claims::Part;
using float_claims::Point;
using vector_test::Random;
using Wide = std::complex<long double>;
using Counts = std::vector<std::uint64_t>;

constexpr double LARGEST_ARGUMENT = 43.6, LARGEST_BALL = 0x1p-4;
constexpr long double V = 0x1p-24L;

class FloatClaims : public testing::TestWithParam<std::size_t> {
  protected:
    FloatClaims() { float_claims::forceTarget(float_claims::targets()[GetParam()].bit); }
    ~FloatClaims() override { float_claims::forceTarget(0); }
};

cpuComplex<float> functionOf(int type, const cpuComplex<float>& z) {
    return type == 2 ? sinC(z) : type == 3 ? cosC(z) : type == 4 ? sinhC(z) : coshC(z);
}

Wide functionOf(int type, const Wide& z) {
    return type == 2   ? std::sin(z)
           : type == 3 ? std::cos(z)
           : type == 4 ? std::sinh(z)
                       : std::cosh(z);
}

Wide slopeOf(int type, const Wide& z) {
    return type == 2   ? std::cos(z)
           : type == 3 ? std::sin(z)
           : type == 4 ? std::cosh(z)
                       : std::sinh(z);
}

// Floats all over the range, close to multiples of pi/8 and odd ones of pi/16, and tiny ones.
float circularArgument(Random& random) {
    const double unit = random.among({0.39269908169872414, 0.19634954084936207});
    const auto near = static_cast<float>(random.pick(-220, 220) * unit);
    switch (random.pick(0, 4)) {
        case 0:
            return static_cast<float>(random.uniform(-LARGEST_ARGUMENT, LARGEST_ARGUMENT));
        case 1:
            return static_cast<float>(random.uniform(-4, 4));
        case 2:
            return std::nextafter(near, random.among({-100.0f, 100.0f}));
        case 3:
            return static_cast<float>(random.among({-1, 1}) *
                                      std::pow(10.0, -random.uniform(0, 44)));
        default:
            return near;
    }
}

float hyperbolicArgument(Random& random) {
    const auto half = static_cast<float>((2 * random.pick(-60, 60) + 1) * 0.34657359027997265);
    switch (random.pick(0, 5)) {
        case 0:
            return static_cast<float>(random.uniform(-LARGEST_ARGUMENT, LARGEST_ARGUMENT));
        case 1:
            return static_cast<float>(random.uniform(-8, 8));
        case 2:
            return static_cast<float>(std::pow(10.0, -random.uniform(0, 44)));
        case 3:
            return 0;
        case 4:
            return std::nextafter(half, random.among({-100.0f, 100.0f}));
        default:
            return static_cast<float>(random.uniform(-1.5, 1.5));
    }
}

testing::AssertionResult isWithin(long double value, long double truth, long double relative) {
    if (std::fabs(value - truth) <= relative * std::fabs(truth)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "off by 2^" << std::log2(std::fabs(value - truth) / std::fabs(truth));
}

TEST_P(FloatClaims, ProductsOfTheFactorsAreWithinTheirBoundOfThemselves) {
    Random random(1);
    for (int n = 0; n < 60000; ++n) {
        const double t = circularArgument(random), h = hyperbolicArgument(random);
        const auto f = float_claims::factors(t, h);
        const long double sin = std::sin(static_cast<long double>(t));
        const long double cos = std::cos(static_cast<long double>(t));
        const long double sinh = std::sinh(static_cast<long double>(h));
        const long double cosh = std::cosh(static_cast<long double>(h));
        ASSERT_TRUE(isWithin(f.sin * f.cosh, sin * cosh, 0x1p-42L)) << t << ", " << h;
        ASSERT_TRUE(isWithin(f.cos * f.cosh, cos * cosh, 0x1p-42L)) << t << ", " << h;
        ASSERT_TRUE(isWithin(f.sin * f.sinh, sin * sinh, 0x1p-42L)) << t << ", " << h;
        ASSERT_TRUE(isWithin(f.cos * f.sinh, cos * sinh, 0x1p-42L)) << t << ", " << h;
    }
}

// Each of them alone within what the derivation gives it, which leaves no coefficient room.
TEST_P(FloatClaims, EachFactorIsWithinItsShare) {
    Random random(2);
    for (int n = 0; n < 60000; ++n) {
        const double t = circularArgument(random), h = hyperbolicArgument(random);
        const auto f = float_claims::factors(t, h);
        const double sign = f.cosh < 0 ? -1 : 1;
        const long double wideT = t, wideH = h;
        ASSERT_TRUE(isWithin(sign * f.sin, std::sin(wideT), 0x1.1p-44L * 1.3L)) << t;
        ASSERT_TRUE(isWithin(sign * f.cos, std::cos(wideT), 0x1.1p-44L * 1.3L)) << t;
        ASSERT_TRUE(isWithin(sign * f.sinh, std::sinh(wideH), 0x1.1p-44L * 0.7L)) << h;
        ASSERT_TRUE(isWithin(sign * f.cosh, std::cosh(wideH), 0x1.1p-44L * 0.7L)) << h;
    }
}

double withUnitsAdded(double x, std::int64_t units) {
    std::int64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    bits += units;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

std::uint32_t floatBits(double x) {
    const auto narrow = static_cast<float>(x);
    std::uint32_t bits;
    std::memcpy(&bits, &narrow, sizeof bits);
    return bits;
}

// 2^-42 of a double is up to 2048 units in its last place, and the scalar rule's own product is 3
// more away.
constexpr int PRODUCT_UNITS = 2056;
constexpr auto PARTS = {Part::real, Part::imaginary};

TEST_P(FloatClaims, AProductThatRoundsSafelyRoundsAsItsNeighboursDo) {
    Random random(3);
    int safe = 0;
    for (int n = 0; n < 400000; ++n) {
        const double sized =
            static_cast<double>(static_cast<float>(random.uniform(1, 2))) *
            std::pow(2.0, random.among({random.pick(-152, 100), random.pick(-128, -124),
                                        random.pick(-3, 8)}));
        const std::int64_t bits = (std::int64_t{1} << random.among({28, 29})) * random.pick(0, 1);
        const int far = random.among({2, 3000, 9000, 30000});
        const double p =
            random.among({-1, 1}) * withUnitsAdded(sized, bits + random.pick(-far, far));
        if (!float_claims::roundsSafely(p, random.among(PARTS))) continue;
        ++safe;
        ASSERT_EQ(floatBits(withUnitsAdded(p, PRODUCT_UNITS)), floatBits(p)) << p;
        ASSERT_EQ(floatBits(withUnitsAdded(p, -PRODUCT_UNITS)), floatBits(p)) << p;
    }
    EXPECT_GT(safe, 100000);
    for (const Part part : PARTS) {
        EXPECT_TRUE(float_claims::roundsSafely(0.0, part));
        EXPECT_TRUE(float_claims::roundsSafely(-0.0, part));
        EXPECT_FALSE(float_claims::roundsSafely(0x1p-126, part));
        EXPECT_FALSE(float_claims::roundsSafely(0x1p-300, part));
    }
}

// Each one that does not costs a scalar evaluation.
TEST_P(FloatClaims, MostProductsRoundSafely) {
    Random random(4);
    int unsafe = 0;
    for (int n = 0; n < 200000; ++n) {
        const double whole = random.uniform(-1, 1) * std::pow(2.0, random.pick(-100, 120));
        unsafe += !float_claims::roundsSafely(withUnitsAdded(whole, random.pick(0, 1 << 30)),
                                              random.among(PARTS));
    }
    EXPECT_LT(unsafe, 16);  // 3 are to be expected
}

// A claim and the constant of the next step.
struct Situation {
    int type;
    Claim claim;
    float cr, ci;
};

Situation situation(Random& random) {
    Situation s{random.pick(2, 5),
                {circularArgument(random), hyperbolicArgument(random), 0},
                static_cast<float>(random.uniform(-4, 4)),
                static_cast<float>(random.uniform(-4, 4))};
    if (s.type > 3) std::swap(s.claim.r, s.claim.i);
    if (random.pick(0, 3) == 0) s.cr *= 10, s.ci *= 10;
    const auto value = functionOf(s.type, cpuComplex<float>{s.claim.r, s.claim.i});
    if (random.pick(0, 2) == 0) s.cr = -value.r, s.ci = -value.i;  // the sum cancels
    if (random.pick(0, 5) == 0) s.cr = s.ci = 0;
    s.claim.ball = random.among({LARGEST_BALL, LARGEST_BALL, 0x1p-6, 0x1p-10}) *
                   random.among({1.0, std::pow(2.0, -random.uniform(0, 30)), 0.0});
    return s;
}

testing::AssertionResult takesTheStepOfTheRule(int type, Point z, Point c) {
    const auto value = functionOf(type, cpuComplex<float>{z.r, z.i});
    const Claim next = float_claims::step(type, {z.r, z.i, 0x1p-8}, c.r, c.i, 1900);
    const bool same = floatBits(next.r) == floatBits(value.r + c.r) &&
                      floatBits(next.i) == floatBits(value.i + c.i);
    const bool zeros = next.r == value.r + c.r && next.i == value.i + c.i;  // their signs are free
    if (same || zeros) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "type " << type << " at (" << z.r << ", " << z.i
                                       << "), c (" << c.r << ", " << c.i << ")";
}

TEST_P(FloatClaims, TheNextStateIsTheRulesOwn) {
    Random random(5);
    for (int n = 0; n < 60000; ++n) {
        const Situation s = situation(random);
        ASSERT_TRUE(takesTheStepOfTheRule(s.type, {s.claim.r, s.claim.i}, {s.cr, s.ci}));
    }
    for (int type = 2; type <= 5; ++type) {
        for (const auto& [t, h] : vector_test::HARD_FLOATS) {
            const Point z = type < 4 ? Point{t, h} : Point{h, t};
            ASSERT_TRUE(takesTheStepOfTheRule(type, z, {0, 0}));
            ASSERT_TRUE(takesTheStepOfTheRule(type, z, {0.25f, -1}));
        }
    }
}

// Next to the smallest normal float, where a float has fewer bits.
TEST_P(FloatClaims, TheNextStateIsTheRulesOwnWhereItHardlyIsAny) {
    Random random(6);
    for (int n = 0; n < 60000; ++n) {
        const int type = random.among({2, 4});
        const double size = std::pow(2.0, -random.uniform(30, 75));
        const auto tiny = static_cast<float>(size);
        const auto other = static_cast<float>(random.uniform(0.5, 2) * 0x1p-126 / size);
        const bool swapped = random.pick(0, 1) == 1;
        const Point z = swapped ? Point{tiny, other} : Point{other, tiny};
        ASSERT_TRUE(takesTheStepOfTheRule(type, z, {0, 0}));
        ASSERT_TRUE(takesTheStepOfTheRule(5 - (type - 2) / 2, z, {0, 0}));
    }
}

// How far the next state of an orbit that now is e away may be from the next one of the claim,
// where every rounding of both is as large as it can be.
long double farthest(const Situation& s, const Wide& e) {
    const Wide z{s.claim.r, s.claim.i}, c{s.cr, s.ci};
    const Wide here = functionOf(s.type, z), there = functionOf(s.type, z + e);
    return std::abs(there - here) +
           V * (std::abs(here) + std::abs(here + c) + std::abs(there) + std::abs(there + c));
}

TEST_P(FloatClaims, TheNextBallHoldsAllOrbitsOfTheOneBefore) {
    Random random(7);
    for (int n = 0; n < 20000; ++n) {
        const Situation s = situation(random);
        const Claim next = float_claims::step(s.type, s.claim, s.cr, s.ci, HUGE_VAL);
        for (int k = 0; k < 16; ++k) {
            const Wide e = std::polar<long double>(s.claim.ball, 0.392699081698724154808L * k);
            ASSERT_LE(farthest(s, e), next.ball)
                << "type " << s.type << " at (" << s.claim.r << ", " << s.claim.i << ") within "
                << s.claim.ball << ", c (" << s.cr << ", " << s.ci << ")";
        }
    }
}

// A loose one would find fewer orbits that stay.
TEST_P(FloatClaims, TheNextBallIsHardlyLargerThanNeeded) {
    Random random(8);
    for (int n = 0; n < 20000; ++n) {
        const Situation s = situation(random);
        const long double h = s.type < 4 ? s.claim.i : s.claim.r, F = s.claim.ball;
        const long double slope = std::abs(slopeOf(s.type, {s.claim.r, s.claim.i}));
        const Claim next = float_claims::step(s.type, s.claim, s.cr, s.ci, HUGE_VAL);
        ASSERT_LE(next.ball,
                  (1.0002L * slope + 0.534L * F * std::cosh(h) + 0x1p-29L) * F +
                      V * (6.01L * std::cosh(h) + 4.01L * (std::fabs(s.cr) + std::fabs(s.ci))))
            << "type " << s.type << " at (" << s.claim.r << ", " << s.claim.i << ") within " << F;
    }
}

// From pi/2 the next state of sin z + c is 1 + c, and the ball next to nothing.
TEST_P(FloatClaims, ABallThatReachesOverTheLimitIsInfiniteAndStaysSo) {
    const float rest = 1.57079637f;
    const auto ball = [&](double now, double limit) {
        return float_claims::step(2, {rest, 0, now}, 0.5f, 0, limit).ball;
    };
    EXPECT_LT(ball(0x1p-10, 2.251), 0x1p-18);
    EXPECT_EQ(ball(0x1p-10, 2.25), HUGE_VAL);
    EXPECT_EQ(ball(0x1p-10, 2.2), HUGE_VAL);
    EXPECT_EQ(ball(HUGE_VAL, 1900), HUGE_VAL);
    // The state stays below the limit, its ball does not.
    EXPECT_LT(float_claims::step(2, {1, 0, 0x1p-5}, 0.5f, 0, 1900).ball, 0.02);
    EXPECT_EQ(float_claims::step(2, {1, 0, 0x1p-5}, 0.5f, 0, 1.82).ball, HUGE_VAL);
}

TEST_P(FloatClaims, AnOrbitStaysWhoseBallLiesInTheSavedOne) {
    Random random(9);
    int seen = 0;
    for (int n = 0; n < 60000; ++n) {
        const double radius = std::pow(2.0, -random.uniform(4, 20));
        const double away = random.uniform(0, 1.2) * radius, angle = random.uniform(0, 6.28);
        const auto r = static_cast<float>(random.uniform(-1, 1));
        const auto i = static_cast<float>(random.uniform(-1, 1));
        const Claim z{r, i, random.uniform(0, 1.1) * radius};
        const double savedR = r + away * std::cos(angle), savedI = i + away * std::sin(angle);
        const double needed = away + z.ball;
        const bool stays = float_claims::stays(z, savedR, savedI, radius);
        ASSERT_TRUE(!stays || needed <= radius * (1 + 1e-12)) << needed << ", radius " << radius;
        ASSERT_TRUE(stays || needed > 0.998 * radius) << needed << ", radius " << radius;
        seen += stays;
    }
    EXPECT_GT(seen, 10000);
}

TEST_P(FloatClaims, AnOrbitStaysThatRepeatsOrIsNoNumberAndNoOther) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(float_claims::stays({1, 2, HUGE_VAL}, 1, 2, 0x1p-8));
    EXPECT_FALSE(float_claims::stays({1, 2, HUGE_VAL}, 1, 2.0000002384185791, 0x1p-8));
    EXPECT_FALSE(float_claims::stays({1, 2, HUGE_VAL}, 1.0000001192092896, 2, 0x1p-8));
    EXPECT_TRUE(float_claims::stays({nan, 2, HUGE_VAL}, 1, 2, 0x1p-8));
    EXPECT_TRUE(float_claims::stays({1, nan, HUGE_VAL}, 1, 2, 0x1p-8));
    EXPECT_FALSE(float_claims::stays({1, 2, HUGE_VAL}, std::nan(""), std::nan(""), 0));
    EXPECT_FALSE(float_claims::stays({1, 2, 0x1p-8}, 1, 2.0001, 0x1p-8));
    EXPECT_FALSE(float_claims::stays({1, 2, 0x1p-7}, 1, 2.0001, 0x1p-8));
}

// --- whole orbits

std::uint64_t countOf(int type, Point c, float maxSize, int limit) {
    cpuComplex<float> z{0, 0};
    for (int count = 0; count < limit; ++count) {
        const auto value = functionOf(type, z);
        z = {value.r + c.r, value.i + c.i};
        if (z.r * z.r + z.i * z.i > maxSize) return static_cast<std::uint64_t>(count);
    }
    return static_cast<std::uint64_t>(std::max(limit, 0));
}

std::vector<Point> points(Random& random, std::size_t count, double size) {
    std::vector<Point> all(count);
    for (Point& p : all) {
        p = {static_cast<float>(random.uniform(-size, size)),
             static_cast<float>(random.uniform(-size, size))};
    }
    return all;
}

testing::AssertionResult countsAreTheRules(int type, const std::vector<Point>& all, float maxSize,
                                           int limit, bool detect) {
    const Counts found = float_claims::counts(type, all, maxSize, limit, detect);
    Counts expected;
    for (const Point& p : all) expected.push_back(countOf(type, p, maxSize, limit));
    if (found == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "type " << type << ", " << all.size() << " points, limit "
                                       << limit << (detect ? "" : ", without detection");
}

// One vector, more than one, and more than are in work at a time; limits around blocks and saves.
TEST_P(FloatClaims, CountsAreTheRulesForAnyNumberOfPixelsAndAnyLimit) {
    Random random(10);
    for (int type = 2; type <= 5; ++type) {
        for (const std::size_t count :
             std::vector<std::size_t>{1, 3, 4, 5, 7, 8, 9, 16, 17, 40, 256}) {
            for (const int limit : {1, 3, 4, 5, 16, 17, 24, 300}) {
                const bool detect = random.pick(0, 3) != 0;
                const float maxSize = random.among({4.0f, 128.0f, 1900.0f});
                ASSERT_TRUE(countsAreTheRules(type, points(random, count, random.among({1.5, 4.0})),
                                              maxSize, limit, detect));
            }
        }
    }
}

// At a limit that is |z|^2 of one of its states an orbit goes on, at the float below it ends there.
TEST_P(FloatClaims, CountsAreTheRulesWhereAStateLiesOnTheLimit) {
    Random random(12);
    for (int n = 0; n < 1000; ++n) {
        const int type = random.pick(2, 5), steps = random.pick(1, 6);
        const Point c = points(random, 1, 1.5).front();
        cpuComplex<float> z{0, 0};
        for (int step = 0; step < steps; ++step) {
            const auto value = functionOf(type, z);
            z = {value.r + c.r, value.i + c.i};
        }
        const float size = z.r * z.r + z.i * z.i;
        if (!(size < 1800)) continue;
        ASSERT_TRUE(countsAreTheRules(type, {c}, size, 40, true)) << size;
        ASSERT_TRUE(countsAreTheRules(type, {c}, std::nextafter(size, 0.0f), 40, true)) << size;
    }
}

// Some come back close to a saved state on their way out.
TEST_P(FloatClaims, CountsAreTheRulesWhereOrbitsEscapeLate) {
    struct Place {
        int type;
        double r, i, size;
    };
    Random random(13);
    for (const Place& at : {Place{5, -0.5655, 3.7812, 0.007}, Place{3, 1.2329, -2.3670, 0.02},
                            Place{2, 2.5187, 2.4712, 0.04}, Place{2, -1.1209, -1.5444, 0.3}}) {
        std::vector<Point> all = points(random, 250, at.size);
        for (Point& p : all) {
            p.r += static_cast<float>(at.r);
            p.i += static_cast<float>(at.i);
        }
        ASSERT_TRUE(countsAreTheRules(at.type, all, 128, 2000, true));
        ASSERT_TRUE(countsAreTheRules(at.type, all, 1800, 2000, true));
    }
}

// Where none escapes and none contracts, orbits go on to the limit or repeat.
TEST_P(FloatClaims, CountsAreTheRulesWhereOrbitsStay) {
    Random random(11);
    for (int type = 2; type <= 5; ++type) {
        std::vector<Point> all = points(random, 24, 0.4);
        all.push_back({0, 0});
        all.push_back({type == 2 ? 0.5707964f : 0.1f, 0});
        for (const int limit : {40, 1000, 3000}) {
            ASSERT_TRUE(countsAreTheRules(type, all, 1900, limit, true));
        }
    }
}

TEST_P(FloatClaims, CountsAreTheRulesOfPointsThatAreNoNumbersOrWithoutEnd) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<Point> all;
    for (const float r : {nan, inf, -inf, 0.1f, 3e38f, 1e-45f}) {
        for (const float i : {nan, inf, 0.2f, -3e38f, 0.0f}) all.push_back({r, i});
    }
    for (int type = 2; type <= 5; ++type) {
        for (const float maxSize : {0.0f, 4.0f, 1900.0f, -1.0f}) {
            ASSERT_TRUE(countsAreTheRules(type, all, maxSize, 60, true)) << maxSize;
        }
    }
}

TEST_P(FloatClaims, NothingIsCountedOnceToldToStop) {
    EXPECT_TRUE(float_claims::counts(2, {{0.1f, 0.2f}}, 128, 1000000, true, true).empty());
}

INSTANTIATE_TEST_SUITE_P(Target, FloatClaims,
                         testing::Range(std::size_t{0}, float_claims::targets().size()),
                         [](const testing::TestParamInfo<std::size_t>& target) {
                             return float_claims::targets()[target.param].name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FloatClaims);

}  // namespace

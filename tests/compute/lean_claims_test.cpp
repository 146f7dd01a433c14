// What the lean trigonometric orbits claim holds: the errors of their functions, the bounds of an
// orbit and of its ball, what is decided by them, and which orbits are said to stay.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "tests/compute/boundary_views.h"
#include "tests/compute/lean_claims.h"
#include "tests/compute/wide_trig.h"

namespace lean_claims {

std::ostream& operator<<(std::ostream& out, const Claim& z) {
    const auto digits = out.precision(17);
    out << "(" << z.r << ", " << z.i << ") within " << z.bound << ", ball " << z.ball;
    out.precision(digits);
    return out;
}

}  // namespace lean_claims

namespace {

using lean_claims::Claim;
using lean_claims::DOUBT;
using lean_claims::Precision;
using lean_claims::Slot;
using lean_claims::Slots;
using lean_claims::Verdict;
using vector_test::Random;
using wide_trig::differenceOver;
using wide_trig::Wide;

constexpr double LARGEST_BOUND = 0x1p-4, LARGEST_ARGUMENT = 43.6;

class LeanClaims : public testing::TestWithParam<std::tuple<std::size_t, Precision>> {
  protected:
    LeanClaims() { lean_claims::forceTarget(lean_claims::targets()[std::get<0>(GetParam())].bit); }
    ~LeanClaims() override { lean_claims::forceTarget(0); }

    const Precision precision = std::get<1>(GetParam());
    const long double u = precision == Precision::twice ? 0x1p-53L : 0x1p-24L;

    double rounded(double x) const {
        return precision == Precision::twice ? x : static_cast<double>(static_cast<float>(x));
    }
};

// Arguments all over the range, and close to where functions or reductions change.
double circularArgument(Random& random) {
    const double near = random.among({0.0, 1.0, -1.0}) * std::pow(10.0, -random.uniform(0, 18));
    switch (random.pick(0, 3)) {
        case 0:
            return random.uniform(-LARGEST_ARGUMENT, LARGEST_ARGUMENT);
        case 1:
            return random.uniform(-4, 4);
        case 2:
            return random.pick(-27, 27) * 1.5707963267948966 + near;
        default:
            return (2 * random.pick(-100, 100) + 1) * 0.19634954084936207 + near;
    }
}

double hyperbolicArgument(Random& random) {
    switch (random.pick(0, 5)) {
        case 0:
            return random.uniform(-LARGEST_ARGUMENT, LARGEST_ARGUMENT);
        case 1:
            return random.uniform(-8, 8);
        case 2:
            return std::pow(10.0, -random.uniform(0, 44));
        case 3:
            return 0;
        case 4:
            return (2 * random.pick(-60, 60) + 1) * 0.34657359027997265;
        default:
            return random.uniform(-1.5, 1.5);
    }
}

// As a vector and in units of cosh h, u each: 5.7 for the circular factors, 4.8 for the hyperbolic.
TEST_P(LeanClaims, TheProductsOfTheFactorsKeepTheirBound) {
    Random random(1);
    for (int n = 0; n < 60000; ++n) {
        const double t = rounded(circularArgument(random)), h = rounded(hyperbolicArgument(random));
        const auto f = lean_claims::factors(precision, t, h);
        const auto wide = [](double x) { return static_cast<long double>(x); };
        const long double cosh = std::cosh(wide(h)), sinh = std::sinh(wide(h));
        const long double sin = std::sin(wide(t)), cos = std::cos(wide(t));
        const long double one = std::hypot(wide(f.sin) * wide(f.cosh) - sin * cosh,
                                           wide(f.cos) * wide(f.sinh) - cos * sinh);
        const long double other = std::hypot(wide(f.cos) * wide(f.cosh) - cos * cosh,
                                             wide(f.sin) * wide(f.sinh) - sin * sinh);
        ASSERT_LE(one, 10.5L * u * cosh) << t << ", " << h;
        ASSERT_LE(other, 10.5L * u * cosh) << t << ", " << h;
        ASSERT_LE(std::fabs(std::fabs(wide(f.cosh)) - cosh), 4.8L * u * cosh) << h;
    }
}

TEST_P(LeanClaims, TheRootIsHardlyTooShort) {
    Random random(2);
    for (int n = 0; n < 20000; ++n) {
        const double x = rounded(std::pow(2.0, random.uniform(-60, 125)));
        const double root = lean_claims::root(precision, x), truth = std::sqrt(x);
        ASSERT_GE(root, truth * (1 - 0x1.1p-14)) << x;
        ASSERT_LE(root, truth * (1 + 0x1.1p-14)) << x;
    }
}

// A claim and the constant of the next step.
struct Situation {
    int type;
    Claim claim;
    double cr, ci;
};

Situation situation(Random& random, const std::vector<int>& exponents) {
    Situation s{random.pick(2, 5), {}, random.uniform(-4, 4), random.uniform(-4, 4)};
    const int exponent =
        exponents[static_cast<std::size_t>(random.pick(0, static_cast<int>(exponents.size()) - 1))];
    s.claim = {circularArgument(random), hyperbolicArgument(random),
               std::ldexp(LARGEST_BOUND, -exponent), 0};
    if (s.type > 3) std::swap(s.claim.r, s.claim.i);
    if (random.pick(0, 3) == 0) s.cr *= 10, s.ci *= 10;  // most of what a sum rounds away
    if (random.pick(0, 5) == 0) s.claim.bound = 0;
    s.claim.ball = std::max(s.claim.bound, random.among({0.0, LARGEST_BOUND, 0x1p-8, 0x1p-5}));
    const Wide value = wide_trig::valueOf(s.type, {s.claim.r, s.claim.i});
    if (random.pick(0, 2) == 0) {  // the sum cancels
        s.cr = static_cast<double>(-value.real());
        s.ci = static_cast<double>(-value.imag());
    }
    return s;
}

class LeanBounds : public LeanClaims {
  protected:
    // What the scalar rule's own roundings may add: a function within 3 u in double and 1 u in
    // float, and a sum. Taken as three and two times as much, for what is left of the claim.
    long double roundings(const Wide& value, const Wide& sum) const {
        const long double functionUnits = precision == Precision::twice ? 9 : 5;
        return u * (functionUnits * std::abs(value) + 2 * std::abs(sum));
    }

    // The farthest that the scalar rule's next state can be from that of `next` when it now is e
    // away from that of the claim.
    long double farthest(const Situation& s, const Wide& e, const Claim& next) const {
        const Wide z{s.claim.r, s.claim.i}, value = wide_trig::valueOf(s.type, z);
        const Wide change = differenceOver(s.type, z, e);
        const Wide sum = value + Wide{s.cr, s.ci};
        return std::abs(sum - Wide{next.r, next.i} + change) +
               roundings(value + change, sum + change);
    }

    testing::AssertionResult covers(const Situation& s, const Claim& next, double now,
                                    double after) const {
        for (int n = 0; n <= 16; ++n) {
            const long double turn = 0.392699081698724154808L * n;
            const Wide e = n == 16 ? 0 : std::polar<long double>(now, turn);
            const long double needed = farthest(s, e, next);
            if (needed > after) {
                return testing::AssertionFailure()
                       << "type " << s.type << " at " << s.claim << ", c (" << s.cr << ", " << s.ci
                       << "): " << needed << " > " << after;
            }
        }
        return testing::AssertionSuccess();
    }

    Situation roundedSituation(Random& random, const std::vector<int>& exponents) const {
        Situation s = situation(random, exponents);
        s.claim = {rounded(s.claim.r), rounded(s.claim.i), rounded(s.claim.bound),
                   rounded(s.claim.ball)};
        s.cr = rounded(s.cr);
        s.ci = rounded(s.ci);
        return s;
    }
};

TEST_P(LeanBounds, TheNextStateLiesWithinTheNextBoundAndTheBallWithinItsOwn) {
    Random random(3);
    for (int n = 0; n < 10000; ++n) {
        const Situation s = roundedSituation(random, {0, 0, 1, 4, 10, 20, 30, 45, 55});
        const Claim next = lean_claims::step(precision, s.type, s.claim, s.cr, s.ci);
        ASSERT_TRUE(covers(s, next, s.claim.bound, next.bound));
        ASSERT_TRUE(covers(s, next, s.claim.ball, next.ball));
    }
}

// A loose bound costs second counts of orbits that contract slowly.
TEST_P(LeanBounds, TheNextBoundIsHardlyLargerThanNeeded) {
    Random random(4);
    for (int n = 0; n < 10000; ++n) {
        const Situation s = roundedSituation(random, {0, 4, 10, 20, 40});
        const long double h = s.type < 4 ? s.claim.i : s.claim.r, E = s.claim.bound;
        const long double slope =
            std::abs(differenceOver(s.type, {s.claim.r, s.claim.i}, 1e-9L)) / 1e-9L;
        const Claim next = lean_claims::step(precision, s.type, s.claim, s.cr, s.ci);
        ASSERT_LE(next.bound,
                  (1.001L * slope + (0.535L * E + 1e-6L) * std::cosh(h)) * E +
                      u * (24.1L * std::cosh(h) + 4.1L * (std::fabs(s.cr) + std::fabs(s.ci))))
            << "type " << s.type << " at " << s.claim;
    }
}

// |z + e|^2 for the farthest and the nearest e within `distance`, roundings of the scalar rule's
// two squares and sum included.
std::pair<long double, long double> reachOf(const Claim& z, long double distance, long double u) {
    const long double length = std::hypot(static_cast<long double>(z.r), z.i);
    const long double far = length + distance, near = std::max(length - distance, 0.0L);
    return {near * near * (1 - 2 * u), far * far * (1 + 2 * u)};
}

Claim anywhere(Random& random) {
    const double size = random.among({2.0, 40.0, 1e-3, 0.0}) * random.uniform(0, 1);
    const double angle =
        random.pick(0, 2) == 0 ? random.uniform(0, 6.28) : random.pick(0, 7) * 0.78539816339744831;
    return {size * std::cos(angle), size * std::sin(angle), std::pow(2.0, -random.uniform(3, 60)),
            0};
}

TEST_P(LeanClaims, ADecisionHoldsForEveryStateWithinTheBound) {
    Random random(5);
    for (int n = 0; n < 100000; ++n) {
        Claim z = anywhere(random);
        if (random.pick(0, 7) == 0) z.bound = 0;
        z = {rounded(z.r), rounded(z.i), rounded(z.bound), 0};
        const auto [near, far] = reachOf(z, z.bound, u);
        const long double middle =
            static_cast<long double>(z.r) * z.r + static_cast<long double>(z.i) * z.i;
        const double limit = rounded(
            static_cast<double>(middle + (far - near + 8 * u * middle) *
                                             static_cast<long double>(random.uniform(-2, 2))));
        const Verdict verdict = lean_claims::decide(precision, z, limit);
        ASSERT_TRUE(verdict != Verdict::escaped || near > limit) << z << ", limit " << limit;
        ASSERT_TRUE(verdict != Verdict::stays || far <= limit) << z << ", limit " << limit;
        const long double margin =
            1.05L * z.bound * (2 * (std::fabs(z.r) + std::fabs(z.i)) + z.bound);
        const bool close = std::fabs(middle - limit) <= margin + 20 * u * middle;
        ASSERT_TRUE(verdict != Verdict::doubtful || close || z.bound > LARGEST_BOUND)
            << z << ", limit " << limit;
    }
}

TEST_P(LeanClaims, NoOrbitStaysWhoseBoundIsLargerThanTheLargest) {
    const double above = std::nextafter(static_cast<float>(LARGEST_BOUND), 1.0f);
    EXPECT_EQ(lean_claims::decide(precision, {0, 0, LARGEST_BOUND, 0}, 128), Verdict::stays);
    EXPECT_EQ(lean_claims::decide(precision, {0, 0, above, 0}, 128), Verdict::doubtful);
    for (const double bound : {std::nan(""), HUGE_VAL}) {
        for (const double limit : {-1.0, 0.0, 4.0, 1900.0}) {
            EXPECT_EQ(lean_claims::decide(precision, {1, 1, bound, 0}, limit), Verdict::doubtful);
            EXPECT_EQ(lean_claims::decide(precision, {std::nan(""), 1, 0, 0}, limit),
                      Verdict::doubtful);
        }
    }
}

TEST_P(LeanClaims, WhatIsSeenAtOnceToStayStaysWithADistanceThatIsNotTooLarge) {
    Random random(6);
    int seen = 0;
    for (int n = 0; n < 200000; ++n) {
        Claim z = anywhere(random);
        z = {rounded(z.r), rounded(z.i), 0, 0};
        const double distance =
            rounded(random.pick(0, 1) == 0 ? random.uniform(0, 0.2)
                                           : std::pow(2.0, -random.uniform(3, 60)));
        const double size = z.r * z.r + z.i * z.i;
        const double limit =
            rounded(random.pick(0, 1) == 0 ? size * (1 + std::pow(10.0, -random.uniform(0, 17)))
                                           : random.among({0.0, 0.1, 1.0, 4.0, 128.0, 1900.0}));
        if (!lean_claims::staysWithin(precision, z, distance, limit)) continue;
        ++seen;
        ASSERT_LE(distance, LARGEST_BOUND) << z << ", limit " << limit;
        ASSERT_LE(reachOf(z, distance, u).second, limit) << z << ", distance " << distance;
    }
    EXPECT_GT(seen, 20000);
    EXPECT_TRUE(lean_claims::staysWithin(precision, {1, 1, 0, 0}, 0x1p-20, 128));
    EXPECT_FALSE(lean_claims::staysWithin(precision, {1, 1, 0, 0}, std::nan(""), 128));
    EXPECT_FALSE(lean_claims::staysWithin(precision, {std::nan(""), 1, 0, 0}, 0, 128));
}

TEST_P(LeanClaims, ABallHasReturnedWhenItLiesInTheSavedOne) {
    Random random(7);
    int back = 0;
    for (int n = 0; n < 100000; ++n) {
        const double radius = rounded(std::pow(2.0, -random.uniform(4, 40)));
        const double away = random.uniform(0, 1.2) * radius, angle = random.uniform(0, 6.28);
        const double ball = rounded(random.uniform(0, 1.1) * radius);
        const double savedR = rounded(random.uniform(-1, 1)),
                     savedI = rounded(random.uniform(-1, 1));
        const Claim z{rounded(savedR + away * std::cos(angle)),
                      rounded(savedI + away * std::sin(angle)), 0, ball};
        const long double distance = std::hypot(static_cast<long double>(z.r) - savedR,
                                                static_cast<long double>(z.i) - savedI);
        const bool returned = lean_claims::returned(precision, z, savedR, savedI, radius);
        ASSERT_TRUE(!returned || distance + ball <= radius) << z << ", radius " << radius;
        ASSERT_TRUE(returned || !(distance + ball < 0.998L * radius)) << z << ", radius " << radius;
        back += returned;
    }
    EXPECT_GT(back, 10000);
    for (const double ball : {std::nan(""), HUGE_VAL, 0x1p-8, 0x1p-7}) {
        EXPECT_FALSE(lean_claims::returned(precision, {1, 1, 0, ball}, 1, 1, 0x1p-8)) << ball;
    }
    EXPECT_FALSE(lean_claims::returned(precision, {std::nan(""), 1, 0, 0}, 1, 1, 0x1p-8));
}

// --- slots

// Fills three vectors of the widest instruction set in double, the last of them in part.
constexpr std::size_t COUNT = 21;
constexpr std::uint64_t UNKNOWN = 1000;

// Of sin z + c with c = pi/2 - 1: it rests at pi/2, where its slope is 0.
std::vector<Slot> restingOrbits(double ball) {
    const double rest = static_cast<double>(static_cast<float>(1.5707963267948966));
    const double c = static_cast<double>(static_cast<float>(0.5707963267948966));
    std::vector<Slot> slots;
    for (std::size_t n = 0; n < COUNT; ++n) {
        slots.push_back({{rest, 0, 0, ball}, rest, 0, ball, c, 0, true, UNKNOWN});
    }
    return slots;
}

TEST_P(LeanClaims, AnOrbitWhoseBallReturnsEndsAsOneThatStays) {
    for (std::size_t n = 0; n < COUNT; ++n) {
        std::vector<Slot> slots = restingOrbits(0x1p-8);
        for (std::size_t m = 0; m < COUNT; ++m) {
            if (m != n) slots[m].savedR = 1;
        }
        const Slots after = lean_claims::advance(precision, 2, slots, 128, 4, 16, true);
        EXPECT_EQ(after.alive, COUNT - 1);
        for (std::size_t m = 0; m < COUNT; ++m) {
            EXPECT_EQ(after.slots[m].live, m != n);
            EXPECT_EQ(after.slots[m].count, UNKNOWN);
        }
    }
}

TEST_P(LeanClaims, WithoutBallsNothingReturns) {
    const Slots after =
        lean_claims::advance(precision, 2, restingOrbits(0x1p-8), 128, 4, 16, false);
    EXPECT_EQ(after.alive, COUNT);
}

// The bound is 0 and the state itself stays: only the ball reaches over the limit, in the first of
// the steps, after which it shrinks to nothing.
TEST_P(LeanClaims, ABallThatOnceReachedOverTheLimitNeverReturns) {
    std::vector<Slot> slots = restingOrbits(0x1p-5);
    for (Slot& slot : slots) {
        slot.now.r = 1.2;  // the first ball is about 0.01 long, of slope 0.36
        slot.savedRadius = 0x1p-5;
    }
    const double rest = 1.5707963267948966;
    EXPECT_EQ(lean_claims::advance(precision, 2, slots, 128, 8, 16, true).alive, 0u);
    const Slots after =
        lean_claims::advance(precision, 2, slots, rest * rest * 1.0001, 8, 16, true);
    EXPECT_EQ(after.alive, COUNT);
    for (const Slot& slot : after.slots) {
        EXPECT_TRUE(std::isinf(slot.now.ball));
        EXPECT_LT(slot.now.bound, 1e-5);
    }
    EXPECT_EQ(lean_claims::advance(precision, 2, after.slots, 128, 8, 24, true).alive, COUNT);
}

TEST_P(LeanClaims, ABallIsLaidAroundTheStateNoSmallerThanItsBound) {
    std::vector<Slot> slots = restingOrbits(0);
    for (std::size_t n = 0; n < COUNT; n += 2) slots[n].now.bound = 0x1p-5;
    for (Slot& slot : slots) slot.savedR = slot.savedI = 7;
    const Slots after = lean_claims::save(precision, slots, 0x1p-8);
    EXPECT_EQ(after.alive, COUNT);
    for (std::size_t n = 0; n < COUNT; ++n) {
        const Slot& slot = after.slots[n];
        const double radius = n % 2 == 0 ? 0x1p-5 : 0x1p-8;
        EXPECT_EQ(slot.now.ball, radius);
        EXPECT_EQ(slot.savedRadius, radius);
        EXPECT_EQ(slot.savedR, slots[n].now.r);
        EXPECT_EQ(slot.savedI, slots[n].now.i);
        EXPECT_EQ(slot.now.bound, slots[n].now.bound);
    }
}

TEST_P(LeanClaims, OrbitsThatStayTakeTheStepsOfTheClaims) {
    for (int type = 2; type <= 5; ++type) {
        std::vector<Slot> slots = restingOrbits(0x1p-8);
        for (std::size_t n = 0; n < COUNT; ++n) {
            slots[n].now.r = rounded(0.01 * static_cast<double>(n + 1));
            slots[n].now.i = -slots[n].now.r;
            slots[n].savedR = 9;
        }
        const Slots after = lean_claims::advance(precision, type, slots, 1e3, 3, 0, true);
        EXPECT_EQ(after.alive, COUNT);
        for (std::size_t n = 0; n < COUNT; ++n) {
            Claim z = slots[n].now;
            for (int i = 0; i < 3; ++i) {
                z = lean_claims::step(precision, type, z, slots[n].cr, slots[n].ci);
            }
            EXPECT_EQ(after.slots[n].now.r, z.r);
            EXPECT_EQ(after.slots[n].now.i, z.i);
            EXPECT_EQ(after.slots[n].now.bound, z.bound);
            EXPECT_EQ(after.slots[n].now.ball, z.ball);
            EXPECT_EQ(after.slots[n].count, UNKNOWN);
        }
    }
}

// sinh leaves the limit with its first step from 3, with its second from 1.5.
TEST_P(LeanClaims, AnOrbitEndsWithTheNumberOfItsStepOrInDoubtAndOnce) {
    for (std::size_t n = 0; n < COUNT; ++n) {
        std::vector<Slot> slots = restingOrbits(0x1p-8);
        for (Slot& slot : slots) slot.now.r = 0.01, slot.cr = 0.25, slot.savedR = 9;
        const std::size_t second = (n + 1) % COUNT, dead = (n + 2) % COUNT, hazy = (n + 3) % COUNT;
        slots[n].now = {3, 0, 0, 0};
        slots[second].now = {1.5, 0, 0, 0};
        slots[dead].now.r = 3, slots[dead].live = false, slots[dead].count = 5;
        slots[hazy].now = {1.5, 0, 1, 1};
        const Slots after = lean_claims::advance(precision, 4, slots, 30, 4, 40, true);
        EXPECT_EQ(after.alive, COUNT - 4);
        for (std::size_t m = 0; m < COUNT; ++m) {
            const bool ended = m == n || m == second || m == dead || m == hazy;
            EXPECT_EQ(after.slots[m].live, !ended);
            EXPECT_EQ(after.slots[m].count, m == n        ? 40
                                            : m == second ? 41
                                            : m == dead   ? 5
                                            : m == hazy   ? DOUBT
                                                          : UNKNOWN);
        }
    }
}

std::string nameOf(const testing::TestParamInfo<std::tuple<std::size_t, Precision>>& info) {
    return lean_claims::targets()[std::get<0>(info.param)].name +
           (std::get<1>(info.param) == Precision::twice ? "Double" : "Single");
}

const auto everyTarget =
    testing::Combine(testing::Range(std::size_t{0}, lean_claims::targets().size()),
                     testing::Values(Precision::single, Precision::twice));

INSTANTIATE_TEST_SUITE_P(Target, LeanClaims, everyTarget, nameOf);
INSTANTIATE_TEST_SUITE_P(Target, LeanBounds, everyTarget, nameOf);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LeanClaims);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LeanBounds);

}  // namespace

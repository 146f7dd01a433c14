// What the trigonometric renderer claims holds: the bound of an orbit's error, the decisions taken
// by it, the roundings said to be safe.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "compute/formulas.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/hard_floats.h"
#include "tests/compute/trig_claims.h"
#include "tests/compute/wide_trig.h"

namespace trig_claims {

std::ostream& operator<<(std::ostream& out, const Claim& z) {
    return out << "(" << z.r << ", " << z.i << ") within " << z.bound;
}

}  // namespace trig_claims

namespace {

using trig_claims::Claim;
using trig_claims::Verdict;
using vector_test::Random;
using wide_trig::differenceOver;
using wide_trig::Wide;

constexpr long double U = 0x1p-53L;

// What the yardstick's evaluation may add: 9 u to each part of the function, u to each part of the
// sum with c.
constexpr long double FUNCTION_UNITS = 9, SUM_UNITS = 1;

long double sumOfMagnitudes(const Wide& z) {
    return std::fabs(z.real()) + std::fabs(z.imag());
}

long double hyperbolicArgument(int type, const Wide& z) {
    return type == 2 || type == 3 ? z.imag() : z.real();
}

class TrigClaims : public testing::TestWithParam<std::size_t> {
  protected:
    TrigClaims() { trig_claims::forceTarget(trig_claims::targets()[GetParam()].bit); }
    ~TrigClaims() override { trig_claims::forceTarget(0); }
};

// A claim and the constant of the next step.
struct Situation {
    int type;
    Claim claim;
    double cr, ci;
};

// Arguments all over the range, and close to where the functions or their slopes vanish.
double trigonometricArgument(Random& random) {
    const double near = random.among({0.0, 1.0}) * std::pow(10.0, -random.uniform(0, 18));
    switch (random.pick(0, 3)) {
        case 0:
            return random.uniform(-299, 299);
        case 1:
            return random.uniform(-4, 4);
        default:
            return random.pick(-6, 6) * 1.5707963267948966 + near;
    }
}

double hyperbolicArgument(Random& random) {
    switch (random.pick(0, 4)) {
        case 0:
            return random.uniform(-299, 299);
        case 1:
            return random.uniform(-8, 8);
        case 2:
            return std::pow(10.0, -random.uniform(0, 300));
        case 3:
            return 0;
        default:
            return random.uniform(-1.5, 1.5);
    }
}

Situation situation(Random& random) {
    Situation s{random.pick(2, 5), {}, random.uniform(-4, 4), random.uniform(-4, 4)};
    const double trigonometric = trigonometricArgument(random);
    const double hyperbolic = hyperbolicArgument(random);
    s.claim = {trigonometric, hyperbolic, std::pow(2.0, -random.uniform(8, 62))};
    if (s.type > 3) std::swap(s.claim.r, s.claim.i);
    if (random.pick(0, 5) == 0) s.claim.bound = 0;
    if (random.pick(0, 5) == 0) s.claim.bound = random.uniform(0, 2);
    const Wide value = wide_trig::valueOf(s.type, {s.claim.r, s.claim.i});
    const double nothing[] = {0, 1e-300};
    switch (random.pick(0, 3)) {
        case 0:  // the sum cancels
            s.cr = static_cast<double>(-value.real());
            s.ci = static_cast<double>(-value.imag());
            break;
        case 1:
            s.cr = random.among(nothing);
            s.ci = random.among(nothing);
            break;
        default:
            break;
    }
    return s;
}

// The farthest that the yardstick's next state can be from that of `next` when it now is e away
// from that of the claim.
long double farthest(const Situation& s, const Wide& e, const Claim& next) {
    const Wide z{s.claim.r, s.claim.i}, value = wide_trig::valueOf(s.type, z);
    const Wide change = differenceOver(s.type, z, e);
    const Wide sum = value + Wide{s.cr, s.ci};
    return std::abs(sum - Wide{next.r, next.i} + change) +
           U * (FUNCTION_UNITS * sumOfMagnitudes(value + change) +
                SUM_UNITS * sumOfMagnitudes(sum + change));
}

TEST_P(TrigClaims, TheNextStateLiesWithinTheNextBound) {
    Random random(1);
    for (int i = 0; i < 40000; ++i) {
        const Situation s = situation(random);
        // Only orbits of which it is certain that they stay go on.
        if (trig_claims::decide(s.claim, 1e6) != Verdict::stays) continue;
        const Claim next = trig_claims::step(s.type, s.claim, s.cr, s.ci);
        for (int n = 0; n <= 8; ++n) {
            const long double turn = 0.785398163397448309616L * n;
            const Wide e = n == 8 ? 0 : std::polar<long double>(s.claim.bound, turn);
            ASSERT_FALSE(farthest(s, e, next) > next.bound)
                << "type " << s.type << " at " << s.claim << ", c (" << s.cr << ", " << s.ci
                << "): " << farthest(s, e, next) << " > " << next.bound;
        }
    }
}

// A loose bound costs second counts of orbits that contract slowly.
TEST_P(TrigClaims, TheNextBoundIsHardlyLargerThanNeeded) {
    Random random(2);
    for (int i = 0; i < 40000; ++i) {
        const Situation s = situation(random);
        if (s.claim.bound > 0x1p-10) continue;
        const Wide z{s.claim.r, s.claim.i}, value = wide_trig::valueOf(s.type, z);
        if (!(std::abs(value) < 1e100L)) continue;
        const long double E = s.claim.bound;
        const long double curvature = std::cosh(hyperbolicArgument(s.type, z));
        const long double evaluation =
            sumOfMagnitudes(value) + sumOfMagnitudes(value + Wide{s.cr, s.ci});
        const Claim next = trig_claims::step(s.type, s.claim, s.cr, s.ci);
        ASSERT_LE(next.bound,
                  1.01L * (std::abs(wide_trig::slopeOf(s.type, z)) + 0.51L * E * curvature) * E +
                      100 * U * evaluation + 1e-300L)
            << "type " << s.type << " at " << s.claim << ", c (" << s.cr << ", " << s.ci << ")";
    }
}

TEST_P(TrigClaims, ADecisionHoldsForEveryStateWithinTheBound) {
    Random random(3);
    for (int i = 0; i < 200000; ++i) {
        const double size = random.among({2.0, 300.0, 1e-3, 0.0}) * random.uniform(0, 1);
        const double angle = random.pick(0, 2) == 0 ? random.uniform(0, 6.28)
                                                    : random.pick(0, 7) * 0.78539816339744831;
        Claim z{size * std::cos(angle), size * std::sin(angle),
                std::pow(2.0, -random.uniform(0, 62))};
        if (random.pick(0, 7) == 0) z.bound = 0;
        if (random.pick(0, 3) == 0) (random.pick(0, 1) == 0 ? z.r : z.i) = 0;
        const long double length = std::hypot(static_cast<long double>(z.r), z.i), E = z.bound;
        const long double far = (length + E) * (length + E) * (1 + 2 * U);
        const long double near = length > E ? (length - E) * (length - E) * (1 - 2 * U) : 0;
        const long double middle = length * length;
        const double limit =
            static_cast<double>(middle + (far - near + 8 * U * middle) *
                                             static_cast<long double>(random.uniform(-2, 2)));
        const Verdict verdict = trig_claims::decide(z, limit);
        const long double margin = 1.05L * E * (2 * (std::fabs(z.r) + std::fabs(z.i)) + E);
        const bool close = std::fabs(middle - limit) <= margin + 12 * U * middle;
        ASSERT_TRUE(verdict != Verdict::escaped || near > limit) << z << ", limit " << limit;
        ASSERT_TRUE(verdict != Verdict::stays || far <= limit) << z << ", limit " << limit;
        ASSERT_TRUE(verdict != Verdict::doubtful || close || E > 0x1p-10L)
            << z << ", limit " << limit;
    }
}

TEST_P(TrigClaims, NothingIsDecidedByABoundThatIsNoNumber) {
    for (const double bound : {std::nan(""), HUGE_VAL}) {
        for (const double limit : {-1.0, 0.0, 4.0, 90000.0}) {
            EXPECT_EQ(trig_claims::decide({1, 1, bound}, limit), Verdict::doubtful);
            EXPECT_EQ(trig_claims::decide({std::nan(""), 1, 0}, limit), Verdict::doubtful);
        }
    }
}

double withUnitsAdded(double x, std::int64_t units) {
    std::int64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    bits += units;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// How far the yardstick's product may be from the vectors' one: 27 units in the last place, more
// than the 21 u by which they differ at most.
constexpr int PRODUCT_UNITS = 27;

std::uint32_t floatBits(double x) {
    const auto narrow = static_cast<float>(x);
    std::uint32_t bits;
    std::memcpy(&bits, &narrow, sizeof bits);
    return bits;
}

// Doubles of all sizes around the float's range, most of them close to the middle of two floats.
double product(Random& random) {
    const double sign = random.among({-1.0, 1.0});
    const double floatSized =
        static_cast<double>(static_cast<float>(random.uniform(1, 2))) *
        std::pow(2.0, random.among({random.pick(-152, 128), random.pick(-128, -124),
                                    random.pick(124, 128), random.pick(-3, 8)}));
    const int shift = random.pick(0, 2) == 0 ? random.pick(27, 33) : 28;
    const std::int64_t bits = (std::int64_t{1} << shift) * random.pick(0, 1);
    const int far = random.among({2, 40, 3000});
    return sign * withUnitsAdded(floatSized, bits + random.pick(-far, far));
}

TEST_P(TrigClaims, AProductThatRoundsSafelyRoundsAsItsNeighboursDo) {
    Random random(4);
    for (int i = 0; i < 400000; ++i) {
        const double p = product(random);
        if (!trig_claims::roundsSafely(p)) continue;
        const std::uint32_t bits = floatBits(p);
        ASSERT_EQ(floatBits(withUnitsAdded(p, PRODUCT_UNITS)), bits) << p;
        ASSERT_EQ(floatBits(withUnitsAdded(p, -PRODUCT_UNITS)), bits) << p;
    }
    EXPECT_FALSE(trig_claims::roundsSafely(std::nan("")));
}

// Each one that does not costs a scalar evaluation.
TEST_P(TrigClaims, MostProductsRoundSafely) {
    Random random(5);
    EXPECT_TRUE(trig_claims::roundsSafely(0.0));
    EXPECT_TRUE(trig_claims::roundsSafely(-0.0));
    int unsafe = 0;
    for (int i = 0; i < 200000; ++i) {
        const double whole = random.uniform(-1, 1) * std::pow(2.0, random.pick(-100, 120));
        unsafe += !trig_claims::roundsSafely(withUnitsAdded(whole, random.pick(0, 1 << 30)));
    }
    EXPECT_LT(unsafe, 20);
}

constexpr long double SINE_UNITS = 6, HYPERBOLIC_UNITS = 11;

long double unitsOff(double value, long double truth) {
    if (truth == 0) return value == 0 ? 0 : HUGE_VALL;
    return std::fabs((static_cast<long double>(value) - truth) / truth) / U;
}

TEST_P(TrigClaims, TheFactorsKeepTheirBounds) {
    Random random(6);
    for (int i = 0; i < 40000; ++i) {
        double t = trigonometricArgument(random), h = hyperbolicArgument(random);
        if (random.pick(0, 3) == 0) {
            t = random.pick(-190, 190) * 1.5707963267948966;
            h = random.pick(-860, 860) * 0.34657359027997265;
        }
        t = std::nextafter(t, random.among({-1e3, 1e3}));
        const auto f = trig_claims::factors(t, h);
        const long double wideT = t, wideH = h;
        ASSERT_LE(unitsOff(f.sin, std::sin(wideT)), SINE_UNITS) << t;
        ASSERT_LE(unitsOff(f.cos, std::cos(wideT)), SINE_UNITS) << t;
        ASSERT_LE(unitsOff(f.sinh, std::sinh(wideH)), HYPERBOLIC_UNITS) << h;
        ASSERT_LE(unitsOff(f.cosh, std::cosh(wideH)), HYPERBOLIC_UNITS) << h;
    }
}

// There they are the series themselves, of which each term but the last of all counts.
TEST_P(TrigClaims, HyperbolicFactorsWithinHalfALogarithmOfTwoAreWithinTwoUnits) {
    Random random(7);
    for (int i = 0; i < 20000; ++i) {
        const double h = i % 2 == 0 ? random.uniform(-0.3465, 0.3465)
                                    : random.among({-1, 1}) * random.uniform(0.34, 0.3465);
        const auto f = trig_claims::factors(1, h);
        const long double wide = h;
        ASSERT_LE(unitsOff(f.sinh, std::sinh(wide)), 2) << h;
        ASSERT_LE(unitsOff(f.cosh, std::cosh(wide)), 2) << h;
    }
}

cpuComplex<float> scalarFunction(int type, const cpuComplex<float>& z) {
    switch (type) {
        case 2:
            return sinC(z);
        case 3:
            return cosC(z);
        case 4:
            return sinhC(z);
        default:
            return coshC(z);
    }
}

// The vectors' own product lies on the other side of the middle between two floats.
TEST_P(TrigClaims, FloatsThatAreHardToRoundAreTheYardsticksInEveryLane) {
    for (int type = 2; type <= 5; ++type) {
        for (const auto& [trigonometric, hyperbolic] : vector_test::HARD_FLOATS) {
            const bool realIsTrigonometric = type < 4;
            const float r = realIsTrigonometric ? trigonometric : hyperbolic;
            const float i = realIsTrigonometric ? hyperbolic : trigonometric;
            const cpuComplex<float> expected = scalarFunction(type, {r, i});
            for (std::size_t n = 0; n < 32; ++n) {
                const auto value = trig_claims::floatFunction(type, {r, i}, n / 2, n % 2 == 1);
                ASSERT_EQ(value.r, expected.r) << "type " << type << " (" << r << ", " << i << ")";
                ASSERT_EQ(value.i, expected.i) << "type " << type << " (" << r << ", " << i << ")";
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Target, TrigClaims,
                         testing::Range(std::size_t{0}, trig_claims::targets().size()),
                         [](const testing::TestParamInfo<std::size_t>& target) {
                             return trig_claims::targets()[target.param].name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TrigClaims);

}  // namespace

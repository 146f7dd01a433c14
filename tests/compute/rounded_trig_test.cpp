// Sine, cosine and their hyperbolic kin give the double nearest to the true value, whichever way
// they take to it. MPFR knows the true value.
//
// TESSARY_TRIG_ARGUMENTS=100000000 rounded_trig_test --gtest_filter='*NearestDouble*' tries so many
// arguments; TESSARY_TRIG_SEED picks others.
#include "compute/rounded_trig.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

#include "compute/exact_trig.h"
#include "compute/quick_trig.h"
#include "tests/compute/hard_trig_arguments.h"

// Two results are the same when their bits are, but for NaN, which has many.
bool operator==(const SineCosine& a, const SineCosine& b) {
    const auto same = [](double x, double y) {
        return (std::isnan(x) && std::isnan(y)) ||
               std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
    };
    return same(a.sine, b.sine) && same(a.cosine, b.cosine);
}

std::ostream& operator<<(std::ostream& out, const SineCosine& a) {
    return out << std::hexfloat << "{" << a.sine << ", " << a.cosine << "}";
}

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

using MpfrPair = int(mpfr_t, mpfr_t, const mpfr_t, mpfr_rnd_t);
using Pair = SineCosine(double);

// Numbers of `bits` bits, by MPFR.
struct Truth {
    explicit Truth(mpfr_prec_t bits) {
        mpfr_init2(x, 53);
        mpfr_inits2(bits, sine, cosine, static_cast<mpfr_ptr>(nullptr));
    }
    ~Truth() { mpfr_clears(x, sine, cosine, static_cast<mpfr_ptr>(nullptr)); }
    Truth(const Truth&) = delete;
    Truth& operator=(const Truth&) = delete;

    void evaluate(MpfrPair* function, double at) {
        mpfr_set_d(x, at, MPFR_RNDN);
        function(sine, cosine, x, MPFR_RNDN);
    }

    mpfr_t x, sine, cosine;
};

SineCosine nearestDoubles(MpfrPair* function, double x) {
    static thread_local Truth truth(53);
    truth.evaluate(function, x);
    return {mpfr_get_d(truth.sine, MPFR_RNDN), mpfr_get_d(truth.cosine, MPFR_RNDN)};
}

class Arguments {
  public:
    double ofAllSizes() {
        for (;;) {
            const auto x = std::bit_cast<double>(random());
            if (std::isfinite(x)) return x;
        }
    }

    double below(double size) {
        return size * (static_cast<double>(random() >> 11) * 0x1p-52 - 1.0);
    }

    // Between 2^-27 and `size`, every power of two as often as the others.
    double between27And(double size) {
        const auto powers = 27 + static_cast<unsigned>(std::log2(size));
        const double mantissa = 1.5 + below(0.5);
        const double x = std::ldexp(mantissa, static_cast<int>(random() % powers) - 27);
        return random() % 2 == 0 ? x : -x;
    }

  private:
    static std::uint64_t seed() {
        const char* wanted = std::getenv("TESSARY_TRIG_SEED");
        return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 15;
    }

    std::mt19937_64 random{seed()};
};

long wantedArguments(long usual) {
    const char* wanted = std::getenv("TESSARY_TRIG_ARGUMENTS");
    return wanted != nullptr ? std::atol(wanted) : usual;
}

void expectNearest(Pair* function, MpfrPair* truth, double x) {
    const SineCosine expected = nearestDoubles(truth, x);
    EXPECT_EQ(function(x), expected) << std::hexfloat << x;
}

// Arguments in five ranges, so many in all.
void expectNearestEverywhere(Pair* function, MpfrPair* truth, double usual, double largest,
                             long count) {
    Arguments arguments;
    for (long n = 0; n < count && !testing::Test::HasFailure(); n += 5) {
        expectNearest(function, truth, arguments.below(usual));
        expectNearest(function, truth, arguments.below(1.0));
        expectNearest(function, truth, arguments.below(largest));
        expectNearest(function, truth, arguments.between27And(largest));
        expectNearest(function, truth, arguments.ofAllSizes());
    }
}

TEST(RoundedTrig, SineAndCosineAreTheNearestDoublesOfAnyArgument) {
    expectNearestEverywhere(sineCosine, mpfr_sin_cos, 12, 4000, wantedArguments(200000));
}

TEST(RoundedTrig, HyperbolicSineAndCosineAreTheNearestDoublesOfAnyArgument) {
    expectNearestEverywhere(hyperbolicSineCosine, mpfr_sinh_cosh, 12, 711, wantedArguments(75000));
}

TEST(RoundedTrig, HardArgumentsAreRoundedRight) {
    for (const double x : HARD_TRIGONOMETRIC) {
        expectNearest(sineCosine, mpfr_sin_cos, x);
        expectNearest(sineCosine, mpfr_sin_cos, -x);
    }
    for (const double x : HARD_HYPERBOLIC) {
        expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, x);
        expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, -x);
    }
}

// cosh x is x^4 / 24 above 1 + x^2 / 2, which for odd m lies in the middle between two doubles:
// 2^-49 of their distance off for m = 1.
TEST(RoundedTrig, HyperbolicCosinesJustAboveAMiddleAreRoundedUp) {
    for (int m = 1; m < 2000; m += 2) {
        const double x = m * 0x1p-26;
        expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, x);
        EXPECT_GT(hyperbolicSineCosine(x).cosine, 1 + m * x * 0x1p-27);
    }
}

// x -+ x^3 / 6 lies in the middle between two doubles for these: x = 3 m 2^k, m odd, 3 m in [2^b,
// 2^(b+1)), 2 k = b - 52.
TEST(RoundedTrig, SinesJustBesideAMiddleAreRoundedRight) {
    for (int b = 4; b <= 12; b += 2) {
        for (int m = 3; m < 2 << b; m += 6) {
            if (m < 1 << b) continue;
            const double x = std::ldexp(m, b / 2 - 26);
            expectNearest(sineCosine, mpfr_sin_cos, x);
            expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, x);
        }
    }
}

// Neighbours of multiples of pi / 1024 and of ln 2 / 256, where n changes and rests vanish; and the
// double that comes closest to a multiple of pi / 2 (Kahan).
TEST(RoundedTrig, ArgumentsThatReduceToNextToNothingAreRoundedRight) {
    expectNearest(sineCosine, mpfr_sin_cos, std::ldexp(6381956970095103.0, 797));
    for (int n = 1; n < 6000; ++n) {
        const double pi = n * 0x1.921fb54442d18p-10, ln = n * 0x1.62e42fefa39efp-10;
        for (const double towards : {-INFINITE, 0.0, INFINITE}) {
            expectNearest(sineCosine, mpfr_sin_cos, std::nextafter(pi, towards));
            expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, std::nextafter(ln, towards));
        }
    }
}

TEST(RoundedTrig, WhereOneRangeOfArgumentsEndsTheNextBegins) {
    for (const double edge : {0x1p-27, 0x1p-26, 0x1p-25, 700.0, 709.7827128933841,
                              710.4758600739439, 711.0, 712.0, 3000.0, 0x1p1023}) {
        for (const double x : {std::nextafter(edge, 0.0), edge, std::nextafter(edge, INFINITE)}) {
            expectNearest(sineCosine, mpfr_sin_cos, x);
            expectNearest(hyperbolicSineCosine, mpfr_sinh_cosh, x);
        }
    }
}

TEST(RoundedTrig, ZerosKeepTheirSigns) {
    EXPECT_EQ(sineCosine(0.0), (SineCosine{0.0, 1.0}));
    EXPECT_EQ(sineCosine(-0.0), (SineCosine{-0.0, 1.0}));
    EXPECT_EQ(hyperbolicSineCosine(0.0), (SineCosine{0.0, 1.0}));
    EXPECT_EQ(hyperbolicSineCosine(-0.0), (SineCosine{-0.0, 1.0}));
}

TEST(RoundedTrig, SubnormalArgumentsAreTheirOwnSines) {
    for (const double x : {5e-324, -5e-324, 1e-310, -2.2250738585072014e-308}) {
        EXPECT_EQ(sineCosine(x), (SineCosine{x, 1.0}));
        EXPECT_EQ(hyperbolicSineCosine(x), (SineCosine{x, 1.0}));
    }
}

TEST(RoundedTrig, InfiniteAndMissingArgumentsHaveNoSine) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double x : {INFINITE, -INFINITE, nan}) {
        EXPECT_EQ(sineCosine(x), (SineCosine{nan, nan}));
    }
    EXPECT_EQ(hyperbolicSineCosine(INFINITE), (SineCosine{INFINITE, INFINITE}));
    EXPECT_EQ(hyperbolicSineCosine(-INFINITE), (SineCosine{-INFINITE, INFINITE}));
    EXPECT_EQ(hyperbolicSineCosine(nan), (SineCosine{nan, nan}));
}

TEST(RoundedTrig, HyperbolicFunctionsBeyondTheRangeAreInfinite) {
    EXPECT_EQ(hyperbolicSineCosine(711.0), (SineCosine{INFINITE, INFINITE}));
    EXPECT_EQ(hyperbolicSineCosine(-1e300), (SineCosine{-INFINITE, INFINITE}));
}

// What stands behind the quick way, for every argument.
TEST(ExactTrig, GivesTheNearestDoublesByItself) {
    Arguments arguments;
    for (int n = 0; n < 4000; ++n) {
        for (double x :
             {arguments.below(12), arguments.between27And(700), arguments.ofAllSizes()}) {
            if (std::fabs(x) < 0x1p-27) x = 1 / x;
            if (!std::isfinite(x)) continue;
            expectNearest(exact_trig::sineCosine, mpfr_sin_cos, x);
            if (std::fabs(x) < 711) {
                expectNearest(exact_trig::hyperbolicSineCosine, mpfr_sinh_cosh, x);
            }
        }
    }
}

// The second attempt is for arguments that nobody has found, so it is asked for.
TEST(ExactTrig, GivesTheSameWithTwiceTheLimbs) {
    Arguments arguments;
    for (int n = 0; n < 3000; ++n) {
        const double x = n % 2 == 0 ? arguments.below(20) : arguments.between27And(700);
        const auto sines = exact_trig::trySineCosine<8>(x);
        const auto hyperbolic = exact_trig::tryHyperbolicSineCosine<8>(x);
        ASSERT_TRUE(sines.decided && hyperbolic.decided);
        ASSERT_EQ(sines.value, nearestDoubles(mpfr_sin_cos, x)) << x;
        ASSERT_EQ(hyperbolic.value, nearestDoubles(mpfr_sinh_cosh, x)) << x;
    }
}

TEST(ExactTrig, OneAttemptIsEnoughForHardArguments) {
    for (const double x : HARD_TRIGONOMETRIC) {
        EXPECT_TRUE(exact_trig::trySineCosine<3>(x).decided) << x;
    }
    for (const double x : HARD_HYPERBOLIC) {
        EXPECT_TRUE(exact_trig::tryHyperbolicSineCosine<3>(x).decided) << x;
    }
}

// How far an approximation is off, as a share of the true value.
double errorOf(const quick_trig::Approximation& a, mpfr_srcptr truth) {
    static thread_local Truth room(200);
    mpfr_ptr difference = room.sine;
    mpfr_set_d(difference, a.high, MPFR_RNDN);
    mpfr_add_d(difference, difference, a.low, MPFR_RNDN);
    mpfr_sub(difference, difference, truth, MPFR_RNDN);
    mpfr_div(difference, difference, truth, MPFR_RNDN);
    return std::fabs(mpfr_get_d(difference, MPFR_RNDN));
}

class QuickTrig : public testing::Test {
  protected:
    // The larger error of the two functions at x; 0 where the quick way does not answer.
    double error(double x) {
        const auto t = quick_trig::reduceTrigonometric(x);
        return t.restIsLarge() ? error(quick_trig::sineCosine(t), mpfr_sin_cos, x) : 0;
    }

    double farError(double x) {
        const auto t = exact_trig::reduceTrigonometric(x);
        return t.restIsLarge() ? error(quick_trig::sineCosine(t), mpfr_sin_cos, x) : 0;
    }

    double hyperbolicError(double x) {
        const auto t = quick_trig::reduceHyperbolic(x);
        return t.restIsLarge() ? error(quick_trig::hyperbolicSineCosine(t), mpfr_sinh_cosh, x) : 0;
    }

    double error(const quick_trig::Pair& pair, MpfrPair* function, double x) {
        truth.evaluate(function, x);
        return std::max(errorOf(pair.sine, truth.sine), errorOf(pair.cosine, truth.cosine));
    }

    Truth truth{200};
    Arguments arguments;
};

// The derivation of the bound takes the worst of every step; an error that came close to it would
// show that it forgot one.
constexpr double HALF_OF_ERROR = quick_trig::ERROR / 2;

TEST_F(QuickTrig, SineAndCosineKeepTheirBound) {
    for (int n = 0; n < 40000; ++n) {
        ASSERT_LE(error(arguments.below(12)), HALF_OF_ERROR);
        ASSERT_LE(error(arguments.below(quick_trig::LARGEST)), HALF_OF_ERROR);
        ASSERT_LE(error(arguments.between27And(1)), HALF_OF_ERROR);
    }
}

TEST_F(QuickTrig, SineAndCosineOfFarArgumentsKeepTheirBound) {
    for (int n = 0; n < 20000; ++n) {
        double x = arguments.ofAllSizes();
        if (std::fabs(x) < 1) x = 1 / x;
        if (!std::isfinite(x)) continue;
        ASSERT_LE(farError(x), HALF_OF_ERROR) << x;
        ASSERT_LE(farError(arguments.below(12)), HALF_OF_ERROR);
    }
}

TEST_F(QuickTrig, HyperbolicSineAndCosineKeepTheirBound) {
    for (int n = 0; n < 40000; ++n) {
        ASSERT_LE(hyperbolicError(std::fabs(arguments.below(12))), HALF_OF_ERROR);
        ASSERT_LE(hyperbolicError(std::fabs(arguments.below(quick_trig::LARGEST_HYPERBOLIC))),
                  HALF_OF_ERROR);
        ASSERT_LE(hyperbolicError(std::fabs(arguments.between27And(1))), HALF_OF_ERROR);
    }
}

// Where the value is small beside its parts, the bound is tightest: rests that nearly vanish, and
// n = 1 with a rest that nearly takes it back.
TEST_F(QuickTrig, TheBoundHoldsNextToTheTablesArguments) {
    for (int n = 1; n < 3000; ++n) {
        for (const double shift : {0.0, 0x1p-40, 0x1p-35, 0x1p-30, 0x1p-20, 0x1p-11}) {
            for (const double side : {-1.0, 1.0}) {
                const double pi = n * 0x1.921fb54442d18p-9 + side * shift;
                const double ln = n * 0x1.62e42fefa39efp-9 + side * shift;
                ASSERT_LE(error(pi), HALF_OF_ERROR) << n << " " << shift;
                ASSERT_LE(hyperbolicError(ln), HALF_OF_ERROR) << n << " " << shift;
            }
        }
    }
    for (int n = 0; n < 20000; ++n) {
        const double x = 0x1.921fb54442d18p-10 * (1 + 0x1p-8 * std::fabs(arguments.below(1)));
        ASSERT_LE(error(x), HALF_OF_ERROR);
        ASSERT_LE(hyperbolicError(x * (0x1.62e42fefa39efp-10 / 0x1.921fb54442d18p-10)),
                  HALF_OF_ERROR);
    }
}

// A bound that is too generous sends arguments the long way, which takes a hundred times as long.
TEST_F(QuickTrig, LeavesFewArgumentsUndecided) {
    int undecided = 0;
    constexpr int TRIES = 1 << 20;
    for (int n = 0; n < TRIES; ++n) {
        const double x = std::fabs(arguments.below(12));
        const auto sines = quick_trig::sineCosine(quick_trig::reduceTrigonometric(x));
        const auto hyperbolic = quick_trig::hyperbolicSineCosine(quick_trig::reduceHyperbolic(x));
        for (const auto& a : {sines.sine, sines.cosine, hyperbolic.sine, hyperbolic.cosine}) {
            undecided += !a.decided();
        }
    }
    EXPECT_LT(undecided, 4 * TRIES >> 14);
}

}  // namespace

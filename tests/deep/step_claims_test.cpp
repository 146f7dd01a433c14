// Each term of the bound of a lane on its own: states in which it alone stands for the error of a
// step, a new reference or a decision, whose roundings are near their largest.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "deep/exact_view.h"
#include "lane_probe.h"
#include "oracle.h"

namespace {

using lane_probe::Exact;
using lane_probe::Probe;
using lane_probe::Verdict;

constexpr int STATES = 4000;

// A tier of a real view, whose reference tests may overwrite. A Julia set adds nothing in a step
// but its reference's own error, here of 2^-bits.
struct Made {
    deep::View view;
    deep::ExactView exact;
    deep::Reference reference;
    deep::TierData<1> tier;

    Made(const deep::View& v, long bits)
        : view(v),
          exact(view),
          reference(exact, view, bits, nullptr),
          tier(deep::makeTier<1>(reference, exact, view)) {}
};

deep::View juliaView(const char* re = "0.3", const char* im = "0.2") {
    return {re, im, "1e-300", "-0.32173", "0.5411", 4, 4, 4, 200};
}

Made deepTier() {
    return Made(juliaView(), 2500);
}

// Random numbers of no simple form.
class Numbers {
  public:
    double within(double low, double high) { return low + (high - low) * unit(engine); }
    int sign() { return engine() % 2 == 0 ? 1 : -1; }
    // A point at such a distance from 0.
    std::pair<double, double> point(double low, double high) {
        const double size = within(low, high), turn = within(0, 6.2831853);
        return {size * std::cos(turn), size * std::sin(turn)};
    }
    // What may have been rounded to x: half a unit of its last digit beside it.
    mpq_class beside(double x) {
        const double last = std::ldexp(1, std::ilogb(x) - 52);
        return mpq_class(x) + sign() * mpq_class(last) / 2;
    }

  private:
    std::mt19937_64 engine{20261122};
    std::uniform_real_distribution<double> unit{0, 1};
};

// Index 0 of the reference is kept as (re, im), index 1 anywhere.
void setPoint(Made& made, double re, double im, double size = -1) {
    auto& z = made.reference.z[0];
    z[0] = re, z[1] = im, z[2] = 0.5, z[3] = 0.25;
    made.reference.size[0][0] = size;
    made.reference.tiny.clear();
    made.reference.tinySizes.clear();
}

mpq_class powerOfTwo(std::int64_t exponent) {
    mpq_class one(1);
    const auto by = static_cast<mp_bitcnt_t>(std::abs(exponent));
    return exponent < 0 ? mpq_class(one >> by) : mpq_class(one << by);
}

TEST(AStep, RoundsNoMoreThanItsBoundSays) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.1, 1.9);
        const auto [dr, di] = numbers.point(1e-9, 0.9 * std::hypot(re, im) / 2);
        setPoint(made, re, im);
        Probe probe(made.tier);
        probe.put(0, dr, di);
        probe.step();
        const Exact z{numbers.beside(re), numbers.beside(im)}, d{dr, di};
        const Exact next = (z + z + d) * d;
        ASSERT_LE(squareOf(probe.difference() - next), probe.squaredBound()) << n;
    }
}

// z is x = t Z off, in the direction in which z^2 grows the most.
TEST(AStep, PassesAnErrorOnAndItsSquareToo) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.001, 1.9);
        const double t = std::exp2(numbers.within(-30, 6));
        const double count = std::floor(std::exp2(numbers.within(0, 10)));
        setPoint(made, re, im);
        Probe probe(made.tier);
        const double e2 = t * t * (re * re + im * im) * (1 + 0x1p-40);
        probe.put(0, 0, 0, e2 / count, count);
        probe.step();
        const Exact z{re, im}, x{mpq_class(t) * re, mpq_class(t) * im};
        ASSERT_LE(squareOf(probe.difference() - (z + z + x) * x), probe.squaredBound()) << n;
    }
}

deep::View mandelbrotView(int wide, int high, const char* width) {
    return {
        "-0.7756837680090537974694835", "0.1364673682946901247", width, "", "", wide, high, 4, 20};
}

// Where pixel (x, y) stands from the centre, in units of the probe.
Exact offsetOf(const deep::View& v, int x, int y, std::int64_t unit) {
    const mpq_class half = oracle::decimal(v.width) / (2 * v.pixelsWide) * powerOfTwo(-unit);
    return {half * (2 * x - v.pixelsWide), half * (2 * y - v.pixelsHigh)};
}

TEST(AStep, AddsWhatItAddsWithinItsBound) {
    const char* const widths[] = {"1e-5", "7e-20", "3.3e-30"};
    Numbers numbers;
    for (int n = 0; n < STATES / 4; ++n) {
        const int wide = static_cast<int>(numbers.within(3, 900)),
                  high = static_cast<int>(numbers.within(3, 900));
        const Made made(mandelbrotView(wide, high, widths[n % 3]), 300);
        const int x = n % wide, y = high - 1;
        Probe probe(made.tier, x, y);
        const Exact offset = offsetOf(made.view, x, y, probe.unit());
        ASSERT_LE(squareOf(probe.difference() - offset), probe.squaredBound()) << "start " << n;
        probe.setDifference(0, 0, 0);
        probe.step();
        ASSERT_LE(squareOf(probe.difference() - offset), probe.squaredBound()) << n;
    }
}

Exact keptPoint(const deep::Reference& reference, std::uint32_t m) {
    Exact z;
    for (int part = 0; part < 2; ++part) {
        z = z + Exact{reference.z[part][2 * m], reference.z[part][2 * m + 1]};
    }
    return z;
}

// An orbit that stays, two that are stepped from points far out, and one about a constant there.
struct Course {
    double limit;
    const char *re, *im, *cRe;
};
constexpr Course COURSES[] = {{4, "0.3", "-0.2", "-0.32173"},
                              {0x1p20, "1.3", "-1.2", "-0.32173"},
                              {0x1p40, "1.3", "-1.2", "-0.32173"},
                              {4, "0.3", "-0.2", "100000.32173"}};

// A reference of so few bits that two doubles hold all of each point.
Made coarseTier(int n) {
    const Course& course = COURSES[n % 4];
    deep::View view = juliaView();
    view.re = course.re + std::to_string(1000 + n);
    view.im = course.im + std::to_string(2000 + n);
    view.cRe = std::string(course.cRe);
    view.limit = course.limit;
    return Made(view, 60);
}

TEST(AStep, HoldsTheRoundingsOfTheReference) {
    for (int n = 0; n < 160; ++n) {
        const Made made = coarseTier(n);
        const Exact c{oracle::decimal(made.view.cRe), oracle::decimal(made.view.cIm)};
        for (std::uint32_t m = 0; m < std::min(made.reference.firstEnd, 100u); ++m) {
            const Exact z = keptPoint(made.reference, m);
            const Exact off = keptPoint(made.reference, m + 1) - (z * z + c);
            Probe probe(made.tier);
            probe.put(m, 0, 0);
            probe.step();
            ASSERT_LE(squareOf(off), probe.squaredBound()) << n << ' ' << m;
        }
    }
}

// The roundings of a step are bounded for |d| <= |z| alone: here an orbit starts nearer to 0 than
// to the reference's first point.
TEST(AFirstStep, IsTakenFromTheCriticalPointWhereThatIsNearer) {
    deep::View view = juliaView("1.2e-20", "-0.7e-20");
    view.width = std::string("1e-19");
    view.pixelsWide = view.pixelsHigh = 40;
    view.maxIters = 1;
    const Made made(view, 400);
    int nearer = 0;
    for (int n = 0; n < 1600; ++n) {
        const int x = n % 40, y = n / 40;
        const mpq_class step = oracle::decimal(view.width) / 40;
        const Exact d{step * (x - 20), step * (y - 20)};
        const Exact z = d + Exact{oracle::decimal(view.re), oracle::decimal(view.im)};
        const bool isNearer = squareOf(z) < squareOf(d);
        Probe probe(made.tier, x, y);
        probe.follow();
        ASSERT_EQ(probe.index() >= made.reference.critical, isNearer) << x << ' ' << y;
        nearer += isNearer;
    }
    EXPECT_GT(nearer, 400);
    EXPECT_LT(nearer, 1200);
}

// From a tiny point d' is about d^2, and with Z' = -15/16 d^2 z' is shorter than d'.
TEST(AStepFromATinyPoint, IsFollowedByOneFromTheCriticalPointWhereThatIsNearer) {
    Made made = deepTier();
    made.reference.tiny = {{0, -160, {{0.75, 0}, {0, 0}}}};
    for (const double part : {-0.9375, 0.375}) {
        made.reference.z[0][2] = part * 0x1p-300;
        made.reference.z[0][3] = 0;
        Probe probe(made.tier);
        probe.put(0, 0x1p-150, 0);
        probe.stepFromTinyInVectors();
        ASSERT_EQ(probe.index() == made.reference.critical, part < 0) << part;
    }
}

TEST(ANewReference, RoundsNoMoreThanItsBoundSays) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.1, 1.9);
        const auto [zr, zi] = numbers.point(1e-6, 0.5 * std::hypot(re, im));
        setPoint(made, re, im);
        const double dr = zr - re, di = zi - im;
        const Exact next{numbers.beside(re) + dr, numbers.beside(im) + di};
        Probe alone(made.tier), inVectors(made.tier);
        alone.put(0, dr, di);
        alone.rebase();
        ASSERT_LE(squareOf(alone.difference() - next), alone.squaredBound()) << n;
        inVectors.put(0, dr, di);
        inVectors.rebaseInVectors();
        ASSERT_LE(squareOf(inVectors.difference() - next), inVectors.squaredBound()) << n;
    }
}

// The true difference may be as long as |d| + e, and what a node is looked for with is no shorter.
TEST(ASkip, IsLookedForWithTheTrueDifference) {
    Made made = deepTier();
    Numbers numbers;
    setPoint(made, 0.5, 0.25);
    for (int n = 0; n < STATES; ++n) {
        const double e = std::exp2(numbers.within(-30, 30)), count = 1 + n % 50;
        const auto [re, im] = numbers.point(0.01, 1.9);
        Probe probe(made.tier);
        probe.put(0, re, im, e * e / count, count);
        const double longest = std::hypot(re, im) + e;
        ASSERT_GE(1.0626 * probe.squaredReach(), longest * longest) << n;
    }
}

// The least |d| of no error that is too long for all nodes here is too long as an error, too.
TEST(ASkip, IsNotTakenWhereTheErrorIsLongerThanTheRadius) {
    const Made made(mandelbrotView(64, 64, "1e-20"), 300);
    const auto skips = [&](double d, double e) {
        Probe probe(made.tier);
        probe.put(1, d, 0, e * e);
        return probe.skips();
    };
    double radius = 0x1p-100;
    while (skips(radius, 0)) radius *= 1.001;
    ASSERT_GT(radius, 0x1p-100);
    for (const double share : {0.0, 0.25, 0.5, 0.75, 0.99}) {
        EXPECT_FALSE(skips((1 - share) * radius, share * radius * 1.04)) << share;
    }
    EXPECT_FALSE(skips(0, 1.04 * radius));
    EXPECT_TRUE(skips(0, 0.2 * radius));
}

// |Z|^2 - L is within some units of its last digit of -d (2 Z + d): the sum may have either sign.
TEST(ADecision, IsRightOrLeftWhereItsRoundingsDecide) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.5, 1.9);
        const auto [dr, di] = numbers.point(1e-5, 0.4);
        const Exact z{numbers.beside(re), numbers.beside(im)}, d{dr, di}, w = z + z + d;
        const mpq_class moved = d.re * w.re + d.im * w.im;
        const double near = -moved.get_d();
        const double size = near + (n % 9 - 4) * std::ldexp(1, std::ilogb(near) - 53);
        setPoint(made, re, im, size);
        Probe probe(made.tier);
        probe.put(0, dr, di);
        const mpq_class beyond = numbers.beside(size) + moved;
        const Verdict verdict = probe.decide();
        ASSERT_FALSE(verdict == Verdict::escapes && beyond <= 0) << n;
        ASSERT_FALSE(verdict == Verdict::stays && beyond > 0) << n;
    }
}

// z is within e = t |Z|: a little of that disc lies on the other side of the limit.
TEST(ADecision, IsLeftWhereTheErrorReachesAcrossTheLimit) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.01, 1.9);
        const double s = re * re + im * im, t = std::exp2(numbers.within(-30, 6));
        const double part = std::exp2(numbers.within(-20, -1)), count = 1 + n % 50;
        // The squares of the furthest point and of the nearest, less Z's.
        const double outwards = s * (2 * t + t * t), inwards = s * (t < 1 ? 2 * t - t * t : 1);
        for (const double size : {-outwards * (1 - part), inwards * (1 - part)}) {
            setPoint(made, re, im, size);
            Probe probe(made.tier);
            probe.put(0, 0, 0, t * t * s * (1 + 0x1p-40) / count, count);
            ASSERT_EQ(probe.decide(), Verdict::left) << n << ' ' << t << ' ' << size / s;
        }
    }
}

TEST(ADecision, IsLeftWhereTheKeptSizeMayHaveEitherSign) {
    for (const long bits : {160, 400, 2500}) {
        Made made(juliaView(), bits);
        for (const double part : {-0.99, -0.5, 0.5, 0.99}) {
            const deep::Wide size = made.tier.ownSizeOff * deep::Wide(part);
            setPoint(made, 0.5, 0.25, size.value());
            made.reference.tinySizes.push_back({0, size});
            Probe probe(made.tier);
            probe.put(0, 0, 0);
            ASSERT_EQ(probe.decide(), Verdict::left) << bits << ' ' << part;
        }
    }
}

TEST(AReference, KeepsSizesAsGoodAsTheDecisionTakesThemFor) {
    for (int n = 0; n < 160; ++n) {
        const Made made = coarseTier(n);
        const mpq_class off = mpq_class(made.tier.ownSizeOff.value());
        for (std::uint32_t m = 0; m <= made.reference.firstEnd; ++m) {
            const mpq_class exact = squareOf(keptPoint(made.reference, m)) - made.view.limit;
            const auto& parts = made.reference.size;
            const mpq_class kept = mpq_class(parts[0][m]) + mpq_class(parts[1][m]);
            ASSERT_LE(abs(kept - exact), off + abs(exact) * powerOfTwo(-104)) << n << ' ' << m;
        }
    }
}

}  // namespace

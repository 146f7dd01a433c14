// Each term of the bound of a lane on its own: states in which it alone stands for the error of a
// step or a new reference, whose roundings are near their largest.
#include "lane_states.h"

namespace {

using namespace lane_probe;

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

// ---- tiny points ----

constexpr int TINY = -160;

// A point of about 1, times 2^TINY, as pairs keep it, of which doubles keep the one half.
Exact setTinyPoint(Made& made, Numbers& numbers) {
    const auto [re, im] = numbers.point(0.5, 1);
    const Exact exact{numbers.beside(re), numbers.beside(im)};
    const mpq_class re2 = exact.re - re, im2 = exact.im - im;
    made.reference.tiny = {{0, TINY, {{re, re2.get_d()}, {im, im2.get_d()}}}};
    const mpq_class unit = powerOfTwo(TINY);
    return {exact.re * unit, exact.im * unit};
}

TEST(AStepFromATinyPoint, RoundsNoMoreThanItsBoundSays) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const Exact z = setTinyPoint(made, numbers);
        const auto [x, y] = numbers.point(1e-9, 0.2);
        const double dr = std::ldexp(x, TINY), di = std::ldexp(y, TINY);
        Probe probe(made.tier);
        probe.put(0, dr, di);
        probe.stepFromTiny();
        const Exact d{dr, di}, next = (z + z + d) * d;
        ASSERT_LE(squareOf(probe.difference() - next), probe.squaredBound()) << n;
    }
}

TEST(AStepFromATinyPoint, PassesAnErrorOnAndItsSquareToo) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const Exact z = setTinyPoint(made, numbers);
        const double t = std::exp2(numbers.within(-30, 6)), count = 1 + n % 50;
        const double e2 = t * t * squareOf(z).get_d() * (1 + 0x1p-40);
        Probe probe(made.tier);
        probe.put(0, 0, 0, e2 / count, count);
        probe.stepFromTiny();
        const Exact x{t * z.re, t * z.im};
        ASSERT_LE(squareOf(probe.difference() - (z + z + x) * x), probe.squaredBound()) << n;
    }
}

// In units of 1 its square would be next to what stands for all that underflows.
TEST(AStepFromATinyPoint, IsTakenInUnitsOfTheDifferencesOwnSize) {
    Made made = deepTier();
    Numbers numbers;
    for (int below = 170; below < 250; ++below) {
        setTinyPoint(made, numbers);
        const auto [x, y] = numbers.point(1, 2);
        Probe probe(made.tier);
        probe.put(0, std::ldexp(x, -below), std::ldexp(y, -below));
        probe.stepFromTinyInItsOwnUnits();
        EXPECT_LT(probe.squaredBound(), squareOf(probe.difference()) * powerOfTwo(-80)) << below;
    }
}

// A difference may be 2^-256 of its units. What underflows in those of another lane must be less
// than its own rounding.
TEST(LanesOfDifferentUnits, GoOnTogetherWhereNothingOfTheSmallestIsLost) {
    const Made made = deepTier();
    double share = 0;
    for (int apart = 0; apart < 300; ++apart) {
        Probe probe(made.tier);
        if (probe.gathersWith(0x1p-256, -apart, &share)) {
            EXPECT_LT(share, 0x1p-106) << apart;
        }
    }
    EXPECT_TRUE(Probe(made.tier).gathersWith(1, -30, &share));
}

}  // namespace

// What is decided of a lane, and where it is left: states whose error reaches across the limit, or
// whose roundings are near their largest.
#include "lane_states.h"

namespace {

using namespace lane_probe;

// z is within e of a point that lies e t inside of the limit, t < 1: it may have escaped.
TEST(ALane, IsNotSurelyInsideWhereItsErrorReachesTheLimit) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const double e = std::exp2(numbers.within(-30, 0)),
                     away = 2 - e * numbers.within(0.01, 0.99);
        const double turn = numbers.within(0, 6.2831853), count = 1 + n % 50;
        setPoint(made, away * std::cos(turn), away * std::sin(turn));
        Probe probe(made.tier);
        probe.put(0, 0, 0, e * e / count, count);
        ASSERT_FALSE(probe.isInside()) << n << ' ' << e;
    }
}

TEST(AStep, IsNotCalmWhereItsErrorReachesTheLimit) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const auto [re, im] = numbers.point(0.5, 1.5);
        const double e = std::exp2(numbers.within(-30, -3)), count = 1 + n % 50;
        setPoint(made, re, im);
        const auto stepped = [&](Probe& probe) {
            probe.put(0, 0, 0, e * e / count, count);
            return probe.step();
        };
        Probe first(made.tier), second(made.tier);
        stepped(first);
        const double error = std::sqrt(first.squaredBound().get_d());
        made.reference.z[0][2] = 2 - error * numbers.within(0.01, 0.99);
        made.reference.z[0][3] = 0;
        ASSERT_FALSE(stepped(second)) << n << ' ' << error;
    }
}

// Z is inside by less than d and e, which point outwards, make up for.
TEST(LanesNextToAReference, AreNotInsideWhereOneMayHaveEscaped) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const double away = numbers.within(0.01, 1.9), d = std::exp2(numbers.within(-300, 0)),
                     e = d * numbers.within(0, 2), most = (d + e) * (2 * away + d + e);
        setPoint(made, away, 0, -most * 0.999);
        Probe probe(made.tier);
        probe.put(0, d, 0, e * e);
        ASSERT_FALSE(probe.areInside()) << n;
        made.reference.size[0][0] = -64 * most - 0x1p-400;
        ASSERT_TRUE(probe.areInside()) << n;
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
            const Wide size = made.tier.ownSizeOff * Wide(part);
            setPoint(made, 0.5, 0.25, size.value());
            made.reference.tinySizes.push_back({0, size});
            Probe probe(made.tier);
            probe.put(0, 0, 0);
            ASSERT_EQ(probe.decide(), Verdict::left) << bits << ' ' << part;
        }
    }
}

// From |z|^2 = 3 to 12 or more the value moves by some hundredths of the relative error of either.
TEST(AValue, IsLeftWhereTheErrorsOfItsSizesMayMoveIt) {
    Made made = deepTier();
    Numbers numbers;
    for (int n = 0; n < STATES; ++n) {
        const double relative = std::exp2(numbers.within(-12, -3)), after = numbers.within(12, 16);
        const auto verdict = [&](double e) {
            setPoint(made, std::sqrt(after), 0, after - 4);
            Probe probe(made.tier, 0, 0, true);
            probe.put(0, 0, 0, e * e * after);
            probe.setSizes(3, after);
            return probe.decide();
        };
        ASSERT_EQ(verdict(relative), Verdict::left) << n << ' ' << relative;
        ASSERT_EQ(verdict(0x1p-48), Verdict::escapes) << n;
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

// Each way of deciding a pixel by itself: what it says is right, and what it cannot say it leaves.
#include "deep/tiers.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include "deep_support.h"
#include "places.h"

namespace {

using deep::Tier;
using oracle::SIDE;

// Pixels are decided by this tier alone while one of these lives.
class Alone {
  public:
    explicit Alone(Tier tier) { deep::useAlone(tier); }
    ~Alone() { deep::useAllTiers(); }
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
};

class EveryTier : public testing::TestWithParam<Tier> {};

// Some of these are nearer to the limit than doubles can tell, some nearer than pairs can.
TEST_P(EveryTier, IsRightOrLeavesThePixelOnEdges) {
    const Alone alone(GetParam());
    int decided = 0, left = 0;
    for (const oracle::Edge& edge : oracle::edges()) {
        const deep::Picture picture(toDeep(edge.view));
        const Numbers drawn = renderPart(picture, edge.x, edge.y, 1, 1);
        const std::int32_t count = drawn.counts[0];
        const std::int32_t right = oracle::Oracle(edge.view).pixel(edge.x, edge.y).count;
        EXPECT_TRUE(count == right || count == oracle::UNDECIDED)
            << edge.view.width << " " << edge.view.re.substr(0, 30) << ": " << count << " for "
            << right;
        (count == oracle::UNDECIDED ? left : decided)++;
    }
    EXPECT_GT(decided, 5);
    EXPECT_EQ(left == 0, GetParam() == Tier::digits) << left;
}

// Whole pictures: most pixels must be decided, or the bound is of no use.
TEST_P(EveryTier, DecidesMostPixelsAndNoneWrong) {
    for (const oracle::Place& place : oracle::places()) {
        oracle::View view = place.view;
        view.pixelsWide = view.pixelsHigh = 24;
        if (view.maxIters > 20000 || place.name.find("1e-1000") != std::string::npos) continue;
        const Numbers all = renderWhole(view);
        const Alone alone(GetParam());
        const Numbers drawn = renderWhole(view);
        std::int64_t left = 0;
        for (std::size_t k = 0; k < all.counts.size(); ++k) {
            if (drawn.counts[k] == oracle::UNDECIDED) ++left;
            EXPECT_TRUE(drawn.counts[k] == oracle::UNDECIDED || drawn.counts[k] == all.counts[k])
                << place.name << " " << k;
        }
        EXPECT_EQ(left, drawn.undecided);
        // Pairs leave no more than the centre, where built places meet the limit to all digits.
        EXPECT_LT(left, GetParam() == Tier::doubles ? 24 * 24 / 2 : 2) << place.name;
    }
}

// Along Re c = -2 the first |z|^2 - 4 is the square of the difference from the tip.
TEST_P(EveryTier, DecidesTheLineThroughTheTip) {
    const Alone alone(GetParam());
    const Numbers drawn = renderWhole({"-2", "0", "1e-30", "", "", 16, 16, 4, 500});
    EXPECT_EQ(drawn.undecided, 0);
    for (int row = 0; row < 16; ++row) {
        EXPECT_EQ(drawn.counts[static_cast<std::size_t>(16 * row + 8)], row == 8 ? 500 : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Deep, EveryTier,
                         testing::Values(Tier::doubles, Tier::pairs, Tier::digits));

// n * 2^-k, all of its digits.
std::string timesPowerOfHalf(const mpz_class& n, unsigned long k) {
    mpz_class digits;
    mpz_ui_pow_ui(digits.get_mpz_t(), 5, k);
    digits *= n;
    return digits.get_str() + "e-" + std::to_string(k);
}

// The point itself is pixel (2, 2), and 128 bits are what digits begin with.
oracle::View viewOf(const std::string& re, const std::string& im) {
    return {re, im, "1", "", "", 4, 4, 4, 2000};
}

Numbers centreOf(const oracle::View& view) {
    return renderPart(deep::Picture(toDeep(view)), 2, 2, 1, 1);
}

// A short binary number, which nothing rounds but the steps: it is followed along the real axis,
// where it doubles its errors, until its imaginary part has grown out of the first precision.
TEST(Digits, AreAsManyAsTheStepsTakeWhereTheirPointIsShort) {
    const Alone alone(Tier::digits);
    for (const char* re : {"-1.9990234375", "-1.9375", "-1.984375"}) {
        for (unsigned long k = 130; k < 420; k += 13) {
            const oracle::View view = viewOf(re, timesPowerOfHalf(1, k));
            const std::int32_t right = oracle::Oracle(view).pixel(2, 2).count;
            EXPECT_EQ(centreOf(view).counts[0], right) << re << ' ' << k;
        }
    }
}

// Points that 128 bits hold, and whose squares are as near to the limit as their sum is rounded:
// nothing else is.
TEST(Digits, AreAsManyAsASizeNextToTheLimitTakes) {
    const Alone alone(Tier::digits);
    gmp_randclass random(gmp_randinit_default);
    const mpz_class two = mpz_class(1) << 126, four = two * two;
    for (int n = 0; n < 20; ++n) {
        const mpz_class x = two - random.get_z_bits(84), y = sqrt(four - x * x);
        for (const int above : {0, 1}) {
            const oracle::View view =
                viewOf(timesPowerOfHalf(x, 125), timesPowerOfHalf(y + above, 125));
            EXPECT_EQ(centreOf(view).counts[0], 1 - above) << n;
        }
    }
}

// Just beyond a limit that the rounded constant lies on, whose square is then exact.
TEST(Digits, KnowThatTheirConstantIsRounded) {
    const Alone alone(Tier::digits);
    const std::string beyond = "2." + std::string(49, '0') + "1";
    EXPECT_EQ(centreOf(viewOf(beyond, "0")).counts[0], 0);
    EXPECT_EQ(centreOf(viewOf("-" + beyond, "0")).counts[0], 0);
    EXPECT_EQ(centreOf(viewOf("0", beyond)).counts[0], 0);
}

void expectTheValueOfMoreDigits(const oracle::View& view) {
    const Numbers drawn = centreOf(view);
    const oracle::Answer right = oracle::Oracle(view).pixelWith(800, 2, 2);
    ASSERT_EQ(drawn.counts[0], right.count);
    EXPECT_NEAR(drawn.values[0], right.value, 1e-6);
}

// Orbits that have used up nearly all of the first digits when they leave.
TEST(Digits, AreAsManyAsAValueTakes) {
    const Alone alone(Tier::digits);
    for (const char* re : {"-1.9990234375", "-1.9375", "-1.984375"}) {
        for (unsigned long k = 90; k < 130; k += 2) {
            SCOPED_TRACE(std::string(re) + " " + std::to_string(k));
            expectTheValueOfMoreDigits(viewOf(re, timesPowerOfHalf(1, k)));
        }
    }
}

// Orbits next to a repelling fixed point of size 2 cross the limit by steps little longer than what
// the digits lose.
TEST(Digits, AreAsManyAsAValueTakesThatLiesInATinyStep) {
    const Alone alone(Tier::digits);
    const int parts[][2] = {{-7, 2}, {-3, -8}, {-1, 0}, {-9, 7}, {-2, -1}, {-5, 3}};
    for (unsigned long digits = 31; digits < 37; ++digits) {
        mpz_class whole;
        mpz_ui_pow_ui(whole.get_mpz_t(), 10, digits);
        for (const auto& [x, y] : parts) {
            SCOPED_TRACE(std::to_string(digits) + " " + std::to_string(x));
            const mpz_class re = whole * 12 / 10 + x, im = whole * 16 / 10 + y;
            const std::string power = "e-" + std::to_string(digits);
            oracle::View view = viewOf(re.get_str() + power, im.get_str() + power);
            view.cRe = "2.32";
            view.cIm = "-2.24";
            expectTheValueOfMoreDigits(view);
        }
    }
}

// ---- instruction sets ----

class ForcedTarget {
  public:
    explicit ForcedTarget(std::int64_t bit) { force(bit); }
    ~ForcedTarget() { force(0); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;

  private:
    static void force(std::int64_t bit) {
        hwy::SetSupportedTargetsForTest(bit);
        hwy::GetChosenTarget().DeInit();
    }
};

// Those of this machine, one at a time.
std::vector<std::int64_t> targets() {
    std::vector<std::int64_t> all;
    for (std::int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
        all.push_back(rest & -rest);
    }
    return all;
}

TEST(EveryInstructionSet, GivesTheSameCountsAndValues) {
    int compared = 0;
    for (const oracle::Place& place : oracle::places()) {
        oracle::View view = place.view;
        view.pixelsWide = view.pixelsHigh = 20;
        if (view.maxIters > 20000 || place.name.find("1e-1000") != std::string::npos) continue;
        const Numbers best = renderWhole(view);
        for (const std::int64_t bit : targets()) {
            const ForcedTarget forced(bit);
            const Numbers other = renderWhole(view);
            EXPECT_EQ(best.counts, other.counts) << place.name << " " << hwy::TargetName(bit);
            for (std::size_t k = 0; k < best.values.size(); ++k) {
                const double a = best.values[k], b = other.values[k];
                EXPECT_TRUE(a == b || (a != a && b != b)) << place.name << " " << k;
            }
            ++compared;
        }
    }
    EXPECT_GT(compared, 20);
}

}  // namespace

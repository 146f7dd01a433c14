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

// 2^-k, all of its digits.
std::string powerOfHalf(unsigned long k) {
    mpz_class digits;
    mpz_ui_pow_ui(digits.get_mpz_t(), 5, k);
    return digits.get_str() + "e-" + std::to_string(k);
}

// A short binary number, which nothing rounds but the steps: it is followed along the real axis,
// where it doubles its errors, until its imaginary part has grown out of the first precision.
TEST(Digits, AreAsManyAsTheStepsTakeWhereTheirPointIsShort) {
    const Alone alone(Tier::digits);
    for (const char* re : {"-1.9990234375", "-1.9375", "-1.984375"}) {
        for (unsigned long k = 130; k < 420; k += 13) {
            const oracle::View view{re, powerOfHalf(k), "1", "", "", 4, 4, 4, 2000};
            const deep::Picture picture(toDeep(view));
            const std::int32_t right = oracle::Oracle(view).pixel(2, 2).count;
            EXPECT_EQ(renderPart(picture, 2, 2, 1, 1).counts[0], right) << re << ' ' << k;
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

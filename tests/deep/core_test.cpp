// Counts and values of deep pictures against plain double arithmetic where that is right, and
// against what is known without arithmetic.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <string>
#include <vector>

#include "compute/value_tile.h"
#include "deep/deep_picture.h"
#include "deep/tiers.h"

namespace {

struct Numbers {
    std::vector<std::int32_t> counts;
    std::vector<double> values;
    std::int64_t undecided;
};

Numbers numbersOf(const deep::Picture& picture, const deep::View& v) {
    const auto pixels =
        static_cast<std::size_t>(v.pixelsWide) * static_cast<std::size_t>(v.pixelsHigh);
    Numbers n{std::vector<std::int32_t>(pixels, -7), std::vector<double>(pixels, -7), 0};
    n.undecided = picture.render(0, 0, v.pixelsWide, v.pixelsHigh, n.counts.data(), n.values.data(),
                                 v.pixelsWide);
    return n;
}

Numbers render(const deep::View& v) {
    return numbersOf(deep::Picture(v), v);
}

Numbers inDouble(const deep::View& v) {
    const auto pixels =
        static_cast<std::size_t>(v.pixelsWide) * static_cast<std::size_t>(v.pixelsHigh);
    Numbers n{std::vector<std::int32_t>(pixels), std::vector<double>(pixels), 0};
    const double re = std::stod(v.re), im = std::stod(v.im), half = std::stod(v.width) / 2;
    const double tall = half * v.pixelsHigh / v.pixelsWide;
    const bool julia = !v.cRe.empty();
    const double cx = julia ? std::stod(v.cRe) : 0, cy = julia ? std::stod(v.cIm) : 0;
    renderValuesScalar(
        ValueTile<double>{0, 0, v.pixelsWide, v.pixelsHigh, v.pixelsWide, v.pixelsHigh, re - half,
                          re + half, im - tall, im + tall, cx, cy, v.limit, v.maxIters,
                          n.counts.data(), n.values.data(), 0, 0, v.pixelsWide},
        julia ? 1 : 0);
    return n;
}

void expectTheNumbersOfDouble(const deep::View& v) {
    const Numbers deep = render(v), plain = inDouble(v);
    EXPECT_EQ(deep.undecided, 0);
    EXPECT_EQ(deep.counts, plain.counts);
    for (std::size_t n = 0; n < deep.values.size(); ++n) {
        ASSERT_EQ(std::isnan(deep.values[n]), std::isnan(plain.values[n])) << n;
        if (!std::isnan(plain.values[n])) {
            ASSERT_NEAR(deep.values[n], plain.values[n], 6e-7) << n;
        }
    }
}

TEST(DeepCore, HasTheNumbersOfDoubleWhereThatIsRight) {
    expectTheNumbersOfDouble({"-0.7", "0", "3", "", "", 40, 31, 4, 60});
    expectTheNumbersOfDouble({"-0.743", "0.126", "0.01", "", "", 32, 32, 65536, 90});
}

TEST(DeepCore, HasTheNumbersOfDoubleForJuliaSets) {
    expectTheNumbersOfDouble({"0", "0", "3.1", "-0.8", "0.156", 36, 28, 4, 60});
    expectTheNumbersOfDouble({"0.1", "0.2", "3.1", "-0.12", "0.75", 36, 28, 65536, 60});
}

TEST(DeepCore, KnowsThatTheTipOfTheNeedleStays) {
    const Numbers n = render({"-2", "0", "1e-400", "", "", 2, 2, 4, 100000});
    // Pixel (1, 1) is -2 itself, (0, 1) lies left of it.
    EXPECT_EQ(n.counts[3], 100000);
    EXPECT_LT(n.counts[2], 1000);
    EXPECT_EQ(n.undecided, 0);
}

// All instruction sets, the plain one included.
TEST(DeepCore, HasTheSameNumbersOnEveryInstructionSet) {
    const deep::View views[] = {
        {"-0.77568376800899379", "0.136467368294735125", "2e-13", "", "", 40, 24, 65536, 5000},
        {"-0.10109636384562", "0.95628651080914", "3e-9", "", "", 24, 16, 4, 3000},
        {"0", "0", "1e-45", "-0.7", "0.3", 20, 20, 4, 1000}};
    for (const deep::View& view : views) {
        const Numbers best = render(view);
        for (const std::int64_t target : {HWY_AVX3, HWY_AVX2, HWY_SCALAR}) {
            hwy::SetSupportedTargetsForTest(target);
            hwy::GetChosenTarget().DeInit();
            const Numbers here = render(view);
            EXPECT_EQ(here.counts, best.counts) << hwy::TargetName(target);
            EXPECT_TRUE(std::equal(here.values.begin(), here.values.end(), best.values.begin(),
                                   [](double a, double b) { return a == b || (a != a && b != b); }))
                << hwy::TargetName(target);
        }
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().DeInit();
    }
}

// A tier says what it knows or nothing: on a view that is hard for it, too.
TEST(DeepCore, EveryTierAloneHasTheRightCountsWhereItHasAny) {
    const deep::View view{
        "-0.77568376800899379", "0.136467368294735125", "2e-13", "", "", 48, 48, 65536, 5000};
    const Numbers all = render(view);
    for (const deep::Tier tier : {deep::Tier::doubles, deep::Tier::pairs, deep::Tier::digits}) {
        deep::useAlone(tier);
        const Numbers alone = render(view);
        deep::useAllTiers();
        std::int64_t left = 0;
        for (std::size_t n = 0; n < alone.counts.size(); ++n) {
            if (alone.counts[n] == -1) {
                ++left;
            } else {
                EXPECT_EQ(alone.counts[n], all.counts[n]) << n;
            }
        }
        EXPECT_EQ(left, alone.undecided);
        EXPECT_LT(left, tier == deep::Tier::doubles ? 100 : 1);
    }
}

// A hundred thousand pixels of a dense spiral: with a bound that does not grow by 2 |z| a step the
// doubles are sure of a wrong count.
TEST(DeepCore, DoublesAreSureOfNothingThatPairsContradict) {
    const deep::View view{
        "-0.77568376800899379", "0.136467368294735125", "2e-13", "", "", 320, 320, 4, 5000};
    const Numbers all = render(view);
    deep::useAlone(deep::Tier::pairs);
    const Numbers right = render(view);
    deep::useAlone(deep::Tier::doubles);
    const Numbers doubles = render(view);
    deep::useAllTiers();
    EXPECT_EQ(all.counts, right.counts);
    std::int64_t wrong = 0;
    for (std::size_t n = 0; n < right.counts.size(); ++n) {
        if (doubles.counts[n] != -1 && doubles.counts[n] != right.counts[n]) ++wrong;
    }
    EXPECT_EQ(wrong, 0);
}

// A flight towards one centre, the deepest frame first.
// 1.2 + 1.6 i and 1.6 + 1.2 i, of size 2, are pixels here; binary fractions hold neither.
TEST(DeepTie, IsDecidedInFractions) {
    const Numbers n = render({"0", "0", "4", "", "", 40, 40, 4, 100});
    EXPECT_EQ(n.undecided, 0);
    for (const std::size_t x : {8U, 32U}) {
        for (const std::size_t y : {4U, 36U}) {
            EXPECT_EQ(n.counts[40 * y + x], 1) << x << ' ' << y;
            EXPECT_EQ(n.counts[40 * x + y], 1) << y << ' ' << x;
        }
    }
}

// (0.1 + 0.1 i)^2 + c = 1.2 + 1.6 i. The pixel is the second of the second row.
TEST(DeepTie, OfAJuliaSetIsDecidedInFractions) {
    const Numbers n = render({"0.1", "0.1", "1e-40", "1.2", "1.58", 2, 2, 4, 50});
    EXPECT_EQ(n.undecided, 0);
    EXPECT_EQ(n.counts[3], 1);
}

// A fixed point of size 2: each step ends on the limit, and none beyond it.
TEST(DeepTie, OfStepAfterStepIsDecidedInFractionsWhileTheseAreShort) {
    deep::View fixed{"1.2", "1.6", "1e-40", "2.32", "-2.24", 2, 2, 4, 7};
    EXPECT_EQ(render(fixed).counts[3], 7);
    fixed.maxIters = 50;
    EXPECT_EQ(render(fixed).undecided, 1);
}

TEST(DeepFlight, SharesOneReferenceAndChangesNoNumber) {
    deep::View view{"-0.10101", "0.9563", "1e-60", "", "", 24, 16, 4, 3000};
    const deep::Picture deepest(view);
    for (const char* width : {"1e-30", "1e-5", "2"}) {
        view.width = std::string(width);
        const deep::Picture frame(view, deepest);
        EXPECT_TRUE(frame.sharesReference(deepest));
        const Numbers alone = render(view), shared = numbersOf(frame, view);
        EXPECT_EQ(shared.counts, alone.counts);
    }
}

TEST(DeepFlight, MakesAReferenceWhereTheOtherDoesNotServe) {
    const deep::View view{"-0.10101", "0.9563", "1e-30", "", "", 8, 8, 4, 500};
    const deep::Picture before(view);
    std::vector<deep::View> others(5, view);
    others[0].width = std::string("1e-60");
    others[1].re = std::string("-0.10102");
    others[2].limit = 100;
    others[3].maxIters = 501;
    others[4].cRe = others[4].cIm = std::string("0");
    for (const deep::View& other : others) {
        EXPECT_FALSE(deep::Picture(other, before).sharesReference(before));
    }
}

TEST(DeepFlight, DoesNotTakeOverAReferenceThatWasCutShort) {
    const deep::View view{"-0.1", "0", "1e-30", "", "", 8, 8, 4, 5000};
    const std::atomic<bool> stopped{true};
    const deep::Picture before(view, &stopped);
    const deep::Picture after(view, before);
    EXPECT_FALSE(after.sharesReference(before));
    EXPECT_EQ(numbersOf(after, view).counts, std::vector<std::int32_t>(64, 5000));
}

std::uint32_t stepsOfReference(const deep::View& view) {
    const deep::ExactView exact(view);
    return deep::Reference(exact, view, deep::referenceBits(exact), nullptr).lastEnd;
}

// The nucleus of the copy of period 3: the first of its returns after 64 steps is that at 66.
TEST(DeepReference, EndsAtAReturnOfACopyOfTheSet) {
    EXPECT_EQ(stepsOfReference({"-1.75487766624669276004950889635852869", "0", "1e-20", "", "", 64,
                                64, 4, 100000}),
              66);
}

// -1 is the nucleus of the disc of period 2. A return is an end as long as doubles hold the point
// and its square, and the roundings of both.
TEST(DeepReference, DoesNotEndAtAPointThatDoublesDoNotHold) {
    const std::string zeros(83, '0');
    EXPECT_EQ(stepsOfReference({"-1." + zeros + "1", "0", "1e-81", "", "", 64, 64, 4, 5000}), 64);
    EXPECT_EQ(
        stepsOfReference({"-1.000000000000" + zeros + "1", "0", "1e-93", "", "", 64, 64, 4, 5000}),
        5000);
    EXPECT_EQ(stepsOfReference({"-1", "0", "1e-30", "", "", 64, 64, 4, 5000}), 5000);
}

TEST(DeepReference, GoesOnWhereItDoesNotReturnAsCloseAsDifferencesAre) {
    EXPECT_EQ(stepsOfReference({"-0.1", "0", "1e-30", "", "", 64, 64, 4, 5000}), 5000);
}

}  // namespace

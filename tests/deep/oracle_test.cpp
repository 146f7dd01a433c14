// The yardstick itself, against what can be known without it.
#include "oracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <stdexcept>

#include "compute/value_tile.h"

namespace oracle {
namespace {

View view(const std::string& re, const std::string& im, const std::string& width) {
    return {re, im, width, "", "", 16, 16, 4, 1000};
}

View julia(const View& v, const std::string& cRe, const std::string& cIm) {
    return {v.re, v.im, v.width, cRe, cIm, v.pixelsWide, v.pixelsHigh, v.limit, v.maxIters};
}

std::int32_t centreCount(const View& v) {
    return Oracle(v).pixel(v.pixelsWide / 2, v.pixelsHigh / 2).count;
}

// The first steps in ratios, nothing cut.
std::int32_t exactCount(mpq_class zr, mpq_class zi, const mpq_class& cr, const mpq_class& ci,
                        double limit, int maxIters) {
    for (int n = 0; n < maxIters; ++n) {
        const mpq_class re = zr * zr - zi * zi + cr;
        zi = 2 * zr * zi + ci;
        zr = re;
        if (zr * zr + zi * zi > mpq_class(limit)) return n;
    }
    return maxIters;
}

TEST(Decimals, StandForTheirRatio) {
    EXPECT_EQ(decimal("-0.75"), mpq_class(-3, 4));
    EXPECT_EQ(decimal("+12"), 12);
    EXPECT_EQ(decimal("1.5e-3"), mpq_class(3, 2000));
    EXPECT_EQ(decimal("-25E2"), -2500);
    EXPECT_EQ(decimal("1e-1000") * decimal("1e1000"), 1);
    EXPECT_THROW(decimal("one"), std::invalid_argument);
}

TEST(Oracle, DecidesTheSegmentThatNeverEscapes) {
    for (const char* re : {"-2", "-1.9999999999999999999999999", "-1.5", "0", "0.25"}) {
        EXPECT_EQ(centreCount(view(re, "0", "1e-40")), 1000) << re;
    }
    EXPECT_NE(centreCount(view("0.2501", "0", "1e-40")), 1000);
    EXPECT_NE(centreCount(view("-2.0000000000000000000000000000000001", "0", "1e-60")), 1000);
}

TEST(Oracle, DecidesTiesWithTheLimit) {
    EXPECT_EQ(centreCount(view("1.2", "1.6", "1e-40")), 1);  // |c| = 2, in no binary number
    EXPECT_EQ(centreCount(view("0", "2", "1e-40")), 1);
    View one = view("0", "1", "1e-30");  // i, -1 + i, -i, -1 + i, ...: |z|^2 is 1, 2, 1, 2, ...
    one.limit = 2;
    EXPECT_EQ(centreCount(one), 1000);
    one.limit = 1;
    EXPECT_EQ(centreCount(one), 1);
}

TEST(Oracle, FollowsJuliaSetsFromThePixel) {
    EXPECT_EQ(centreCount(julia(view("2", "0", "1e-40"), "-2", "0")), 1000);
    EXPECT_LT(centreCount(julia(view("2.001", "0", "1e-40"), "-2", "0")), 10);
    EXPECT_LT(centreCount(julia(view("0", "0.1", "1e-40"), "-2", "0")), 10);  // -2.01 after a step
}

TEST(Oracle, CountsAsRatiosDo) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> thousandths(-2000, 2000);
    for (int k = 0; k < 300; ++k) {
        const int a = thousandths(random), b = thousandths(random), c = thousandths(random);
        View v = view(std::to_string(a) + "e-3", std::to_string(b) + "e-3", "1e-20");
        v.maxIters = 9;
        mpq_class re(a, 1000), im(b, 1000), other(c, 1000);
        re.canonicalize();
        im.canonicalize();
        other.canonicalize();
        EXPECT_EQ(centreCount(v), exactCount(0, 0, re, im, 4, 9)) << a << " " << b;
        const View j = julia(v, std::to_string(c) + "e-3", "0.5");
        EXPECT_EQ(centreCount(j), exactCount(re, im, other, mpq_class(1, 2), 4, 9))
            << a << " " << c;
    }
}

// Few bits must decide nothing wrong: the disc is what says so.
TEST(Oracle, IsNeverWrongWithTooFewBits) {
    const Oracle here(view("-0.743643887037158704752191506114774",
                           "0.131825904205311970493132056385139", "1e-20"));
    int decided = 0, undecided = 0;
    for (int k = 0; k < 16; ++k) {
        const Answer right = here.pixel(k, 5);
        for (int bits = 28; bits < right.bits; bits += 2) {
            const Answer poor = here.pixelWith(bits, k, 5);
            (poor.count == UNDECIDED ? undecided : decided)++;
            EXPECT_TRUE(poor.count == UNDECIDED || poor.count == right.count) << k << " " << bits;
        }
    }
    EXPECT_GT(decided, 0);
    EXPECT_GT(undecided, 50);
}

TEST(Oracle, HasTheCountsAndValuesOfDoubleWhereDoubleIsRight) {
    View v = view("-0.75", "0.25", "1");
    v.limit = 65536;
    v.maxIters = 60;
    std::int32_t counts[256];
    double values[256];
    ValueTile<double> tile{};
    tile.xEnd = tile.yEnd = tile.width = tile.height = 16;
    tile.xMin = -1.25;
    tile.xMax = -0.25;
    tile.yMin = -0.25;
    tile.yMax = 0.75;
    tile.limit = v.limit;
    tile.maxIters = v.maxIters;
    tile.counts = counts;
    tile.values = values;
    tile.stride = 16;
    renderValuesScalar(tile, 0);
    const Oracle here(v);
    for (int k = 0; k < 256; ++k) {
        const Answer right = here.pixel(k % 16, k / 16);
        EXPECT_EQ(right.count, counts[k]) << k;
        EXPECT_EQ(std::isnan(right.value), std::isnan(values[k])) << k;
        if (std::isnan(values[k])) continue;
        EXPECT_NEAR(right.value, values[k], 1e-6) << k;
    }
}

}  // namespace
}  // namespace oracle

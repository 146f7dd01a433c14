// Counts and values of deep pictures, pixel by pixel, against a yardstick of other make.
//
// Of the pictures in pictures.txt every count is held, by a hash, to what the yardstick found once;
// of all places a share of the pixels is counted anew each time. TESSARY_DEEP_PIXELS says how many
// of each picture (16384: all of them, an hour), and how many in large pictures.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "deep_support.h"
#include "places.h"

namespace oracle {

// What a failing test calls its place.
void PrintTo(const Place& place, std::ostream* out);
void PrintTo(const Place& place, std::ostream* out) {
    *out << place.name;
}

}  // namespace oracle

namespace {

using oracle::Answer;
using oracle::Oracle;
using oracle::Place;
using oracle::SIDE;

constexpr double VALUE_ERROR = 1e-6;  // of a step

// How many pixels the environment asks for.
int pixelsAsked(int otherwise) {
    const char* asked = std::getenv("TESSARY_DEEP_PIXELS");
    return asked == nullptr ? otherwise : std::atoi(asked);
}

void expectAnswer(const Answer& right, std::int32_t count, double value, const std::string& where) {
    EXPECT_EQ(right.count, count) << where;
    EXPECT_EQ(std::isnan(right.value), std::isnan(value)) << where;
    if (std::isnan(right.value)) return;
    EXPECT_NEAR(right.value, value, VALUE_ERROR) << where;
    EXPECT_TRUE(count - 1 <= value && value <= count) << where << ": " << value;
}

// The pixels of a share stand all over the picture, and each once: 6,151 is prime to SIDE * SIDE.
// The rows through the middle, where centres and real axes are, are always among them.
int pixelOfShare(int k) {
    if (k < 4) return (SIDE / 2 - k % 2) * SIDE + SIDE / 2 - k / 2;
    return k * 6151 % (SIDE * SIDE);
}

// As many as take the yardstick about a second at 500 bits, from 16 to 256.
int usualShare(const oracle::Picture& drawn) {
    const auto steps = drawn.steps / (SIDE * SIDE) + 1;
    return static_cast<int>(std::clamp<long long>(500000 / steps, 16, 256));
}

class EveryPlace : public testing::TestWithParam<Place> {};

TEST_P(EveryPlace, HasTheCountsOfExactArithmetic) {
    const Place& place = GetParam();
    ASSERT_EQ(deep::refusal(toDeep(place.view)), "");
    const Numbers drawn = renderWhole(place.view);
    EXPECT_EQ(drawn.undecided, 0);
    const oracle::Picture found = oracle::summary(drawn.counts, place.view.maxIters);
    const auto pictures = oracle::knownPictures();
    if (const auto known = pictures.find(place.name); known != pictures.end()) {
        EXPECT_EQ(found.steps, known->second.steps);
        EXPECT_EQ(found.hash, known->second.hash);
    }

    const Oracle here(place.view);
    const int share = std::min(pixelsAsked(usualShare(found)), SIDE * SIDE);
    for (int k = 0; k < share; ++k) {
        const int at = pixelOfShare(k);
        const auto n = static_cast<std::size_t>(at);
        expectAnswer(here.pixel(at % SIDE, at / SIDE), drawn.counts[n], drawn.values[n],
                     place.name + " pixel " + std::to_string(at));
    }
}

std::string nameOf(const testing::TestParamInfo<Place>& info) {
    std::string name = info.param.name;
    for (char& c : name) {
        if (c == '-') c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Deep, EveryPlace, testing::ValuesIn(oracle::places()), nameOf);

// Sides that are no powers of two: i/W is in no binary number.
class LargePicture : public testing::TestWithParam<const char*> {};

TEST_P(LargePicture, HasTheCountsOfExactArithmeticAtRandomPixels) {
    oracle::View view;
    for (const Place& place : oracle::places()) {
        if (place.name == GetParam()) view = place.view;
    }
    std::mt19937 random(20261122);
    constexpr int SIZES[][2] = {{1920, 1080}, {7001, 3003}, {65535, 65535}};
    for (const auto& size : SIZES) {
        view.pixelsWide = size[0];
        view.pixelsHigh = size[1];
        const deep::Picture picture(toDeep(view));
        const Oracle here(view);
        for (int k = 0; k < pixelsAsked(20); ++k) {
            const int x = static_cast<int>(random() % static_cast<unsigned>(size[0]));
            const int y = static_cast<int>(random() % static_cast<unsigned>(size[1]));
            const Numbers pixel = renderPart(picture, x, y, 1, 1);
            expectAnswer(here.pixel(x, y), pixel.counts[0], pixel.values[0],
                         std::to_string(x) + ", " + std::to_string(y));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Deep, LargePicture,
                         testing::Values("spiral-2e-13", "minibrot-1e-25", "minibrot-off",
                                         "spiral-1e-100-off", "julia-fixed-1e-40"));

// The signs of the bits that decide here are below what doubles, and often pairs of them, know.
TEST(AnEdge, IsDecidedAsInExactArithmetic) {
    for (const oracle::Edge& edge : oracle::edges()) {
        const deep::Picture picture(toDeep(edge.view));
        const Numbers drawn = renderPart(picture, edge.x / 8 * 8, edge.y / 8 * 8, 8, 8);
        const auto n = static_cast<std::size_t>(edge.y % 8 * 8 + edge.x % 8);
        const Answer right = Oracle(edge.view).pixel(edge.x, edge.y);
        expectAnswer(right, drawn.counts[n], drawn.values[n],
                     edge.view.width + " " + edge.view.re.substr(0, 30));
    }
}

oracle::View point(const char* re, const char* im, double limit, int maxIters) {
    return {re, im, "1e-40", "", "", 8, 8, limit, maxIters};
}

// |c| = 2 where no binary number says so.
TEST(ATie, InFractionsIsDecided) {
    const Numbers drawn = renderWhole(point("1.2", "1.6", 4, 100));
    EXPECT_EQ(drawn.counts[4 * 8 + 4], 1);
    EXPECT_EQ(drawn.undecided, 0);
}

TEST(ATie, InBinaryNumbersIsDecided) {
    EXPECT_EQ(renderWhole(point("-2", "0", 4, 5000)).counts[36], 5000);
    EXPECT_EQ(renderWhole(point("0", "1", 2, 5000)).counts[36], 5000);  // 1, 2, 1, 2, ...
    EXPECT_EQ(renderWhole(point("0", "1", 1, 5000)).counts[36], 1);
    EXPECT_EQ(renderWhole(point("0", "2", 4, 5000)).counts[36], 1);
}

// Below 4 a limit is passed by orbits that stay, those of the real segment too.
TEST(ALimitBelowFour, IsComparedAsItStands) {
    for (const double limit : {0.5, 2.0, 3.0}) {
        for (const char* re : {"-1.9", "-1.75", "0.25", "-0.1"}) {
            const oracle::View view = point(re, "0", limit, 300);
            const Numbers drawn = renderWhole(view);
            const Oracle here(view);
            for (int k = 0; k < 64; k += 5) {
                EXPECT_EQ(drawn.counts[static_cast<std::size_t>(k)], here.pixel(k % 8, k / 8).count)
                    << limit << " " << re << " " << k;
            }
        }
    }
}

// Far from the origin a point's own digits weigh more than the width's.
TEST(ALargeLimit, IsComparedAsItStands) {
    for (const auto& view : {point("1000", "0", 1e6, 5), point("-600", "800", 1e6, 5),
                             oracle::View{"0", "0", "1e-20", "30000", "40000", 8, 8, 2.5e9, 5},
                             oracle::View{"3", "4", "1e-20", "24", "-18", 8, 8, 325, 5}}) {
        const Numbers drawn = renderWhole(view);
        const Oracle here(view);
        for (int k = 0; k < 64; ++k) {
            EXPECT_EQ(drawn.counts[static_cast<std::size_t>(k)], here.pixel(k % 8, k / 8).count)
                << view.re << " " << k;
        }
    }
}

TEST(NoSteps, CountAsNone) {
    const Numbers drawn = renderWhole(point("0.3", "0.5", 4, 0));
    EXPECT_EQ(drawn.counts, std::vector<std::int32_t>(64, 0));
}

// A Julia set's real axis lies in a row of pixels, its imaginary axis in a column: both fall into
// the interval that never leaves, over chaotic orbits.
TEST(RealOrbits, OfJuliaSetsAreCountedRight) {
    for (const char* c : {"-1.9", "-2", "-1.5"}) {
        const oracle::View view{"0", "0", "1e-20", c, "0", 16, 16, 4, 400};
        const Numbers drawn = renderWhole(view);
        const Oracle here(view);
        for (int k = 0; k < 16; ++k) {
            EXPECT_EQ(drawn.counts[static_cast<std::size_t>(8 * 16 + k)], here.pixel(k, 8).count);
            EXPECT_EQ(drawn.counts[static_cast<std::size_t>(16 * k + 8)], here.pixel(8, k).count);
        }
    }
}

}  // namespace

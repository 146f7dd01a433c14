#include "render/linear_light.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "render/colour_rows.h"
#include "tests/render/render_support.h"

namespace {

using render::FULL_LIGHT;
using render::levelOfAverage;
using render::lightOfLevel;

// The curve of IEC 61966-2-1 and its inverse by the C library, to judge by.
double toLight(double level) {
    const double v = level / 255;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double toLevel(double light) {
    return 255 *
           (light <= 0.04045 / 12.92 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

TEST(Light, IsThatOfTheCurve) {
    for (std::size_t level = 0; level < 256; ++level) {
        const double light = static_cast<double>(lightOfLevel()[level]) / FULL_LIGHT;
        EXPECT_NEAR(light, toLight(static_cast<double>(level)), 1e-12) << level;
    }
    EXPECT_EQ(lightOfLevel()[0], 0u);
    EXPECT_EQ(lightOfLevel()[255], FULL_LIGHT);
}

TEST(Level, OfItsOwnLightIsItself) {
    for (unsigned level = 0; level < 256; ++level) {
        for (const std::uint64_t count : {1u, 4u, 9u, 64u, 65536u}) {
            EXPECT_EQ(levelOfAverage(count * lightOfLevel()[level], count), level);
        }
    }
}

TEST(Level, IsTheNearestToTheAverage) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t count = 1 + random() % 64;
        const std::uint64_t sum = random() % (count * FULL_LIGHT + 1);
        const double light = static_cast<double>(sum) / static_cast<double>(count) / FULL_LIGHT;
        const double exact = toLevel(light);
        const double boundary = std::floor(exact) + 0.5;
        if (std::abs(exact - boundary) < 1e-9) continue;  // the judge is not better than that
        ASSERT_EQ(levelOfAverage(sum, count), std::lround(exact)) << sum << "/" << count;
    }
}

// Where the curve is a line an average may lie in the very middle.
TEST(Level, BetweenTwoEquallyNearIsTheBrighter) {
    for (unsigned level = 0; level < 10; ++level) {
        for (unsigned n = 1; n <= 8; ++n) {
            const auto sum = lightOfLevel()[level] + lightOfLevel()[level + 1];
            EXPECT_EQ(levelOfAverage(n * sum, std::uint64_t{2} * n), level + 1);
            EXPECT_EQ(levelOfAverage(n * sum - 1, std::uint64_t{2} * n), level);
        }
    }
}

// Black and white in equal parts is brighter than the middle of the levels: light adds, not levels.
TEST(Level, OfHalfTheLightIs188) {
    EXPECT_EQ(levelOfAverage(FULL_LIGHT, 2), 188);
}

TEST(ASupersampledPicture, IsTheAverageOfTheLargerOne) {
    const auto& row = test_support::catalogueRows()[14];
    for (int n = 1; n <= render::MOST_SUPERSAMPLE; ++n) {
        auto job = test_support::jobOf(row, {37, 23}, render::Precision::doubles);
        job.supersample = n;
        const auto actual = test_support::renderedRows(job);
        const auto large = test_support::renderedRows(
            test_support::jobOf(row, {37 * n, 23 * n}, render::Precision::doubles));
        test_support::Picture expected(37, 23, 255);
        for (int y = 0; y < 23; ++y) {
            for (int x = 0; x < 37; ++x) {
                for (int channel = 0; channel < 3; ++channel) {
                    double light = 0;
                    for (int s = 0; s < n * n; ++s) {
                        light += toLight(large.pixel(n * x + s % n, n * y + s / n)[channel]);
                    }
                    expected.pixel(x, y)[channel] =
                        static_cast<unsigned char>(std::lround(toLevel(light / (n * n)) + 1e-9));
                }
            }
        }
        EXPECT_TRUE(samePicture(actual, expected, "supersample." + std::to_string(n)));
    }
}

// The levels of 16 bits of a built-in view with n samples a side.
std::vector<unsigned> deepLevels(render::Size size, int n, render::WantedColours wanted) {
    const std::atomic<bool> never{false};
    auto job =
        test_support::jobOf(test_support::catalogueRows()[14], size, render::Precision::doubles);
    job.supersample = n;
    wanted.depth = 16;
    job.colouring = std::make_shared<const render::Colouring>(wanted);
    const auto stride = static_cast<std::size_t>(size.width) * 6;
    std::vector<unsigned char> bytes(stride * static_cast<std::size_t>(size.height));
    render::ColourRows(never).render(job, {0, size.height}, bytes.data(), stride);
    std::vector<unsigned> levels;
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        levels.push_back(256U * bytes[at] + bytes[at + 1]);
    }
    return levels;
}

// In a picture of 37 x 23 pixels, what the samples of a larger one come to.
double averageOf(const std::vector<unsigned>& large, int n, int pixel, int channel) {
    double light = 0;
    for (int s = 0; s < n * n; ++s) {
        const int x = n * (pixel % 37) + s % n, y = n * (pixel / 37) + s / n;
        light += toLight(large[static_cast<std::size_t>(3 * (37 * n * y + x) + channel)] / 257.0);
    }
    return 257 * toLevel(light / (n * n));
}

void expectTheAverageOfTheLargerOne(const render::WantedColours& wanted) {
    for (const int n : {2, 3}) {
        const auto levels = deepLevels({37, 23}, n, wanted);
        const auto large = deepLevels({37 * n, 23 * n}, 1, wanted);
        for (int at = 0; at < 37 * 23 * 3; ++at) {
            ASSERT_NEAR(levels[static_cast<std::size_t>(at)], averageOf(large, n, at / 3, at % 3),
                        3.0)
                << n << " a side, level " << at;
        }
    }
}

// Levels of 16 bits take a way of their own, by the palette as well, whose levels are of 8.
TEST(ADeepPicture, HasTheColoursOfThePalette) {
    const auto levels = deepLevels({37, 23}, 1, {});
    const auto plain = test_support::renderedRows(test_support::jobOf(
        test_support::catalogueRows()[14], {37, 23}, render::Precision::doubles));
    for (int at = 0; at < 37 * 23 * 3; ++at) {
        ASSERT_EQ(levels[static_cast<std::size_t>(at)],
                  257U * plain.pixel(at / 3 % 37, at / 3 / 37)[at % 3])
            << at;
    }
}

TEST(ASupersampledPicture, OfSixteenBitsIsTheAverageOfTheLargerOne) {
    expectTheAverageOfTheLargerOne({});
}

TEST(ASupersampledPicture, OfAGradientIsTheAverageOfTheLargerOne) {
    render::WantedColours wanted;
    wanted.gradient = std::make_shared<const render::Gradient>(
        render::readGradient("#000000 0, #ff2000 0.3, #ffffff 1"));
    expectTheAverageOfTheLargerOne(wanted);
    wanted.smooth = true;
    expectTheAverageOfTheLargerOne(wanted);
}

TEST(ADeepFade, MixesTheLightOfEachLevelOfTwoPictures) {
    const std::vector<unsigned> own = {0, 65535, 30000, 512, 1, 40000};
    const std::vector<unsigned> other = {65535, 0, 20000, 40000, 258, 10000};
    const auto bytesOf = [](const std::vector<unsigned>& levels) {
        std::vector<unsigned char> bytes;
        for (const unsigned level : levels) {
            bytes.push_back(static_cast<unsigned char>(level >> 8));
            bytes.push_back(static_cast<unsigned char>(level & 255));
        }
        return bytes;
    };
    const std::vector<unsigned char> from = bytesOf(other);
    for (int step = 0; step <= 4; ++step) {
        std::vector<unsigned char> row = bytesOf(own);
        // All but the last level.
        render::fadeDeep(from.data(), row.data(), row.size() - 2, {nullptr, step, 4});
        for (std::size_t n = 0; n + 1 < own.size(); ++n) {
            const double light =
                (step * toLight(own[n] / 257.0) + (4 - step) * toLight(other[n] / 257.0)) / 4;
            EXPECT_NEAR(256 * row[2 * n] + row[2 * n + 1], 257 * toLevel(light), 1.0)
                << step << ", level " << n;
        }
        EXPECT_EQ(256U * row[10] + row[11], 40000U);
    }
}

}  // namespace

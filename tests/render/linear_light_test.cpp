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

// Levels of 16 bits take a way of their own, by the palette as well.
TEST(ASupersampledPicture, OfSixteenBitsIsTheAverageOfTheLargerOne) {
    const auto& row = test_support::catalogueRows()[14];
    const std::atomic<bool> never{false};
    render::WantedColours wanted;
    wanted.depth = 16;
    for (int n = 1; n <= 3; ++n) {
        auto job = test_support::jobOf(row, {37, 23}, render::Precision::doubles);
        job.supersample = n;
        job.colouring = std::make_shared<const render::Colouring>(wanted);
        std::vector<unsigned char> levels(std::size_t{37} * 23 * 6);
        render::ColourRows(never).render(job, {0, 23}, levels.data(), 37 * 6);
        const auto large = test_support::renderedRows(
            test_support::jobOf(row, {37 * n, 23 * n}, render::Precision::doubles));
        const unsigned char* level = levels.data();
        for (int at = 0; at < 37 * 23; ++at) {
            for (int channel = 0; channel < 3; ++channel, level += 2) {
                double light = 0;
                for (int s = 0; s < n * n; ++s) {
                    light +=
                        toLight(large.pixel(n * (at % 37) + s % n, n * (at / 37) + s / n)[channel]);
                }
                ASSERT_NEAR(256 * level[0] + level[1], 257 * toLevel(light / (n * n)), 1.0)
                    << n << " a side, pixel " << at;
            }
        }
    }
}

}  // namespace

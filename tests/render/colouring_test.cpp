#include "render/colouring.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "render/colour_rows.h"

namespace {

using render::Blend;
using render::Colouring;
using render::Gradient;
using render::Levels;
using render::WantedColours;

WantedColours smoothWith(const std::string& gradient) {
    WantedColours colours;
    colours.smooth = true;
    colours.gradient = std::make_shared<const Gradient>(render::readGradient(gradient));
    return colours;
}

// A quarter of a level of 16 bits, and what a float rounds.
constexpr double NEAR = 0.3 / 65535;

TEST(TheTable, IsAsGoodAsTheGradient) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> any(0, 1);
    std::vector<std::string> texts = render::gradientNames();
    texts.emplace_back("#000000 0, #ffffff 0.123, #ff0000 0.123, #00ff00 0.7");
    for (int blending = 0; blending <= 5; ++blending) {
        texts.push_back("GIMP Gradient\n2\n0 0.1 0.3 1 0 0 1 0 1 0 1 " + std::to_string(blending) +
                        " 0\n0.3 0.77 1 0 1 0 1 0 0 1 1 " + std::to_string(blending) + " 1\n");
    }
    for (const std::string& text : texts) {
        const Gradient gradient = render::readGradient(text);
        for (const Blend blend : {Blend::oklab, Blend::linear, Blend::srgb}) {
            const render::GradientTable table(gradient, blend);
            for (int n = 0; n < 20000; ++n) {
                const double place = n == 0 ? 1 : any(random);
                const Levels exact = gradient.at(place, blend), actual = table.at(place);
                for (std::size_t c = 0; c < 3; ++c) {
                    ASSERT_NEAR(actual[c], exact[c], NEAR) << text << " at " << place;
                }
            }
        }
    }
}

TEST(TheTable, SeesWhatIsNarrowerThanItsParts) {
    const Gradient gradient =
        render::readGradient("#000000 0.50001, #ffffff 0.500012, #000000 0.500014");
    const render::GradientTable table(gradient, Blend::srgb);
    EXPECT_NEAR(table.at(0.500012)[0], 1, 1e-9);
    EXPECT_NEAR(table.at(0.500011)[0], 0.5, 1e-6);
    EXPECT_EQ(table.at(0.5001)[0], 0);
}

TEST(TheTable, KnowsTheLightOfTheGradient) {
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> any(0, 1);
    std::vector<std::string> texts = render::gradientNames();
    texts.emplace_back("#000000 0, #ffffff 0.123, #ff0000 0.123, #00ff00 0.7");
    texts.emplace_back("#000000 0, #ffffff 0.01, #000000 0.02");
    for (const std::string& text : texts) {
        const Gradient gradient = render::readGradient(text);
        const render::GradientTable table(gradient, Blend::srgb);
        for (int n = 0; n < 20000; ++n) {
            const double place = n == 0 ? 1 : any(random);
            const Levels exact = gradient.at(place, Blend::srgb);
            const render::Light light = table.lightAt(place);
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_NEAR(levelOfLight(light[c]), exact[c], 1.5 / 65535) << text << " " << place;
            }
        }
    }
}

TEST(SmoothColours, HaveTheFirstGradientWhereNoneIsNamed) {
    WantedColours colours;
    colours.smooth = true;
    const Colouring colouring(colours);
    ASSERT_TRUE(colouring.hasGradient());
    const Gradient tide = render::readGradient("tide");
    for (const double place : {0.0, 0.3, 0.7}) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(colouring.atPlace(place)[c], tide.at(place, Blend::oklab)[c], NEAR);
        }
    }
}

TEST(ColoursOfAPicture, AreTakenWhereNoOthersAreChosen) {
    WantedColours usual = smoothWith("dusk");
    usual.escape = 9;
    usual.blend = Blend::linear;
    usual.scale = render::Scale::logarithm;
    usual.period = 7;
    usual.range = render::ValueRange{1, 2};
    usual.offset = 0.25;
    usual.inside = render::Colour{1, 2, 3};
    usual.depth = 16;
    usual.dither = false;
    const WantedColours same = merged({}, usual);
    EXPECT_EQ(same.smooth, usual.smooth);
    EXPECT_EQ(same.escape, usual.escape);
    EXPECT_EQ(same.gradient, usual.gradient);
    EXPECT_EQ(same.blend, usual.blend);
    EXPECT_EQ(same.scale, usual.scale);
    EXPECT_EQ(same.period, usual.period);
    EXPECT_EQ(same.range->greatest, 2);
    EXPECT_EQ(same.offset, usual.offset);
    EXPECT_EQ(same.inside, usual.inside);
    EXPECT_EQ(same.depth, usual.depth);
    EXPECT_EQ(same.dither, usual.dither);
}

TEST(ColoursOfAPicture, LoseTheirRangeToANewPeriodAndTheirPeriodToANewRange) {
    WantedColours usual, chosen;
    usual.period = 7;
    usual.range = render::ValueRange{1, 2};
    chosen.period = 5;
    EXPECT_FALSE(merged(chosen, usual).range);
    EXPECT_EQ(merged(chosen, usual).period, 5);
    chosen.period.reset();
    chosen.autoRange = true;
    EXPECT_FALSE(merged(chosen, usual).range);
    EXPECT_FALSE(merged(chosen, usual).period);
}

TEST(ColoursOfAPicture, LoseTheirWayOfMixingToANewGradient) {
    WantedColours usual = smoothWith("dusk");
    usual.blend = Blend::linear;
    EXPECT_FALSE(merged(smoothWith("tide"), usual).blend);
}

TEST(AValue, LiesInTheGradientByScalePeriodAndOffset) {
    WantedColours colours = smoothWith("#000000 0, #ffffff 1");
    colours.blend = Blend::srgb;
    colours.period = 10;
    const auto grey = [&](double value) { return Colouring(colours).of(value)[0]; };
    EXPECT_NEAR(grey(2.5), 0.25, 1e-6);
    EXPECT_NEAR(grey(12.5), 0.25, 1e-6);
    EXPECT_NEAR(grey(-2.5), 0.75, 1e-6);
    colours.offset = 0.5;
    EXPECT_NEAR(grey(2.5), 0.75, 1e-6);
    EXPECT_NEAR(grey(7.5), 0.25, 1e-6);
    colours.offset = 0;
    colours.scale = render::Scale::squareRoot;
    EXPECT_NEAR(grey(2.5), 0.5, 1e-6);
    EXPECT_NEAR(grey(-1), 0, 1e-6);
    colours.scale = render::Scale::logarithm;
    EXPECT_NEAR(grey(2.5), std::log(3.5) / std::log(11.0), 1e-6);
    EXPECT_NEAR(grey(-1), 0, 1e-6);
}

TEST(WhatHasNoValue, IsInside) {
    WantedColours colours = smoothWith("#ffffff 0");
    colours.inside = render::Colour{51, 102, 204};
    const Levels inside = Colouring(colours).of(std::nan(""));
    EXPECT_NEAR(inside[0], 0.2, 1e-15);
    EXPECT_NEAR(inside[1], 0.4, 1e-15);
    EXPECT_NEAR(inside[2], 0.8, 1e-15);
}

TEST(AValueBeyondAllBounds, HasSomeColour) {
    const Colouring colouring(smoothWith("#ffffff 0"));
    for (const double value : {1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(colouring.of(value)[0], 1);
    }
}

TEST(TheEscapeBound, IsRaisedForSmoothValuesOfFiveRules) {
    const std::set<int> raised = {0, 1, 11, 12, 13};
    for (int rule = 0; rule < 14; ++rule) {
        fractal view = {};
        view.fractalType = rule;
        view.maxSize = 4.5;
        WantedColours colours;
        EXPECT_EQ(render::escapeBound(view, colours), 4);
        colours.smooth = true;
        EXPECT_EQ(render::escapeBound(view, colours), raised.count(rule) > 0 ? 65536 : 4);
        view.maxSize = 1e6;
        EXPECT_EQ(render::escapeBound(view, colours), 1e6);
        colours.escape = 7.5;
        EXPECT_EQ(render::escapeBound(view, colours), 7.5);
    }
}

TEST(TheDitheringPattern, HasEachOfItsRanksOnce) {
    std::set<double> found;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            found.insert(render::ditherThreshold(x, y));
            EXPECT_EQ(render::ditherThreshold(x, y), render::ditherThreshold(x + 16, y + 48));
        }
    }
    EXPECT_EQ(found.size(), 256u);
    EXPECT_EQ(*found.begin(), 1 / 512.0);
    EXPECT_EQ(*found.rbegin(), 511 / 512.0);
}

double meanOfDithered(const Colouring& colouring, double level) {
    double sum = 0;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            unsigned char out[3];
            render::putLevels({level, level, level}, colouring, x, y, out);
            EXPECT_TRUE(out[0] == out[1] && out[1] == out[2]);
            sum += out[0];
        }
    }
    return sum / 256;
}

TEST(Dithering, KeepsTheMean) {
    const Colouring colouring(smoothWith("grey"));
    for (int n = 0; n <= 1000; ++n) {
        const double level = n / 1000.0;
        EXPECT_NEAR(meanOfDithered(colouring, level), level * 255, 0.5 / 256 + 1e-9) << n;
    }
}

TEST(Dithering, LeavesWholeLevelsAlone) {
    const Colouring colouring(smoothWith("grey"));
    for (int level = 0; level <= 255; ++level) {
        for (int n = 0; n < 256; ++n) {
            unsigned char out[3];
            const double value = level / 255.0;
            render::putLevels({value, value, value}, colouring, n % 16, n / 16, out);
            ASSERT_EQ(out[0], level);
        }
    }
}

}  // namespace

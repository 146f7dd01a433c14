// Rows coloured with vectors have the bytes of pixels coloured one by one, on every instruction
// set.
#include "render/colour_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "compute/value_colours.h"
#include "compute/vector_renderer.h"

namespace {

using render::Blend;
using render::Colouring;
using render::Gradient;
using render::Scale;
using render::WantedColours;

using Bytes = std::vector<unsigned char>;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr unsigned char CANARY = 0xa5;

// Gives the machine's best instruction set back at its end.
struct ForcedTarget {
    explicit ForcedTarget(std::int64_t bit) { vector_control::forceTarget(bit); }
    ~ForcedTarget() { vector_control::forceTarget(0); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

const std::vector<vector_control::Target>& allTargets() {
    static const auto TARGETS = vector_control::targets();
    return TARGETS;
}

WantedColours smoothWith(const std::string& gradient) {
    WantedColours colours;
    colours.smooth = true;
    colours.gradient = std::make_shared<const Gradient>(render::readGradient(gradient));
    return colours;
}

// Values of all kinds: those of pictures, with runs of points that stay, and what no picture has.
std::vector<double> anyValues(std::size_t n, unsigned seed) {
    const double rare[] = {0.0,     -0.0,      64,        -64,      128,         1e300,
                           -1e300,  INFINITE,  -1e-20,    1e-310,   0x1p52 * 64, 0x1p58,
                           -0x1p58, 63.999999, 64.000001, -INFINITE};
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> any(-10, 200);
    std::vector<double> values(n);
    for (double& value : values) {
        const auto kind = random() % 8;
        value = kind == 0   ? std::nan("")
                : kind == 1 ? rare[random() % std::size(rare)]
                : kind == 2 ? static_cast<double>(random() % 200)
                            : any(random);
    }
    return values;
}

Bytes oneByOne(const Colouring& how, int y, const std::vector<double>& values) {
    const std::size_t pixel = how.isDeep() ? 6 : 3;
    Bytes out(pixel * values.size());
    for (std::size_t x = 0; x < values.size(); ++x) {
        render::putLevels(how.of(values[x]), how, static_cast<int>(x), y, out.data() + pixel * x);
    }
    return out;
}

// The row, and the canaries that stand behind it.
Bytes together(const Colouring& how, int y, const std::vector<double>& values) {
    const std::size_t pixel = how.isDeep() ? 6 : 3;
    Bytes out(pixel * values.size() + 16, CANARY);
    std::vector<std::int32_t> room(values.size());
    render::colourRow(how, y, values.data(), room, out.data());
    return out;
}

void expectTheSame(const Colouring& how, int width, int y) {
    const auto values = anyValues(static_cast<std::size_t>(width), static_cast<unsigned>(width));
    Bytes expected = oneByOne(how, y, values);
    expected.resize(expected.size() + 16, CANARY);
    for (const auto& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        const Bytes actual = together(how, y, values);
        const auto differs = std::mismatch(actual.begin(), actual.end(), expected.begin());
        const auto byte = differs.first - actual.begin();
        EXPECT_EQ(actual, expected)
            << target.name << " from byte " << byte << " on, a row of " << width;
    }
}

// Four depths and ways to round, three scales, three places to mix colours.
template <class Check>
void forEveryWay(WantedColours colours, Check&& check) {
    for (const int depth : {8, 16}) {
        for (const bool dither : {true, false}) {
            for (const Scale scale : {Scale::linear, Scale::squareRoot, Scale::logarithm}) {
                for (const Blend blend : {Blend::oklab, Blend::linear, Blend::srgb}) {
                    colours.depth = depth;
                    colours.dither = dither;
                    colours.scale = scale;
                    colours.blend = blend;
                    check(colours);
                }
            }
        }
    }
}

TEST(ARowOfValues, HasTheBytesOfItsPixelsInEveryGradient) {
    std::vector<std::string> texts = render::gradientNames();
    texts.emplace_back("#000000 0, #ffffff 0.123, #ff0000 0.123, #00ff00 0.7");
    texts.emplace_back(
        "GIMP Gradient\n2\n0 0.1 0.3 1 0 0 1 0 1 0 1 4 0\n0.3 0.77 1 0 1 0 1 0 0 1 1 1 1\n");
    for (const std::string& text : texts) {
        WantedColours colours = smoothWith(text);
        colours.inside = render::Colour{51, 102, 253};
        forEveryWay(colours,
                    [&](const WantedColours& way) { expectTheSame(Colouring(way), 517, 3); });
    }
}

TEST(ARowOfValues, HasThemAtAnyWidth) {
    for (const int depth : {8, 16}) {
        WantedColours colours = smoothWith(render::gradientNames().front());
        colours.depth = depth;
        const Colouring how(colours);
        for (int width = 1; width <= 270; ++width) expectTheSame(how, width, width);
    }
}

TEST(ARowOfValues, HasThemAtAnyPeriodOffsetAndRange) {
    WantedColours colours = smoothWith("#000000 0, #ffffff 1");
    for (const Scale scale : {Scale::linear, Scale::squareRoot, Scale::logarithm}) {
        colours.scale = scale;
        for (const double period : {1e-300, 0.3, 1.0, 12.5, 1e300}) {
            for (const double offset : {0.0, -0.3, 1e17}) {
                colours.period = period;
                colours.offset = offset;
                const Colouring how(colours);
                expectTheSame(how, 131, 9);
                for (const auto& range : {render::ValueRange{0, 64}, {3, 190}, {64, 64}, {5, -5}}) {
                    expectTheSame(how.over(range), 131, 9);
                }
            }
        }
    }
}

Bytes averagesOneByOne(const Colouring& how, int y, const std::vector<double>& values, int side) {
    const int pixel = how.isDeep() ? 6 : 3, width = static_cast<int>(values.size()) / side / side;
    Bytes out(static_cast<std::size_t>(pixel * width));
    for (int x = 0; x < width; ++x) {
        const render::Light light =
            render::averageLight(how, values.data() + x * side, width * side, side);
        render::Levels levels;
        for (std::size_t c = 0; c < 3; ++c) levels[c] = levelOfLight(light[c]);
        render::putLevels(levels, how, x, y, out.data() + x * pixel);
    }
    out.resize(out.size() + 16, CANARY);
    return out;
}

void expectTheSameAverages(const Colouring& how, int width, int side) {
    const auto samples = static_cast<std::size_t>(width * side * side);
    const auto values = anyValues(samples, static_cast<unsigned>(width + side));
    const Bytes expected = averagesOneByOne(how, width, values, side);
    for (const auto& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        Bytes actual(expected.size(), CANARY);
        std::vector<std::int32_t> room(static_cast<std::size_t>(width));
        render::colourSamples(how, width, values.data(), side, room, actual.data());
        EXPECT_EQ(actual, expected) << target.name << ", " << width << " pixels of " << side;
    }
}

TEST(AveragesOfValues, HaveTheBytesOfTheirPixelsInEveryGradient) {
    std::vector<std::string> texts = render::gradientNames();
    texts.emplace_back("#000000 0, #ffffff 0.123, #ff0000 0.123, #00ff00 0.7");
    for (const std::string& text : texts) {
        WantedColours colours = smoothWith(text);
        colours.inside = render::Colour{51, 102, 253};
        forEveryWay(colours, [&](const WantedColours& way) {
            expectTheSameAverages(Colouring(way), 150, 2);
        });
    }
}

TEST(AveragesOfValues, HaveThemAtAnyWidthAndNumberOfSamples) {
    for (const int depth : {8, 16}) {
        WantedColours colours = smoothWith(render::gradientNames().front());
        colours.depth = depth;
        const Colouring how(colours);
        for (int width = 1; width <= 140; ++width) expectTheSameAverages(how, width, 3);
        for (int side = 1; side <= MOST_SAMPLES; ++side) expectTheSameAverages(how, 70, side);
    }
}

double exactLight(double level) {
    return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
}

double exactLevel(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

TEST(AveragesOfValues, AreTakenOfTheLightOfTheirSamples) {
    WantedColours colours = smoothWith("tide");
    colours.inside = render::Colour{255, 128, 0};
    const Colouring how(colours);
    for (int side = 1; side <= MOST_SAMPLES; ++side) {
        const auto values = anyValues(static_cast<std::size_t>(side * (side + 5)), 7);
        double sum[3] = {};
        for (int n = 0; n < side * side; ++n) {
            const auto levels =
                how.of(values[static_cast<std::size_t>(n / side * (side + 5) + n % side)]);
            for (std::size_t c = 0; c < 3; ++c) sum[c] += exactLight(levels[c]);
        }
        const render::Light light = render::averageLight(how, values.data(), side + 5, side);
        for (std::size_t c = 0; c < 3; ++c) {
            const double exact = exactLevel(sum[c] / (side * side));
            EXPECT_NEAR(levelOfLight(light[c]), exact, 1.5 / 65535) << side;
        }
    }
}

TEST(TheLevelOfALight, LiesOnTheCurve) {
    for (int n = -1000; n <= 100000; ++n) {
        const float light = static_cast<float>(n) / 100000;
        EXPECT_NEAR(levelOfLight(light), exactLevel(light), 1e-6) << light;
    }
    EXPECT_EQ(levelOfLight(0), 0);
}

// Though the light of a level is rounded, dithering adds nothing to a whole one.
TEST(AveragesOfWhatHasNoValue, AreInside) {
    for (unsigned level = 0; level <= 255; ++level) {
        WantedColours colours = smoothWith("grey");
        const auto byte = static_cast<unsigned char>(level);
        colours.inside = render::Colour{byte, byte, byte};
        const Colouring how(colours);
        const std::vector<double> values(9 * 16, std::nan(""));
        std::vector<std::int32_t> room(16);
        for (int y = 0; y < 16; ++y) {
            Bytes out(3 * 16);
            render::colourSamples(how, y, values.data(), 3, room, out.data());
            ASSERT_EQ(out, Bytes(3 * 16, byte)) << level;
        }
    }
}

TEST(Vectors, LeaveOnlyPixelsWithASampleThatTheTableDoesNotKnow) {
    const Colouring broken(smoothWith("#000000 0, #ffffff 0.50001, #ff0000 0.50001"));
    const std::vector<float> halves(ROUNDINGS, 0.5F);
    constexpr int WIDTH = 100, SIDE = 8;
    for (const int odd : {0, 7, 64 * SIDE + 3, WIDTH * SIDE - 1}) {
        std::vector<double> values(WIDTH * SIDE * SIDE, 12.0);
        values[static_cast<std::size_t>(5 * WIDTH * SIDE + odd)] = 32.0;  // at the edge
        for (const auto& target : allTargets()) {
            if (target.name == "scalar") continue;
            const ForcedTarget forced(target.bit);
            std::vector<std::int32_t> left(WIDTH, -1);
            Bytes out(3 * WIDTH);
            const int count =
                colourAverages(broken.forSamples(), halves.data(),
                               {values.data(), WIDTH * SIDE, SIDE}, WIDTH, out.data(), left.data());
            ASSERT_EQ(count, 1) << target.name;
            EXPECT_EQ(left[0], odd / SIDE);
        }
    }
}

// What vectors leave is counted, or rows of which they do nothing would pass as well.
TEST(Vectors, LeaveOnlyWhatTheTableDoesNotKnow) {
    const Colouring straight(smoothWith("#000000 0, #ffffff 0.5")),
        broken(smoothWith("#000000 0, #ffffff 0.50001, #ff0000 0.50001"));
    const std::vector<double> values(100, 32.0);  // half a turn: there the second one has an edge
    const std::vector<float> halves(ROUNDINGS, 0.5F);
    for (const auto& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        std::vector<std::int32_t> left(values.size(), -1);
        Bytes out(3 * values.size());
        const auto leftBy = [&](const Colouring& how) {
            return colourValues(how.forRows(), halves.data(), values.data(), 100, out.data(),
                                left.data());
        };
        EXPECT_EQ(leftBy(straight), target.name == "scalar" ? 100 : 0) << target.name;
        EXPECT_EQ(leftBy(broken), 100) << target.name;
        for (std::int32_t x = 0; x < 100; ++x) EXPECT_EQ(left[static_cast<std::size_t>(x)], x);
    }
}

}  // namespace

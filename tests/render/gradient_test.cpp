#include "render/gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "render/colour_curves.h"
#include "render/failure.h"

namespace {

using render::Blend;
using render::Gradient;
using render::Levels;
using render::Segment;

// The curve of IEC 61966-2-1 and its inverse by the C library, to judge by.
double lightByLibrary(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double levelByLibrary(double light) {
    return light <= 0.04045 / 12.92 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

TEST(Curves, AreThoseOfSrgb) {
    for (int n = 0; n <= 100000; ++n) {
        const double x = n / 100000.0;
        ASSERT_NEAR(render::lightOf(x), lightByLibrary(x), 3e-7) << x;
        ASSERT_NEAR(render::levelOf(x), levelByLibrary(x), 3e-7) << x;
    }
}

TEST(Curves, GoOnEvenlyWhereTheirLineEnds) {
    for (int n = -20000; n <= 20000; ++n) {
        const double level = 0.04045 + n * 1e-8, light = 0.04045 / 12.92 + n * 1e-9;
        ASSERT_NEAR(render::lightOf(level), lightByLibrary(level), 3e-7) << level;
        ASSERT_NEAR(render::levelOf(light), levelByLibrary(light), 3e-7) << light;
    }
}

TEST(Curves, TakeWhatLiesOutsideAsTheEnds) {
    for (const auto curve : {render::lightOf, render::levelOf}) {
        EXPECT_EQ(curve(-1), 0);
        EXPECT_EQ(curve(-0.25), 0);
        EXPECT_EQ(curve(std::nan("")), 0);
        EXPECT_NEAR(curve(7), 1, 1e-15);
    }
}

TEST(Curves, AreLinesUpToTheEndOfTheseIncluded) {
    constexpr double LEVEL = 0.04045, LIGHT = LEVEL / 12.92;
    EXPECT_EQ(render::lightOf(LEVEL), LIGHT);
    EXPECT_EQ(render::levelOf(LIGHT), LIGHT * 12.92);
}

// A last bit of theirs is one of pictures.
TEST(Curves, HaveTheBitsTheyAlwaysHad) {
    std::uint64_t hash = 14695981039346656037U;
    for (int n = 0; n <= 65535; ++n) {
        for (const auto curve : {render::lightOf, render::levelOf}) {
            hash = (hash ^ std::bit_cast<std::uint64_t>(curve(n / 65535.0))) * 1099511628211U;
        }
    }
    EXPECT_EQ(hash, 0x7aef598a9ff90dee);
}

TEST(Curves, HaveASineNearTheTrueOne) {
    for (int n = -2000; n <= 2000; ++n) {
        EXPECT_NEAR(render::sine(n / 1000.0), std::sin(n / 1000.0), 1e-15);
    }
}

// What is said of a text that is no gradient.
std::string complaint(const std::string& text) {
    try {
        render::readGradient(text);
        return "none";
    } catch (const render::Failure& failure) {
        return failure.what();
    }
}

TEST(StopsAsText, AreToldByTheColumnOfTheirMistake) {
    EXPECT_EQ(complaint("#000764 0, #206bcb 0.16, #edffff 0.42"), "none");
    EXPECT_EQ(complaint("  #000764\t0 , #206bcb 1 "), "none");
    EXPECT_EQ(complaint("#00076 0"), "column 1: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#00076g 0"), "column 1: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#000764 0, 206bcb 1"), "column 12: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#000764 0,"), "column 11: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#000764 0, "), "column 12: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#000764"), "column 8: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#0007640"), "column 8: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#000764 x"), "column 9: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#000764 -0.1"), "column 9: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#000764   1.5"), "column 11: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#000764 nan"), "column 9: expected a place from 0 to 1");
    EXPECT_EQ(complaint("#000764 0 #206bcb 1"), "column 11: expected a comma or the end");
    EXPECT_EQ(complaint("#000764 0; #206bcb 1"), "column 10: expected a comma or the end");
    EXPECT_EQ(complaint("#000764 0.5, #206bcb 0.25"), "column 22: expected a place not before 0.5");
    EXPECT_EQ(complaint("é #000764 0"), "column 1: expected a colour such as #206bcb");
    EXPECT_EQ(complaint("#000764 0é"), "column 10: expected a comma or the end");
    EXPECT_EQ(complaint("#000764 0, é"), "column 12: expected a colour such as #206bcb");
}

TEST(AnUnknownName, IsToldWithThoseThatAre) {
    for (const auto& name : render::gradientNames()) {
        EXPECT_NE(complaint("rainbow").find(name), std::string::npos);
    }
}

void expectColour(const Levels& actual, const Levels& expected, double tolerance) {
    for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(actual[c], expected[c], tolerance) << c;
}

TEST(Stops, HaveTheirColoursAtTheirPlacesAndTurnFollowsTurn) {
    const Gradient gradient = render::readGradient("#ff0000 0.25, #0000ff 0.75");
    for (const Blend blend : {Blend::oklab, Blend::linear, Blend::srgb}) {
        expectColour(gradient.at(0.25, blend), {1, 0, 0}, 1e-12);
        expectColour(gradient.at(0.75, blend), {0, 0, 1}, 1e-12);
        expectColour(gradient.at(0, blend), gradient.at(1, blend), 1e-12);
        expectColour(gradient.at(0, blend), gradient.at(0.5, blend), 1e-12);
    }
    expectColour(gradient.at(0.5, Blend::srgb), {0.5, 0, 0.5}, 1e-12);
    const double half = levelByLibrary(0.5);
    expectColour(gradient.at(0.5, Blend::linear), {half, 0, half}, 1e-6);
}

TEST(Stops, MayBeAsManyAsAGimpFileHasSegments) {
    const auto stops = [](int count) {
        std::string text = "#000000 0";
        for (int n = 1; n < count; ++n) text += ", #ffffff 1";
        return text;
    };
    EXPECT_EQ(complaint(stops(4096)), "none");
    EXPECT_EQ(complaint(stops(4097)), "column 45066: expected no more stops");
}

TEST(Stops, HaveNoNegativeZeroAsTheirPlace) {
    EXPECT_EQ(render::readGradient("#010203 -0, #ffffff -0.0").text(), "#010203 0, #ffffff 0");
}

TEST(TwoStopsAtOnePlace, MakeAnEdge) {
    const Gradient gradient =
        render::readGradient("#000000 0, #000000 0.5, #ffffff 0.5, #ffffff 1");
    EXPECT_EQ(gradient.at(0.4999999, Blend::srgb)[0], 0);
    EXPECT_EQ(gradient.at(0.5, Blend::srgb)[0], 1);
}

// Oklab as its author gives it, in the C library's functions.
Levels mixedInOklab(const Levels& a, const Levels& b, double share) {
    const auto toLab = [](const Levels& levels) {
        const double r = lightByLibrary(levels[0]), g = lightByLibrary(levels[1]),
                     bl = lightByLibrary(levels[2]);
        const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * bl);
        const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * bl);
        const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * bl);
        return Levels{0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
                      1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
                      0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
    };
    const Levels p = toLab(a), q = toLab(b);
    Levels lab{};
    for (std::size_t c = 0; c < 3; ++c) lab[c] = p[c] + share * (q[c] - p[c]);
    const double l = std::pow(lab[0] + 0.3963377774 * lab[1] + 0.2158037573 * lab[2], 3);
    const double m = std::pow(lab[0] - 0.1055613458 * lab[1] - 0.0638541728 * lab[2], 3);
    const double s = std::pow(lab[0] - 0.0894841775 * lab[1] - 1.2914855480 * lab[2], 3);
    const Levels light = {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
                          -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
                          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
    Levels out{};
    for (std::size_t c = 0; c < 3; ++c) {
        out[c] = levelByLibrary(std::min(std::max(light[c], 0.0), 1.0));
    }
    return out;
}

TEST(MixingInOklab, IsThatOfItsAuthor) {
    const Gradient gradient = render::readGradient("#206bcb 0, #edb013 1");
    const Levels a = {32 / 255.0, 107 / 255.0, 203 / 255.0},
                 b = {237 / 255.0, 176 / 255.0, 19 / 255.0};
    for (int n = 0; n <= 100; ++n) {
        expectColour(gradient.at(n / 100.0, Blend::oklab), mixedInOklab(a, b, n / 100.0), 1e-6);
    }
}

TEST(AGradient, IsMadeAgainFromItsText) {
    std::vector<std::string> texts = render::gradientNames();
    texts.emplace_back("#000764 0.1, #206bcb 0.123456789012345, #edffff 0.42");
    texts.emplace_back(
        "GIMP Gradient\nName: a\n2\n0 0.1 0.3 1 0 0 1 0 1 0 1 1 0\n"
        "0.300000 0.5 1.000000 0.25 0 0 1 0 1 0.125 1 4 2 0 0\n");
    for (const std::string& text : texts) {
        const Gradient gradient = render::readGradient(text);
        const Gradient again = render::readGradient(gradient.text());
        EXPECT_EQ(gradient.text(), again.text());
        EXPECT_EQ(gradient.usualBlend(), again.usualBlend());
        for (int n = 0; n <= 997; ++n) {
            EXPECT_EQ(gradient.at(n / 997.0, Blend::oklab), again.at(n / 997.0, Blend::oklab));
        }
    }
}

// Lightness alone tells the places of the gradients for colour-blind eyes apart, on each half.
TEST(TheLastTwoGradients, GrowLighterToTheMiddleAndDarkerBehindIt) {
    const auto lightness = [](const Levels& colour) {
        return 0.2126 * lightByLibrary(colour[0]) + 0.7152 * lightByLibrary(colour[1]) +
               0.0722 * lightByLibrary(colour[2]);
    };
    for (const char* name : {"beacon", "harbour"}) {
        const Gradient gradient = render::readGradient(name);
        for (int n = 0; n < 100; ++n) {
            const auto at = [&](int i) { return lightness(gradient.at(i / 200.0, Blend::oklab)); };
            EXPECT_LT(at(n), at(n + 1)) << name << n;
            EXPECT_GT(at(100 + n), at(101 + n)) << name << n;
        }
    }
}

TEST(TheGreyGradient, IsGrey) {
    const Gradient gradient = render::readGradient("grey");
    for (int n = 0; n <= 100; ++n) {
        const Levels c = gradient.at(n / 100.0, Blend::oklab);
        EXPECT_NEAR(c[0], c[1], 1e-6);
        EXPECT_NEAR(c[0], c[2], 1e-6);
    }
}

// GIMP's documented factors: `middle` and `pos` within a segment of length 1. What is nearer to an
// end than its epsilon lies at that end.
double gimpFactor(int blending, double middle, double pos) {
    const bool first = middle < 1e-10, last = 1 - middle < 1e-10;
    const double linear = pos <= middle ? (first ? 0 : 0.5 * pos / middle)
                                        : (last ? 1 : 0.5 + 0.5 * (pos - middle) / (1 - middle));
    if (blending == 1 && (first || last)) return first ? 1 : 0;
    const double pi = std::acos(-1.0);
    switch (blending) {
        case 1:
            return std::pow(pos, std::log(0.5) / std::log(middle));
        case 2:
            return (std::sin(-pi / 2 + pi * linear) + 1) / 2;
        case 3:
            return std::sqrt(1 - (linear - 1) * (linear - 1));
        case 4:
            return 1 - std::sqrt(1 - linear * linear);
        case 5:
            return pos >= middle ? 1 : 0;
        default:
            return linear;
    }
}

TEST(GimpsBlendings, FollowItsFormulas) {
    for (int blending = 0; blending <= 5; ++blending) {
        for (const double middle : {0.1, 0.35, 0.5, 0.8}) {
            for (int n = 0; n <= 1000; ++n) {
                Segment segment;
                segment.left = 0.25;
                segment.right = 0.75;
                segment.middle = 0.25 + middle / 2;
                segment.blending = static_cast<Segment::Blending>(blending);
                const double pos = (n + 0.5) / 1001;
                EXPECT_NEAR(shareAt(segment, 0.25 + pos / 2), gimpFactor(blending, middle, pos),
                            1e-12)
                    << blending << " " << middle << " " << pos;
            }
        }
    }
}

TEST(GimpsBlendings, StandTheMiddleAtAnEnd) {
    for (int blending = 0; blending <= 5; ++blending) {
        for (const double middle : {0.0, 5e-11, 2e-10, 1 - 2e-10, 1 - 5e-11, 1.0}) {
            Segment segment;
            segment.middle = middle;
            segment.blending = static_cast<Segment::Blending>(blending);
            for (const double pos : {0.0, 2e-11, 1e-10, 0.3, 0.6, 1 - 1e-10, 1 - 2e-11, 1.0}) {
                EXPECT_NEAR(shareAt(segment, pos), gimpFactor(blending, middle, pos), 2e-6)
                    << blending << " " << middle << " " << pos;
            }
        }
    }
}

TEST(GimpsBlendings, TakeTheMiddleOfASegmentWithoutALength) {
    for (int blending = 0; blending <= 5; ++blending) {
        Segment segment;
        segment.left = 0.3;
        segment.blending = static_cast<Segment::Blending>(blending);
        for (const double length : {0.0, 9e-11}) {
            segment.middle = segment.right = 0.3 + length;
            EXPECT_NEAR(shareAt(segment, 0.3), gimpFactor(blending, 0.5, 0.5), 1e-12) << blending;
        }
        segment.middle = segment.right = 0.3 + 2e-10;  // long enough to have ends
        EXPECT_NEAR(shareAt(segment, 0.3), gimpFactor(blending, 1, 0), 1e-6) << blending;
    }
}

Gradient gimp(const std::string& colours, int colouring) {
    return render::readGradient("GIMP Gradient\n1\n0 0.5 1 " + colours + " 0 " +
                                std::to_string(colouring) + "\n");
}

TEST(GimpsColourings, GoTheirWaysRoundTheHues) {
    const std::string redToBlue = "1 0 0 1  0 0 1 1";
    expectColour(gimp(redToBlue, 0).at(0.5, Blend::srgb), {0.5, 0, 0.5}, 1e-12);
    expectColour(gimp(redToBlue, 1).at(0.5, Blend::srgb), {0, 1, 0}, 1e-12);  // over green
    expectColour(gimp(redToBlue, 2).at(0.5, Blend::srgb), {1, 0, 1}, 1e-12);  // over magenta
    expectColour(gimp(redToBlue, 1).at(0.25, Blend::srgb), {1, 1, 0}, 1e-12);
    expectColour(gimp("0 0 1 1  1 0 0 1", 1).at(0.5, Blend::srgb), {1, 0, 1}, 1e-12);
    expectColour(gimp("0 0 1 1  1 0 0 1", 2).at(0.5, Blend::srgb), {0, 1, 0}, 1e-12);
    // Hue 60, saturation 0.75 and value 0.6: all three go straight.
    expectColour(gimp("0.8 0 0 1  0.2 0.4 0.2 1", 1).at(0.5, Blend::srgb), {0.6, 0.6, 0.15}, 1e-12);
}

// Hue, saturation and value, and back, written another way than the program's: a remainder for the
// hue, and one formula for all three levels.
Levels hsvOf(const Levels& c) {
    const double most = std::max({c[0], c[1], c[2]}), least = std::min({c[0], c[1], c[2]});
    const double span = most - least;
    if (span <= 0.0001) return {0, 0, most};
    const double sixths = most == c[0]   ? std::fmod(6 + (c[1] - c[2]) / span, 6)
                          : most == c[1] ? 2 + (c[2] - c[0]) / span
                                         : 4 + (c[0] - c[1]) / span;
    return {sixths / 6, span / most, most};
}

Levels rgbOf(double hue, double saturation, double value) {
    Levels out{};
    for (std::size_t c = 0; c < 3; ++c) {
        const double k = std::fmod(std::array<double, 3>{5, 3, 1}[c] + 6 * hue, 6);
        out[c] = value - value * saturation * std::clamp(std::min(k, 4 - k), 0.0, 1.0);
    }
    return out;
}

// way: 1 to greater hues, 2 to lesser ones, each past the end where it must; equal hues once round.
Levels gimpColour(const Levels& from, const Levels& to, int way, double share) {
    const Levels a = hsvOf(from), b = hsvOf(to);
    const auto mix = [&](std::size_t n) { return a[n] + share * (b[n] - a[n]); };
    double distance = way == 1 ? b[0] - a[0] : a[0] - b[0];
    if (distance <= 0) distance += 1;
    const double hue = a[0] + (way == 1 ? distance : -distance) * share;
    return rgbOf(hue - std::floor(hue), mix(1), mix(2));
}

void expectGimpColours(const Levels& from, const Levels& to) {
    const auto levels = [](const Levels& c) {
        std::string text;
        for (const double level : c) text += std::to_string(level) + " ";
        return text + "1 ";
    };
    for (const int way : {1, 2}) {
        const Gradient gradient = gimp(levels(from) + levels(to), way);
        for (int n = 0; n <= 20; ++n) {
            const Levels actual = gradient.at(n / 20.0, Blend::srgb);
            const Levels expected = gimpColour(from, to, way, n / 20.0);
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_NEAR(actual[c], expected[c], 1e-9)
                    << levels(from) << levels(to) << way << " " << n;
            }
        }
    }
}

TEST(GimpsColourings, AreItsFormulasBetweenAnyTwoColours) {
    std::mt19937 random(5);
    const auto level = [&] { return static_cast<double>(random() % 1001) / 1000; };
    for (int n = 0; n < 1000; ++n) {
        expectGimpColours({level(), level(), level()}, {level(), level(), level()});
    }
}

TEST(GimpsColourings, AreItsFormulasWhereColoursHaveOneHueOrNone) {
    const Levels red = {0.9, 0.1, 0.1}, pale = {0.9, 0.5, 0.5}, blue = {0.2, 0.2, 0.7};
    for (const Levels& grey : {Levels{0, 0, 0}, Levels{1, 1, 1}, Levels{0.5, 0.50005, 0.5}}) {
        expectGimpColours(grey, blue);
        expectGimpColours(blue, grey);
    }
    expectGimpColours({0.5, 0.500101, 0.5}, blue);  // just a hue
    expectGimpColours(red, pale);
    expectGimpColours(red, red);
    expectGimpColours(blue, blue);
    expectGimpColours(red, blue);
    expectGimpColours(blue, red);
}

TEST(TheLastColour, IsThatOfTheFileToTheBit) {
    const Levels last = {0.123, 0.456, 0.789};
    for (const Blend blend : {Blend::oklab, Blend::linear, Blend::srgb}) {
        EXPECT_EQ(gimp("1 0.5 0 1  0.123 0.456 0.789 1", 0).at(1, blend), last);
        EXPECT_EQ(gimp("0.123 0.456 0.789 1  1 0.5 0 1", 0).at(0, blend), last);
    }
}

TEST(Edges, AreEndsAndMiddlesOfSegmentsInsideTheTurn) {
    const Gradient file = render::readGradient(
        "GIMP Gradient\n2\n0 0.1 0.3 1 0 0 1 0 1 0 1 0 0\n0.3 0.4 1 0 0 1 1 0 1 1 1 0 0\n");
    EXPECT_EQ(file.edges(), (std::vector<double>{0, 0.1, 0.3, 0.4, 1}));
    const Gradient stops = render::readGradient("#000000 0.25, #ffffff 0.5");
    EXPECT_EQ(stops.edges(), (std::vector<double>{0, 0.25, 0.375, 0.5, 0.875, 1}));
    const Gradient late = render::readGradient("#000000 0.25, #ffffff 0.75, #808080 0.875");
    EXPECT_EQ(late.edges(), (std::vector<double>{0, 0.0625, 0.25, 0.5, 0.75, 0.8125, 0.875, 1}));
}

TEST(AGimpFile, IsToldByTheLineOfItsMistake) {
    const std::string good = "GIMP Gradient\nName: x\n1\n0 0.5 1 1 0 0 1 0 0 1 1 0 0 0 0\n";
    EXPECT_EQ(complaint(good), "none");
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        return complaint(text).substr(0, 7);
    };
    EXPECT_EQ(with("\n1\n", "\n0\n"), "line 3:");
    EXPECT_EQ(with("\n1\n", "\n2\n"), "line 5:");
    EXPECT_EQ(with("0 0.5 1", "0 0.5 0.9"), "line 4:");
    EXPECT_EQ(with("0 0.5 1", "0.1 0.5 1"), "line 4:");
    EXPECT_EQ(with("0 0.5 1", "0 1.5 1"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1 1 6 0 0 0"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1 1 0 3 0 0"), "line 4:");
    EXPECT_EQ(with("1 0 0 1 0", "1 0 x 1 0"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1"), "line 4:");
    EXPECT_EQ(with("1 0 0 1 0", "2 0 0 1 0"), "line 4:");
    EXPECT_EQ(with("1 0 0 1 0", "1 0 -0.1 1 0"), "line 4:");
    EXPECT_EQ(with("\n1\n", "\n1.5\n"), "line 3:");
    EXPECT_EQ(with("\n1\n", "\n4096\n"), "line 5:");
    EXPECT_EQ(with("\n1\n", "\n4097\n"), "line 3:");
    EXPECT_EQ(with("0 0.5 1", "0.00002 0.5 1"), "line 4:");
    EXPECT_EQ(with("0 0.5 1", "0 0.5 1.00002"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1 1 0 0 5 0"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1 1 0 0 0 -1"), "line 4:");
    EXPECT_EQ(with("1 1 0 0 0 0", "1 1 0 0.5 0 0"), "line 4:");
}

TEST(AGimpFile, MayHaveWhatGimpWrites) {
    const std::string colours = " 1 0 0 1 0 0 1 1 0 0";
    const auto file = [&](const std::string& lines) {
        return complaint("GIMP Gradient\n" + lines + "\n");
    };
    EXPECT_EQ(file("1\r\n0 0.5 1" + colours + "\r"), "none");  // lines of another system
    EXPECT_EQ(file("Name: a\n1  \n0 0.5 1" + colours + "  "), "none");
    EXPECT_EQ(file("1\n0 0.5 1" + colours + " 0 0"), "none");  // with kinds of colours
    EXPECT_EQ(file("1\n0 0 1" + colours), "none");             // a middle at an end
    EXPECT_EQ(file("1\n0 1 1" + colours), "none");
    EXPECT_EQ(file("1\n0.000009 0.5 0.999991" + colours), "none");  // rounded places
    EXPECT_EQ(file("1\n0 0.5 1.000009" + colours), "none");
    EXPECT_EQ(file("2\n0 0 0" + colours + "\n0 0.5 1" + colours), "none");
}

TEST(AGimpFile, MayHaveBlanksBehindItsMark) {
    EXPECT_EQ(complaint("GIMP Gradient  \n1\n0 0.5 1 1 0 0 1 0 0 1 1 0 0\n"), "none");
}

TEST(AGimpFile, IsToldThatAMiddleOrAnEndLiesOutside) {
    const auto ofEnds = [](const std::string& ends) {
        return complaint("GIMP Gradient\n1\n" + ends + " 1 0 0 1 0 0 1 1 0 0\n");
    };
    const std::string expected = "line 3: expected a middle between the ends, up to 1";
    EXPECT_EQ(ofEnds("0 -0.1 1"), expected);
    EXPECT_EQ(ofEnds("0 1.1 1"), expected);
    EXPECT_EQ(ofEnds("0 0.5 1.5"), expected);
}

// No gap is left between rounded places.
TEST(AGimpFile, HasSegmentsThatBeginWhereTheLastOnesEnd) {
    const std::string colours = " 1 0 0 1 0 0 1 1 0 0\n";
    const std::string head = "GIMP Gradient\n2\n0 0.125 0.25" + colours;
    EXPECT_EQ(render::readGradient(head + "0.250009 0.5 1" + colours).text(),
              head + "0.25 0.5 1" + colours);
}

TEST(AGimpFile, HasBlackForegroundAndWhiteBackground) {
    const auto at = [](int kind, double place) {
        std::string file = "GIMP Gradient\n1\n0 0.5 1 0.2 0.4 0.6 1 0.3 0.5 0.7 1 0 0 k k\n";
        std::replace(file.begin(), file.end(), 'k', static_cast<char>('0' + kind));
        return render::readGradient(file).at(place, Blend::srgb);
    };
    EXPECT_EQ(at(0, 0), (Levels{0.2, 0.4, 0.6}));
    EXPECT_EQ(at(0, 1), (Levels{0.3, 0.5, 0.7}));
    for (const double place : {0.0, 1.0}) {
        EXPECT_EQ(at(1, place), (Levels{0, 0, 0}));
        EXPECT_EQ(at(2, place), (Levels{0, 0, 0}));
        EXPECT_EQ(at(3, place), (Levels{1, 1, 1}));
        EXPECT_EQ(at(4, place), (Levels{1, 1, 1}));
    }
}

TEST(AGimpFile, GivesATextThatGimpCouldRead) {
    const std::string text = "GIMP Gradient\n1\n0 0.25 1 1 0.5 0 1 0 0.125 1 1 3 2\n";
    EXPECT_EQ(render::readGradient(text).text(), text);
}

TEST(AFileOfColours, IsKnownByTheEndOfItsName) {
    for (const char* name : {"a.map", "a.ggr", "folder/b.c.map"}) {
        EXPECT_TRUE(render::isGradientFile(name)) << name;
    }
    for (const char* name : {".map", ".ggr", "map", "a.png", "a.map.png", "tide", ""}) {
        EXPECT_FALSE(render::isGradientFile(name)) << name;
    }
}

}  // namespace

// The options of colours and numbers, as a command line gives them.
#include "render/colour_options.h"

#include <gtest/gtest.h>

#include <iostream>
#include <vector>

#include "render/command_line.h"
#include "render/failure.h"
#include "tests/support/stdout_capture.h"

namespace {

using render::Blend;
using render::Options;
using render::Scale;
using render::WantedColours;

using Words = std::vector<const char*>;

Options optionsOf(Words words, const char* input = "a.frac") {
    words.insert(words.begin(), "tessary-render");
    if (input != nullptr) words.push_back(input);
    return render::readOptions(static_cast<int>(words.size()), words.data()).value();
}

WantedColours wantedOf(const Words& words) {
    return optionsOf(words).colour.wanted;
}

// The message, or nothing where a command line is taken.
std::string refusalOf(const Words& words, const char* input = "a.frac") {
    try {
        optionsOf(words, input);
    } catch (const render::UsageError& error) {
        return error.what();
    }
    return {};
}

TEST(AColourOption, LeavesEmptyWhatItDoesNotSay) {
    const WantedColours wanted = wantedOf({});
    EXPECT_FALSE(wanted.smooth || wanted.escape || wanted.gradient || wanted.blend ||
                 wanted.scale || wanted.period || wanted.offset || wanted.range ||
                 wanted.autoRange || wanted.inside || wanted.depth || wanted.dither);
}

TEST(AColourOption, MeansWhatItsWordSays) {
    EXPECT_EQ(wantedOf({"--colour", "bands"}).smooth, false);
    EXPECT_EQ(wantedOf({"--colour", "smooth"}).smooth, true);
    EXPECT_EQ(wantedOf({"--blend", "oklab"}).blend, Blend::oklab);
    EXPECT_EQ(wantedOf({"--blend", "linear"}).blend, Blend::linear);
    EXPECT_EQ(wantedOf({"--blend", "srgb"}).blend, Blend::srgb);
    EXPECT_EQ(wantedOf({"--scale", "linear"}).scale, Scale::linear);
    EXPECT_EQ(wantedOf({"--scale", "sqrt"}).scale, Scale::squareRoot);
    EXPECT_EQ(wantedOf({"--scale", "log"}).scale, Scale::logarithm);
    EXPECT_TRUE(wantedOf({"--range", "auto"}).autoRange);
    EXPECT_EQ(wantedOf({"--depth", "8"}).depth, 8);
    EXPECT_EQ(wantedOf({"--depth", "16"}).depth, 16);
    EXPECT_EQ(wantedOf({"--dither", "pattern"}).dither, true);
    EXPECT_EQ(wantedOf({"--dither", "none"}).dither, false);
    EXPECT_EQ(wantedOf({"--inside", "#0180ff"}).inside, (render::Colour{1, 128, 255}));
    EXPECT_EQ(wantedOf({"--gradient", "dusk"}).gradient->text(),
              render::readGradient("dusk").text());
}

TEST(AColourOption, TakesNumbersUpToItsLastAndNoneBeyond) {
    EXPECT_EQ(wantedOf({"--escape", "1e30"}).escape, 1e30);
    EXPECT_EQ(wantedOf({"--escape", "1e-9"}).escape, 1e-9);
    EXPECT_EQ(wantedOf({"--period", "1e15"}).period, 1e15);
    EXPECT_EQ(wantedOf({"--period", "1e-9"}).period, 1e-9);
    EXPECT_EQ(wantedOf({"--offset", "1e15"}).offset, 1e15);
    EXPECT_EQ(wantedOf({"--offset=-1e15"}).offset, -1e15);
    EXPECT_EQ(refusalOf({"--escape", "1.0000001e30"}),
              "--escape: expected a number above 0 to 1e+30, not '1.0000001e30'");
    EXPECT_EQ(refusalOf({"--escape", "0"}),
              "--escape: expected a number above 0 to 1e+30, not '0'");
    EXPECT_EQ(refusalOf({"--period", "1000000000000000.2"}),
              "--period: expected a number above 0 to 1e+15, not '1000000000000000.2'");
    EXPECT_EQ(refusalOf({"--period", "0"}),
              "--period: expected a number above 0 to 1e+15, not '0'");
    EXPECT_EQ(refusalOf({"--offset", "1000000000000000.2"}),
              "--offset: expected a number from -1e+15 to 1e+15, not '1000000000000000.2'");
    EXPECT_EQ(refusalOf({"--offset=-1000000000000000.2"}),
              "--offset: expected a number from -1e+15 to 1e+15, not '-1000000000000000.2'");
}

TEST(AColourOption, ThatSaysNothingKnownIsRefusedByItsName) {
    EXPECT_EQ(refusalOf({"--colour", "x"}), "--colour: expected bands or smooth, not 'x'");
    EXPECT_EQ(refusalOf({"--blend", "x"}), "--blend: expected oklab or linear or srgb, not 'x'");
    EXPECT_EQ(refusalOf({"--scale", "x"}), "--scale: expected linear or sqrt or log, not 'x'");
    EXPECT_EQ(refusalOf({"--range", "x"}), "--range: expected auto, not 'x'");
    EXPECT_EQ(refusalOf({"--depth", "x"}), "--depth: expected 8 or 16, not 'x'");
    EXPECT_EQ(refusalOf({"--dither", "x"}), "--dither: expected pattern or none, not 'x'");
    EXPECT_EQ(refusalOf({"--inside", "x"}), "--inside: expected a colour such as #206bcb, not 'x'");
    EXPECT_EQ(refusalOf({"--gradient", "#000000 0, x"}).find("--gradient: column 12: "), 0u);
}

TEST(TheHelp, NamesEachColourOptionWithItsValueAndSaysWhatItDoes) {
    test_support::StdoutCapture output;
    const char* const words[] = {"tessary-render", "--help"};
    EXPECT_FALSE(render::readOptions(2, words));
    std::cout.flush();
    const std::string help = output.text();
    for (const char* line :
         {"--colour HOW  ", "--escape L  ", "--gradient WHICH  ", "--blend WHERE  ",
          "--scale HOW  ", "--period P  ", "--range HOW  ", "--offset O  ", "--inside COLOUR  ",
          "--depth BITS  ", "--dither HOW  ", "--counts FILE.npy  ", "--values FILE.npy  ",
          "--swatch OUT.png  "}) {
        EXPECT_NE(help.find(line), std::string::npos) << line;
    }
}

TEST(TheGradientOfAFile, IsReadOnlyWhenItIsWanted) {
    const Options options = optionsOf({"--gradient", "nowhere.ggr"});
    EXPECT_EQ(options.colour.gradientFile, "nowhere.ggr");
    EXPECT_FALSE(options.colour.wanted.gradient);
    EXPECT_THROW(wantedColours(options.colour), render::Failure);
}

TEST(Numbers, GoWhereTheirOptionSays) {
    const Options counts = optionsOf({"--counts", "c.npy"});
    EXPECT_EQ(counts.output, "c.npy");
    EXPECT_EQ(counts.colour.counts, "c.npy");
    EXPECT_EQ(counts.colour.values, "");
    const Options values = optionsOf({"--values", "v.npy"});
    EXPECT_EQ(values.output, "v.npy");
    EXPECT_EQ(values.colour.values, "v.npy");
    EXPECT_EQ(values.colour.counts, "");
    EXPECT_EQ(refusalOf({"--counts", ""}), "--counts: no FILE.npy named");
    EXPECT_EQ(refusalOf({"--values", ""}), "--values: no FILE.npy named");
}

TEST(Numbers, AreNotWantedTwice) {
    EXPECT_EQ(refusalOf({"--counts", "c.npy", "--values", "v.npy"}), "--values: not with --counts");
}

// Each with a value that it takes alone.
const std::vector<Words> NOT_WITH_NUMBERS = {{"--film"},
                                             {"-o", "a"},
                                             {"--depth", "8"},
                                             {"--dither", "none"},
                                             {"--join"},
                                             {"--supersample", "2"},
                                             {"--range", "auto"},
                                             {"--gradient", "dusk"},
                                             {"--blend", "srgb"},
                                             {"--scale", "log"},
                                             {"--period", "2"},
                                             {"--offset", "0.5"},
                                             {"--inside", "#000000"},
                                             {"--metadata", "all"},
                                             {"--compress", "small"},
                                             {"--palette", "rgb"}};

std::string nameOf(const Words& words) {
    return words[0] == std::string("-o") ? "--output" : words[0];
}

Words joined(Words a, const Words& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(Numbers, ExcludeWhatMakesPictures) {
    for (const Words& words : NOT_WITH_NUMBERS) {
        for (const char* which : {"--counts", "--values"}) {
            EXPECT_EQ(refusalOf(joined({which, "a.npy"}, words)),
                      nameOf(words) + ": not with " + which);
        }
    }
}

TEST(ASwatch, GoesWhereItsOptionSaysAndReadsNoFile) {
    const Options options = optionsOf({"--swatch", "s.png"}, nullptr);
    EXPECT_EQ(options.output, "s.png");
    EXPECT_EQ(options.colour.swatch, "s.png");
    EXPECT_EQ(refusalOf({"--swatch", "s.png"}), "--swatch: no FILE is read with it");
    EXPECT_EQ(refusalOf({}, nullptr), "FILE is required");
}

TEST(ASwatch, ExcludesWhatMakesPictures) {
    const std::vector<Words> others = {
        {"--entry", "1"},      {"--fit", "cover"}, {"--supersample", "2"},
        {"--single"},          {"--double"},       {"--precision", "single"},
        {"--palette", "rgb"},  {"--limit", "5"},   {"--film"},
        {"-o", "a"},           {"--shard", "1/2"}, {"--join"},
        {"--resume"},          {"--counts", "c"},  {"--colour", "smooth"},
        {"--escape", "4"},     {"--scale", "log"}, {"--period", "2"},
        {"--offset", "0.5"},   {"--values", "v"},  {"--inside", "#000000"},
        {"--metadata", "all"}, {"--range", "auto"}};
    for (const Words& words : others) {
        EXPECT_EQ(refusalOf(joined({"--swatch", "s.png"}, words), nullptr),
                  nameOf(words) + ": not with --swatch");
    }
}

TEST(APalette, IsNotWantedWithAGradient) {
    const std::string message =
        "--palette: not with --gradient or smooth colours, which have a gradient";
    EXPECT_EQ(refusalOf({"--palette", "rgb", "--gradient", "dusk"}), message);
    EXPECT_EQ(refusalOf({"--palette", "rgb", "--gradient", "a.map"}), message);
    EXPECT_EQ(refusalOf({"--palette", "rgb", "--colour", "smooth"}), message);
    EXPECT_EQ(refusalOf({"--palette", "rgb", "--colour", "bands"}), "");
    EXPECT_EQ(refusalOf({"--gradient", "dusk"}), "");
}

TEST(ARange, IsNotWantedWithAPeriod) {
    EXPECT_EQ(refusalOf({"--range", "auto", "--period", "2"}), "--range: not with --period");
    EXPECT_EQ(refusalOf({"--range", "auto"}), "");
}

TEST(WhatIsAboutAGradient, NeedsOne) {
    const std::vector<Words> options = {
        {"--blend", "srgb"}, {"--scale", "log"},      {"--period", "2"},   {"--range", "auto"},
        {"--offset", "0"},   {"--inside", "#000000"}, {"--dither", "none"}};
    for (const Words& words : options) {
        const Options given = optionsOf(words);
        try {
            checkGradientIsThere(given, given.colour.wanted);
            ADD_FAILURE() << words[0];
        } catch (const render::UsageError& error) {
            EXPECT_EQ(error.what(),
                      words[0] + std::string(": only with --gradient or smooth colours"));
        }
        WantedColours smooth = given.colour.wanted;
        smooth.smooth = true;
        EXPECT_NO_THROW(checkGradientIsThere(given, smooth));
    }
    const Options deep = optionsOf({"--depth", "16", "--escape", "9", "--colour", "bands"});
    EXPECT_NO_THROW(checkGradientIsThere(deep, deep.colour.wanted));
}

}  // namespace

// Colour options in documents, and back.
#include "render/colour_settings.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "render/failure.h"

namespace {

using nlohmann::json;
using render::Blend;
using render::Scale;
using render::WantedColours;

json settingsOf(const WantedColours& colours) {
    json object = json::object();
    addColourSettings(colours, object);
    return object;
}

WantedColours readFrom(const json& object) {
    return render::readColourSettings(object);
}

// The message, or nothing where it is taken.
std::string refusalOf(const std::string& key, const json& value) {
    try {
        readFrom({{key, value}});
    } catch (const render::Failure& failure) {
        return failure.what();
    }
    return {};
}

TEST(ColoursInADocument, AreThoseThatSaySomething) {
    EXPECT_EQ(settingsOf({}), json({{"colour", "bands"}}));
    WantedColours all;
    all.smooth = true;
    all.escape = 100.5;
    all.gradient = std::make_shared<const render::Gradient>(render::readGradient("#112233 0"));
    all.blend = Blend::linear;
    all.scale = Scale::logarithm;
    all.period = 12.5;
    all.range = render::ValueRange{1.5, 70};
    all.offset = -0.25;
    all.inside = render::Colour{1, 2, 255};
    all.depth = 16;
    all.dither = false;
    EXPECT_EQ(settingsOf(all), json({{"colour", "smooth"},
                                     {"escape", 100.5},
                                     {"gradient", all.gradient->text()},
                                     {"blend", "linear"},
                                     {"scale", "log"},
                                     {"period", 12.5},
                                     {"range", {1.5, 70.0}},
                                     {"offset", -0.25},
                                     {"inside", "#0102ff"},
                                     {"depth", 16},
                                     {"dither", "none"}}));
}

TEST(ColoursInADocument, AreReadAgain) {
    const json words[] = {
        {{"colour", "bands"}, {"blend", "oklab"}, {"scale", "linear"}, {"dither", "none"}},
        {{"colour", "smooth"}, {"blend", "linear"}, {"scale", "sqrt"}, {"dither", "pattern"}},
        {{"colour", "smooth"}, {"blend", "srgb"}, {"scale", "log"}, {"depth", 8}},
        {{"colour", "bands"},
         {"escape", 4.5},
         {"gradient", "#112233 0"},
         {"period", 3.25},
         {"range", {2.0, 8.0}},
         {"offset", -1.5},
         {"inside", "#0102ff"},
         {"depth", 16}}};
    for (const json& object : words) EXPECT_EQ(settingsOf(readFrom(object)), object);
}

TEST(ColoursInADocument, MeanWhatTheirWordsSay) {
    EXPECT_EQ(readFrom({{"colour", "smooth"}}).smooth, true);
    EXPECT_EQ(readFrom({{"colour", "bands"}}).smooth, false);
    EXPECT_EQ(readFrom({{"dither", "pattern"}}).dither, true);
    EXPECT_EQ(readFrom({{"dither", "none"}}).dither, false);
    EXPECT_EQ(readFrom({{"blend", "oklab"}}).blend, Blend::oklab);
    EXPECT_EQ(readFrom({{"blend", "srgb"}}).blend, Blend::srgb);
    EXPECT_EQ(readFrom({{"scale", "linear"}}).scale, Scale::linear);
    EXPECT_EQ(readFrom({{"scale", "sqrt"}}).scale, Scale::squareRoot);
    const WantedColours none = readFrom(json::object());
    EXPECT_FALSE(none.smooth || none.escape || none.gradient || none.blend || none.scale ||
                 none.period || none.range || none.offset || none.inside || none.depth ||
                 none.dither);
}

TEST(NumbersInADocument, AreTakenFromTheirLeastOn) {
    EXPECT_EQ(readFrom({{"period", 1e-300}}).period, 1e-300);
    EXPECT_EQ(readFrom({{"escape", 1e-300}}).escape, 1e-300);
    EXPECT_EQ(readFrom({{"offset", -1e300}}).offset, -1e300);
    EXPECT_EQ(readFrom({{"period", 7}}).period, 7);
    const auto refusal = [](const std::string& key) {
        return "\"render\" holds no \"" + key + "\" that a picture can have";
    };
    EXPECT_EQ(refusalOf("period", 0.9e-300), refusal("period"));
    EXPECT_EQ(refusalOf("escape", 0.9e-300), refusal("escape"));
    EXPECT_EQ(refusalOf("offset", -1.1e300), refusal("offset"));
    EXPECT_EQ(refusalOf("offset", INFINITY), refusal("offset"));
    EXPECT_EQ(refusalOf("offset", NAN), refusal("offset"));
    EXPECT_EQ(refusalOf("escape", "4"), refusal("escape"));
}

TEST(WrongColours, AreRefusedByTheirName) {
    for (const auto& [key, value] :
         std::initializer_list<std::pair<const char*, json>>{{"colour", "x"},
                                                             {"colour", true},
                                                             {"blend", "x"},
                                                             {"scale", 1},
                                                             {"dither", true},
                                                             {"gradient", 5},
                                                             {"inside", "black"},
                                                             {"inside", 0},
                                                             {"depth", 12},
                                                             {"depth", "16"},
                                                             {"depth", -8},
                                                             {"range", 5},
                                                             {"range", {1.0}},
                                                             {"range", {1.0, 2.0, 3.0}},
                                                             {"range", {"1", 2.0}},
                                                             {"range", {1.0, "2"}},
                                                             {"range", {{"0", 1.0}, {"1", 2.0}}}}) {
        EXPECT_EQ(refusalOf(key, value),
                  "\"render\" holds no \"" + std::string(key) + "\" that a picture can have")
            << value;
    }
}

TEST(AWrongGradient, IsToldWithItsReason) {
    const std::string message = refusalOf("gradient", "#00000 0");
    EXPECT_EQ(message.find("\"render\" holds no \"gradient\" that a picture can have: "), 0u);
    EXPECT_NE(message.find("column 1"), std::string::npos) << message;
}

}  // namespace

#include "render/colour_settings.h"

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "render/failure.h"

namespace render {
namespace {

using nlohmann::json;

template <class Value, std::size_t N>
using Words = std::array<std::pair<std::string_view, Value>, N>;

constexpr Words<bool, 2> KINDS = {{{"bands", false}, {"smooth", true}}};
constexpr Words<Blend, 3> BLENDS = {
    {{"oklab", Blend::oklab}, {"linear", Blend::linear}, {"srgb", Blend::srgb}}};
constexpr Words<Scale, 3> SCALES = {
    {{"linear", Scale::linear}, {"sqrt", Scale::squareRoot}, {"log", Scale::logarithm}}};
constexpr Words<bool, 2> DITHERS = {{{"none", false}, {"pattern", true}}};

[[noreturn]] void refuse(const std::string& key, const std::string& reason = {}) {
    throw Failure(R"("render" holds no ")" + key + "\" that a picture can have" +
                  (reason.empty() ? "" : ": " + reason));
}

template <class Value, std::size_t N>
void addWord(json& object, const char* key, const std::optional<Value>& value,
             const Words<Value, N>& words) {
    for (const auto& [word, meaning] : words) {
        if (value == meaning) object[key] = word;
    }
}

template <class Value>
void add(json& object, const char* key, const std::optional<Value>& value) {
    if (value) object[key] = *value;
}

template <class Value, std::size_t N>
std::optional<Value> readWord(const json& object, const char* key, const Words<Value, N>& words) {
    if (!object.contains(key)) return {};
    for (const auto& [word, meaning] : words) {
        if (object[key] == word) return meaning;
    }
    refuse(key);
}

// A number from `least` on.
std::optional<double> readNumber(const json& object, const char* key, double least) {
    if (!object.contains(key)) return {};
    if (!object[key].is_number()) refuse(key);
    const auto value = object[key].get<double>();
    if (!(value >= least) || !std::isfinite(value)) refuse(key);
    return value;
}

std::shared_ptr<const Gradient> readGradientSetting(const json& object) {
    if (!object.contains("gradient")) return {};
    if (!object["gradient"].is_string()) refuse("gradient");
    try {
        return std::make_shared<const Gradient>(readGradient(object["gradient"]));
    } catch (const Failure& failure) {
        refuse("gradient", failure.what());
    }
}

std::optional<ValueRange> readRange(const json& object) {
    if (!object.contains("range")) return {};
    const json& range = object["range"];
    if (!range.is_array() || range.size() != 2 || !range[0].is_number() || !range[1].is_number()) {
        refuse("range");
    }
    return ValueRange{range[0].get<double>(), range[1].get<double>()};
}

std::optional<Colour> readInside(const json& object) {
    if (!object.contains("inside")) return {};
    const auto colour = object["inside"].is_string()
                            ? readColourText(object["inside"].get<std::string>())
                            : std::nullopt;
    if (!colour) refuse("inside");
    return colour;
}

std::optional<int> readDepth(const json& object) {
    if (!object.contains("depth")) return {};
    if (object["depth"] != 8 && object["depth"] != 16) refuse("depth");
    return object["depth"].get<int>();
}

}  // namespace

void addColourSettings(const WantedColours& colours, json& object) {
    addWord(object, "colour", std::optional(colours.smooth.value_or(false)), KINDS);
    add(object, "escape", colours.escape);
    if (colours.gradient) object["gradient"] = colours.gradient->text();
    addWord(object, "blend", colours.blend, BLENDS);
    addWord(object, "scale", colours.scale, SCALES);
    add(object, "period", colours.period);
    if (colours.range) object["range"] = {colours.range->least, colours.range->greatest};
    add(object, "offset", colours.offset);
    if (colours.inside) object["inside"] = colourText(*colours.inside);
    add(object, "depth", colours.depth);
    addWord(object, "dither", colours.dither, DITHERS);
}

WantedColours readColourSettings(const json& object) {
    constexpr double ABOVE_ZERO = 1e-300, ANY = -1e300;
    WantedColours colours;
    colours.smooth = readWord(object, "colour", KINDS);
    colours.escape = readNumber(object, "escape", ABOVE_ZERO);
    colours.gradient = readGradientSetting(object);
    colours.blend = readWord(object, "blend", BLENDS);
    colours.scale = readWord(object, "scale", SCALES);
    colours.period = readNumber(object, "period", ABOVE_ZERO);
    colours.range = readRange(object);
    colours.offset = readNumber(object, "offset", ANY);
    colours.inside = readInside(object);
    colours.depth = readDepth(object);
    colours.dither = readWord(object, "dither", DITHERS);
    return colours;
}

}  // namespace render

#include "render/settings.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "frac/json_document.h"
#include "render/colour_settings.h"
#include "render/failure.h"
#include "render/shard.h"

namespace render {
namespace {

using nlohmann::json;

[[noreturn]] void refuse(const std::string& key) {
    throw Failure(R"("render" holds no ")" + key + "\" that a picture can have");
}

// A whole number from `least` to `most`.
int wholeNumber(const json& value, int least, int most, const std::string& key) {
    if (!value.is_number_integer()) refuse(key);
    const auto number = value.is_number_unsigned() && value.get<std::uint64_t>() > INT32_MAX
                            ? std::int64_t{INT32_MAX}
                            : value.get<std::int64_t>();
    if (number < least || number > most) refuse(key);
    return static_cast<int>(number);
}

Size readSize(const json& value) {
    if (!value.is_array() || value.size() != 2) refuse("size");
    return {wholeNumber(value[0], 1, LARGEST_SIDE, "size"),
            wholeNumber(value[1], 1, LARGEST_SIDE, "size")};
}

constexpr std::pair<const char*, Precision> PRECISIONS[] = {{"single", Precision::singles},
                                                            {"double", Precision::doubles},
                                                            {"exact", Precision::exact},
                                                            {"auto", Precision::automatic}};

Precision readPrecision(const json& value) {
    for (const auto& [word, precision] : PRECISIONS) {
        if (value == word) return precision;
    }
    refuse("precision");
}

Colour readColour(const json& value) {
    if (!value.is_array() || value.size() != 3) refuse("colours");
    Colour colour{};
    for (std::size_t i = 0; i < 3; ++i) {
        colour[i] = static_cast<unsigned char>(wholeNumber(value[i], 0, 255, "colours"));
    }
    return colour;
}

std::vector<Colour> readColours(const json& value) {
    if (!value.is_array() || value.empty() || value.size() > PALETTE_ENTRIES) refuse("colours");
    std::vector<Colour> colours;
    for (const json& colour : value) colours.push_back(readColour(colour));
    return colours;
}

// Without its name, which is not seen.
json entryOf(fractal view) {
    view.name.clear();
    return json::parse(writeDocument({{view}, nullptr}, Letters::ascii))["entries"][0];
}

}  // namespace

const char* wordOf(Precision which) {
    for (const auto& [word, precision] : PRECISIONS) {
        if (precision == which) return word;
    }
    return "";
}

json settingsOf(const Job& job) {
    const Size size = wholeSize(job);
    json object = {{"size", {size.width, size.height}},
                   {"precision", wordOf(job.precision)},
                   {"supersample", job.supersample}};
    if (!job.palette->colours.empty()) object["colours"] = job.palette->colours;
    if (job.colouring) addColourSettings(job.colouring->wanted(), object);
    if (job.band) object["band"] = bandSettings(*job.band);
    if (job.fade) {
        object["fade"] = {job.fade->step, job.fade->steps};
        object["from"] = entryOf(job.fade->from->view);
    }
    return object;
}

Settings readSettings(const json& object) {
    Settings settings;
    if (!object.is_object()) return settings;
    if (object.contains("size")) settings.size = readSize(object["size"]);
    if (object.contains("precision")) settings.precision = readPrecision(object["precision"]);
    if (object.contains("supersample")) {
        settings.supersample =
            wholeNumber(object["supersample"], 1, MOST_SUPERSAMPLE, "supersample");
    }
    if (object.contains("colours")) settings.colours = readColours(object["colours"]);
    settings.colouring = readColourSettings(object);
    return settings;
}

std::string describe(const Job& job) {
    return writeDocument({{job.view}, settingsOf(job)}, Letters::ascii);
}

}  // namespace render

#include <cmath>

#include "frac/formula_names.h"
#include "frac/json_document.h"
#include "frac/number_text.h"

using nlohmann::json;

namespace {

std::string quoted(const std::string& text, Letters letters) {
    return json(text).dump(-1, ' ', letters == Letters::ascii);
}

std::string quotedHex(const std::string& bytes) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text = "\"";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += DIGITS[byte / 16u];
        text += DIGITS[byte % 16u];
    }
    return text + '"';
}

// Whether a name is UTF-8 is the library's judgement, so that writer and reader agree.
std::string nameMember(const std::string& name, Letters letters) {
    try {
        return "\"name\": " + quoted(name, letters);
    } catch (const json::type_error&) {
        return "\"nameBytes\": " + quotedHex(name);
    }
}

std::string real(double value) {
    const std::string text = numberText(value);
    return std::isfinite(value) ? text : '"' + text + '"';
}

std::string nameOrNumber(std::span<const std::string_view> names, std::int32_t number) {
    const auto name = nameOf(names, number);
    return name ? '"' + std::string(*name) + '"' : std::to_string(number);
}

std::string viewText(const fractal& entry) {
    return "{\"xMin\": " + real(entry.xMin) + ", \"xMax\": " + real(entry.xMax) +
           ", \"yMin\": " + real(entry.yMin) + ", \"yMax\": " + real(entry.yMax) + "}";
}

std::string pairOf(const std::string& first, const std::string& second) {
    return std::string(1, '[').append(first).append(", ").append(second).append(1, ']');
}

std::string quotedDecimal(const std::string& decimal) {
    return std::string(1, '"').append(decimal).append(1, '"');
}

// The view, or what stands in its place.
std::string placeMembers(const fractal& entry, const std::string& next) {
    if (!entry.exact) return "\"view\": " + viewText(entry);
    const ExactPlace& place = *entry.exact;
    return std::string("\"center\": ")
        .append(pairOf(quotedDecimal(place.re), quotedDecimal(place.im)))
        .append(next)
        .append("\"width\": ")
        .append(quotedDecimal(place.width));
}

std::string constantText(const fractal& entry) {
    const ExactPlace place = entry.exact ? *entry.exact : ExactPlace{};
    const auto part = [](const std::string& decimal, double number) {
        return decimal.empty() ? real(number) : quotedDecimal(decimal);
    };
    return pairOf(part(place.cRe, entry.cx), part(place.cIm, entry.cy));
}

std::string entryText(const fractal& entry, Letters letters) {
    const std::string next = ",\n      ";
    return "    {\n      " + nameMember(entry.name, letters) +  //
           next + "\"formula\": " + nameOrNumber(formulaNames(), entry.fractalType) + next +
           placeMembers(entry, next) + next + "\"c\": " + constantText(entry) + next +
           "\"maxIters\": " + std::to_string(entry.maxIters) + next +
           "\"maxSize\": " + real(entry.maxSize) + next +
           "\"palette\": " + nameOrNumber(paletteNames(), entry.paletteType) + next +
           "\"fractalID\": " + std::to_string(entry.fractalID) + "\n    }";
}

void appendEntries(std::string& text, const std::vector<fractal>& entries, Letters letters) {
    text += ",\n  \"entries\": [";
    const char* separator = "\n";
    for (const fractal& entry : entries) {
        text += separator + entryText(entry, letters);
        separator = ",\n";
    }
    text += entries.empty() ? "]" : "\n  ]";
}

void appendRender(std::string& text, const json& render, Letters letters) {
    text += ",\n  \"render\": {";
    const char* separator = "\n    ";
    for (const auto& [key, value] : render.items()) {
        text += separator + quoted(key, letters) + ": " +
                value.dump(-1, ' ', letters == Letters::ascii);
        separator = ",\n    ";
    }
    text += render.empty() ? "}" : "\n  }";
}

}  // namespace

std::string writeDocument(const Document& document, Letters letters) {
    std::string text = "{\n  \"tessary\": 1";
    appendEntries(text, document.entries, letters);
    if (!document.render.is_null()) appendRender(text, document.render, letters);
    return text + "\n}\n";
}

#include "frac/command/values.h"

#include <charconv>

#include "frac/formula_names.h"
#include "frac/number_text.h"

namespace {

std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t comma = 0; (comma = text.find(',')) != std::string_view::npos;) {
        parts.push_back(text.substr(0, comma));
        text.remove_prefix(comma + 1);
    }
    parts.push_back(text);
    return parts;
}

template <std::size_t COUNT>
std::optional<std::array<double, COUNT>> readNumbers(std::string_view text) {
    const std::vector<std::string_view> parts = splitAtCommas(text);
    std::array<double, COUNT> numbers{};
    if (parts.size() != COUNT) return {};
    for (std::size_t i = 0; i < COUNT; ++i) {
        const auto number = readNumber(parts[i]);
        if (!number) return {};
        numbers[i] = *number;
    }
    return numbers;
}

std::optional<EntryRange> readEntryRange(std::string_view text) {
    const std::size_t dash = text.find('-');
    const auto first = readEntryNumber(text.substr(0, dash));
    if (dash == std::string_view::npos) {
        return first ? std::optional(EntryRange{*first, *first}) : std::nullopt;
    }
    const auto last = readEntryNumber(text.substr(dash + 1));
    if (!first || !last || *first > *last) return {};
    return EntryRange{*first, *last};
}

}  // namespace

std::optional<std::array<TypedNumber, 2>> readPair(std::string_view text) {
    const auto numbers = readNumbers<2>(text);
    if (!numbers) return {};
    const std::vector<std::string_view> parts = splitAtCommas(text);
    return {{{{(*numbers)[0], std::string(parts[0])}, {(*numbers)[1], std::string(parts[1])}}}};
}

std::optional<std::array<double, 4>> readRectangle(std::string_view text) {
    return readNumbers<4>(text);
}

std::optional<std::int32_t> readNameOrNumber(std::span<const std::string_view> names,
                                             std::string_view text) {
    const auto number = numberOf(names, text);
    return number ? number : readWholeNumber(text);
}

std::optional<std::size_t> readEntryNumber(std::string_view text) {
    std::size_t number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc{} || read.ptr != end || number == 0) return {};
    return number;
}

std::optional<std::vector<EntryRange>> readEntryRanges(std::string_view text) {
    std::vector<EntryRange> ranges;
    for (const std::string_view part : splitAtCommas(text)) {
        const auto range = readEntryRange(part);
        if (!range) return {};
        ranges.push_back(*range);
    }
    return ranges;
}

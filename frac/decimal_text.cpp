#include "frac/decimal_text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace {

// Takes the digits at the front of text.
std::string_view takeDigits(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view digits = text.substr(0, end);
    text.remove_prefix(end);
    return digits;
}

// Takes one of the characters where it is at the front of text; 0 where none of them is.
char takeAny(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return '\0';
    const char taken = text.front();
    text.remove_prefix(1);
    return taken;
}

std::int64_t exponentOf(bool negative, std::string_view digits) {
    std::int64_t value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (read.ec != std::errc{} || value > MOST_EXPONENT) value = MOST_EXPONENT;
    return negative ? -value : value;
}

// How many zeros stand before the first other digit; nothing where there is none.
std::optional<std::int64_t> leadingZeros(const DecimalParts& parts) {
    const std::size_t inWhole = parts.whole.find_first_not_of('0');
    if (inWhole != std::string_view::npos) return static_cast<std::int64_t>(inWhole);
    const std::size_t inFraction = parts.fraction.find_first_not_of('0');
    if (inFraction == std::string_view::npos) return {};
    return static_cast<std::int64_t>(parts.whole.size() + inFraction);
}

}  // namespace

std::optional<DecimalParts> decimalParts(std::string_view text) {
    DecimalParts parts;
    parts.negative = takeAny(text, "+-") == '-';
    parts.whole = takeDigits(text);
    if (parts.whole.empty()) return {};
    if (takeAny(text, ".") != '\0') {
        parts.fraction = takeDigits(text);
        if (parts.fraction.empty()) return {};
    }
    if (takeAny(text, "eE") != '\0') {
        const bool negative = takeAny(text, "+-") == '-';
        const std::string_view digits = takeDigits(text);
        if (digits.empty()) return {};
        parts.exponent = exponentOf(negative, digits);
    }
    return text.empty() ? std::optional(parts) : std::nullopt;
}

std::optional<std::int64_t> decimalMagnitude(std::string_view text) {
    const auto parts = decimalParts(text);
    const auto zeros = parts ? leadingZeros(*parts) : std::nullopt;
    if (!zeros) return {};
    return parts->exponent + static_cast<std::int64_t>(parts->whole.size()) - 1 - *zeros;
}

bool isPlaceDecimal(std::string_view text) {
    const auto parts = decimalParts(text);
    const auto isModest = [](std::int64_t exponent) {
        return std::abs(exponent) <= LARGEST_PLACE_EXPONENT;
    };
    return parts && isModest(parts->exponent) && isModest(decimalMagnitude(text).value_or(0));
}

bool isPositiveDecimal(std::string_view text) {
    return decimalMagnitude(text) && text.front() != '-';
}

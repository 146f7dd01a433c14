// Decimal numbers of any length as texts: [+-]digits[.digits][(e|E)[+-]digits]. No arithmetic is
// done with them here. Plain functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// What such a text says: its sign, its digits and what they are multiplied by. The views are parts
// of the text.
struct DecimalParts {
    bool negative = false;
    std::string_view whole;     // digits before the point, at least one
    std::string_view fraction;  // and behind it; empty where there is no point
    // The power of ten that whole.fraction is multiplied by; beyond MOST_EXPONENT either way that.
    std::int64_t exponent = 0;
};

constexpr std::int64_t MOST_EXPONENT = std::int64_t{1} << 60;

// The parts of all of the text; nothing where it is none of these. At least one digit stands on
// each side of a point, blanks nowhere.
std::optional<DecimalParts> decimalParts(std::string_view text);

inline bool isDecimal(std::string_view text) {
    return decimalParts(text).has_value();
}

// The n with 10^n <= |number| < 10^(n + 1). Nothing for zero and for what is no decimal.
std::optional<std::int64_t> decimalMagnitude(std::string_view text);

// Whether the text is a decimal that a view may lie at: beyond such exponents numbers take more
// memory than pictures.
constexpr std::int64_t LARGEST_PLACE_EXPONENT = 1000000;
bool isPlaceDecimal(std::string_view text);

// Whether the text is a decimal above 0.
bool isPositiveDecimal(std::string_view text);

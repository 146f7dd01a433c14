// Numbers as texts that read back to the same bits. Plain functions; any thread, any locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The shortest text that reads back to the bits of value: "-2", "0.1", "1e+22", "-0.0". What is not
// finite is a word: "inf", "-inf", "nan:0x7ff8000000000001" with all 64 bits.
std::string numberText(double value);

// The number that numberText would write as this word; nothing for any other text, decimal numbers
// included. The digits of a nan may be capitals.
std::optional<double> readNumberWord(std::string_view text);

// A number typed by hand, all of text: decimal, with or without sign, point and exponent, or a word
// of numberText. Nothing when it is none or too large for a double.
std::optional<double> readNumber(std::string_view text);

// The double nearest to a decimal of frac/decimal_text.h; what is too large for one is infinite.
double nearestNumber(const std::string& decimal);

// A whole number typed by hand, all of text; nothing when it is none or does not fit.
std::optional<std::int32_t> readWholeNumber(std::string_view text);

#include "frac/number_text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::string_view NAN_PREFIX = "nan:0x";
constexpr std::size_t NAN_DIGITS = 16;

std::string nanText(double value) {
    std::array<char, NAN_DIGITS> digits;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    char* const end = std::to_chars(digits.begin(), digits.end(), bits, 16).ptr;
    // All 16 digits are there: the first three hold the exponent, which is all ones.
    return std::string(NAN_PREFIX) + std::string(digits.begin(), end);
}

std::optional<double> readNan(std::string_view digits) {
    std::uint64_t bits = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, bits, 16);
    if (digits.size() != NAN_DIGITS || read.ec != std::errc{} || read.ptr != end) return {};
    const auto value = std::bit_cast<double>(bits);
    return std::isnan(value) ? std::optional(value) : std::nullopt;
}

// from_chars takes no plus sign.
std::string_view withoutPlus(std::string_view text) {
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    return plus ? text.substr(1) : text;
}

// from_chars would take "infinity" and "nan(1)" too.
bool isDecimal(std::string_view text) {
    return text.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
}

// from_chars refuses what is too small as well as what is too large.
std::optional<double> readExtreme(const std::string& text) {
    const double value = std::strtod(text.c_str(), nullptr);
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

std::string numberText(double value) {
    if (std::isnan(value)) return nanText(value);
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    if (value == 0) return std::signbit(value) ? "-0.0" : "0";
    std::array<char, 32> text;
    return {text.begin(), std::to_chars(text.begin(), text.end(), value).ptr};
}

std::optional<double> readNumberWord(std::string_view text) {
    if (text == "inf") return HUGE_VAL;
    if (text == "-inf") return -HUGE_VAL;
    if (!text.starts_with(NAN_PREFIX)) return {};
    return readNan(text.substr(NAN_PREFIX.size()));
}

std::optional<double> readNumber(std::string_view text) {
    text = withoutPlus(text);
    if (!isDecimal(text)) return readNumberWord(text);
    double value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ptr != end || read.ec == std::errc::invalid_argument) return {};
    if (read.ec == std::errc::result_out_of_range) return readExtreme(std::string(text));
    return value;
}

double nearestNumber(const std::string& decimal) {
    return readNumber(decimal).value_or(decimal.front() == '-' ? -HUGE_VAL : HUGE_VAL);
}

std::optional<std::int32_t> readWholeNumber(std::string_view text) {
    text = withoutPlus(text);
    std::int32_t value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ec != std::errc{} || read.ptr != end) return {};
    return value;
}

#include "render/option_values.h"

#include <charconv>

#include "frac/number_text.h"
#include "render/failure.h"

namespace render {

void refuse(const std::string& option, std::string_view value, std::string_view expected) {
    throw UsageError(option + ": expected " + std::string(expected) + ", not '" +
                     std::string(value) + "'");
}

std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t least,
                                         std::uint64_t most) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) return {};
    return number;
}

int number(const std::string& option, const std::string& text, int least, int most) {
    const auto value =
        wholeNumber(text, static_cast<std::uint64_t>(least), static_cast<std::uint64_t>(most));
    if (!value) {
        refuse(option, text,
               "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return static_cast<int>(*value);
}

double decimal(const std::string& option, const std::string& text, double least, bool above,
               double most) {
    const auto value = readNumber(text);
    if (!value || !(*value >= least && *value <= most) || (above && *value == least)) {
        refuse(option, text,
               "a number " + std::string(above ? "above " : "from ") + numberText(least) + " to " +
                   numberText(most));
    }
    return *value;
}

}  // namespace render

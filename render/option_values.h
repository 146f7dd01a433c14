// What the texts of options stand for.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace render {

// Throws UsageError: that the option's value is not what it should be.
[[noreturn]] void refuse(const std::string& option, std::string_view value,
                         std::string_view expected);

// A whole number in decimal digits and nothing else, within these bounds.
std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t least,
                                         std::uint64_t most);

// The same as an option's value; anything else is refused. 0 <= least <= most.
int number(const std::string& option, const std::string& text, int least, int most);

// A decimal number from `least` (or above it, where `above`) to `most`.
double decimal(const std::string& option, const std::string& text, double least, bool above,
               double most);

// The value of one of several words.
template <class Value>
Value choose(const std::string& option, const std::string& text,
             std::initializer_list<std::pair<std::string_view, Value>> choices) {
    std::string words;
    for (const auto& [word, value] : choices) {
        if (text == word) return value;
        words += (words.empty() ? "" : " or ") + std::string(word);
    }
    refuse(option, text, words);
}

}  // namespace render

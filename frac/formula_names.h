// What formulas and palettes are called in documents and on command lines. Plain functions; any
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

// The names of formulas 0 to 13 and of palettes 0 and 1, by number.
std::span<const std::string_view> formulaNames();
std::span<const std::string_view> paletteNames();

// The name of a number, and the number of a name; nothing where there is none.
std::optional<std::string_view> nameOf(std::span<const std::string_view> names,
                                       std::int32_t number);
std::optional<std::int32_t> numberOf(std::span<const std::string_view> names,
                                     std::string_view name);

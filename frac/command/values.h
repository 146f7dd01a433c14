// The values of options as they are typed. Each reads the whole text and gives nothing where it is
// none of its kind. Plain functions; any thread.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "frac/command/options.h"

// "X,Y" or "XMIN,XMAX,YMIN,YMAX", words for what is not finite included.
std::optional<std::array<TypedNumber, 2>> readPair(std::string_view text);
std::optional<std::array<double, 4>> readRectangle(std::string_view text);

// One of the names, or any whole number.
std::optional<std::int32_t> readNameOrNumber(std::span<const std::string_view> names,
                                             std::string_view text);

// The number of an entry, from 1.
std::optional<std::size_t> readEntryNumber(std::string_view text);

// "3,5-7".
std::optional<std::vector<EntryRange>> readEntryRanges(std::string_view text);

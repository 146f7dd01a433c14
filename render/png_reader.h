// What a PNG says about itself.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace render {

inline constexpr std::size_t PNG_SIGNATURE_BYTES = 8;

// Whether a file that begins with these bytes is a PNG.
bool isPng(std::string_view start);

// Fills a buffer with up to so many bytes and returns how many; 0 at the end.
using ReadBytes = std::function<std::size_t(char*, std::size_t)>;

// The text under a keyword in front of the picture itself, or nothing. Reads from behind the
// signature as far as the first row, and no memory for the picture. Failure when it is damaged.
std::optional<std::string> pngText(const ReadBytes& read, const std::string& keyword);

}  // namespace render

// Bytes that nobody vouches for, made fit for places that take only UTF-8 or no control characters.
// Any bytes are taken, a NUL too; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// `text` with U+FFFD in place of every byte that belongs to no character.
std::string validUtf8(std::string_view text);

// The longest beginning of `text` that has at most `bytes` bytes and cuts no character in half.
std::string_view utf8Beginning(std::string_view text, std::size_t bytes);

// `text` with one "?" in place of every control character: U+0000 to U+001F, U+007F to U+009F, and
// the bytes 0x80 to 0x9f that belong to no character, which some terminals take for the same.
std::string withoutControls(std::string_view text);

// UTF-8 in bytes that nobody vouches for. Any bytes are taken, a NUL too; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The length of the character that begins at byte `at`, 1 to 4; 0 where none does: at the end,
// within a character, and at bytes that are no UTF-8 (cut short, longer than need be, surrogates,
// beyond U+10FFFF).
std::size_t utf8Length(std::string_view text, std::size_t at);

// `text` with U+FFFD in place of every byte that belongs to no character.
std::string validUtf8(std::string_view text);

// The longest beginning of `text` that has at most `bytes` bytes and cuts no character in half.
std::string_view utf8Beginning(std::string_view text, std::size_t bytes);

// `text` with one "?" in place of every control character: U+0000 to U+001F, U+007F to U+009F, and
// the bytes 0x80 to 0x9f that belong to no character, which some terminals take for the same.
std::string withoutControls(std::string_view text);

// Where the characters of a UTF-8 text begin and end. A text may hold any bytes, a NUL too. Any
// thread.

#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace GlutMenu {

namespace utf8 {

inline unsigned char ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

inline bool Continues(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// Bytes of the characters that this one can begin; 0 for one that begins none. C0 and C1 would
// begin a second form of ASCII, F5 and above what lies beyond U+10FFFF.
inline std::size_t LengthAfter(unsigned char lead) {
    if (lead < 0x80U) return 1;
    if (lead < 0xC2U || lead > 0xF4U) return 0;
    if (lead < 0xE0U) return 2;
    return lead < 0xF0U ? 3 : 4;
}

// Some second bytes would make an overlong form, a surrogate, or a number past the last character
// (RFC 3629, section 4).
inline bool MayFollow(unsigned char lead, unsigned char second) {
    switch (lead) {
        case 0xE0U:
            return second >= 0xA0U;
        case 0xEDU:
            return second < 0xA0U;
        case 0xF0U:
            return second >= 0x90U;
        case 0xF4U:
            return second < 0x90U;
        default:
            return true;
    }
}

}  // namespace utf8

// Bytes of the character that begins at byte `at`, 1 to 4; 0 where none does: at the end, within a
// character, and at bytes that are no UTF-8 (cut short, longer than need be, surrogates, beyond
// U+10FFFF).
inline std::size_t CharacterLength(std::string_view text, std::size_t at) {
    if (at >= text.size()) return 0;
    const std::size_t length = utf8::LengthAfter(utf8::ByteAt(text, at));
    if (length > text.size() - at) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!utf8::Continues(utf8::ByteAt(text, at + i))) return 0;
    }
    if (length < 2) return length;
    return utf8::MayFollow(utf8::ByteAt(text, at), utf8::ByteAt(text, at + 1)) ? length : 0;
}

// The byte behind the character, or behind the loose byte, that begins at `at`, which is within the
// text: for these functions a byte that is no part of a character is one of its own.
inline std::size_t CharacterBehind(std::string_view text, std::size_t at) {
    return at + std::max<std::size_t>(CharacterLength(text, at), 1);
}

// First byte of the character that byte `at`, which is within the text, belongs to.
inline std::size_t CharacterStart(std::string_view text, std::size_t at) {
    std::size_t lead = at;
    while (lead > 0 && at - lead < 3 && utf8::Continues(utf8::ByteAt(text, lead))) --lead;
    return CharacterBehind(text, lead) > at ? lead : at;
}

// The byte behind that character.
inline std::size_t CharacterEnd(std::string_view text, std::size_t at) {
    return CharacterBehind(text, CharacterStart(text, at));
}

// The first place at or behind `at`, which is at most the text's size, that parts no character.
inline std::size_t CharacterBoundary(std::string_view text, std::size_t at) {
    return at == 0 ? 0 : CharacterEnd(text, at - 1);
}

}  // namespace GlutMenu

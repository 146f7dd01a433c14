// Where the characters of a UTF-8 text begin and end. A text may hold any bytes: one that is no
// part of a well-formed character counts as a character of its own.

#pragma once

#include <cstddef>
#include <string>

namespace GlutMenu {

namespace utf8 {

inline unsigned char ByteAt(const std::string& text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

inline bool Continues(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// Bytes of the characters that this one can begin, 1 also for a byte that begins none.
inline std::size_t LengthAfter(unsigned char lead) {
    if (lead < 0xC2U || lead > 0xF4U) return 1;
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

// Bytes of the character that begins at `at`, which is within the text.
inline std::size_t Length(const std::string& text, std::size_t at) {
    const std::size_t length = LengthAfter(ByteAt(text, at));
    if (length == 1) return 1;
    if (length > text.size() - at || !MayFollow(ByteAt(text, at), ByteAt(text, at + 1))) return 1;
    for (std::size_t i = 1; i < length; ++i) {
        if (!Continues(ByteAt(text, at + i))) return 1;
    }
    return length;
}

}  // namespace utf8

// First byte of the character that byte `at`, which is within the text, belongs to.
inline std::size_t CharacterStart(const std::string& text, std::size_t at) {
    std::size_t lead = at;
    while (lead > 0 && at - lead < 3 && utf8::Continues(utf8::ByteAt(text, lead))) --lead;
    return lead + utf8::Length(text, lead) > at ? lead : at;
}

// The byte behind that character.
inline std::size_t CharacterEnd(const std::string& text, std::size_t at) {
    const std::size_t start = CharacterStart(text, at);
    return start + utf8::Length(text, start);
}

// The first place at or behind `at`, which is at most the text's size, that parts no character.
inline std::size_t CharacterBoundary(const std::string& text, std::size_t at) {
    return at == 0 ? 0 : CharacterEnd(text, at - 1);
}

}  // namespace GlutMenu

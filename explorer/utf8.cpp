#include "explorer/utf8.h"

#include <algorithm>

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

bool continues(unsigned char byte) {
    return byte >= 0x80 && byte <= 0xbf;
}

// What a first byte announces; 0 for one that begins no character. C0 and C1 would begin a second
// form of ASCII, F5 and above what lies beyond U+10FFFF.
std::size_t announcedLength(unsigned char first) {
    if (first < 0x80) return 1;
    if (first < 0xc2) return 0;
    if (first < 0xe0) return 2;
    if (first < 0xf0) return 3;
    return first < 0xf5 ? 4 : 0;
}

// Whether these two bytes may begin one character: after some first bytes a part of the second ones
// leads to surrogates, beyond U+10FFFF, or to what has a shorter form.
bool goesWith(unsigned char first, unsigned char second) {
    switch (first) {
        case 0xe0:
            return second >= 0xa0;
        case 0xed:
            return second < 0xa0;
        case 0xf0:
            return second >= 0x90;
        case 0xf4:
            return second < 0x90;
        default:
            return true;
    }
}

bool isControl(std::string_view character) {
    const unsigned char first = byteAt(character, 0);
    if (character.size() == 1) return first < 0x20 || first == 0x7f;
    return first == 0xc2 && byteAt(character, 1) < 0xa0;
}

bool isLooseControl(unsigned char byte) {
    return byte >= 0x80 && byte <= 0x9f;
}

}  // namespace

std::size_t utf8Length(std::string_view text, std::size_t at) {
    if (at >= text.size()) return 0;
    const std::size_t length = announcedLength(byteAt(text, at));
    if (length > text.size() - at) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!continues(byteAt(text, at + i))) return 0;
    }
    return length > 1 && !goesWith(byteAt(text, at), byteAt(text, at + 1)) ? 0 : length;
}

std::string validUtf8(std::string_view text) {
    std::string valid;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Length(text, at);
        valid += length > 0 ? text.substr(at, length) : "\xef\xbf\xbd";
        at += std::max<std::size_t>(length, 1);
    }
    return valid;
}

std::string_view utf8Beginning(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    for (std::size_t back = 1; back < 4 && back <= bytes; ++back) {
        if (utf8Length(text, bytes - back) > back) return text.substr(0, bytes - back);
    }
    return text.substr(0, bytes);
}

std::string withoutControls(std::string_view text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Length(text, at);
        const std::string_view part = text.substr(at, std::max<std::size_t>(length, 1));
        const bool control = length > 0 ? isControl(part) : isLooseControl(byteAt(part, 0));
        clean += control ? "?" : part;
        at += part.size();
    }
    return clean;
}

#include "explorer/utf8.h"

#include "GlutMenu/Utf8.h"

using GlutMenu::CharacterBehind;
using GlutMenu::CharacterLength;
using GlutMenu::CharacterStart;

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
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

std::string validUtf8(std::string_view text) {
    std::string valid;
    for (std::size_t at = 0; at < text.size(); at = CharacterBehind(text, at)) {
        const std::size_t length = CharacterLength(text, at);
        valid += length > 0 ? text.substr(at, length) : "\xef\xbf\xbd";
    }
    return valid;
}

std::string_view utf8Beginning(std::string_view text, std::size_t bytes) {
    return text.substr(0, text.size() <= bytes ? bytes : CharacterStart(text, bytes));
}

std::string withoutControls(std::string_view text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size(); at = CharacterBehind(text, at)) {
        const std::string_view part = text.substr(at, CharacterBehind(text, at) - at);
        const bool isCharacter = CharacterLength(text, at) > 0;
        const bool control = isCharacter ? isControl(part) : isLooseControl(byteAt(part, 0));
        clean += control ? "?" : part;
    }
    return clean;
}

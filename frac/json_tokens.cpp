#include "frac/json_tokens.h"

#include <algorithm>

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view BETWEEN_TOKENS = " \t\r\n,:";
constexpr std::string_view BRACKETS = "{}[]";
constexpr std::string_view AFTER_BARE_TOKEN = " \t\r\n,:{}[]\"";

// The offset just past the text that begins at offset with its quote.
std::size_t pastQuotes(std::string_view text, std::size_t offset) {
    for (++offset; offset < text.size() && text[offset] != '"'; ++offset) {
        if (text[offset] == '\\') ++offset;
    }
    return std::min(offset + 1, text.size());
}

std::size_t pastToken(std::string_view text, std::size_t offset) {
    if (offset == text.size()) return offset;
    if (text[offset] == '"') return pastQuotes(text, offset);
    if (BRACKETS.find(text[offset]) != std::string_view::npos) return offset + 1;
    return std::min(text.find_first_of(AFTER_BARE_TOKEN, offset), text.size());
}

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0u) != 0x80u;
}

}  // namespace

TokenWalk::TokenWalk(std::string_view ofText) : text(ofText) {
    if (text.starts_with(BYTE_ORDER_MARK)) past = BYTE_ORDER_MARK.size();
}

std::size_t TokenWalk::ahead() const {
    return std::min(text.find_first_not_of(BETWEEN_TOKENS, past), text.size());
}

void TokenWalk::next() {
    first = ahead();
    past = pastToken(text, first);
}

TextPlace placeOf(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const std::size_t feed = before.rfind('\n');
    const std::string_view line = feed == std::string_view::npos ? before : before.substr(feed + 1);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const auto columns = std::count_if(line.begin(), line.end(), startsCharacter);
    return {static_cast<std::size_t>(lines) + 1, static_cast<std::size_t>(columns) + 1};
}

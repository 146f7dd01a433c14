// Which bytes are a character of UTF-8.
#include "GlutMenu/Utf8.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using GlutMenu::CharacterLength;

namespace {

// A character as UTF-8 defines its bytes.
std::string encoded(unsigned point) {
    const auto byte = [](unsigned value) { return static_cast<char>(value); };
    if (point < 0x80) return {byte(point)};
    if (point < 0x800) return {byte(0xc0 | point >> 6), byte(0x80 | (point & 0x3f))};
    if (point < 0x10000) {
        return {byte(0xe0 | point >> 12), byte(0x80 | (point >> 6 & 0x3f)),
                byte(0x80 | (point & 0x3f))};
    }
    return {byte(0xf0 | point >> 18), byte(0x80 | (point >> 12 & 0x3f)),
            byte(0x80 | (point >> 6 & 0x3f)), byte(0x80 | (point & 0x3f))};
}

bool isSurrogate(unsigned point) {
    return point >= 0xd800 && point <= 0xdfff;
}

TEST(CharacterLength, KnowsEveryCharacterAndNoSurrogate) {
    for (unsigned point = 0; point <= 0x10ffff; ++point) {
        const std::string bytes = encoded(point);
        ASSERT_EQ(CharacterLength(bytes, 0), isSurrogate(point) ? 0 : bytes.size()) << point;
    }
}

TEST(CharacterLength, KnowsNoOtherBytes) {
    // With every character known, those of each length need only be counted. The last two bytes of
    // four are tried at the edges of their range alone.
    std::array<unsigned, 5> found = {};
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            for (const unsigned third : {0u, 0x7fu, 0x80u, 0xbfu, 0xc0u, 0xffu}) {
                for (const unsigned fourth : {0u, 0x7fu, 0x80u, 0xbfu, 0xc0u, 0xffu}) {
                    const std::string bytes = {static_cast<char>(first), static_cast<char>(second),
                                               static_cast<char>(third), static_cast<char>(fourth)};
                    ++found[CharacterLength(bytes, 0)];
                }
            }
        }
    }
    constexpr unsigned THIRDS = 6, FOURTHS = 6;
    EXPECT_EQ(found[1], 128 * 256 * THIRDS * FOURTHS);
    EXPECT_EQ(found[2], (0x800 - 0x80) * THIRDS * FOURTHS);
    EXPECT_EQ(found[3], (0x10000 - 0x800 - 0x800) / 64 * 2 * FOURTHS);
    EXPECT_EQ(found[4], (0x110000 - 0x10000) / (64 * 64) * 2 * 2u);
}

TEST(CharacterLength, IsZeroWithinACharacterAtTheEndAndPastIt) {
    const std::string text = "\u20ac";
    EXPECT_EQ(CharacterLength(text, 0), 3u);
    EXPECT_EQ(CharacterLength(text, 1), 0u);
    EXPECT_EQ(CharacterLength(text, 3), 0u);
    EXPECT_EQ(CharacterLength(text, 99), 0u);
}

TEST(CharacterStart, LooksNoFurtherThanTheStartOfTheText) {
    // Nothing but loose bytes, before the text as well.
    const std::string loose(8, '\x80');
    for (std::size_t first = 0; first < loose.size(); ++first) {
        EXPECT_EQ(GlutMenu::CharacterStart(std::string_view(loose).substr(first), 0), 0u) << first;
    }
}

TEST(CharacterLength, IsZeroWhereTheTextCutsACharacter) {
    for (const char* text : {"\u00e9", "\u20ac", "\U0001f300"}) {
        const std::string whole = text;
        for (std::size_t length = 1; length < whole.size(); ++length) {
            EXPECT_EQ(CharacterLength(std::string_view(whole).substr(0, length), 0), 0u) << text;
            const std::string behind = "ab" + whole;
            EXPECT_EQ(CharacterLength(std::string_view(behind).substr(0, 2 + length), 2), 0u)
                << text;
        }
    }
}

}  // namespace

// Bytes that may or may not be UTF-8, where only UTF-8 or no control characters are wanted.
#include "explorer/utf8.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

struct Row {
    std::string given, result;
};

class Valid : public testing::TestWithParam<Row> {};

TEST_P(Valid, EachByteThatIsNoUtf8IsAReplacementCharacter) {
    EXPECT_EQ(validUtf8(GetParam().given), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Valid,
    testing::Values(Row{"", ""}, Row{"plain\r\n\x1b", "plain\r\n\x1b"},
                    Row{"\u00e9\u4e2d\U0001f300", "\u00e9\u4e2d\U0001f300"},
                    Row{std::string("a\0b", 3), std::string("a\0b", 3)},
                    Row{"a\xff\xfe"
                        "b",
                        "a\ufffd\ufffdb"},
                    Row{"caf\xe9", "caf\ufffd"}, Row{"\xe2\x82", "\ufffd\ufffd"},
                    Row{"\xe2\x82\u20ac", "\ufffd\ufffd\u20ac"},
                    Row{"\xc0\x80", "\ufffd\ufffd"},                      // a NUL too long
                    Row{"\xed\xa0\x80", "\ufffd\ufffd\ufffd"},            // a surrogate
                    Row{"\xf4\x90\x80\x80", "\ufffd\ufffd\ufffd\ufffd"},  // beyond the last one
                    Row{"\x80", "\ufffd"}));

TEST(Utf8Beginning, CutsNoCharacterInHalf) {
    const std::string text = "a\u00e9\u20ac\U0001f300z";  // 1, 2, 3, 4 and 1 bytes
    const std::array<std::size_t, 13> lengths = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
    for (std::size_t bytes = 0; bytes < lengths.size(); ++bytes) {
        EXPECT_EQ(utf8Beginning(text, bytes), text.substr(0, lengths[bytes])) << bytes;
    }
}

TEST(Utf8Beginning, TakesBytesThatAreNoUtf8OneByOne) {
    for (const char* text : {"\x80\x80\x80\x80", "\xe2\xe2\xe2\xe2", "\xe2\x82\xe2\x82"}) {
        for (std::size_t bytes = 0; bytes <= 4; ++bytes) {
            EXPECT_EQ(utf8Beginning(text, bytes).size(), bytes) << text;
        }
    }
}

class Controls : public testing::TestWithParam<Row> {};

TEST_P(Controls, AreAQuestionMarkEach) {
    EXPECT_EQ(withoutControls(GetParam().given), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Controls,
    testing::Values(Row{"", ""}, Row{"plain ~", "plain ~"}, Row{"\x1b[2J\r\n\t\a", "?[2J????"},
                    Row{"\x7f", "?"}, Row{std::string("a\0b", 3), "a?b"},
                    Row{"\u0080\u009b\u009f\u00a0", "???\u00a0"},
                    Row{"\x80\x9b\x9f\xa0\xff", "???\xa0\xff"},               // no UTF-8 at all
                    Row{"\u20ac\u00db\U0001f300", "\u20ac\u00db\U0001f300"},  // 0x80..0x9f within
                    Row{"\xe2\x9b", "\xe2?"}, Row{"\xc0\x9b", "\xc0?"},
                    Row{"\xe0\x80\x9b", "\xe0??"}, Row{"\xed\x9f\xbf", "\xed\x9f\xbf"},
                    Row{"\xc2", "\xc2"}));

TEST(Controls, EveryByteAloneIsKeptUnlessATerminalObeysIt) {
    for (int value = 0; value < 256; ++value) {
        const std::string byte = {static_cast<char>(value)};
        const bool obeyed = value < 0x20 || (value >= 0x7f && value < 0xa0);
        EXPECT_EQ(withoutControls(byte), obeyed ? "?" : byte) << value;
    }
}

}  // namespace

// Numbers as texts, and back to the same bits.
#include "frac/number_text.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace {

using testing::Eq;
using testing::Optional;

std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

double ofBits(std::uint64_t bits) {
    return std::bit_cast<double>(bits);
}

TEST(NumberText, IsTheShortestThatReadsBack) {
    EXPECT_EQ(numberText(-2), "-2");
    EXPECT_EQ(numberText(0.1), "0.1");
    EXPECT_EQ(numberText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(numberText(1e22), "1e+22");
    EXPECT_EQ(numberText(100000), "1e+05");
    EXPECT_EQ(numberText(std::numeric_limits<double>::denorm_min()), "5e-324");
    EXPECT_EQ(numberText(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
}

TEST(NumberText, TellsTheTwoZerosApart) {
    EXPECT_EQ(numberText(0.0), "0");
    EXPECT_EQ(numberText(-0.0), "-0.0");
}

TEST(NumberText, HasWordsForWhatIsNotFinite) {
    EXPECT_EQ(numberText(HUGE_VAL), "inf");
    EXPECT_EQ(numberText(-HUGE_VAL), "-inf");
    EXPECT_EQ(numberText(ofBits(0x7ff8000000000001)), "nan:0x7ff8000000000001");
    EXPECT_EQ(numberText(ofBits(0xfff0000000000abc)), "nan:0xfff0000000000abc");
}

TEST(NumberText, ReadsBackToTheSameBitsWhateverTheyAre) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random() | (i % 4 == 0 ? 0x7ff0000000000000 : 0);
        const auto read = readNumber(numberText(ofBits(bits)));
        ASSERT_TRUE(read.has_value()) << std::hex << bits;
        ASSERT_EQ(bitsOf(*read), bits);
    }
}

TEST(ReadNumber, TakesWhatPeopleType) {
    EXPECT_THAT(readNumber("-0.75"), Optional(-0.75));
    EXPECT_THAT(readNumber("+3"), Optional(3.0));
    EXPECT_THAT(readNumber(".5"), Optional(0.5));
    EXPECT_THAT(readNumber("1E-3"), Optional(0.001));
    EXPECT_THAT(readNumber("inf"), Optional(HUGE_VAL));
}

TEST(ReadNumber, TakesWhatIsTooSmallForZero) {
    EXPECT_THAT(readNumber("1e-400"), Optional(0.0));
    EXPECT_THAT(readNumber("4e-324"), Optional(std::numeric_limits<double>::denorm_min()));
}

TEST(ReadNumber, RefusesWhatIsNone) {
    for (const char* text : {"",
                             " ",
                             "x",
                             "1x",
                             "1 ",
                             " 1",
                             "+",
                             "-",
                             "+-1",
                             "--1",
                             "0x10",
                             "1,5",
                             "1e",
                             "infinity",
                             "nan",
                             "nan(1)",
                             "INF",
                             "1e999",
                             "-1e999",
                             "nan:0x7ff8",
                             "nan:0x7ff00000000000000",
                             "nan:0x7ff0000000000000",
                             "nan:0x3ff0000000000000",
                             "nan:0x7ff800000000000g"}) {
        EXPECT_EQ(readNumber(text), std::nullopt) << text;
    }
}

TEST(ReadNumberWord, TakesWordsOnly) {
    EXPECT_EQ(readNumberWord("1"), std::nullopt);
    EXPECT_THAT(readNumberWord("-inf"), Optional(-HUGE_VAL));
    const auto read = readNumberWord("nan:0x7FF800000000000A");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(bitsOf(*read), 0x7ff800000000000au);
}

TEST(ReadWholeNumber, TakesWhatFits) {
    EXPECT_THAT(readWholeNumber("768"), Optional(768));
    EXPECT_THAT(readWholeNumber("+1"), Optional(1));
    EXPECT_THAT(readWholeNumber("-2147483648"), Optional(std::numeric_limits<int>::min()));
}

TEST(ReadWholeNumber, RefusesWhatDoesNot) {
    for (const char* text :
         {"", "-", "1.0", "1e3", "0x1", "2147483648", "-2147483649", "7 ", "+-7"}) {
        EXPECT_EQ(readWholeNumber(text), std::nullopt) << text;
    }
}

}  // namespace

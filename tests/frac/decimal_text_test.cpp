#include "frac/decimal_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(DecimalText, IsDigitsWithASignAPointAndAnExponentAsWanted) {
    for (const char* text : {"0", "-1", "+7", "3.25", "-0.743643887037158704752191506114774",
                             "1e-1000", "2E+5", "-4.5e007", "00012.50"}) {
        EXPECT_TRUE(isDecimal(text)) << text;
    }
}

TEST(DecimalText, IsNothingElse) {
    for (const char* text : {"", "-", ".", "1.", ".5", "1e", "1e+", "e5", " 1", "1 ", "1,5", "0x10",
                             "inf", "nan", "--1", "1.2.3", "1e5.5", "1_000", "1e5e5"}) {
        EXPECT_FALSE(isDecimal(text)) << text;
    }
    EXPECT_FALSE(isDecimal(std::string_view("1\0", 2)));
}

TEST(DecimalText, KeepsEveryDigitInItsParts) {
    const auto parts = decimalParts("-012.3450e-678");
    ASSERT_TRUE(parts);
    EXPECT_TRUE(parts->negative);
    EXPECT_EQ(parts->whole, "012");
    EXPECT_EQ(parts->fraction, "3450");
    EXPECT_EQ(parts->exponent, -678);
}

TEST(DecimalText, BoundsExponentsThatNoNumberHolds) {
    EXPECT_EQ(decimalParts("1e99999999999999999999")->exponent, MOST_EXPONENT);
    EXPECT_EQ(decimalParts("1e-99999999999999999999")->exponent, -MOST_EXPONENT);
    EXPECT_EQ(decimalParts("1e-9223372036854775807")->exponent, -MOST_EXPONENT);
}

TEST(DecimalText, HasTheMagnitudeOfItsFirstDigit) {
    EXPECT_EQ(decimalMagnitude("1"), 0);
    EXPECT_EQ(decimalMagnitude("-99.9"), 1);
    EXPECT_EQ(decimalMagnitude("0.00123"), -3);
    EXPECT_EQ(decimalMagnitude("0.05e-1000"), -1002);
    EXPECT_EQ(decimalMagnitude("0012e3"), 4);
}

TEST(DecimalText, OfZeroHasNone) {
    EXPECT_EQ(decimalMagnitude("-0.000e7"), std::nullopt);
    EXPECT_EQ(decimalMagnitude("none"), std::nullopt);
}

TEST(DecimalText, IsPositiveAboveZeroAlone) {
    EXPECT_TRUE(isPositiveDecimal("1e-1000"));
    EXPECT_TRUE(isPositiveDecimal("+0.5"));
    for (const char* text : {"0", "0e5", "-0.5", "-0", "", "inf"}) {
        EXPECT_FALSE(isPositiveDecimal(text)) << text;
    }
}

TEST(DecimalText, NamesAPlaceWithAReasonableExponent) {
    EXPECT_TRUE(isPlaceDecimal("-1e1000000"));
    EXPECT_TRUE(isPlaceDecimal("0.1e-999999"));
    for (const char* text : {"1e1000001", "10e1000000", "0.1e-1000000", "0e1000001", "inf"}) {
        EXPECT_FALSE(isPlaceDecimal(text)) << text;
    }
}

}  // namespace

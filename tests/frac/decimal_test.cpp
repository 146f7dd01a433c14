#include "frac/decimal.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::string text(const char* decimal) {
    return Decimal::of(std::string_view(decimal)).text();
}

TEST(Decimals, AreWrittenAsPeopleWriteThem) {
    EXPECT_EQ(text("0.750"), "0.75");
    EXPECT_EQ(text("-12.5e1"), "-125");
    EXPECT_EQ(text("1e3"), "1000");
    EXPECT_EQ(text("-0"), "0");
    EXPECT_EQ(text("0.000001"), "0.000001");
    EXPECT_EQ(text("0.0000001"), "1e-7");
    EXPECT_EQ(text("12.50e-100"), "1.25e-99");
    EXPECT_EQ(text("3e50"), "3e50");
}

TEST(Decimals, HoldEveryDigitOfADouble) {
    EXPECT_EQ(Decimal::of(0.1).text(), "0.1000000000000000055511151231257827021181583404541015625");
    EXPECT_EQ(Decimal::of(-3.0).text(), "-3");
    EXPECT_EQ(Decimal::of(0.0).text(), "0");
    EXPECT_EQ(Decimal::of(std::numeric_limits<double>::denorm_min()).magnitude(), -324);
    EXPECT_EQ(Decimal::of(0x1p100).text(), "1.267650600228229401496703205376e30");
}

TEST(Decimals, AddAndMultiplyExactly) {
    const Decimal small = Decimal::of(std::string_view("1e-50")), one = Decimal::of(1.0);
    EXPECT_EQ((one + small).text(), "1." + std::string(49, '0') + "1");
    EXPECT_EQ((one - small).text(), "0." + std::string(50, '9'));
    EXPECT_EQ((small * small).text(), "1e-100");
    EXPECT_TRUE((one - one) == Decimal());
}

TEST(Decimals, RoundToTheNearestHalvesAwayFromZero) {
    const auto rounded = [](const char* decimal) {
        return Decimal::of(std::string_view(decimal)).rounded(-1).text();
    };
    EXPECT_EQ(rounded("0.25"), "0.3");
    EXPECT_EQ(rounded("-0.25"), "-0.3");
    EXPECT_EQ(rounded("0.2499"), "0.2");
    EXPECT_EQ(rounded("-0.04"), "0");
    EXPECT_EQ(rounded("7"), "7");
}

TEST(Decimals, HaveALeadingPartAndAMagnitude) {
    const Decimal number = Decimal::of(std::string_view("-123.456e-1000"));
    EXPECT_EQ(number.magnitude(), -998);
    EXPECT_EQ(number.leading(), -1.23456);
    EXPECT_LT(number.sign(), 0);
}

}  // namespace

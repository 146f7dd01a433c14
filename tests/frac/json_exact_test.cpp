// Entries that say where they lie in decimals.
#include <gmock/gmock.h>

#include "frac/json_document.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string documentOf(const std::string& members) {
    return "{\"tessary\": 1, \"entries\": [\n{\"formula\": \"julia\",\n" + members + "}]}";
}

fractal entryOf(const std::string& members) {
    return readDocument(documentOf(members)).entries.at(0);
}

std::string complaintAbout(const std::string& members) {
    try {
        readDocument(documentOf(members));
    } catch (const JsonError& error) {
        return error.what();
    }
    return "";
}

const std::string CENTER = "\"center\": [\"-0.743643887037158704752191506114774\", \"+1.50e-1\"]";
const std::string WIDTH = "\"width\": \"2.50e-1000\"";
const std::string VIEW = "\"view\": {\"xMin\": 0, \"xMax\": 1, \"yMin\": 0, \"yMax\": 1}";

TEST(ExactEntries, KeepTheDigitsAsTheyStood) {
    const fractal entry = entryOf(CENTER + ", " + WIDTH + ", \"c\": [\"-0.80\", \"1.5600e-1\"]");
    ASSERT_TRUE(entry.exact);
    EXPECT_EQ(entry.exact->re, "-0.743643887037158704752191506114774");
    EXPECT_EQ(entry.exact->im, "+1.50e-1");
    EXPECT_EQ(entry.exact->width, "2.50e-1000");
    EXPECT_EQ(entry.exact->cRe, "-0.80");
    EXPECT_EQ(entry.exact->cIm, "1.5600e-1");
}

TEST(ExactEntries, AreWrittenAsTheyWereRead) {
    const std::string text = writeDocument(readDocument(
        documentOf(WIDTH + ", \"c\": [-0.5, \"0.10\"], " + CENTER + ", \"fractalID\": 7")));
    EXPECT_THAT(text, HasSubstr("\n      " + CENTER + ",\n      " + WIDTH +
                                ",\n      \"c\": [-0.5, \"0.10\"],\n"));
    EXPECT_THAT(text, Not(HasSubstr("\"view\"")));
    EXPECT_EQ(writeDocument(readDocument(text)), text);
}

TEST(ExactEntries, HaveTheNearestSquareAndConstantOfDoubles) {
    const fractal entry = entryOf(
        "\"center\": [\"-0.5\", \"2\"], \"width\": \"3e0\", \"c\": "
        "[\"0.1000000000000000000000000000000000001\", 0.25]");
    EXPECT_EQ(entry.xMin, -2.0);
    EXPECT_EQ(entry.xMax, 1.0);
    EXPECT_EQ(entry.yMin, 0.5);
    EXPECT_EQ(entry.yMax, 3.5);
    EXPECT_EQ(entry.cx, 0.1);
    EXPECT_EQ(entry.cy, 0.25);
}

TEST(ExactEntries, TakeAMissingConstantFromThePreset) {
    const fractal entry = entryOf(CENTER + ", " + WIDTH);
    EXPECT_EQ(entry.cx, -0.8);
    EXPECT_TRUE(entry.exact->cRe.empty());
}

TEST(ExactEntries, OthersHaveNoExactPlace) {
    EXPECT_FALSE(entryOf(VIEW).exact);
}

TEST(ExactEntries, OneDoesNotLeakIntoTheNext) {
    const std::string both = documentOf(CENTER + ", " + WIDTH + "}, {\"formula\": 0, " + VIEW);
    EXPECT_FALSE(readDocument(both).entries.at(1).exact);
}

TEST(ExactEntries, HaveBothACenterAndAWidth) {
    EXPECT_THAT(complaintAbout(CENTER), HasSubstr(": expected \"width\" before the end"));
    EXPECT_THAT(complaintAbout(WIDTH), HasSubstr(": expected \"center\" before the end"));
}

TEST(ExactEntries, HaveNoViewBesides) {
    const std::string expected =
        ", expected either \"view\" or both \"center\" and \"width\" in an entry";
    EXPECT_EQ(complaintAbout(VIEW + ",\n" + CENTER + ", " + WIDTH),
              "line 4, column 1: \"center\"" + expected);
    EXPECT_EQ(complaintAbout(WIDTH + ",\n" + VIEW), "line 4, column 1: \"view\"" + expected);
}

TEST(ExactEntries, TakeDecimalTextsAlone) {
    const std::string decimal =
        "a decimal number as a text, such as \"-1.5e-30\", of an exponent from -1000000 to 1000000";
    for (const char* bad :
         {"1", "\"\"", "\"inf\"", "\".5\"", "\"1e\"", "\" 1\"", "\"0x1\"", "null", "\"1e1000001\"",
          "\"1e-1000001\"", "\"0e99999999999999999999\"", "[]"}) {
        const std::string text = bad;
        EXPECT_THAT(complaintAbout("\"center\": [\"1\",\n" + text + "], " + WIDTH),
                    StartsWith("line 4, column 1: expected " + decimal + ", found "))
            << bad;
        EXPECT_THAT(complaintAbout(CENTER + ", \"width\":\n" + text),
                    StartsWith("line 4, column 1: expected a number above 0, " + decimal))
            << bad;
    }
}

TEST(ExactEntries, TakeAnyReasonableExponent) {
    EXPECT_EQ(entryOf(CENTER + ", \"width\": \"1e-1000000\"").exact->width, "1e-1000000");
}

TEST(ExactEntries, HaveAWidthAboveZero) {
    for (const char* width : {"0", "-1", "0e-5", "-0"}) {
        EXPECT_THAT(complaintAbout(CENTER + ", \"width\":\n\"" + std::string(width) + "\""),
                    StartsWith("line 4, column 1: expected a number above 0"));
    }
}

TEST(ExactEntries, HaveTwoPartsOfACenter) {
    EXPECT_THAT(complaintAbout("\"center\": [\"1\"], " + WIDTH),
                HasSubstr("column 15: expected a decimal number as a text"));
    EXPECT_THAT(complaintAbout("\"center\": [\"1\", \"2\", \"3\"], " + WIDTH),
                HasSubstr("expected the end of the array, found \"3\""));
    EXPECT_THAT(complaintAbout("\"center\": \"1\", " + WIDTH),
                HasSubstr("column 11: expected an array of two decimal numbers as texts"));
}

TEST(ExactEntries, AloneHaveADecimalConstant) {
    EXPECT_THAT(complaintAbout(VIEW + ",\n\"c\": [0,\n\"0.25\"]"),
                StartsWith("line 5, column 1: expected a number, "));
    EXPECT_THAT(complaintAbout(VIEW + ",\n\"c\": [0,\n\"0.25\"]"),
                HasSubstr("decimal texts go with \"center\" and \"width\""));
}

}  // namespace

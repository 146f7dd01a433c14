// Texts that are no documents: one line says where, and what was expected there.
#include <gmock/gmock.h>

#include "frac/json_document.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What is said about a text; nothing when it is taken.
std::string complaintAbout(const std::string& text) {
    try {
        readDocument(text);
    } catch (const JsonError& error) {
        return error.what();
    }
    return "";
}

std::string aboutEntry(const std::string& members) {
    return complaintAbout("{\"tessary\": 1, \"entries\": [\n{" + members + "}]}");
}

const std::string GOOD =
    "\"formula\": 0, \"view\": {\"xMin\": 0, \"xMax\": 1, \"yMin\": 0, \"yMax\": 1}";

// A member of a good entry, on a line of its own.
std::string aboutMember(const std::string& member) {
    return aboutEntry(GOOD + ",\n" + member);
}

TEST(BadDocuments, AGoodOneHasNoComplaint) {
    EXPECT_EQ(aboutEntry(GOOD), "");
}

// ---- keys

TEST(BadDocuments, AnUnknownKeyIsNamedWithThoseThatAreKnown) {
    EXPECT_EQ(aboutMember("  \"nam\": 1"),
              "line 3, column 3: unknown key \"nam\", expected one of \"name\", \"nameBytes\", "
              "\"formula\", \"view\", \"center\", \"width\", \"c\", \"maxIters\", "
              "\"maxSize\", \"palette\", \"fractalID\"");
    EXPECT_EQ(complaintAbout("{\"tessary\": 1, \"a\": 2}"),
              "line 1, column 16: unknown key \"a\", expected one of \"tessary\", \"entries\", "
              "\"render\"");
    EXPECT_THAT(aboutEntry("\"view\": {\"xmin\": 1}"),
                StartsWith("line 2, column 11: unknown key \"xmin\", expected one of \"xMin\""));
}

TEST(BadDocuments, AKeyIsTakenOnce) {
    EXPECT_EQ(aboutMember("\"formula\": 1"),
              "line 3, column 1: a second \"formula\", expected one in an object");
    EXPECT_THAT(complaintAbout("{\"tessary\": 1,\n\"tessary\": 1}"),
                StartsWith("line 2, column 1:"));
    EXPECT_THAT(aboutEntry("\"view\": {\"xMin\": 1, \"xMin\": 1}"),
                StartsWith("line 2, column 22:"));
    EXPECT_THAT(aboutMember("\"name\": \"a\", \"nameBytes\": \"61\""),
                StartsWith("line 3, column 14: a second"));
}

TEST(BadDocuments, WhatMustBeThereIsAskedFor) {
    EXPECT_EQ(
        aboutEntry("\"formula\": 0"),
        "line 2, column 14: expected \"view\", or \"center\" and \"width\", before the end of "
        "this object");
    EXPECT_THAT(aboutEntry(""), HasSubstr("expected \"formula\""));
    EXPECT_THAT(aboutEntry("\"formula\": 0, \"view\": {\"xMin\": 0, \"xMax\": 0, \"yMax\": 1}"),
                HasSubstr("expected \"yMin\""));
    EXPECT_EQ(complaintAbout("{}"),
              "line 1, column 2: expected \"tessary\" before the end of this object");
    EXPECT_THAT(complaintAbout("{\"tessary\": 1}"), HasSubstr("expected \"entries\""));
}

// ---- values

TEST(BadDocuments, AnotherVersionIsRefused) {
    for (const char* version : {"2", "0", "\"1\"", "1.5", "null", "true", "[1]", "{}"}) {
        const std::string text = "{\"tessary\": " + std::string(version) + ", \"entries\": []}";
        EXPECT_THAT(complaintAbout(text),
                    StartsWith("line 1, column 13: expected 1, the only version of this form"));
    }
}

TEST(BadDocuments, AWrongTypeIsToldWithWhatWasExpected) {
    const std::string real = "a number, \"inf\", \"-inf\" or \"nan:0x\" and 16 hexadecimal digits";
    const std::string whole = "a whole number from -2147483648 to 2147483647";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\"name\": 1", "a text without U+0000"},
        {"\"name\": null", "a text without U+0000"},
        {"\"name\": \"a\\u0000\"", "a text without U+0000"},
        {"\"nameBytes\": \"6\"", "a text of hexadecimal digits, two a byte and no byte 00"},
        {"\"nameBytes\": \"6g\"", "a text of hexadecimal digits, two a byte and no byte 00"},
        {"\"nameBytes\": \"6100\"", "a text of hexadecimal digits, two a byte and no byte 00"},
        {"\"c\": 1", "an array of two numbers"},
        {"\"c\": {}", "an array of two numbers"},
        {"\"maxIters\": \"inf\"", whole},
        {"\"maxIters\": 1.5", whole},
        {"\"maxIters\": 2147483648", whole},
        {"\"maxIters\": -2147483649", whole},
        {"\"maxIters\": 99999999999999999999", whole},
        {"\"maxSize\": \"nan\"", real},
        {"\"maxSize\": \"4\"", real},
        {"\"maxSize\": \"nan:0x7ff0000000000000\"", real},
        {"\"maxSize\": false", real},
        {"\"palette\": \"grey\"", "\"random\", \"rgb\" or " + whole},
        {"\"palette\": [1]", "\"random\", \"rgb\" or " + whole},
        {"\"fractalID\": {}", whole},
    };
    for (const auto& [member, expected] : cases) {
        EXPECT_THAT(aboutMember(member),
                    testing::MatchesRegex("line 3, column [0-9]+: expected .*, found .*"));
        EXPECT_THAT(aboutMember(member), HasSubstr(": expected " + expected + ", found "));
    }
}

TEST(BadDocuments, ThePlaceIsThatOfTheValue) {
    EXPECT_THAT(aboutMember("\"maxIters\"  :  \"x\""), StartsWith("line 3, column 16: "));
    EXPECT_THAT(aboutMember("\"c\": [0,\n\n   true]"), StartsWith("line 5, column 4: "));
}

TEST(BadDocuments, ColumnsCountCharacters) {
    EXPECT_THAT(aboutMember("\"name\": \"\u00e4\u00f6\U0001F600\", \"maxIters\": null"),
                StartsWith("line 3, column 28: "));
}

TEST(BadDocuments, QuotesWithinATextDoNotMoveThePlace) {
    EXPECT_THAT(aboutMember("\"name\": \"a\\\"b\\\\\", \"maxIters\": null"),
                StartsWith("line 3, column 31: "));
}

TEST(BadDocuments, AConstantHasTwoNumbers) {
    EXPECT_THAT(aboutMember("\"c\": [1]"), StartsWith("line 3, column 8: expected a number"));
    EXPECT_THAT(aboutMember("\"c\": []"), StartsWith("line 3, column 7: expected a number"));
    EXPECT_EQ(aboutMember("\"c\": [1, 2, 3]"),
              "line 3, column 13: expected the end of the array, found 3");
    EXPECT_THAT(aboutMember("\"c\": [1, [2]]"), StartsWith("line 3, column 10: expected a number"));
}

TEST(BadDocuments, ADocumentIsAnObjectOfEntries) {
    for (const char* text : {"[]", "1", "\"text\"", "null", "true"}) {
        EXPECT_THAT(complaintAbout(text),
                    StartsWith("line 1, column 1: expected an object with \"tessary\""));
    }
    EXPECT_THAT(complaintAbout("{\"entries\": {}}"), HasSubstr("expected an array of entries"));
    EXPECT_THAT(complaintAbout("{\"entries\": [[]]}"), HasSubstr("column 14: expected an entry"));
    EXPECT_THAT(aboutEntry("\"view\": []"), HasSubstr("expected an object with \"xMin\""));
    EXPECT_THAT(aboutEntry("\"formula\": \"newton\""), HasSubstr("expected the name of a formula"));
    EXPECT_THAT(complaintAbout("{\"render\": []}"), HasSubstr("column 12: expected an object"));
}

TEST(BadDocuments, WhatIsFoundIsShownShortAndPlain) {
    EXPECT_THAT(aboutMember("\"maxIters\": \"\u009b31m\x7f\""), HasSubstr("found \"??31m?\""));
    const std::string found = aboutMember("\"maxIters\": \"" + std::string(1000, 'x') + "\"");
    EXPECT_LT(found.size(), 200u);
}

// ---- what is no JSON

TEST(BadDocuments, SyntaxErrorsSayWhereAndWhatWasExpected) {
    EXPECT_THAT(complaintAbout(""), StartsWith("line 1, column 1: syntax error"));
    EXPECT_THAT(complaintAbout("{"), HasSubstr("line 1, column 2: "));
    EXPECT_THAT(complaintAbout("{\"tessary\": 1,\n}"),
                testing::AllOf(StartsWith("line 2, column 1: "), HasSubstr("expected")));
    EXPECT_THAT(complaintAbout("{\"tessary\" 1}"),
                testing::AllOf(StartsWith("line 1, column 12: "), HasSubstr("expected ':'")));
    EXPECT_THAT(complaintAbout("{\"tessary\": 1 \"entries\": []}"),
                testing::AllOf(StartsWith("line 1, column 15: "), HasSubstr("expected")));
    EXPECT_THAT(complaintAbout("{\"entries\": [,]}"), StartsWith("line 1, column 14: "));
    EXPECT_THAT(complaintAbout("{\"tessary\": nul}"), StartsWith("line 1, column 16: "));
    EXPECT_THAT(complaintAbout("// comment\n{}"), StartsWith("line 1, column 1"));
}

TEST(BadDocuments, NothingMayFollow) {
    EXPECT_THAT(complaintAbout("{\"tessary\": 1, \"entries\": []}\n x"),
                StartsWith("line 2, column 2: syntax error"));
    EXPECT_THAT(
        complaintAbout("{\"tessary\": 1, \"entries\": []} {}"),
        testing::AllOf(StartsWith("line 1, column 31: "), HasSubstr("expected end of input")));
}

TEST(BadDocuments, NumbersPastTheRangeOfADoubleAreRefused) {
    EXPECT_EQ(aboutMember("\"maxSize\": 1e999"),
              "line 3, column 12: expected a number that a double can hold");
}

TEST(BadDocuments, NoMessageIsLongerThanALine) {
    const std::vector<std::string> texts = {"{\"" + std::string(100000, 'k'),
                                            "{\"a\nb",
                                            "{\"tessary\": " + std::string(100000, '1'),
                                            "{\"tessary\": 1" + std::string(100000, '1') + "e,",
                                            "{\"tessary\": \"\xff\n",
                                            std::string("\0\0\0", 3),
                                            "{\"\x01\""};
    for (const std::string& text : texts) {
        const std::string complaint = complaintAbout(text);
        EXPECT_FALSE(complaint.empty());
        EXPECT_LT(complaint.size(), 250u);
        EXPECT_EQ(complaint.find('\n'), std::string::npos);
    }
}

TEST(BadDocuments, NoMessageHoldsBytesThatAreNoText) {
    for (const char* text :
         {"{\"tessary\": -\xb8", "{\"tessary\": 1.\x9b", "{\"tessary\": \"\xff"}) {
        const std::string complaint = complaintAbout(text);
        EXPECT_THAT(complaint, HasSubstr("syntax error"));
        EXPECT_THAT(complaint, testing::Each(testing::AllOf(testing::Ge(' '), testing::Le('~'))));
    }
    EXPECT_EQ(
        complaintAbout("{\"tessary\": -\xb8"),
        "line 1, column 14: syntax error while parsing value - invalid number; expected digit "
        "after '-'");
}

// ---- texts that mean harm

TEST(HostileDocuments, DepthIsBounded) {
    EXPECT_NE(complaintAbout(std::string(10000000, '[')), "");
    EXPECT_NE(complaintAbout("{\"entries\": " + std::string(10000000, '[')), "");
    EXPECT_THAT(complaintAbout("{\"render\": {\"a\": " + std::string(10000000, '[')),
                HasSubstr("expected at most 16 levels in \"render\""));
}

TEST(HostileDocuments, SixteenLevelsOfRenderAreTaken) {
    const std::string deep = std::string(15, '[') + std::string(15, ']');
    const std::string deeper = std::string(16, '[') + std::string(16, ']');
    EXPECT_EQ(
        complaintAbout("{\"tessary\": 1, \"entries\": [], \"render\": {\"a\": " + deep + "}}"), "");
    EXPECT_NE(
        complaintAbout("{\"tessary\": 1, \"entries\": [], \"render\": {\"a\": " + deeper + "}}"),
        "");
}

TEST(HostileDocuments, TheLengthOfRenderIsBounded) {
    std::string zeros = "0";
    while (zeros.size() < LONGEST_RENDER) zeros += ",0";
    EXPECT_EQ(complaintAbout("{\n\"render\": {\"a\": [" + zeros + "]}}"),
              "line 2, column 11: expected at most 1 MiB in \"render\"");
}

TEST(HostileDocuments, KeysOfRenderAreTakenOnceToo) {
    EXPECT_THAT(complaintAbout("{\"render\": {\"a\": {\"b\": 1,\n \"b\": 2}}}"),
                StartsWith("line 2, column 2: a second \"b\""));
}

TEST(HostileDocuments, EveryCutOfADocumentIsRefused) {
    const std::string whole =
        "{\"tessary\": 1, \"entries\": [{" + GOOD + "}], \"render\": {\"a\": 1}}";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_NE(complaintAbout(whole.substr(0, length)), "") << length;
    }
    EXPECT_EQ(complaintAbout(whole), "");
}

}  // namespace

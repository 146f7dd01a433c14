// Catalogues as JSON documents: what is written, and what reads back.
#include "frac/json_document.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>

#include "frac/catalogue_bytes.h"
#include "frac/presets.h"

namespace {

using testing::HasSubstr;

fractal onlyEntryOf(const std::string& members) {
    const Document document = readDocument("{\"tessary\": 1, \"entries\": [{" + members + "}]}");
    EXPECT_EQ(document.entries.size(), 1u);
    return document.entries.at(0);
}

const char* const VIEW = "\"view\": {\"xMin\": -2, \"xMax\": 2, \"yMin\": -1.5, \"yMax\": 1.5}";

fractal entryOf(const std::string& formula, const std::string& more = "") {
    return onlyEntryOf("\"formula\": " + formula + ", " + VIEW + more);
}

std::string bytesOf(const fractal& entry) {
    return encodeCatalogue({entry});
}

std::string textOf(const fractal& entry) {
    return writeDocument({{entry}, {}});
}

// The entry of the text of an entry.
fractal thereAndBack(const fractal& entry) {
    return readDocument(textOf(entry)).entries.at(0);
}

// ---- writing

TEST(WritingDocuments, AnEntryIsALineAMember) {
    EXPECT_EQ(textOf(presetEntry(0, 0)), R"({
  "tessary": 1,
  "entries": [
    {
      "name": "Mandelbrot",
      "formula": "mandelbrot",
      "view": {"xMin": -2, "xMax": 2, "yMin": -1.5, "yMax": 1.5},
      "c": [0, 0],
      "maxIters": 768,
      "maxSize": 4,
      "palette": "random",
      "fractalID": 0
    }
  ]
}
)");
}

TEST(WritingDocuments, SeveralEntriesAreSeparatedByCommas) {
    const std::string text = writeDocument({{presetEntry(0, 0), presetEntry(1, 0)}, {}});
    EXPECT_THAT(text, HasSubstr("\n    },\n    {\n      \"name\": \"Julia\",\n"));
}

TEST(WritingDocuments, NoEntriesAreAnEmptyArray) {
    EXPECT_EQ(writeDocument({}), "{\n  \"tessary\": 1,\n  \"entries\": []\n}\n");
}

TEST(WritingDocuments, EveryFormulaHasItsName) {
    const char* const names[] = {"mandelbrot",
                                 "julia",
                                 "sine",
                                 "cosine",
                                 "hyperbolic-sine",
                                 "hyperbolic-cosine",
                                 "barnsley-1",
                                 "barnsley-2",
                                 "barnsley-3",
                                 "barnsley-sierpinski",
                                 "dragon",
                                 "chebyshev-t5",
                                 "hermite-h4",
                                 "legendre-p3"};
    for (int formula = 0; formula < 14; ++formula) {
        const std::string member = "\"formula\": \"" + std::string(names[formula]) + "\"";
        EXPECT_THAT(textOf(presetEntry(formula, 0)), HasSubstr(member));
    }
}

TEST(WritingDocuments, UnknownFormulasAndPalettesAreNumbers) {
    fractal entry;
    entry.fractalType = 14;
    entry.paletteType = -1;
    EXPECT_THAT(textOf(entry), HasSubstr("\"formula\": 14,"));
    EXPECT_THAT(textOf(entry), HasSubstr("\"palette\": -1,"));
}

TEST(WritingDocuments, TheRgbCycleHasItsName) {
    EXPECT_THAT(textOf(presetEntry(10, 0)), HasSubstr("\"palette\": \"rgb\","));
}

TEST(WritingDocuments, WhatIsNotFiniteIsAText) {
    fractal entry;
    entry.xMin = -HUGE_VAL;
    entry.xMax = HUGE_VAL;
    entry.yMin = -0.0;
    entry.maxSize = std::bit_cast<double>(std::uint64_t{0x7ff8000000000001});
    EXPECT_THAT(textOf(entry),
                HasSubstr("{\"xMin\": \"-inf\", \"xMax\": \"inf\", \"yMin\": -0.0, "));
    EXPECT_THAT(textOf(entry), HasSubstr("\"maxSize\": \"nan:0x7ff8000000000001\","));
}

TEST(WritingDocuments, ANameThatIsNotUtf8IsHexadecimal) {
    fractal entry;
    for (const char* name : {"\xff", "a\xc3", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
        entry.name = name;
        EXPECT_THAT(textOf(entry), HasSubstr("\"nameBytes\": \""));
    }
    entry.name = "a\xff\n";
    EXPECT_THAT(textOf(entry), HasSubstr("\"nameBytes\": \"61ff0a\","));
}

TEST(WritingDocuments, ANameInUtf8StaysReadable) {
    fractal entry;
    entry.name = "Apfelm\u00e4nnchen \"\\\n\x01\x7f";
    EXPECT_THAT(textOf(entry),
                HasSubstr("\"name\": \"Apfelm\u00e4nnchen \\\"\\\\\\n\\u0001\x7f\","));
}

TEST(WritingDocuments, ContainersThatKnowOnlyAsciiGetAscii) {
    fractal entry;
    entry.name = "\u00e4 \U0001F600";
    const std::string text = writeDocument({{entry}, {{"k\u00e4", "\u00e4"}}}, Letters::ascii);
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c > 0; }));
    EXPECT_EQ(readDocument(text).entries.at(0).name, entry.name);
}

TEST(WritingDocuments, RenderStandsAfterTheEntriesALineAMember) {
    const nlohmann::json render = {{"size", {8, 9}}, {"precision", "double"}};
    EXPECT_EQ(writeDocument({{}, render}), R"({
  "tessary": 1,
  "entries": [],
  "render": {
    "precision": "double",
    "size": [8,9]
  }
}
)");
}

TEST(WritingDocuments, AnEmptyRenderIsWrittenToo) {
    EXPECT_THAT(writeDocument({{}, nlohmann::json::object()}), HasSubstr("\"render\": {}\n"));
}

// ---- reading

TEST(ReadingDocuments, EveryMemberIsTaken) {
    const fractal entry = onlyEntryOf(
        "\"name\": \"n\", \"formula\": \"julia\", \"view\": {\"yMax\": 4, \"yMin\": 3, \"xMax\": "
        "2, \"xMin\": 1}, \"c\": [5, 6], \"maxIters\": 7, \"maxSize\": 8, \"palette\": \"random\", "
        "\"fractalID\": 9");
    fractal expected;
    expected.name = "n";
    expected.fractalType = 1;
    expected.xMin = 1;
    expected.xMax = 2;
    expected.yMin = 3;
    expected.yMax = 4;
    expected.cx = 5;
    expected.cy = 6;
    expected.maxIters = 7;
    expected.maxSize = 8;
    expected.fractalID = 9;
    EXPECT_EQ(bytesOf(entry), bytesOf(expected));
}

TEST(ReadingDocuments, WhatIsMissingIsThePresets) {
    for (int formula = 0; formula < 14; ++formula) {
        fractal expected = presetEntry(formula, 0);
        expected.xMin = -2, expected.xMax = 2, expected.yMin = -1.5, expected.yMax = 1.5;
        EXPECT_EQ(bytesOf(entryOf(std::to_string(formula))), bytesOf(expected));
    }
}

TEST(ReadingDocuments, ThePresetIsThatOfAFormulaNamedLast) {
    EXPECT_EQ(onlyEntryOf(std::string(VIEW) + ", \"formula\": \"dragon\"").maxIters, 4096);
}

TEST(ReadingDocuments, OneEntryLeavesNothingToTheNext) {
    const std::string first =
        "{\"formula\": 0, \"name\": \"n\", \"maxIters\": 5, " + std::string(VIEW);
    const std::string second = "{\"formula\": 0, " + std::string(VIEW);
    const Document document =
        readDocument("{\"tessary\": 1, \"entries\": [" + first + "}, " + second + "}]}");
    EXPECT_EQ(document.entries.at(1).name, "Mandelbrot");
    EXPECT_EQ(document.entries.at(1).maxIters, 768);
}

TEST(ReadingDocuments, AnUnknownFormulaHasZerosForItsPreset) {
    const fractal entry = entryOf("99");
    EXPECT_EQ(entry.fractalType, 99);
    EXPECT_EQ(entry.maxIters, 0);
    EXPECT_EQ(entry.name, "");
}

TEST(ReadingDocuments, WholeNumbersMayBeWrittenAnyWay) {
    EXPECT_EQ(entryOf("0", ", \"maxIters\": 768.0, \"fractalID\": 1e3").maxIters, 768);
    EXPECT_EQ(entryOf("0", ", \"maxIters\": 768.0, \"fractalID\": 1e3").fractalID, 1000);
    EXPECT_EQ(entryOf("0", ", \"fractalID\": -2147483648").fractalID, -2147483647 - 1);
}

TEST(ReadingDocuments, ANegativeZeroKeepsItsSign) {
    EXPECT_TRUE(std::signbit(entryOf("0", ", \"maxSize\": -0.0").maxSize));
    EXPECT_TRUE(std::signbit(entryOf("0", ", \"maxSize\": -0").maxSize));
    EXPECT_FALSE(std::signbit(entryOf("0", ", \"maxSize\": 0").maxSize));
}

TEST(ReadingDocuments, LargeIntegersAreTheNearestDoubles) {
    EXPECT_EQ(entryOf("0", ", \"maxSize\": 18446744073709551615").maxSize, 18446744073709551615.0);
    EXPECT_EQ(entryOf("0", ", \"maxSize\": 9007199254740993").maxSize, 9007199254740992.0);
    EXPECT_EQ(entryOf("0", ", \"maxSize\": 100000000000000000000000").maxSize, 1e23);
}

TEST(ReadingDocuments, NameBytesMayBeAnyButNul) {
    EXPECT_EQ(entryOf("0", ", \"nameBytes\": \"61fFfe\"").name, "a\xff\xfe");
    EXPECT_EQ(entryOf("0", ", \"nameBytes\": \"\"").name, "");
}

TEST(ReadingDocuments, EntriesMayComeBeforeTheVersion) {
    EXPECT_TRUE(readDocument("{\"entries\": [], \"tessary\": 1}").entries.empty());
}

TEST(ReadingDocuments, AByteOrderMarkIsNoHarm) {
    EXPECT_TRUE(readDocument("\xEF\xBB\xBF{\"entries\": [], \"tessary\": 1}").entries.empty());
}

TEST(ReadingDocuments, RenderIsHandedOnAsItStands) {
    const std::string render = R"({"size": [1, {"a": null}], "s": "}{\"", "b": [[]], "e": {}})";
    const Document document =
        readDocument("{\"tessary\": 1, \"render\": " + render + ", \"entries\": []}");
    EXPECT_EQ(document.render, nlohmann::json::parse(render));
}

TEST(ReadingDocuments, NoRenderIsNull) {
    EXPECT_TRUE(readDocument("{\"tessary\": 1, \"entries\": []}").render.is_null());
}

TEST(ReadingDocuments, RenderLeavesTheEntriesAlone) {
    const std::string entry = "{\"formula\": 0, " + std::string(VIEW) + "}";
    const Document document = readDocument(
        "{\"tessary\": 1, \"render\": {\"formula\": 3, \"xMin\": 7, \"name\": \"x\"}, \"entries\": "
        "[" +
        entry + "]}");
    EXPECT_EQ(bytesOf(document.entries.at(0)), bytesOf(presetEntry(0, 0)));
}

// ---- there and back

TEST(ThereAndBack, EveryPresetStaysAsItIs) {
    for (int formula = 0; formula < 14; ++formula) {
        for (const int preset : {0, 100, 101, 102, 103}) {
            const fractal entry = presetEntry(formula, preset);
            EXPECT_EQ(bytesOf(thereAndBack(entry)), bytesOf(entry));
        }
    }
}

TEST(ThereAndBack, EveryByteOfANameStays) {
    fractal entry;
    for (int byte = 1; byte < 256; ++byte) {
        entry.name = std::string("n") + static_cast<char>(byte);
        EXPECT_EQ(thereAndBack(entry).name, entry.name);
        entry.name = "\u00e4\U0001F600\u2028\ufeff" + std::string(1, static_cast<char>(byte));
        EXPECT_EQ(thereAndBack(entry).name, entry.name);
    }
}

TEST(ThereAndBack, RenderStays) {
    const nlohmann::json render = {{"colours", {1, 2, 3}}, {"x", -0.1}, {"t", "\u00e4\n"}};
    EXPECT_EQ(readDocument(writeDocument({{}, render})).render, render);
}

}  // namespace

// Saving and loading catalogues that nobody has damaged.
#include "explorer/frac_file.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "explorer/catalogue.h"
#include "explorer/navigation.h"
#include "tests/frac/frac_bytes.h"
#include "tests/support/stand_ins.h"

using frac_bytes::Record;
using stand_ins::readFile;
using stand_ins::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class FracFile : public stand_ins::CommandsTest {
  protected:
    std::string path() const { return folder / "catalogue.frac"; }

    void load(const std::string& bytes) {
        writeFile(path(), bytes);
        forgetOutput();
        LoadData(path());
    }

    stand_ins::TemporaryFolder folder;
};

std::vector<std::string> names() {
    std::vector<std::string> result;
    for (const fractal& entry : fractals) result.push_back(entry.name);
    return result;
}

// ---- the format

TEST_F(FracFile, MandelbrotAndJuliaTake169Bytes) {
    CreateNewFractal(0, 0);
    CreateNewFractal(1, 5);
    SaveData(path());
    EXPECT_EQ(readFile(path()).size(), 87u + 82u);
}

TEST_F(FracFile, ARecordIsWrittenFieldByFieldWithoutPadding) {
    setCatalogue({stand_ins::someEntry("Dragon", 7)});
    SaveData(path());
    Record expected = Record::named("Dragon");
    expected.xMax = 2.5;
    expected.xMin = -1.5;
    expected.yMax = 3.25;
    expected.yMin = -0.75;
    expected.cx = 0.125;
    expected.cy = -0.625;
    expected.maxIters = 640;
    expected.maxSize = 9.5;
    expected.palette = 1;
    expected.formula = 10;
    expected.id = 7;
    EXPECT_EQ(readFile(path()), expected.bytes());
}

TEST_F(FracFile, FieldsStandAtTheirOffsets) {
    setCatalogue({stand_ins::someEntry("abc", 7)});
    SaveData(path());
    const std::string bytes = readFile(path());
    const auto doubleAt = [&](std::size_t offset) {
        double value = 0;
        std::memcpy(&value, bytes.data() + offset, sizeof value);
        return value;
    };
    const auto intAt = [&](std::size_t offset) {
        std::int32_t value = 0;
        std::memcpy(&value, bytes.data() + offset, sizeof value);
        return value;
    };
    ASSERT_EQ(bytes.size(), 80u);
    EXPECT_THAT((std::vector{doubleAt(0), doubleAt(8), doubleAt(16), doubleAt(24), doubleAt(32),
                             doubleAt(40)}),
                ElementsAre(2.5, -1.5, 3.25, -0.75, 0.125, -0.625));
    EXPECT_EQ(intAt(48), 640);
    EXPECT_EQ(doubleAt(52), 9.5);
    EXPECT_THAT((std::vector{intAt(60), intAt(64), intAt(68)}), ElementsAre(1, 10, 4));
    EXPECT_EQ(bytes.substr(72, 4), std::string("abc\0", 4));
    EXPECT_EQ(intAt(76), 7);
}

TEST_F(FracFile, AnEmptyCatalogueMakesAnEmptyFile) {
    forgetOutput();
    SaveData(path());
    EXPECT_THAT(folder.names(), ElementsAre("catalogue.frac"));
    EXPECT_EQ(readFile(path()), "");
    EXPECT_EQ(printed(), "");
}

TEST_F(FracFile, EachSavedEntryIsALine) {
    setCatalogue({stand_ins::someEntry("a"), stand_ins::someEntry("b")});
    forgetOutput();
    SaveData(path());
    EXPECT_EQ(printed(), "Saved fractal 0\nSaved fractal 1\n");
}

TEST_F(FracFile, ASaveReplacesALongerFileWhole) {
    writeFile(path(), std::string(5000, 'x'));
    setCatalogue({stand_ins::someEntry("a")});
    SaveData(path());
    EXPECT_EQ(readFile(path()).size(), 78u);
}

TEST_F(FracFile, ANameIsWrittenWithTheNulInsideIt) {
    setCatalogue({stand_ins::someEntry(std::string("a\0b", 3))});
    SaveData(path());
    EXPECT_EQ(readFile(path()).size(), 76u + 4u);
}

// ---- the way back

TEST_F(FracFile, EveryFieldComesBack) {
    setCatalogue({stand_ins::someEntry("Dragon", 7)});
    SaveData(path());
    fractals.clear();
    LoadData(path());
    ASSERT_EQ(fractals.size(), 1u);
    const fractal& entry = fractals[0];
    EXPECT_THAT((std::vector{entry.xMax, entry.xMin, entry.yMax, entry.yMin, entry.cx, entry.cy}),
                ElementsAre(2.5, -1.5, 3.25, -0.75, 0.125, -0.625));
    EXPECT_EQ(entry.maxIters, 640);
    EXPECT_EQ(entry.maxSize, 9.5);
    EXPECT_EQ(entry.paletteType, 1);
    EXPECT_EQ(entry.fractalType, 10);
    EXPECT_EQ(entry.name, "Dragon");
    EXPECT_EQ(entry.fractalID, 7);
}

TEST_F(FracFile, SpecialNumbersComeBackBitForBit) {
    fractal odd = stand_ins::someEntry("odd", std::numeric_limits<std::int32_t>::min());
    odd.xMax = std::numeric_limits<double>::quiet_NaN();
    odd.xMin = -std::numeric_limits<double>::infinity();
    odd.yMax = -0.0;
    odd.yMin = 5e-324;
    odd.fractalType = -7;
    odd.paletteType = std::numeric_limits<std::int32_t>::max();
    setCatalogue({odd});
    SaveData(path());
    const std::string first = readFile(path());
    LoadData(path());
    SaveData(path());
    EXPECT_EQ(readFile(path()), first);
}

class AnyName : public FracFile, public testing::WithParamInterface<std::string> {};

TEST_P(AnyName, SurvivesSaveAndLoad) {
    setCatalogue({stand_ins::someEntry(GetParam()), stand_ins::someEntry("next", 3)});
    SaveData(path());
    LoadData(path());
    EXPECT_THAT(names(), ElementsAre(GetParam(), "next"));
    EXPECT_EQ(fractals[1].fractalID, 3);
}

INSTANTIATE_TEST_SUITE_P(Names, AnyName,
                         testing::Values("", " leading and trailing ", "\"quotes\" and 'more'",
                                         "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x8c\x80", "%s %n\t\r\n",
                                         std::string(10000, 'n')));

TEST_F(FracFile, ALongNameReachesTheTitle) {
    title = "prefix";
    setCatalogue({stand_ins::someEntry(std::string(10000, 'n'))});
    SaveData(path());
    LoadData(path());
    EXPECT_EQ(stand_ins::glut.titles.back(), "prefix " + std::string(10000, 'n'));
}

TEST_F(FracFile, LoadingShowsTheFirstRecordInFileOrder) {
    load(Record::named("one").bytes() + Record::named("two").bytes());
    EXPECT_THAT(names(), ElementsAre("one", "two"));
    EXPECT_EQ(currentFractal, 0);
    EXPECT_EQ(currentFractalType, 2);
    EXPECT_EQ(xMax, 1.5);
    EXPECT_EQ(paletteType, 1);
}

TEST_F(FracFile, LoadingPrintsTheRecordsThenTheViewThenTheCount) {
    load(Record::named("one").bytes() + Record::named("two").bytes());
    EXPECT_EQ(printed(),
              "Loaded fractal\nLoaded fractal\n"
              "one Z-range:(-1.500000, -1.250000)-(1.500000, 1.250000), "
              "c = (0.500000,-0.500000), maxIters = 100, maxSize = 4.000000\r\n"
              "Loaded  2 fractals.\n");
}

TEST_F(FracFile, LoadingAsksForARedisplayAndOwesNoRender) {
    load(Record::named("one").bytes());
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
    EXPECT_EQ(update_count, 0);
}

TEST_F(FracFile, LoadingLeavesTheSerialNumbersOfNewEntriesAlone) {
    CreateNewFractal(0, 0);
    const std::int32_t before = fractals[0].fractalID;
    load(Record::named("one").bytes());
    EXPECT_EQ(fractals[0].fractalID, 42);
    CreateNewFractal(0, 0);
    EXPECT_EQ(fractals[1].fractalID, before + 1);
}

TEST_F(FracFile, AnEmptyFileEmptiesTheCatalogueAndLeavesTheView) {
    setCatalogue({stand_ins::someEntry("old")});
    xMax = 77.0;
    load("");
    EXPECT_TRUE(fractals.empty());
    EXPECT_EQ(currentFractal, 0);
    EXPECT_EQ(xMax, 77.0);
    EXPECT_EQ(printed(), "Loaded  0 fractals.\n");
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
}

class Unreadable : public FracFile, public testing::WithParamInterface<std::string> {};

TEST_P(Unreadable, KeepsCatalogueEntryAndView) {
    setCatalogue({stand_ins::someEntry("a"), stand_ins::someEntry("b")});
    currentFractal = 1;
    xMax = 77.0;
    forgetOutput();
    LoadData(GetParam());
    EXPECT_THAT(names(), ElementsAre("a", "b"));
    EXPECT_EQ(currentFractal, 1);
    EXPECT_EQ(xMax, 77.0);
    EXPECT_EQ(printed(), "Could not read from disk\n");
    EXPECT_EQ(stand_ins::glut.redisplays, 0);
}

INSTANTIATE_TEST_SUITE_P(Paths, Unreadable,
                         testing::Values("", "/nonexistent/a.frac", "/", "/proc/self/mem"));

TEST_F(FracFile, WithTheCatalogueLockedLoadingStillWorks) {
    const std::lock_guard lock(mutex);
    load(Record::named("one").bytes());
    SaveData(path());
    EXPECT_THAT(names(), ElementsAre("one"));
}

// ---- a typed file name

using KeyboardInput = FracFile;

TEST_F(KeyboardInput, TheFirstNameIsFractal1) {
    EXPECT_EQ(filename, "Fractal1.frac");
}

TEST_F(KeyboardInput, SavePrintsTheUserTextAndTheName) {
    setCatalogue({stand_ins::someEntry("a")});
    char text[] = "from the user";
    forgetOutput();
    EXPECT_TRUE(keyboard_input_save("OK", path(), text));
    EXPECT_EQ(printed(), "from the user\nFilename is " + path() + "\nSaved fractal 0\n");
    EXPECT_EQ(filename, path());
}

TEST_F(KeyboardInput, SaveOwesNoRender) {
    image_refreshed = true;
    keyboard_input_save("", path(), nullptr);
    EXPECT_FALSE(image_refreshed);
    EXPECT_EQ(update_count, 0);
}

TEST_F(KeyboardInput, LoadOwesOneRender) {
    writeFile(path(), Record::named("one").bytes());
    EXPECT_TRUE(keyboard_input_load("", path(), nullptr));
    EXPECT_THAT(names(), ElementsAre("one"));
    EXPECT_EQ(filename, path());
    EXPECT_EQ(update_count, 1);
}

TEST_F(KeyboardInput, ALoadThatFailsOwesOneRenderToo) {
    EXPECT_TRUE(keyboard_input_load("OK", "/nonexistent/x", nullptr));
    EXPECT_EQ(update_count, 1);
}

TEST_F(KeyboardInput, WithoutAUserTextOnlyTheNameIsPrinted) {
    forgetOutput();
    keyboard_input_load("OK", "/nonexistent/x", nullptr);
    EXPECT_EQ(printed(), "Filename is /nonexistent/x\nCould not read from disk\n");
}

TEST_F(KeyboardInput, NoExtensionIsAddedToATypedName) {
    keyboard_input_save("OK", folder / "plain", nullptr);
    EXPECT_THAT(folder.names(), ElementsAre("plain"));
}

TEST_F(KeyboardInput, AnotherButtonDoesNothing) {
    forgetOutput();
    EXPECT_TRUE(keyboard_input_save("Cancel", path(), nullptr));
    EXPECT_TRUE(keyboard_input_load("Cancel", path(), nullptr));
    EXPECT_EQ(printed(), "");
    EXPECT_EQ(filename, "Fractal1.frac");
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(update_count, 0);
}

}  // namespace

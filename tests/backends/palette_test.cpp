#include "backends/palette.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <vector>

#include "tests/support/backend_globals.h"
#include "tests/support/stdout_capture.h"

namespace {

using test_support::StdoutCapture;
using testing::ExitedWithCode;

using Table = std::vector<unsigned char>;

Table tableAt(const unsigned char* bytes) {
    return {bytes, bytes + PALETTE_BYTES};
}

// The random colours as a fresh process draws them: an unseeded rand() behaves as after srand(1).
Table randomColours() {
    std::srand(1);
    Table table(PALETTE_BYTES, 0);
    for (std::size_t n = 0; n < 768; ++n) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            table[4 * n + channel] = static_cast<unsigned char>(std::rand() % 256);
        }
    }
    return table;
}

using Colour = std::array<int, 3>;

Colour entry(const unsigned char* table, int n) {
    return {table[4 * n], table[4 * n + 1], table[4 * n + 2]};
}

// Palette state outlives a test in its process, so each of these runs in a process of its own,
// which reports on standard error and ends with status 0.
class PaletteTest : public testing::Test {
  protected:
    PaletteTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void endWith(bool good) { std::_Exit(good ? 0 : 1); }

    static bool inForceIs(const Table& table) {
        return cpuPalette != nullptr && tableAt(cpuPalette) == table &&
               tableAt(badAssColourPalette.get()) == table;
    }

    test_support::ImageGuard image{8, 8};
};

TEST_F(PaletteTest, TheCycleRunsGreenBlueRed) {
    InitColours(1);
    const unsigned char* table = cpuPalette;
    EXPECT_EQ(entry(table, 0), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 1), (Colour{0, 1, 0}));
    EXPECT_EQ(entry(table, 255), (Colour{0, 255, 0}));
    EXPECT_EQ(entry(table, 256), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 257), (Colour{0, 0, 1}));
    EXPECT_EQ(entry(table, 511), (Colour{0, 0, 255}));
    EXPECT_EQ(entry(table, 512), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 513), (Colour{1, 0, 0}));
    EXPECT_EQ(entry(table, 767), (Colour{255, 0, 0}));
}

TEST_F(PaletteTest, TheCycleIsBuiltInTempColoursAndLeavesTheFourthBytes) {
    for (std::size_t n = 0; n < 768; ++n) tempColours[4 * n + 3] = 42;
    InitColours(1);
    EXPECT_EQ(cpuPalette.load(), tempColours.get());
    for (std::size_t n = 0; n < 768; ++n) ASSERT_EQ(tempColours[4 * n + 3], 42) << n;
}

TEST_F(PaletteTest, TheCycleIsRebuiltOnEverySelection) {
    InitColours(1);
    tempColours[5] = 200;
    InitColours(1);
    EXPECT_EQ(entry(cpuPalette, 1), (Colour{0, 1, 0}));
}

TEST_F(PaletteTest, EverySelectionCopiesTheCycleStorageForTheDevice) {
    tempColours[7] = 123;
    InitColours(0);
    EXPECT_EQ(badAssColourPalette[7], 123);
    tempColours[7] = 124;
    InitColours(99);
    EXPECT_EQ(badAssColourPalette[7], 124);
    InitColours(1);
    EXPECT_EQ(tableAt(badAssColourPalette.get()), tableAt(tempColours.get()));
}

TEST_F(PaletteTest, TheColoursAreTheSameAfterOthersHaveDrawn) {
    EXPECT_EXIT(
        {
            std::rand();
            InitColours(0);
            endWith(tableAt(cpuPalette) == randomColours());
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, RandomColoursAreTheLowBytesOfAnUnseededGenerator) {
    EXPECT_EXIT((InitColours(0), endWith(tableAt(cpuPalette) == randomColours())),
                ExitedWithCode(0), "");
}

TEST_F(PaletteTest, RandomColoursAreDrawnOnceAProcess) {
    EXPECT_EXIT(
        {
            InitColours(0);
            ++cpuPalette[5];  // nobody else's: what is drawn again would not have it
            const Table first = tableAt(cpuPalette);
            InitColours(1);
            InitColours(0);
            InitColours(0);
            endWith(tableAt(cpuPalette) == first && cpuPalette != tempColours.get());
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, SelectingTheCycleFirstDrawsNoRandomNumbers) {
    EXPECT_EXIT(
        {
            InitColours(1);
            InitColours(0);
            endWith(tableAt(cpuPalette) == randomColours());
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, AnUnknownNumberChangesNeitherTableNorTheOneInForce) {
    InitColours(1);
    const Table before = tableAt(tempColours.get());
    for (const int type : {2, -1, 768, 1 << 30}) {
        InitColours(type);
        EXPECT_EQ(cpuPalette.load(), tempColours.get()) << type;
        EXPECT_EQ(tableAt(tempColours.get()), before) << type;
    }
}

TEST_F(PaletteTest, TheFirstFrameTakesItsPaletteInSilence) {
    EXPECT_EXIT(
        {
            const StdoutCapture capture;
            const bool first = updatePalette(0) == PaletteChange::first;
            endWith(first && inForceIs(randomColours()) && capture.text().empty());
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, TheFirstFrameCanTakeTheCycle) {
    EXPECT_EXIT(
        {
            const bool first = updatePalette(1) == PaletteChange::first;
            endWith(first && cpuPalette == tempColours.get() &&
                    inForceIs(tableAt(tempColours.get())) &&
                    entry(cpuPalette, 1) == Colour{0, 1, 0});
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, AnUnknownNumberAtTheFirstFrameStillLeavesAPaletteInForce) {
    EXPECT_EXIT(
        {
            const bool first = updatePalette(7) == PaletteChange::first;
            endWith(first && inForceIs(randomColours()));
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, ARealPaletteAfterAnUnknownFirstOneIsAChange) {
    EXPECT_EXIT(
        {
            const StdoutCapture capture;
            updatePalette(7);
            const bool changed = updatePalette(0) == PaletteChange::changed;
            endWith(changed && capture.text() == "Palette has changed\n");
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, AChangePrintsOneLineAndCopiesTheTableForTheDevice) {
    EXPECT_EXIT(
        {
            const StdoutCapture capture;
            updatePalette(0);
            const bool changed = updatePalette(1) == PaletteChange::changed;
            endWith(changed && cpuPalette == tempColours.get() &&
                    inForceIs(tableAt(tempColours.get())) &&
                    capture.text() == "Palette has changed\n");
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, GoingBackRestoresTheFirstRandomColours) {
    EXPECT_EXIT(
        {
            updatePalette(0);
            updatePalette(1);
            updatePalette(0);
            endWith(inForceIs(randomColours()));
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, NoChangePrintsNothingAndBuildsNothing) {
    EXPECT_EXIT(
        {
            const StdoutCapture capture;
            updatePalette(1);
            tempColours[0] = 17;
            badAssColourPalette[0] = 18;
            const bool none = updatePalette(1) == PaletteChange::none;
            endWith(none && tempColours[0] == 17 && badAssColourPalette[0] == 18 &&
                    capture.text().empty());
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, ALaterUnknownNumberPrintsTheLineAndKeepsThePalette) {
    EXPECT_EXIT(
        {
            const StdoutCapture capture;
            updatePalette(1);
            const bool changed = updatePalette(5) == PaletteChange::changed;
            const bool again = updatePalette(5) == PaletteChange::none;
            endWith(changed && again && cpuPalette == tempColours.get() &&
                    inForceIs(tableAt(tempColours.get())) &&
                    capture.text() == "Palette has changed\n");
        },
        ExitedWithCode(0), "");
}

TEST_F(PaletteTest, AnUnknownNumberAfterRandomColoursGivesTheDeviceRandomColours) {
    EXPECT_EXIT(
        {
            updatePalette(0);
            updatePalette(5);
            endWith(inForceIs(randomColours()));
        },
        ExitedWithCode(0), "");
}

}  // namespace

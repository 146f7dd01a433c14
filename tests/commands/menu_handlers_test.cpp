// What each command of the bar, the "Fractals" and the "Palette" menu does, one by one.
#include "commands/menu_handlers.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"
#include "tests/commands/handlers_fixture.h"
#include "tests/support/catalogue_table.h"

using GlutMenu::CGlutMenu;
using stand_ins::choose;
using stand_ins::Handlers;
using stand_ins::submenu;
using testing::HasSubstr;

namespace {

// ---- commands that create an entry

struct CreationRow {
    std::vector<std::string> menuPath;
    std::string text;
    std::string label;  // of the row in the table of built-in views
};

class Creation : public Handlers, public testing::WithParamInterface<CreationRow> {};

TEST_P(Creation, AppendsTheBuiltInView) {
    const CreationRow& row = GetParam();
    const auto& rows = test_support::catalogueRows();
    const auto expected = std::find_if(rows.begin(), rows.end(),
                                       [&](const auto& each) { return each.label == row.label; });
    ASSERT_NE(expected, rows.end());

    choose(submenu(row.menuPath), row.text);

    ASSERT_EQ(fractals.size(), 3u);
    const fractal& entry = fractals.back();
    EXPECT_EQ(currentFractal, 2);
    EXPECT_EQ(entry.fractalType, expected->type);
    EXPECT_EQ(entry.name, expected->name);
    EXPECT_EQ(entry.cx, expected->cx);
    EXPECT_EQ(entry.cy, expected->cy);
    EXPECT_EQ(entry.paletteType, expected->paletteType);
    EXPECT_EQ(xMin, expected->xMin);
}

TEST_P(Creation, OwesOneRenderAndAsksForARedisplay) {
    choose(submenu(GetParam().menuPath), GetParam().text);
    EXPECT_EQ(update_count, 1);
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
    EXPECT_FALSE(image_refreshed);
}

const std::vector<std::string> TYPES = {"Fractals", "Fractals"};
const std::vector<std::string> JULIAS = {"Fractals", "Fractals", "Julia"};
const std::vector<std::string> BARNSLEYS = {"Fractals", "Fractals", "Barnsley"};

INSTANTIATE_TEST_SUITE_P(Commands, Creation,
                         testing::Values(CreationRow{TYPES, "Mandelbrot", "Mandelbrot"},
                                         CreationRow{JULIAS, "Default", "JuliaDefault"},
                                         CreationRow{JULIAS, "San Marco", "JuliaSanMarco"},
                                         CreationRow{JULIAS, "Dendrite", "JuliaDendrite"},
                                         CreationRow{JULIAS, "Douady's Rabbit", "JuliaRabbit"},
                                         CreationRow{JULIAS, "Siegel Disk", "JuliaSiegelDisk"},
                                         CreationRow{TYPES, "Sin", "Sine"},
                                         CreationRow{TYPES, "Cos", "Cosine"},
                                         CreationRow{TYPES, "Sinh", "HyperbolicSine"},
                                         CreationRow{TYPES, "Cosh", "HyperbolicCosine"},
                                         CreationRow{BARNSLEYS, "1st Fractal", "Barnsley1"},
                                         CreationRow{BARNSLEYS, "2nd Fractal", "Barnsley2"},
                                         CreationRow{BARNSLEYS, "3rd Fractal", "Barnsley3"},
                                         CreationRow{BARNSLEYS, "Sierpinski", "BarnsleySierpinski"},
                                         CreationRow{TYPES, "Dragon", "Dragon"},
                                         CreationRow{TYPES, "Chebyshev T5", "Chebyshev"},
                                         CreationRow{TYPES, "Hermite H4", "Hermite"},
                                         CreationRow{TYPES, "Legendre P3", "Legendre"}),
                         [](const auto& row) { return row.param.label; });

// ---- texts that are no command

class NoCommand : public Handlers, public testing::WithParamInterface<std::string> {};

TEST_P(NoCommand, OnlyAsksForARedisplay) {
    choose(&loneItem(GetParam()), GetParam());
    EXPECT_EQ(fractals.size(), 2u);
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
    EXPECT_FALSE(image_refreshed);
}

INSTANTIATE_TEST_SUITE_P(Texts, NoCommand,
                         testing::Values("Julia", "Barnsley", "Fractals", "quit", "Anything",
                                         "CPU"));

TEST_F(Handlers, AnIndexOutsideTheMenuIsNoCommand) {
    for (int item : {-1, 99}) selection_callback(item, submenu({"Fractals"}), nullptr);
    EXPECT_EQ(fractals.size(), 2u);
    EXPECT_EQ(update_count, 0);
}

TEST_F(Handlers, CommandsAreFoundByTextWhateverTheirMenu) {
    choose(&loneItem("Dragon"), "Dragon");
    EXPECT_EQ(fractals.back().fractalType, 10);
}

// ---- zoom, palettes, stepping, cycling, logging

TEST_F(Handlers, ZoomAllowsADragAndDeactivatesTheBar) {
    zooming_enabled = false;
    choose(&menu, "Zoom");
    EXPECT_TRUE(zooming_enabled);
    EXPECT_FALSE(menu.IsMenuVisible());
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
}

TEST_F(Handlers, ZoomInAnotherMenuDeactivatesTheBarToo) {
    zooming_enabled = false;
    CGlutMenu& lone = loneItem("Zoom");
    lone.Activate();
    choose(&lone, "Zoom");
    EXPECT_TRUE(zooming_enabled);
    EXPECT_FALSE(menu.IsMenuVisible());
    EXPECT_TRUE(lone.IsMenuVisible());
}

TEST_F(Handlers, ZoomDeactivatesWhateverTheBarHangsBelow) {
    CGlutMenu& above = loneItem("above");
    above.Activate();
    menu.SetParent(&above);
    choose(&menu, "Zoom");
    menu.SetParent(nullptr);
    EXPECT_FALSE(above.IsMenuVisible());
}

TEST_F(Handlers, RandomColoursMoveTheCheckMark) {
    paletteType = 1;
    choose(submenu({"Palette"}), "RGB Cycle");
    choose(submenu({"Palette"}), "Random Colours");
    EXPECT_EQ(paletteType, 0);
    EXPECT_TRUE(submenu({"Palette"})->GetCheckState(0));
    EXPECT_FALSE(submenu({"Palette"})->GetCheckState(1));
    EXPECT_TRUE(image_refreshed);
}

TEST_F(Handlers, RgbCycleMovesTheCheckMark) {
    choose(submenu({"Palette"}), "RGB Cycle");
    EXPECT_EQ(paletteType, 1);
    EXPECT_FALSE(submenu({"Palette"})->GetCheckState(0));
    EXPECT_TRUE(submenu({"Palette"})->GetCheckState(1));
    EXPECT_TRUE(image_refreshed);
}

TEST_F(Handlers, PalettesMoveTheCheckMarkBetweenNeighboursWhereverTheyStand) {
    CGlutMenu& holder = menuOf({"first", "second", "Random Colours", "RGB Cycle"});
    choose(&holder, "RGB Cycle");
    for (const int item : {0, 1, 2, 3}) EXPECT_EQ(holder.GetCheckState(item), item == 3) << item;
    choose(&holder, "Random Colours");
    for (const int item : {0, 1, 2, 3}) EXPECT_EQ(holder.GetCheckState(item), item == 2) << item;
}

TEST_F(Handlers, APaletteOwesOneRender) {
    choose(submenu({"Palette"}), "RGB Cycle");
    EXPECT_EQ(update_count, 1);
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
}

TEST_F(Handlers, NextAndPreviousStep) {
    fractalsCommand("Next Fractal");
    EXPECT_EQ(currentFractal, 1);
    EXPECT_FALSE(image_refreshed);
    fractalsCommand("Previous Fractal");
    EXPECT_EQ(currentFractal, 0);
    EXPECT_FALSE(image_refreshed);
}

TEST_F(Handlers, NextAndPreviousMakeTheEntryTheView) {
    fractals[0].maxIters = 321;
    fractals[1].maxIters = 123;
    fractalsCommand("Next Fractal");
    EXPECT_EQ(maxIters, 123);
    fractalsCommand("Previous Fractal");
    EXPECT_EQ(maxIters, 321);
}

TEST_F(Handlers, NextAtTheEndStaysAndStillOwesARender) {
    currentFractal = 1;
    fractalsCommand("Next Fractal");
    EXPECT_EQ(currentFractal, 1);
    EXPECT_EQ(update_count, 1);
}

TEST_F(Handlers, CycleStartsTheIdleFunction) {
    fractalsCommand("Cycle");
    EXPECT_EQ(cycleDir, 1);
    EXPECT_EQ(stand_ins::glut.idle, idle);
    EXPECT_TRUE(submenu({"Fractals"})->GetCheckState(4));
    EXPECT_EQ(update_count, 1);
}

TEST_F(Handlers, CycleTwiceIsOffAgainAndOwesARenderEachTime) {
    fractalsCommand("Cycle");
    fractalsCommand("Cycle");
    EXPECT_EQ(cycleDir, 0);
    EXPECT_EQ(stand_ins::glut.idle, nullptr);
    EXPECT_EQ(stand_ins::glut.idleCalls, 2);
    EXPECT_FALSE(submenu({"Fractals"})->GetCheckState(4));
    EXPECT_EQ(update_count, 2);
}

TEST_F(Handlers, CyclingBackwardsIsSwitchedOffToo) {
    cycleDir = -1;
    fractalsCommand("Cycle");
    EXPECT_EQ(cycleDir, 0);
}

TEST_F(Handlers, TimingLogsToggleWithTheirCheckMark) {
    const bool before = bLogging;
    fractalsCommand("Toggle Timing Logs");
    EXPECT_EQ(bLogging, !before);
    EXPECT_EQ(submenu({"Fractals"})->GetCheckState(1), !before);
    fractalsCommand("Toggle Timing Logs");
    EXPECT_EQ(submenu({"Fractals"})->GetCheckState(1), before);
    EXPECT_EQ(update_count, 0);
}

TEST_F(Handlers, ToggleToCpuRenamesItself) {
    bCPU = false;
    numCPUThreads = 2;
    CGlutMenu& lone = loneItem("Toggle to CPU");
    choose(&lone, "Toggle to CPU");
    EXPECT_TRUE(bCPU);
    EXPECT_EQ(lone.GetMenuText(0), "Toggle to GPU");
    EXPECT_EQ(numCPUThreads, 2);
    EXPECT_EQ(update_count, 0);
}

TEST_F(Handlers, ToggleToCpuLeavesItsOneThread) {
    bCPU = false;
    numCPUThreads = 1;
    choose(&loneItem("Toggle to CPU"), "Toggle to CPU");
    EXPECT_EQ(numCPUThreads, 1);
}

TEST_F(Handlers, ToggleToCpuGivesItThreads) {
    bCPU = false;
    numCPUThreads = 0;
    choose(&loneItem("Toggle to CPU"), "Toggle to CPU");
    EXPECT_EQ(numCPUThreads, max_threads);
}

TEST_F(Handlers, ToggleToGpuRenamesItselfAndOwesARender) {
    CGlutMenu& lone = loneItem("Toggle to GPU");
    choose(&lone, "Toggle to GPU");
    EXPECT_FALSE(bCPU);
    EXPECT_EQ(lone.GetMenuText(0), "Toggle to CPU");
    EXPECT_EQ(update_count, 1);
}

// ---- commands after which the image does not count as fresh

class StaleImage : public Handlers, public testing::WithParamInterface<std::string> {};

TEST_P(StaleImage, IsLeftByACommandThatOwesNoRender) {
    choose(&loneItem(GetParam()), GetParam());
    EXPECT_FALSE(image_refreshed);
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(stand_ins::glut.redisplays, GetParam() == "Information" ? 2 : 1);
}

INSTANTIATE_TEST_SUITE_P(Commands, StaleImage,
                         testing::Values("Information", "Zoom", "Load from disk", "Save to disk",
                                         "Toggle Timing Logs", "Toggle to CPU"));

TEST_F(Handlers, ASaveLeavesTheImageStale) {
    const stand_ins::TemporaryFolder folder;
    stand_ins::panelAnswer = folder / "mine.frac";
    fractalsCommand("Save to disk");
    EXPECT_FALSE(image_refreshed);
}

// ---- quit

using HandlersDeathTest = Handlers;

TEST_F(HandlersDeathTest, QuitEndsWithStatusZero) {
    EXPECT_EXIT(fractalsCommand("Quit"), testing::ExitedWithCode(0), "");
}

TEST_F(HandlersDeathTest, QuitOwesNothingAnyMore) {
    const auto quit = [] {
        update_count = 5;
        std::atexit([] { std::_Exit(update_count == 0 && !image_refreshed ? 0 : 1); });
        fractalsCommand("Quit");
    };
    EXPECT_EXIT(quit(), testing::ExitedWithCode(0), "");
}

TEST_F(HandlersDeathTest, QuitSavesNothing) {
    const stand_ins::TemporaryFolder folder;
    filename = folder / "a.frac";
    EXPECT_EXIT(fractalsCommand("Quit"), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(folder.names().empty());
}

// ---- loading and saving

TEST_F(Handlers, LoadStartsFromNoPathEvenAfterASave) {
    filename = "/somewhere/else.frac";
    fractalsCommand("Load from disk");
    ASSERT_EQ(stand_ins::openPanels.size(), 1u);
    EXPECT_EQ(stand_ins::openPanels[0].pathBefore, "");
    EXPECT_EQ(stand_ins::openPanels[0].message, "Load fractals");
}

TEST_F(Handlers, CancelledLoadChangesNothing) {
    current_filename = "before.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(fractals.size(), 2u);
    EXPECT_EQ(current_filename, "before.frac");
    EXPECT_TRUE(stand_ins::glut.titles.empty());
    EXPECT_EQ(stand_ins::glut.redisplays, 1);
}

TEST_F(Handlers, LoadReplacesTheCatalogueAndTitlesTheWindow) {
    const stand_ins::TemporaryFolder folder;
    SaveData(folder / "two.frac");
    fractals.pop_back();
    stand_ins::panelAnswer = folder / "two.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(fractals.size(), 2u);
    EXPECT_EQ(current_filename, folder / "two.frac");
    EXPECT_EQ(stand_ins::glut.titles.back(),
              "Tessary with OpenCL V1.0 :" + folder.path + "/two.frac");
}

TEST_F(Handlers, LoadLeavesTheImageStaleAndOwesTheRenderOfWhatWasLoaded) {
    const stand_ins::TemporaryFolder folder;
    SaveData(folder / "two.frac");
    stand_ins::panelAnswer = folder / "two.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(update_count, 1);
    EXPECT_FALSE(image_refreshed);
}

TEST_F(Handlers, LoadLeavesTheSaveNameAlone) {
    stand_ins::panelAnswer = "/nonexistent/two.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(filename, "Fractal1.frac");
}

TEST_F(Handlers, FailedLoadStillNamesTheFileInTheTitle) {
    stand_ins::panelAnswer = "/nonexistent/two.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(fractals.size(), 2u);
    EXPECT_EQ(current_filename, "/nonexistent/two.frac");
    EXPECT_THAT(printed(), HasSubstr("Could not read from disk\n"));
}

TEST_F(Handlers, SaveStartsFromTheLastNameAndWritesItBack) {
    const stand_ins::TemporaryFolder folder;
    stand_ins::panelAnswer = folder / "mine.frac";
    fractalsCommand("Save to disk");
    ASSERT_EQ(stand_ins::savePanels.size(), 1u);
    EXPECT_EQ(stand_ins::savePanels[0].pathBefore, "Fractal1.frac");
    EXPECT_EQ(stand_ins::savePanels[0].message, "Save fractals");
    EXPECT_EQ(filename, folder / "mine.frac");
    EXPECT_EQ(current_filename, folder / "mine.frac");
}

TEST_F(Handlers, SaveWritesTheCatalogueAndTitlesTheWindow) {
    const stand_ins::TemporaryFolder folder;
    stand_ins::panelAnswer = folder / "mine.frac";
    fractalsCommand("Save to disk");
    EXPECT_FALSE(stand_ins::readFile(folder / "mine.frac").empty());
    EXPECT_EQ(stand_ins::glut.titles.back(),
              "Tessary with OpenCL V1.0 :" + folder.path + "/mine.frac");
    EXPECT_EQ(update_count, 0);
}

TEST_F(Handlers, CancelledSaveChangesNothing) {
    current_filename = "before.frac";
    fractalsCommand("Save to disk");
    EXPECT_EQ(filename, "Fractal1.frac");
    EXPECT_EQ(current_filename, "before.frac");
    EXPECT_TRUE(stand_ins::glut.titles.empty());
}

}  // namespace

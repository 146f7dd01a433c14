// What each menu command does, one by one.
#include "commands/menu_handlers.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "app/frame_loop.h"
#include "app/navigation.h"
#include "app/window_title.h"
#include "commands/frac_file.h"
#include "commands/menu_tree.h"
#include "commands/parameter_dialog.h"
#include "compute/opencl_backend.h"
#include "compute/renderer.h"
#include "compute/worker_pool.h"
#include "tests/commands/stand_ins.h"
#include "tests/support/catalogue_table.h"

using GlutMenu::CGlutMenu;
using stand_ins::choose;
using stand_ins::submenu;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Handlers : public stand_ins::CommandsTest {
  protected:
    Handlers() {
        setCatalogue({stand_ins::someEntry("first", 1), stand_ins::someEntry("second", 2)});
        createMenu();
        forget();
        image_refreshed = true;  // as idle leaves it, so that clearing it shows
    }

    static void forget() { stand_ins::forget(); }

    // Chooses a command of the "Fractals" menu.
    static void fractalsCommand(const std::string& text) { choose(submenu({"Fractals"}), text); }

    // A menu of one item with this text, for commands that no menu of the program holds.
    CGlutMenu& loneItem(const std::string& text) {
        std::vector<std::string> items = {text};
        other.Initialise(1024, 768, 0, 0, 5, 5, "", items, 1.0f, 1.0f, false, true);
        other.DefineKeyboardCallback(selection_callback, nullptr);
        return other;
    }

  private:
    CGlutMenu other;
};

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

TEST_F(Handlers, LoadByItselfOwesNoRender) {
    const stand_ins::TemporaryFolder folder;
    SaveData(folder / "two.frac");
    stand_ins::panelAnswer = folder / "two.frac";
    fractalsCommand("Load from disk");
    EXPECT_EQ(update_count, 0);
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

// ---- precision

TEST_F(Handlers, PrecisionFlipsOnTheCpuWithoutTouchingTheCheckMark) {
    CGlutMenu& lone = loneItem("Double precision");
    choose(&lone, "Double precision");
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_FALSE(lone.GetCheckState(0));
    EXPECT_TRUE(stand_ins::backendCalls.empty());
    EXPECT_EQ(update_count, 1);
}

TEST_F(Handlers, PrecisionStaysWithoutAChosenDevice) {
    bCPU = false;
    choose(&loneItem("Double precision"), "Double precision");
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_EQ(update_count, 1);
}

TEST_F(Handlers, PrecisionOnADeviceReleasesTheOldAndSetsUpTheNew) {
    stand_ins::listDevices({true});
    bCPU = false;
    nCudaDevice = 0;
    CGlutMenu& lone = loneItem("Double precision");
    choose(&lone, "Double precision");
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_TRUE(lone.GetCheckState(0));
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release single", "load", "set up 0 with double text"));
    EXPECT_EQ(kernel_string, "double text");
}

TEST_F(Handlers, PrecisionOnADeviceGoesBackToSingle) {
    stand_ins::listDevices({true});
    bCPU = false;
    nCudaDevice = 0;
    bDoublePrecision = true;
    CGlutMenu& lone = loneItem("Double precision");
    lone.SetCheckState(0, true);
    choose(&lone, "Double precision");
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_FALSE(lone.GetCheckState(0));
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release double", "load", "set up 0 with single text"));
}

TEST_F(Handlers, DeviceWithoutDoublePrecisionStaysSingle) {
    stand_ins::listDevices({false});
    bCPU = false;
    nCudaDevice = 0;
    CGlutMenu& lone = loneItem("Double precision");
    lone.SetCheckState(0, true);
    choose(&lone, "Double precision");
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_TRUE(lone.GetCheckState(0)) << "not even the check mark changes";
    EXPECT_TRUE(stand_ins::backendCalls.empty());
}

// ---- the "Devices" menu

class Devices : public Handlers {
  protected:
    // Two devices of which only the first can do double precision; the CPU renders.
    Devices() {
        stand_ins::listDevices({true, false});
        createMenu();
        forget();
    }

    static CGlutMenu* list() { return submenu({"Devices"}); }

    static void chooseItem(int item) { devices_callback(item, list(), nullptr); }

    static std::vector<int> checked() {
        std::vector<int> items;
        for (int i = 0; i < static_cast<int>(list()->items.size()); ++i) {
            if (list()->GetCheckState(i)) items.push_back(i);
        }
        return items;
    }

    static constexpr int CPU = 0, FIRST = 1, SECOND = 2, PRECISION = 3, THREADS = 4, SYSTEM = 5;
};

TEST_F(Devices, ADeviceIsReleasedThenChosenThenSetUp) {
    chooseItem(SECOND);
    EXPECT_EQ(nCudaDevice, 1);
    EXPECT_FALSE(bCPU);
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release single", "load", "set up 1 with single text"));
    EXPECT_EQ(kernel_string, "single text");
}

TEST_F(Devices, AChosenDeviceAloneIsChecked) {
    chooseItem(FIRST);
    EXPECT_THAT(checked(), ElementsAre(FIRST));
    chooseItem(SECOND);
    EXPECT_THAT(checked(), ElementsAre(SECOND));
}

TEST_F(Devices, ADeviceDisablesThreads) {
    chooseItem(FIRST);
    EXPECT_FALSE(list()->GetMenuItemState(THREADS));
}

TEST_F(Devices, PrecisionIsEnabledAsTheDeviceCan) {
    chooseItem(FIRST);
    EXPECT_TRUE(list()->GetMenuItemState(PRECISION));
    chooseItem(SECOND);
    EXPECT_FALSE(list()->GetMenuItemState(PRECISION));
}

TEST_F(Devices, DoublePrecisionStaysOnADeviceThatCan) {
    bDoublePrecision = true;
    chooseItem(FIRST);
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_THAT(checked(), ElementsAre(FIRST, PRECISION));
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release double", "load", "set up 0 with double text"));
}

TEST_F(Devices, DoublePrecisionIsGivenUpOnADeviceThatCannot) {
    bDoublePrecision = true;
    chooseItem(SECOND);
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_EQ(nCudaDevice, 1);
    EXPECT_THAT(checked(), ElementsAre(SECOND));
}

TEST_F(Devices, GivingUpDoublePrecisionSetsUpTwice) {
    bDoublePrecision = true;
    chooseItem(SECOND);
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release double", "release double", "load", "set up 1 with single text",
                            "load", "set up 1 with single text"));
    EXPECT_EQ(update_count, 2);
    EXPECT_EQ(stand_ins::glut.redisplays, 2);
}

TEST_F(Devices, CpuIsCheckedAndKeepsWhatTheDeviceHolds) {
    chooseItem(FIRST);
    stand_ins::backendCalls.clear();
    chooseItem(CPU);
    EXPECT_TRUE(bCPU);
    EXPECT_THAT(checked(), ElementsAre(CPU));
    EXPECT_TRUE(stand_ins::backendCalls.empty());
    EXPECT_EQ(nCudaDevice, 0);
}

TEST_F(Devices, CpuEnablesThreadsAndPrecision) {
    chooseItem(SECOND);
    chooseItem(CPU);
    EXPECT_TRUE(list()->GetMenuItemState(THREADS));
    EXPECT_TRUE(list()->GetMenuItemState(PRECISION));
}

TEST_F(Devices, CpuChecksItsThreadCount) {
    chooseItem(FIRST);
    numCPUThreads = 2;
    chooseItem(CPU);
    for (int i = 0; i < max_threads; ++i) {
        EXPECT_EQ(submenu({"Devices", "CPU Threads"})->GetCheckState(i), i == 1);
    }
}

TEST_F(Devices, PrecisionOnTheCpuMovesTheCheckMark) {
    chooseItem(PRECISION);
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_THAT(checked(), ElementsAre(CPU, PRECISION));
    chooseItem(PRECISION);
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_THAT(checked(), ElementsAre(CPU));
    EXPECT_TRUE(stand_ins::backendCalls.empty());
}

TEST_F(Devices, PrecisionOnADeviceSetsItUpAnew) {
    chooseItem(FIRST);
    stand_ins::backendCalls.clear();
    chooseItem(PRECISION);
    EXPECT_THAT(checked(), ElementsAre(FIRST, PRECISION));
    EXPECT_THAT(stand_ins::backendCalls,
                ElementsAre("release single", "load", "set up 0 with double text"));
}

TEST_F(Devices, PrecisionIsRefusedByADeviceThatCannot) {
    chooseItem(SECOND);
    stand_ins::backendCalls.clear();
    chooseItem(PRECISION);
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_THAT(checked(), ElementsAre(SECOND));
    EXPECT_TRUE(stand_ins::backendCalls.empty());
}

TEST_F(Devices, TheItemsAfterTheDevicesSwitchNoDevice) {
    for (const int item : {PRECISION, THREADS, SYSTEM}) chooseItem(item);
    EXPECT_TRUE(bCPU);
    EXPECT_EQ(nCudaDevice, -1);
}

TEST_F(Devices, EveryChoiceOwesOneRender) {
    for (const int item : {CPU, FIRST, PRECISION, THREADS, SYSTEM}) {
        forget();
        update_count = 0;
        chooseItem(item);
        EXPECT_EQ(update_count, 1) << item;
        EXPECT_EQ(stand_ins::glut.redisplays, item == SYSTEM ? 2 : 1) << item;
    }
}

TEST_F(Devices, SystemInformationNamesTheCpu) {
    bDoublePrecision = true;
    chooseItem(SYSTEM);
    EXPECT_EQ(GlutMenu::input_field, &input);
    EXPECT_EQ(input.title, "System Information");
    EXPECT_THAT(input.message_lines,
                ElementsAre("CPU", "Double precision", "", "Press [RETURN]/[ENTER] to continue"));
    EXPECT_EQ(input.kind, 2);
}

TEST_F(Devices, SystemInformationNamesTheDevice) {
    chooseItem(SECOND);
    chooseItem(SYSTEM);
    EXPECT_THAT(input.message_lines, ElementsAre("Device 1", "Single precision", "",
                                                 "Press [RETURN]/[ENTER] to continue"));
    EXPECT_EQ(input.x, 100.0f);
    EXPECT_EQ(input.y, 100.0f);
}

TEST_F(Devices, SystemInformationIsReadWithoutADevice) {
    bCPU = false;
    chooseItem(SYSTEM);
    EXPECT_EQ(input.message_lines.at(0), "");
}

// ---- the "CPU Threads" menu

class Threads : public Handlers, public testing::WithParamInterface<int> {};

TEST_P(Threads, ItemIChoosesOneMoreThread) {
    int item = GetParam();
    threads_callback(item, submenu({"Devices", "CPU Threads"}), nullptr);
    EXPECT_EQ(numCPUThreads, item + 1);
    for (int i = 0; i < max_threads; ++i) {
        EXPECT_EQ(submenu({"Devices", "CPU Threads"})->GetCheckState(i), i == item);
    }
}

INSTANTIATE_TEST_SUITE_P(Items, Threads, testing::Range(0, 4));

TEST_F(Handlers, ThreadCountWaitsForTheNextRender) {
    choose(submenu({"Devices", "CPU Threads"}), "2");
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(stand_ins::glut.redisplays, 0);
    EXPECT_FALSE(image_refreshed);
}

TEST_F(Handlers, ThreadCountsOutsideTheMenuAreIgnored) {
    numCPUThreads = 2;
    for (int item : {-1, 4, 1000}) {
        threads_callback(item, submenu({"Devices", "CPU Threads"}), nullptr);
        EXPECT_EQ(numCPUThreads, 2);
    }
    EXPECT_TRUE(submenu({"Devices", "CPU Threads"})->GetCheckState(1));
}

}  // namespace

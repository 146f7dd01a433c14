// The tree that start-up builds: every item, check mark and enabled state.
#include "commands/menu_tree.h"

#include <gmock/gmock.h>

#include <limits>
#include <utility>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "commands/menu_handlers.h"
#include "commands/menu_texts.h"
#include "explorer/frame_loop.h"
#include "explorer/window_state.h"
#include "tests/support/stand_ins.h"

using GlutMenu::CGlutMenu;
using stand_ins::submenu;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Ne;

namespace {

class MenuTree : public stand_ins::CommandsTest {};

std::vector<std::string> texts(const CGlutMenu* list) {
    return list ? list->items : std::vector<std::string>{};
}

std::vector<int> checkedItems(const CGlutMenu* list) {
    std::vector<int> checked;
    for (const auto& [item, state] : list->check_states) {
        if (state) checked.push_back(item);
    }
    return checked;
}

bool checked(CGlutMenu* list, const std::string& text) {
    return list->GetCheckState(list->GetMenuPosition(text));
}

bool enabled(CGlutMenu* list, const std::string& text) {
    return list->GetMenuItemState(list->GetMenuPosition(text));
}

void useDevice(int device, std::vector<bool> doubles) {
    stand_ins::listDevices(std::move(doubles));
    bCPU = false;
    nCudaDevice = device;
}

// A number that has another value while this lives.
class Restored {
  public:
    Restored(std::int32_t& changed, std::int32_t value)
        : number(changed), before(std::exchange(changed, value)) {}
    ~Restored() { number = before; }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

  private:
    std::int32_t& number;
    std::int32_t before;
};

struct ItemText {
    const std::string& text;
    std::string expected;
};

TEST_F(MenuTree, EveryCommandHasItsText) {
    const std::vector<ItemText> table = {{fractals_menu, "Fractals"},
                                         {toggle_timing_logs, "Toggle Timing Logs"},
                                         {previous_fractal, "Previous Fractal"},
                                         {next_fractal, "Next Fractal"},
                                         {cycle_fractals, "Cycle"},
                                         {fractal_info, "Information"},
                                         {load_from_disk, "Load from disk"},
                                         {save_to_disk, "Save to disk"},
                                         {quit_option, "Quit"},
                                         {mandelbrot, "Mandelbrot"},
                                         {julia, "Julia"},
                                         {sin_frac, "Sin"},
                                         {cos_frac, "Cos"},
                                         {sinh_frac, "Sinh"},
                                         {cosh_frac, "Cosh"},
                                         {barnsley_frac, "Barnsley"},
                                         {dragon_frac, "Dragon"},
                                         {chebyshev_frac, "Chebyshev T5"},
                                         {hermite_frac, "Hermite H4"},
                                         {legendre_frac, "Legendre P3"},
                                         {julia_default, "Default"},
                                         {julia_dendrite, "Dendrite"},
                                         {julia_rabbit, "Douady's Rabbit"},
                                         {julia_marco, "San Marco"},
                                         {julia_siegel, "Siegel Disk"},
                                         {barnsley_1, "1st Fractal"},
                                         {barnsley_2, "2nd Fractal"},
                                         {barnsley_3, "3rd Fractal"},
                                         {barnsley_sierpinski, "Sierpinski"},
                                         {random_colours, "Random Colours"},
                                         {rgb_cycle, "RGB Cycle"},
                                         {zoom_string, "Zoom"},
                                         {cpu_device, "CPU"},
                                         {double_precision, "Double precision"},
                                         {cpu_threads, "CPU Threads"},
                                         {system_information, "System information"},
                                         {toggle_to_cpu, "Toggle to CPU"},
                                         {toggle_to_gpu, "Toggle to GPU"}};
    for (const ItemText& row : table) EXPECT_EQ(row.text, row.expected);
}

TEST_F(MenuTree, BarHasFourItemsAndListensToKeys) {
    createMenu();
    EXPECT_THAT(menu.items, ElementsAre("Fractals", "Palette", "Zoom", "Devices"));
    EXPECT_EQ(menu.GetTitle(), "Menu Bar");
    EXPECT_TRUE(menu.is_menu_bar);
    EXPECT_FALSE(menu.is_submenu);
    EXPECT_EQ(menu.callback, selection_callback);
    EXPECT_EQ(menu.user_data, nullptr);
    EXPECT_TRUE(menu.IsMenuVisible());
}

TEST_F(MenuTree, BarIsGreenAndAsWideAsTheWindow) {
    createMenu();
    EXPECT_THAT(menu.background_colour, ElementsAre(0.0f, 0.7f, 0.3f, 0.7f));
    EXPECT_EQ(menu.width, 1024);
}

TEST_F(MenuTree, IsLaidOutForTheSizeOfTheWindow) {
    const Restored width(screen_width, 640), height(screen_height, 384);
    createMenu();
    EXPECT_EQ(CGlutMenu::screen_width, 640.0f);
    EXPECT_EQ(CGlutMenu::screen_height, 384.0f);
    EXPECT_EQ(menu.GetScaleY(), 0.5f);
}

TEST_F(MenuTree, ZoomHasNoSubmenu) {
    createMenu();
    EXPECT_EQ(menu.GetSubMenu(2), nullptr);
}

TEST_F(MenuTree, FractalsMenuListsItsCommands) {
    createMenu();
    EXPECT_THAT(texts(submenu({"Fractals"})),
                ElementsAre("Fractals", "Toggle Timing Logs", "Previous Fractal", "Next Fractal",
                            "Cycle", "Information", "Load from disk", "Save to disk", "Quit"));
}

TEST_F(MenuTree, FractalTypesAreListed) {
    createMenu();
    EXPECT_THAT(texts(submenu({"Fractals", "Fractals"})),
                ElementsAre("Mandelbrot", "Julia", "Sin", "Cos", "Sinh", "Cosh", "Barnsley",
                            "Dragon", "Chebyshev T5", "Hermite H4", "Legendre P3"));
}

TEST_F(MenuTree, JuliaAndBarnsleyListTheirPresets) {
    createMenu();
    EXPECT_THAT(texts(submenu({"Fractals", "Fractals", "Julia"})),
                ElementsAre("Default", "Dendrite", "Douady's Rabbit", "San Marco", "Siegel Disk"));
    EXPECT_THAT(texts(submenu({"Fractals", "Fractals", "Barnsley"})),
                ElementsAre("1st Fractal", "2nd Fractal", "3rd Fractal", "Sierpinski"));
}

TEST_F(MenuTree, PalettesAreListed) {
    createMenu();
    EXPECT_THAT(texts(submenu({"Palette"})), ElementsAre("Random Colours", "RGB Cycle"));
}

TEST_F(MenuTree, DevicesAreListedBetweenCpuAndTheRest) {
    stand_ins::listDevices({true, false});
    createMenu();
    EXPECT_THAT(texts(submenu({"Devices"})),
                ElementsAre("CPU", "Device 0", "Device 1", "Double precision", "CPU Threads",
                            "System information"));
}

TEST_F(MenuTree, WithoutDevicesTheDevicesMenuKeepsItsFourOwnItems) {
    createMenu();
    EXPECT_THAT(texts(submenu({"Devices"})),
                ElementsAre("CPU", "Double precision", "CPU Threads", "System information"));
}

TEST_F(MenuTree, ThreadCountsGoUpToTheNumberOfWorkers) {
    max_threads = 12;
    createMenu();
    EXPECT_THAT(texts(submenu({"Devices", "CPU Threads"})),
                ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"));
}

class MenuTreeWithoutWorkers : public MenuTree, public testing::WithParamInterface<int> {};

TEST_P(MenuTreeWithoutWorkers, ThreadMenuIsEmptyButThere) {
    max_threads = GetParam();
    createMenu();
    const CGlutMenu* threads = submenu({"Devices", "CPU Threads"});
    ASSERT_NE(threads, nullptr);
    EXPECT_TRUE(threads->items.empty());
}

INSTANTIATE_TEST_SUITE_P(Counts, MenuTreeWithoutWorkers, testing::Values(0, -3));

TEST_F(MenuTree, SubmenusDeliverToTheirHandlers) {
    createMenu();
    for (const std::vector<std::string>& path : {std::vector<std::string>{"Fractals"},
                                                 {"Fractals", "Fractals"},
                                                 {"Fractals", "Fractals", "Julia"},
                                                 {"Fractals", "Fractals", "Barnsley"},
                                                 {"Palette"}}) {
        EXPECT_EQ(submenu(path)->callback, selection_callback) << path.back();
    }
    EXPECT_EQ(submenu({"Devices"})->callback, devices_callback);
    EXPECT_EQ(submenu({"Devices", "CPU Threads"})->callback, threads_callback);
}

TEST_F(MenuTree, SubmenusHaveNeitherTitleNorUserPointer) {
    createMenu();
    for (const std::vector<std::string>& path : {std::vector<std::string>{"Fractals"},
                                                 {"Fractals", "Fractals"},
                                                 {"Fractals", "Fractals", "Julia"},
                                                 {"Fractals", "Fractals", "Barnsley"},
                                                 {"Palette"},
                                                 {"Devices"},
                                                 {"Devices", "CPU Threads"}}) {
        EXPECT_EQ(submenu(path)->GetTitle(), "") << path.back();
        EXPECT_EQ(submenu(path)->user_data, nullptr) << path.back();
    }
}

TEST_F(MenuTree, PrecisionIsAlsoNotedBeyondTheBar) {
    bDoublePrecision = true;
    createMenu();
    EXPECT_TRUE(menu.GetCheckState(6));
    bDoublePrecision = false;
    createMenu();
    EXPECT_FALSE(menu.GetCheckState(6));
    EXPECT_EQ(menu.check_states.count(6), 1u);
}

TEST_F(MenuTree, TimingLogsAreCheckedWhileOn) {
    for (const bool on : {true, false}) {
        bLogging = on;
        createMenu();
        EXPECT_EQ(checked(submenu({"Fractals"}), "Toggle Timing Logs"), on);
        EXPECT_EQ(checkedItems(submenu({"Fractals"})).size(), on ? 1U : 0U);
    }
}

TEST_F(MenuTree, CyclingStartsUnchecked) {
    createMenu();
    EXPECT_FALSE(checked(submenu({"Fractals"}), "Cycle"));
}

TEST_F(MenuTree, PaletteInForceIsChecked) {
    paletteType = 1;
    createMenu();
    EXPECT_THAT(checkedItems(submenu({"Palette"})), ElementsAre(1));
    paletteType = 0;
    createMenu();
    EXPECT_THAT(checkedItems(submenu({"Palette"})), ElementsAre(0));
}

TEST_F(MenuTree, OddPaletteNumberFromAFileChecksNothingThatIsShown) {
    paletteType = 7;
    createMenu();
    EXPECT_FALSE(checked(submenu({"Palette"}), "Random Colours"));
    EXPECT_FALSE(checked(submenu({"Palette"}), "RGB Cycle"));
    EXPECT_TRUE(submenu({"Palette"})->GetCheckState(7));
    EXPECT_EQ(submenu({"Palette"})->check_states.count(-6), 1u);
}

// The menus of this test are built from a source in which an overflow traps.
TEST_F(MenuTree, TheSmallestPaletteNumberFromAFileChecksNothingThatIsShown) {
    paletteType = std::numeric_limits<std::int32_t>::min();
    createMenu();
    EXPECT_FALSE(checked(submenu({"Palette"}), "Random Colours"));
    EXPECT_FALSE(checked(submenu({"Palette"}), "RGB Cycle"));
    EXPECT_TRUE(submenu({"Palette"})->GetCheckState(paletteType));
    EXPECT_EQ(submenu({"Palette"})->check_states.count(paletteType + 1), 1u);
}

TEST_F(MenuTree, CpuModeChecksCpuAndItsThreadCount) {
    stand_ins::listDevices({true});
    numCPUThreads = 3;
    createMenu();
    EXPECT_THAT(checkedItems(submenu({"Devices"})), ElementsAre(0));
    EXPECT_THAT(checkedItems(submenu({"Devices", "CPU Threads"})), ElementsAre(2));
}

TEST_F(MenuTree, CpuModeEnablesThreadsAndPrecision) {
    stand_ins::listDevices({false});
    createMenu();
    EXPECT_TRUE(enabled(submenu({"Devices"}), "CPU Threads"));
    EXPECT_TRUE(enabled(submenu({"Devices"}), "Double precision"));
}

TEST_F(MenuTree, CpuModeChecksDoublePrecisionWhenInForce) {
    stand_ins::listDevices({false});
    bDoublePrecision = true;
    createMenu();
    EXPECT_TRUE(checked(submenu({"Devices"}), "Double precision"));
}

TEST_F(MenuTree, MoreThreadsThanWorkersCheckNone) {
    numCPUThreads = 9;
    createMenu();
    EXPECT_TRUE(checkedItems(submenu({"Devices", "CPU Threads"})).empty());
}

TEST_F(MenuTree, DeviceModeChecksOnlyTheDevice) {
    useDevice(1, {true, true});
    createMenu();
    EXPECT_THAT(checkedItems(submenu({"Devices"})), ElementsAre(2));
}

TEST_F(MenuTree, DeviceModeClearsDoublePrecisionEvenWhenInForce) {
    useDevice(0, {true});
    bDoublePrecision = true;
    createMenu();
    EXPECT_THAT(checkedItems(submenu({"Devices"})), ElementsAre(1));
}

TEST_F(MenuTree, DeviceModeWritesOneCheckMarkPastTheList) {
    useDevice(0, {true});
    createMenu();
    const CGlutMenu* list = submenu({"Devices"});
    EXPECT_EQ(list->check_states.rbegin()->first, static_cast<int>(list->items.size()));
}

TEST_F(MenuTree, CpuModeWritesNoCheckMarkPastTheList) {
    stand_ins::listDevices({true});
    createMenu();
    const CGlutMenu* list = submenu({"Devices"});
    EXPECT_EQ(list->check_states.rbegin()->first, static_cast<int>(list->items.size()) - 1);
}

TEST_F(MenuTree, DeviceWithDoublePrecisionEnablesIt) {
    useDevice(1, {false, true});
    createMenu();
    EXPECT_TRUE(enabled(submenu({"Devices"}), "Double precision"));
    EXPECT_FALSE(enabled(submenu({"Devices"}), "CPU Threads"));
}

TEST_F(MenuTree, DeviceWithoutDoublePrecisionDisablesIt) {
    useDevice(0, {false, true});
    createMenu();
    EXPECT_FALSE(enabled(submenu({"Devices"}), "Double precision"));
    EXPECT_FALSE(enabled(submenu({"Devices"}), "CPU Threads"));
}

TEST_F(MenuTree, DeviceModeChecksNoThreadCount) {
    useDevice(0, {true});
    createMenu();
    EXPECT_TRUE(checkedItems(submenu({"Devices", "CPU Threads"})).empty());
}

TEST_F(MenuTree, NoChosenDeviceLeavesEverythingEnabled) {
    useDevice(-1, {false});
    createMenu();
    EXPECT_TRUE(checkedItems(submenu({"Devices"})).empty());
    EXPECT_TRUE(enabled(submenu({"Devices"}), "CPU Threads"));
    EXPECT_TRUE(enabled(submenu({"Devices"}), "Double precision"));
}

TEST_F(MenuTree, ANumberBeyondTheDevicesLeavesEverythingEnabled) {
    for (const int device : {2, 7}) {
        useDevice(device, {true, false});
        createMenu();
        EXPECT_TRUE(enabled(submenu({"Devices"}), "CPU Threads")) << device;
        EXPECT_TRUE(enabled(submenu({"Devices"}), "Double precision")) << device;
    }
}

// The texts of all items of a menu and of all menus below it.
std::vector<std::string> textsBelow(const CGlutMenu& list) {
    std::vector<std::string> found = list.items;
    for (int i = 0; i < static_cast<int>(list.items.size()); ++i) {
        const CGlutMenu* child = list.GetSubMenu(i);
        if (child == nullptr) continue;
        const std::vector<std::string> below = textsBelow(*child);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

TEST_F(MenuTree, TogglesToCpuAndGpuAreInNoMenu) {
    stand_ins::listDevices({true});
    createMenu();
    const std::vector<std::string> all = textsBelow(menu);
    EXPECT_THAT(all, IsSupersetOf({"Quit", "Siegel Disk", "Sierpinski", "RGB Cycle", "4"}));
    EXPECT_THAT(all, Each(AllOf(Ne("Toggle to CPU"), Ne("Toggle to GPU"))));
}

}  // namespace

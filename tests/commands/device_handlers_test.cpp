// The precision switch, and what the "Devices" and the "CPU Threads" menu do.
#include <gmock/gmock.h>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "commands/parameter_dialog.h"
#include "tests/commands/handlers_fixture.h"

using GlutMenu::CGlutMenu;
using stand_ins::choose;
using stand_ins::Handlers;
using stand_ins::submenu;
using testing::ElementsAre;

namespace {

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

TEST_F(Handlers, DoublePrecisionStaysWithoutAChosenDevice) {
    bCPU = false;
    bDoublePrecision = true;
    choose(&loneItem("Double precision"), "Double precision");
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_TRUE(stand_ins::backendCalls.empty());
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
        stand_ins::forget();
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

TEST_F(Devices, ADeviceIsReleasedWhileItIsStillTheOneInUse) {
    chooseItem(SECOND);
    chooseItem(FIRST);
    EXPECT_THAT(stand_ins::releasedDevices, ElementsAre(-1, 1));
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

TEST_F(Devices, CpuAloneIsCheckedWhicheverDeviceWas) {
    for (const int device : {FIRST, SECOND}) {
        chooseItem(device);
        chooseItem(CPU);
        EXPECT_THAT(checked(), ElementsAre(CPU)) << device;
    }
}

TEST_F(Devices, CpuEnablesThreadsAndPrecision) {
    chooseItem(SECOND);
    chooseItem(CPU);
    EXPECT_TRUE(list()->GetMenuItemState(THREADS));
    EXPECT_TRUE(list()->GetMenuItemState(PRECISION));
}

TEST_F(Devices, CpuChecksItsThreadCount) {
    for (const int count : {1, 2, 1}) {
        chooseItem(FIRST);
        numCPUThreads = count;
        chooseItem(CPU);
        for (int i = 0; i < max_threads; ++i) {
            EXPECT_EQ(submenu({"Devices", "CPU Threads"})->GetCheckState(i), i == count - 1);
        }
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

TEST_F(Devices, AnIndexOutsideTheListSwitchesNothingAndOwesOneRender) {
    chooseItem(FIRST);
    for (const int item : {-1, SYSTEM + 1, 99}) {
        stand_ins::forget();
        update_count = 0;
        chooseItem(item);
        EXPECT_FALSE(bCPU);
        EXPECT_EQ(nCudaDevice, 0);
        EXPECT_FALSE(bDoublePrecision);
        EXPECT_THAT(checked(), ElementsAre(FIRST));
        EXPECT_TRUE(stand_ins::backendCalls.empty());
        EXPECT_EQ(GlutMenu::input_field, nullptr);
        EXPECT_EQ(update_count, 1);
        EXPECT_EQ(stand_ins::glut.redisplays, 1);
    }
}

TEST_F(Devices, ANumberThatIsNoDeviceLeavesThreadsAndPrecisionAsTheyAre) {
    bCPU = false;
    bDoublePrecision = true;
    for (const int device : {-1, 2, 7}) {
        nCudaDevice = device;
        for (const bool state : {true, false}) {
            list()->SetMenuItemState(THREADS, state);
            list()->SetMenuItemState(PRECISION, state);
            list()->SetCheckState(PRECISION, state);
            chooseItem(THREADS);
            EXPECT_EQ(list()->GetMenuItemState(THREADS), state) << device;
            EXPECT_EQ(list()->GetMenuItemState(PRECISION), state) << device;
            EXPECT_EQ(list()->GetCheckState(PRECISION), state) << device;
        }
    }
}

TEST_F(Devices, EveryChoiceOwesOneRender) {
    for (const int item : {CPU, FIRST, PRECISION, THREADS, SYSTEM}) {
        stand_ins::forget();
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

TEST_F(Devices, SystemInformationNamesTheFirstDevice) {
    chooseItem(FIRST);
    chooseItem(SYSTEM);
    EXPECT_THAT(input.message_lines, ElementsAre("Device 0", "Single precision", "",
                                                 "Press [RETURN]/[ENTER] to continue"));
}

TEST_F(Devices, TheFirstItemIsTheCpuWhateverItsText) {
    bCPU = false;
    CGlutMenu& holder = menuOf({"Processor", "Device 0", "Device 1"});
    holder.SetCheckState(1, true);
    int item = 0;
    devices_callback(item, &holder, nullptr);
    EXPECT_TRUE(bCPU);
    for (const int each : {0, 1, 2}) EXPECT_EQ(holder.GetCheckState(each), each == 0) << each;
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

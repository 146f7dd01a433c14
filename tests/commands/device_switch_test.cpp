// The "Devices" menu over real OpenCL devices: pictures come out of every switch.
#include <gmock/gmock.h>

#include <cstdlib>

#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "commands/menu_handlers.h"
#include "commands/menu_texts.h"
#include "commands/menu_tree.h"
#include "explorer/catalogue.h"
#include "tests/support/reference_fractal.h"
#include "tests/support/stand_ins.h"

using stand_ins::submenu;
using test_support::Picture;

namespace {

constexpr int SIDE = 256;

// Two devices of one library, whatever else is installed. Takes effect before the loader is asked
// for its first device.
class TwoDevices : public testing::Environment {
    void SetUp() override {
        setenv("OCL_ICD_VENDORS", "/etc/OpenCL/vendors/pocl.icd", 1);
        setenv("POCL_DEVICES", "pthread basic", 1);
    }
};

testing::Environment* const twoDevices = testing::AddGlobalTestEnvironment(new TwoDevices);

class DeviceSwitch : public stand_ins::CommandsTest {
  protected:
    DeviceSwitch() : image(SIDE, SIDE) {
        stand_ins::listDevices({});
        get_list_of_devices(devices, device_names, fp64_support, types, false);
        CreateNewFractal(1, 101);
        updatePalette(0);
        updatePalette(paletteType);
        createMenu();
    }
    ~DeviceSwitch() override { release_opencl_resource(bDoublePrecision); }

    void SetUp() override {
        if (devices.empty()) GTEST_SKIP() << "no OpenCL device";
    }

    static void chooseItem(int item) { devices_callback(item, submenu({"Devices"}), nullptr); }
    static void chooseDevice(int device) { chooseItem(device + 1); }
    static void choosePrecision() {
        chooseItem(submenu({"Devices"})->GetMenuPosition(double_precision));
    }

    // What the device draws, and how many of its pixels are the reference's in that precision.
    int matchingPixels(bool doubles) {
        renderFrameOpenCL();
        const Picture drawn = image.picture();
        test_support::ReferenceView shown;
        shown.type = 1;
        shown.doublePrecision = doubles;
        shown.width = shown.height = SIDE;
        shown.xMin = xMin;
        shown.xMax = xMax;
        shown.yMin = yMin;
        shown.yMax = yMax;
        shown.cx = cx;
        shown.cy = cy;
        shown.maxIters = maxIters;
        int matching = 0;
        for (int y = 0; y < SIDE; ++y) {
            for (int x = 0; x < SIDE; ++x) {
                unsigned char expected[4];
                test_support::referencePixel(shown, badAssColourPalette.get(), x, y, expected);
                matching += std::equal(expected, expected + 4, drawn.pixel(x, y));
            }
        }
        return matching;
    }

    static constexpr int MOST = SIDE * SIDE * 98 / 100;  // rounding may differ at the fringes

    test_support::ImageGuard image;
};

TEST_F(DeviceSwitch, FromTheCpuADeviceDraws) {
    chooseDevice(0);
    EXPECT_TRUE(bOpenCLInitialised);
    EXPECT_GE(matchingPixels(false), MOST);
}

TEST_F(DeviceSwitch, PrecisionSwitchesThereAndBack) {
    chooseDevice(0);
    if (!fp64_support[0]) GTEST_SKIP() << "the device has no double precision";
    choosePrecision();
    EXPECT_GE(matchingPixels(true), MOST);
    choosePrecision();
    EXPECT_GE(matchingPixels(false), MOST);
}

TEST_F(DeviceSwitch, PrecisionFlippedOnTheCpuHoldsOnTheDevice) {
    chooseDevice(0);
    if (!fp64_support[0]) GTEST_SKIP() << "the device has no double precision";
    chooseItem(0);
    choosePrecision();
    chooseDevice(0);
    EXPECT_TRUE(bDoublePrecision);
    EXPECT_GE(matchingPixels(true), MOST);
}

TEST_F(DeviceSwitch, EveryDeviceInTurnDraws) {
    for (int round = 0; round < 2; ++round) {
        for (int device = 0; device < static_cast<int>(devices.size()); ++device) {
            chooseDevice(device);
            EXPECT_GE(matchingPixels(false), MOST)
                << device_names[static_cast<std::size_t>(device)];
            chooseItem(0);
        }
    }
}

TEST_F(DeviceSwitch, DoublePrecisionGivenUpLeavesAWorkingDevice) {
    bDoublePrecision = true;
    fp64_support[0] = false;  // as on a device that cannot
    chooseDevice(0);
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_GE(matchingPixels(false), MOST);
}

TEST_F(DeviceSwitch, TheSameDeviceMayBeChosenAgain) {
    chooseDevice(0);
    chooseDevice(0);
    EXPECT_GE(matchingPixels(false), MOST);
}

}  // namespace

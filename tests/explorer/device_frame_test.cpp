// The display callback while a device renders.
#include <gmock/gmock.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/view_state.h"
#include "explorer/frame_loop.h"
#include "tests/explorer/explorer_test.h"
#include "tests/support/device_stand_in.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Bytes = std::vector<unsigned char>;

// One device, without double precision, becomes the renderer.
void useDevice() {
    standInDevices = {false};
    get_list_of_devices(devices, device_names, fp64_support, types, false);
    nCudaDevice = 0;
    bCPU = false;
}

class DeviceFrameTest : public ExplorerTest {
  protected:
    DeviceFrameTest() {
        setCatalogue({namedEntry("", 0, {2, -2, 2, -2})});
        // The first frame of the process is over when a test begins.
        InitColours(0);
        updatePalette(0);
        useDevice();
        setupOpenCL("");
        before = ExplorerTest::printed().size();
        onDeviceCall = [this](const std::string& name) {
            calls.push_back(name);
            printedAtCall.push_back(printed());
        };
    }
    ~DeviceFrameTest() override {
        onDeviceCall = nullptr;
        release_opencl_resource(false);
        updatePalette(0);  // the next test begins without a change
        devices.clear();
        device_names.clear();
        fp64_support.clear();
        types.clear();
        nCudaDevice = -1;
    }

    std::string printed() const { return ExplorerTest::printed().substr(before); }

    std::vector<std::string> calls, printedAtCall;

  private:
    std::size_t before = 0;
};

TEST_F(DeviceFrameTest, AnOwedRenderIsALaunchAndARead) {
    update_count = 1;
    renderScene();
    EXPECT_THAT(calls, ElementsAre("clEnqueueNDRangeKernel", "clEnqueueReadBuffer"));
}

TEST_F(DeviceFrameTest, AChangedPaletteReachesTheDeviceBeforeTheLaunchOfTheSameFrame) {
    update_count = 1;
    paletteType = 1;
    renderScene();
    EXPECT_THAT(calls, ElementsAre("clEnqueueWriteBuffer", "clEnqueueNDRangeKernel",
                                   "clEnqueueReadBuffer"));
}

TEST_F(DeviceFrameTest, AChangedPaletteIsAnnouncedBeforeItIsUploaded) {
    paletteType = 1;
    renderScene();
    ASSERT_EQ(printedAtCall.size(), 1u);
    EXPECT_EQ(printedAtCall[0], "Palette has changed\n");
}

TEST_F(DeviceFrameTest, TheUploadIsThePaletteChangedTo) {
    paletteType = 1;
    renderScene();
    ASSERT_EQ(uploadedBytes.size(), std::size_t{PALETTE_BYTES});
    const Bytes greenBlueRed = {uploadedBytes[4 * 7 + 1], uploadedBytes[4 * (256 + 8) + 2],
                                uploadedBytes[4 * (512 + 9)]};
    EXPECT_THAT(greenBlueRed, ElementsAre(7, 8, 9));
}

TEST_F(DeviceFrameTest, AChangedPaletteIsUploadedOnceAndWithoutALaunchWhenNothingIsOwed) {
    paletteType = 1;
    renderScene();
    renderScene();
    EXPECT_THAT(calls, ElementsAre("clEnqueueWriteBuffer"));
}

TEST_F(DeviceFrameTest, OnTheCpuAChangedPaletteStaysAwayFromTheDevice) {
    bCPU = true;
    paletteType = 1;
    renderScene();
    EXPECT_THAT(calls, IsEmpty());
}

TEST(FirstDeviceFrame, SetsTheDeviceUpBeforeTheFirstLaunch) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto firstFrame = [] {
        const test_support::ImageGuard image(256, 256);
        test_support::sendStdoutToStderr();
        useDevice();
        onDeviceCall = [](const std::string& name) { std::cout << name << std::endl; };
        bLogging = false;
        renderScene();
        std::_Exit(0);
    };
    EXPECT_EXIT(firstFrame(), testing::ExitedWithCode(0),
                HasSubstr("clCreateContext\nclCreateCommandQueue\nclCreateBuffer\nclCreateBuffer\n"
                          "clCreateProgramWithSource\nclBuildProgram\nclCreateKernel\n"
                          "clEnqueueNDRangeKernel\nclEnqueueReadBuffer\n"));
}

}  // namespace

// What the end of main releases of a device.
#include <gtest/gtest.h>

#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"
#include "tests/support/device_stand_in.h"
#include "tests/support/stdout_capture.h"

namespace {

class DeviceShutdown : public testing::Test {
  protected:
    DeviceShutdown() {
        InitColours(0);
        standInDevices = {false};
        get_list_of_devices(devices, device_names, fp64_support, types, false);
        nCudaDevice = 0;
        setupOpenCL("");
    }
    ~DeviceShutdown() override { release_opencl_resource(false); }

    static void endMain() { const CThreadShutdown shutdown; }

    test_support::ViewGuard view;
    test_support::ImageGuard image{8, 8};
    const test_support::StdoutCapture silence;
    const test_support::Pool pool{1};
};

TEST_F(DeviceShutdown, ReleasesTheDeviceThatRenders) {
    ASSERT_TRUE(bOpenCLInitialised);
    bCPU = false;
    endMain();
    EXPECT_FALSE(bOpenCLInitialised);
}

TEST_F(DeviceShutdown, LeavesTheDeviceAloneWhileTheProcessorRenders) {
    bCPU = true;
    endMain();
    EXPECT_TRUE(bOpenCLInitialised);
}

}  // namespace

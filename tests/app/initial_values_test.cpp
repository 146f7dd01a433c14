// What every global holds before the program does anything. Nothing in this process changes one.
#include <gmock/gmock.h>

#include "app/start_up.h"
#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

namespace {

using testing::Each;
using testing::IsEmpty;

TEST(InitialValues, OfTheCatalogue) {
    EXPECT_THAT(fractals, IsEmpty());
    EXPECT_EQ(currentFractal, -1);
    EXPECT_EQ(filename, "Fractal1.frac");
    EXPECT_EQ(current_filename, "");
}

TEST(InitialValues, OfTheView) {
    EXPECT_THAT((std::vector{xMax, xMin, yMax, yMin, cx, cy}), Each(0.0));
    EXPECT_EQ(maxIters, 768);
    EXPECT_EQ(maxSize, 4.0);
    EXPECT_EQ(currentFractalType, -1);
    EXPECT_EQ(paletteType, 0);
    EXPECT_EQ(title, "");
}

TEST(InitialValues, OweOneRender) {
    EXPECT_EQ(update_count, 1);
}

TEST(InitialValues, OfTheGlide) {
    EXPECT_THAT(
        (std::vector{oldXMax, oldXMin, oldYMax, oldYMin, newXMax, newXMin, newYMax, newYMin}),
        Each(0.0));
}

TEST(InitialValues, OfTheMouse) {
    EXPECT_TRUE(zooming_enabled);
    EXPECT_FALSE(rubber_banding);
    EXPECT_FALSE(image_refreshed);
    EXPECT_THAT((std::vector{mouse_x1, mouse_y1, mouse_x2, mouse_y2}), Each(0));
}

TEST(InitialValues, OfCyclingAndBenchmark) {
    EXPECT_EQ(cycleDir, 0);
    EXPECT_FALSE(bBench);
    EXPECT_EQ(totalTime, 0);
}

TEST(InitialValues, OfTheRenderer) {
    EXPECT_FALSE(bCPU);
    EXPECT_FALSE(bDoublePrecision);
    EXPECT_EQ(nCudaDevice, -1);
    EXPECT_EQ(max_threads, 1);
    EXPECT_EQ(numCPUThreads, 1);
    EXPECT_THAT(vThreads, IsEmpty());
    EXPECT_TRUE(bLogging);
}

TEST(InitialValues, OfTheImage) {
    EXPECT_EQ(winX, 2048);
    EXPECT_EQ(winY, 2048);
    EXPECT_FALSE(buffer || tempColours || badAssColourPalette);
}

TEST(InitialValues, OfTheWindow) {
    EXPECT_EQ(screen_width, 0);
    EXPECT_EQ(screen_height, 0);
}

}  // namespace

#include "tests/support/explorer_reset.h"

#include <string>
#include <vector>

#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

namespace test_support {

namespace {

// A press and a release on one pixel end whatever drag or glide another test left.
void endDragAndGlide() {
    zooming_enabled = true;
    mouse(0, 1, 500, 500);
    zooming_enabled = true;
    mouse(0, 0, 500, 500);
    mouse(0, 1, 500, 500);
}

void hideMenu() {
    std::vector<std::string> none;
    menu.Initialise(1024, 1024, 0, 0, 0, 0, "", none, 0, 0, true, false);
    menu.active = false;
}

}  // namespace

void resetExplorerValues() {
    zooming_enabled = true;
    rubber_banding = false;
    mouse_x1 = mouse_y1 = mouse_x2 = mouse_y2 = 0;
    image_refreshed = false;
    cycleDir = 0;
    bBench = false;
    bLogging = true;
    totalTime = 0;
    current_filename.clear();
    fractals.clear();
    currentFractal = -1;
    currentFractalType = -1;
    title.clear();
    update_count = 0;
    bCPU = true;
}

void resetExplorer() {
    hideMenu();
    endDragAndGlide();
    resetExplorerValues();
}

}  // namespace test_support

#include "tests/explorer/explorer_test.h"

#include "backends/view_state.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

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

void startValues() {
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

}  // namespace

ExplorerTest::ExplorerTest() {
    hideMenu();
    endDragAndGlide();
    startValues();
    glut_stand_in::reset();
    preparation = output.text().size();
}

ExplorerTest::~ExplorerTest() {
    startValues();
    glut_stand_in::reset();
}

void ExplorerTest::setCatalogue(const std::vector<fractal>& entries) {
    fractals = entries;
    currentFractal = 0;
    copyToView(entries[0]);
}

void ExplorerTest::showMenuBar(std::vector<std::string> items) {
    menu.Initialise(glut.windowWidth, glut.windowHeight, 0, 0, 0, 0, "", items, 0, 0, true, false);
    menu.Activate();
}

Rectangle viewRectangle() {
    return {xMax, xMin, yMax, yMin};
}

Rectangle rectangleOf(const fractal& entry) {
    return {entry.xMax, entry.xMin, entry.yMax, entry.yMin};
}

fractal namedEntry(const std::string& name, int id, const Rectangle& rectangle) {
    fractal entry =
        test_support::makeView(0, rectangle[1], rectangle[0], rectangle[3], rectangle[2], 20);
    entry.name = name;
    entry.fractalID = id;
    return entry;
}

#include "tests/explorer/explorer_test.h"

#include "backends/view_state.h"
#include "explorer/window_state.h"
#include "tests/support/explorer_reset.h"

ExplorerTest::ExplorerTest() {
    test_support::resetExplorer();
    glut_stand_in::reset();
    preparation = output.text().size();
}

ExplorerTest::~ExplorerTest() {
    test_support::resetExplorerValues();
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

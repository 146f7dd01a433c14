#include "tests/fuzz/program.h"

#include <GL/freeglut.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "commands/GetFilenameDialog.h"
#include "commands/menu_tree.h"
#include "explorer/catalogue.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/support/backend_globals.h"
#include "tests/support/device_stand_in.h"
#include "tests/support/explorer_reset.h"
#include "tests/support/glut_stand_in.h"

std::string panelAnswer;

namespace {

using glut_stand_in::glut;

constexpr int SIDE = 16, MOST_STEPS = 60;

bool answerPanel(std::string& path) {
    if (!panelAnswer.empty()) path = panelAnswer;
    return !panelAnswer.empty();
}

void closeDialogs() {
    while (GlutMenu::input_field != nullptr) GlutMenu::input_field->KeyboardHandler(27, "");
}

// The table in force points into the storage, which therefore stays. Changed twice it is the first.
void resetPalette() {
    if (!tempColours) tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    if (!badAssColourPalette) {
        badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
    }
    updatePalette(1);
    updatePalette(0);
}

void resetRenderer() {
    winX = winY = SIDE;
    buffer = makeArray<unsigned char>(imageBytes());
    resetPalette();
    bDoublePrecision = false;
    shutdown_threads = false;
    max_threads = numCPUThreads = 3;
    nCudaDevice = -1;
    test_support::clearQueue();
}

// An input that ended on a device leaves what it holds.
void leaveDevice() {
    if (!bCPU && nCudaDevice >= 0) release_opencl_resource(bDoublePrecision);
    bCPU = true;
}

void findDevices() {
    devices.clear();
    device_names.clear();
    fp64_support.clear();
    types.clear();
    get_list_of_devices(devices, device_names, fp64_support, types, false);
}

}  // namespace

bool GetOpenFilename(std::string& path, std::string) {
    return answerPanel(path);
}

bool GetSaveFilename(std::string& path, std::string) {
    return answerPanel(path);
}

void startProgram(const std::vector<bool>& wanted) {
    std::cout.setstate(std::ios::badbit);  // nothing is made of what is printed
    leaveDevice();
    closeDialogs();
    windowStatus(GLUT_FULLY_RETAINED);
    test_support::resetExplorer();
    glut_stand_in::reset();
    glut.recording = false;
    glut.initialised = false;
    standInDevices = wanted;
    findDevices();
    resetRenderer();
    panelAnswer.clear();
    filename = "Fractal1.frac";
    paletteType = 0;
    screen_width = 1024;
    screen_height = 768;
    CreateNewFractal(0, 0);
    createMenu();
}

void limitSteps() {
    maxIters = std::min(maxIters.load(), MOST_STEPS);
}

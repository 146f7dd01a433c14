#include "tests/support/stand_ins.h"

#include <GL/glut.h>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "commands/GetFilenameDialog.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

namespace stand_ins {

GlutCalls glut;
std::vector<PanelUse> openPanels, savePanels;
std::optional<std::string> panelAnswer;
std::vector<std::string> backendCalls;

}  // namespace stand_ins

// These take the place of the library's functions of the same names.
extern "C" {
void glutPostRedisplay() {
    ++stand_ins::glut.redisplays;
    if (stand_ins::glut.onRedisplay) stand_ins::glut.onRedisplay();
}
void glutIdleFunc(void (*callback)()) {
    stand_ins::glut.idle = callback;
    ++stand_ins::glut.idleCalls;
}
void glutMotionFunc(void (*)(int, int)) {}
void glutSetWindowTitle(const char* text) {
    stand_ins::glut.titles.push_back(text);
}
int glutGet(GLenum what) {
    if (what == GLUT_WINDOW_WIDTH) return 1024;
    if (what == GLUT_WINDOW_HEIGHT) return 768;
    return 0;
}
int glutGetModifiers() {
    return 0;
}
int glutStrokeWidth(void*, int character) {
    return character == ' ' ? 105 : 90;
}
int glutBitmapWidth(void*, int) {
    return 13;
}
}

static bool answerPanel(std::vector<stand_ins::PanelUse>& uses, std::string& path,
                        const std::string& message) {
    uses.push_back({path, message});
    if (!stand_ins::panelAnswer) return false;
    path = *stand_ins::panelAnswer;
    return true;
}

bool GetOpenFilename(std::string& path, std::string message) {
    return answerPanel(stand_ins::openPanels, path, message);
}

bool GetSaveFilename(std::string& path, std::string message) {
    return answerPanel(stand_ins::savePanels, path, message);
}

namespace stand_ins {

void forget() {
    glut = {};
    openPanels.clear();
    savePanels.clear();
    panelAnswer.reset();
    backendCalls.clear();
}

void listDevices(std::vector<bool> doubles) {
    devices.clear();
    device_names.clear();
    types.clear();
    for (std::size_t i = 0; i < doubles.size(); ++i) {
        devices.push_back(nullptr);
        device_names.push_back("Device " + std::to_string(i));
        types.push_back(CL_DEVICE_TYPE_GPU);
    }
    fp64_support = std::move(doubles);
}

fractal someEntry(const std::string& name, int id) {
    return {2.5, -1.5, 3.25, -0.75, 0.125, -0.625, 10, 640, 9.5, 1, name, id};
}

// What ViewGuard does not cover.
struct CommandsTest::Saved {
    std::vector<cl_device_id> handles = devices;
    std::vector<std::string> names = device_names;
    std::vector<bool> doubles = fp64_support;
    std::vector<std::uint64_t> kinds = types;
    std::int32_t device = nCudaDevice, threads = numCPUThreads, most = max_threads;
    std::int32_t direction = cycleDir, width = screen_width, height = screen_height;
    bool logging = bLogging, zooming = zooming_enabled, refreshed = image_refreshed;
    std::string text = kernel_string, shown = current_filename, file = filename;
};

CommandsTest::CommandsTest() : saved(std::make_unique<Saved>()) {
    fractals.clear();
    currentFractal = -1;
    update_count = 0;
    title.clear();
    bCPU = true;
    bDoublePrecision = false;
    nCudaDevice = -1;
    max_threads = 4;
    numCPUThreads = 4;
    screen_width = 1024;
    screen_height = 768;
    listDevices({});
    forget();
}

CommandsTest::~CommandsTest() {
    forget();
    devices = saved->handles;
    device_names = saved->names;
    fp64_support = saved->doubles;
    types = saved->kinds;
    nCudaDevice = saved->device;
    numCPUThreads = saved->threads;
    max_threads = saved->most;
    cycleDir = saved->direction;
    screen_width = saved->width;
    screen_height = saved->height;
    bLogging = saved->logging;
    zooming_enabled = saved->zooming;
    image_refreshed = saved->refreshed;
    kernel_string = saved->text;
    current_filename = saved->shown;
    filename = saved->file;
    while (GlutMenu::input_field != nullptr) GlutMenu::input_field->KeyboardHandler(27, "");
}

void CommandsTest::setCatalogue(std::vector<fractal> entries) {
    fractals = std::move(entries);
    currentFractal = 0;
}

GlutMenu::CGlutMenu* submenu(std::vector<std::string> path) {
    GlutMenu::CGlutMenu* found = &menu;
    for (const std::string& text : path) {
        found = found->GetSubMenu(found->GetMenuPosition(text));
        if (found == nullptr) {
            ADD_FAILURE() << "no submenu at \"" << text << "\"";
            return nullptr;
        }
    }
    return found;
}

void choose(GlutMenu::CGlutMenu* holder, const std::string& text) {
    int item = holder->GetMenuPosition(text);
    ASSERT_GE(item, 0) << "no item \"" << text << "\"";
    holder->callback(item, holder, holder->user_data);
}

}  // namespace stand_ins

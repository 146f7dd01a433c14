// The whole program on a window that only answers: keys, clicks, drags, reshapes, frames, commands
// of every menu, panels with files of any content, devices that take all that is asked of them.
#include <GL/freeglut.h>

#include <algorithm>
#include <vector>

#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "commands/menu_texts.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/program.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/scratch_file.h"
#include "tests/support/glut_stand_in.h"

namespace {

using glut_stand_in::glut;
using GlutMenu::CGlutMenu;

constexpr int MOST_EVENTS = 300;
constexpr std::size_t MOST_ENTRIES = 500;

const ScratchFile& scratch() {
    static const ScratchFile file("input.frac");
    return file;
}

std::vector<bool> devicesOf(int kind) {
    std::vector<bool> devices;
    for (int i = 0; i < kind % 3; ++i) devices.push_back((kind >> (2 + i) & 1) != 0);
    return devices;
}

// The one command that ends the process cannot be chosen.
void forbidQuit() {
    if (CGlutMenu* first = menu.GetSubMenu(0)) {
        first->SetMenuItemState(first->GetMenuPosition(quit_option), false);
    }
}

// Down from the bar, as far as the input says.
CGlutMenu& anyMenu(InputBytes& in) {
    CGlutMenu* found = &menu;
    while (!found->submenus.empty() && !in.oneIn(3)) {
        auto entry = found->submenus.begin();
        std::advance(entry, in.below(static_cast<int>(found->submenus.size())));
        if (entry->second == nullptr) break;
        found = entry->second;
    }
    return *found;
}

void choose(InputBytes& in) {
    CGlutMenu& chosen = anyMenu(in);
    int item = in.below(static_cast<int>(chosen.items.size()));
    if (chosen.callback == nullptr || !chosen.GetMenuItemState(item)) return;
    chosen.callback(item, &chosen, chosen.user_data);
}

void answerPanels(InputBytes& in) {
    const int kind = in.byte();
    panelAnswer = (kind & 1) != 0 ? scratch().path : "";
    if ((kind & 2) != 0) scratch().write(in.text(200));
}

void display() {
    limitSteps();
    renderScene();
}

void reshapeWindow(InputBytes& in) {
    glut.windowWidth = 1 + in.byte() * in.byte();
    glut.windowHeight = 1 + in.byte() * in.byte();
    reshape(glut.windowWidth, glut.windowHeight);
}

void windowChanges(InputBytes& in) {
    constexpr int STATES[] = {GLUT_HIDDEN, GLUT_FULLY_RETAINED, GLUT_PARTIALLY_RETAINED,
                              GLUT_FULLY_COVERED};
    windowStatus(STATES[in.below(4)]);
}

void playEvent(InputBytes& in) {
    switch (in.below(16)) {
        case 0:
            return reshapeWindow(in);
        case 1:
            return windowChanges(in);
        case 2:
            return answerPanels(in);
        case 3:
            if (glut.motion != nullptr) glut.motion(in.number(), in.number());
            return;
        case 4:
        case 5:
            return mouse(in.below(5), in.below(2), in.byte() * 4, in.byte() * 3);
        case 6:
        case 7:
            return display();
        case 8:
            if (glut.idle != nullptr) glut.idle();
            return;
        case 9:
        case 10:
            return choose(in);
        case 11:
            return special_keyboard(100 + in.below(20), 0, 0);
        default:
            return keyboard(static_cast<unsigned char>(in.byte()), 0, 0);
    }
}

void checkState() {
    require(currentFractal >= -1, "the current entry has a place");
    require(currentFractal < static_cast<int>(std::max<std::size_t>(fractals.size(), 1)),
            "the current entry is there, or there is none");
    require(update_count >= 0, "no render is owed back");
    require(task_count == 0 && workQ.empty(), "a frame is complete");
    require(numCPUThreads >= 1 && numCPUThreads <= max_threads, "there are threads that work");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputBytes in(data, size);
    startProgram(devicesOf(in.byte()));
    forbidQuit();
    scratch().write("");
    for (int event = 0; event < MOST_EVENTS && !in.isEmpty(); ++event) {
        playEvent(in);
        checkState();
        if (fractals.size() > MOST_ENTRIES) break;
    }
    return 0;
}

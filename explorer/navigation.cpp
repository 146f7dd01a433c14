#include "explorer/navigation.h"

#include <GL/glut.h>

#include <algorithm>
#include <iostream>

#include "backends/image.h"
#include "backends/worker_pool.h"
#include "explorer/catalogue.h"
#include "explorer/window_state.h"

bool zooming_enabled = true;
bool rubber_banding = false;
std::int32_t mouse_x1 = 0, mouse_y1 = 0, mouse_x2 = 0, mouse_y2 = 0;
bool image_refreshed = false;
std::int32_t cycleDir = 0;
bool bBench = false;

namespace {

constexpr int GLIDE_STEPS = 20;

// A glide is in progress. GLUT thread only.
bool bInit = false;

// Nothing can be shown, and whether idle was called meanwhile. GLUT thread only.
bool idleHeld = false, idleWaits = false;

// Steps of the glide still to be made, and what each adds to its edge. GLUT thread only.
std::int32_t steps = 1;
double xMaxStep = 0.0, yMaxStep = 0.0, xMinStep = 0.0, yMinStep = 0.0;

// The entry at `index`, null where there is none: a file without records leaves the catalogue
// empty.
fractal* entryAt(std::int32_t index) {
    if (index < 0 || index >= static_cast<std::int32_t>(fractals.size())) return nullptr;
    return &fractals[static_cast<std::size_t>(index)];
}

void applyCurrent() {
    if (fractal* entry = entryAt(currentFractal)) setCurrentFractal(*entry);
}

// Starts the glide from old* to new*.
void startGlide() {
    steps = GLIDE_STEPS;
    xMaxStep = (newXMax - oldXMax) / GLIDE_STEPS;
    yMaxStep = (newYMax - oldYMax) / GLIDE_STEPS;
    xMinStep = (newXMin - oldXMin) / GLIDE_STEPS;
    yMinStep = (newYMin - oldYMin) / GLIDE_STEPS;
    bInit = true;
}

// Turns the selection in new*, in buffer pixels, into a rectangle of the plane. Row 0 is yMin.
void selectionToPlane() {
    const auto width = static_cast<double>(winX), height = static_cast<double>(winY);
    newXMax = newXMax / width * (xMax - xMin) + xMin;
    newXMin = newXMin / width * (xMax - xMin) + xMin;
    newYMax = newYMax / height * (yMax - yMin) + yMin;
    newYMin = newYMin / height * (yMax - yMin) + yMin;
}

// Appends the selected view as a copy of the current entry and glides to it. The copy keeps its
// parent's fractalID, by which cycling later recognises the two as related.
void startZoom() {
    const std::lock_guard lock(mutex);
    fractal* parent = entryAt(currentFractal);
    if (parent == nullptr) {
        glutIdleFunc(nullptr);
        return;
    }
    setCurrentFractal(*parent);
    selectionToPlane();
    oldXMax = xMax;
    oldXMin = xMin;
    oldYMax = yMax;
    oldYMin = yMin;
    fractal zoomed = *parent;
    zoomed.xMax = newXMax;
    zoomed.xMin = newXMin;
    zoomed.yMax = newYMax;
    zoomed.yMin = newYMin;
    fractals.push_back(zoomed);
    currentFractal = static_cast<std::int32_t>(fractals.size()) - 1;
    startGlide();
    image_refreshed = true;
}

void endBenchmark() {
    cycleDir = 0;
    std::cout << "Total rendering time " << static_cast<double>(totalTime) / 1000000000.0 << " s"
              << std::endl;
    bBench = false;
    advanceCursor(0, false);
}

// Moves to the next entry in the direction of cycling: glides to a relative, jumps to a stranger.
// The lock is not held over advanceCursor, which takes update_lock.
void cycleOnce() {
    const std::int32_t left = currentFractal;
    if (!advanceCursor(cycleDir, false)) {
        if (bBench) {
            endBenchmark();
        } else {
            cycleDir = -cycleDir;
            advanceCursor(cycleDir, false);
        }
        image_refreshed = true;
    }
    const std::lock_guard lock(mutex);
    const fractal* from = entryAt(left);
    fractal* to = entryAt(currentFractal);
    if (from == nullptr || to == nullptr) {
        if (cycleDir == 0) glutIdleFunc(nullptr);
        return;
    }
    if (from->fractalID != to->fractalID) {
        setCurrentFractal(*to);
        image_refreshed = true;
        return;
    }
    oldXMax = from->xMax;
    oldXMin = from->xMin;
    oldYMax = from->yMax;
    oldYMin = from->yMin;
    newXMax = to->xMax;
    newXMin = to->xMin;
    newYMax = to->yMax;
    newYMin = to->yMin;
    startGlide();
}

// One step of the glide; the last lands exactly on the stored rectangle.
void glideStep() {
    xMax += xMaxStep;
    yMax += yMaxStep;
    xMin += xMinStep;
    yMin += yMinStep;
    if (--steps != 0) return;
    {
        const std::lock_guard lock(mutex);
        applyCurrent();
    }
    bInit = false;
    if (cycleDir == 0) glutIdleFunc(nullptr);
}

// The drag from press to release, in window pixels. GLUT thread only.
bool bMouseDown = false;
std::int32_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;

void startDrag(int x, int y) {
    bInit = false;
    glutIdleFunc(nullptr);
    x1 = x;
    y1 = y;
    mouse_x1 = mouse_x2 = x;
    mouse_y1 = y;
    bMouseDown = true;
    rubber_banding = false;
    image_refreshed = false;
    glutMotionFunc(mouse_motion_func);
    glutPostRedisplay();
}

// Commits the selection to new*, in buffer pixels, for the first idle call to turn into a view.
void commitZoom() {
    rubber_banding = false;
    zooming_enabled = false;
    const float sx = static_cast<float>(winX) / static_cast<float>(glutGet(GLUT_WINDOW_WIDTH));
    const float sy = static_cast<float>(winY) / static_cast<float>(glutGet(GLUT_WINDOW_HEIGHT));
    newXMax = static_cast<float>(std::max(x1, x2)) * sx;
    newXMin = static_cast<float>(std::min(x1, x2)) * sx;
    newYMax = static_cast<float>(std::max(y1, y2)) * sy;
    newYMin = static_cast<float>(std::min(y1, y2)) * sy;
    glutMotionFunc(nullptr);
    addUpdate();
    glutIdleFunc(idle);
    menu.Activate();
}

void endDrag(int x, int y) {
    bMouseDown = false;
    x2 = x;
    y2 = y;
    mouse_x2 = x;
    mouse_y2 = y;
    // A click without movement selects nothing; the motion callback and the band stay as they are.
    if (x == mouse_x1 && y == mouse_y1) return;
    commitZoom();
}

}  // namespace

bool nextDragZooms() {
    return zooming_enabled && cycleDir == 0 && GlutMenu::num_dialogs_active == 0;
}

void mouse(int button, int state, int x, int y) {
    if (menu.mouse_callback(button, state, x, y)) {
        glutPostRedisplay();
        return;
    }
    if (button != GLUT_LEFT_BUTTON) return;
    if (!bMouseDown) {
        if (state == GLUT_DOWN && zooming_enabled) startDrag(x, y);
    } else if (state == GLUT_UP) {
        endDrag(x, y);
    }
}

void mouse_motion_func(int x, int y) {
    if (!zooming_enabled) return;
    rubber_banding = true;
    mouse_x2 = x;
    mouse_y2 = y;
    image_refreshed = false;
    {
        // Dragging redraws the old picture with the band over it and never renders.
        const std::lock_guard lock(update_lock);
        update_count = 0;
    }
    glutPostRedisplay();
}

void idle() {
    // The frame before was given up: nothing may count it as shown.
    if (shutdown_threads) return;
    if (idleHeld) {
        idleWaits = true;
        glutIdleFunc(nullptr);
        return;
    }
    if (cycleDir == 0) {
        if (!bInit) startZoom();
    } else {
        image_refreshed = true;
        if (!bInit) cycleOnce();
    }
    if (bInit) glideStep();
    addUpdate();
    glutPostRedisplay();
}

void holdIdle() {
    idleHeld = true;
}

void releaseIdle() {
    idleHeld = false;
    if (!idleWaits) return;
    idleWaits = false;
    // The frame of the last step may not have been shown any more.
    glutPostRedisplay();
    glutIdleFunc(idle);
}

bool advanceCursor(int dir, bool apply) {
    addUpdate();
    const std::int32_t before = currentFractal;
    if (dir == 1) {
        const std::lock_guard lock(mutex);
        if (currentFractal < static_cast<std::int32_t>(fractals.size()) - 1) ++currentFractal;
    } else if (dir == -1) {
        if (currentFractal > 0) --currentFractal;
    }
    if (dir != 0) {
        if (currentFractal == before) return false;
        if (!apply) return true;
    }
    applyCurrent();
    glutPostRedisplay();
    return true;
}

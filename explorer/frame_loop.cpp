#include "explorer/frame_loop.h"

#include <GL/freeglut.h>

#include <cassert>
#include <chrono>
#include <iostream>

#include "GlutMenu/DialogKind.h"
#include "GlutMenu/GlutKeys.h"
#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "explorer/navigation.h"
#include "explorer/picture_texture.h"
#include "explorer/platform_x11.h"
#include "explorer/window_state.h"

bool bLogging = true;

namespace {

constexpr unsigned BLINK_MILLISECONDS = 500;
constexpr int BLINK_VALUE = 1138;  // the toolkit's name for this timer

// A timer for the text cursor is under way. GLUT thread only.
bool blinking = false;

// One unit is one buffer pixel, row 0 at the top of the window, whatever the window's size.
void setProjection() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, static_cast<double>(winX - 1), static_cast<double>(winY - 1), 0.0, 1.0, -1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// The device is set up here, on the first frame, when the window and the palette exist.
void paletteStep() {
    const PaletteChange change = updatePalette(paletteType);
    if (bCPU) return;
    if (change == PaletteChange::first) setupOpenCL("");
    if (change == PaletteChange::changed) uploadPalette();
}

// Renders the live view into `buffer`; returns the time it took in nanoseconds.
std::int64_t renderFrame() {
    setPointer(Pointer::watch);
    flushRequests();
    const auto start = std::chrono::steady_clock::now();
    if (bCPU) {
        queueFrame();
        waitForFrame(windowIsToEnd);
    } else {
        renderFrameOpenCL();
    }
    const auto time = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

bool renderIsOwed() {
    const std::lock_guard lock(update_lock);
    return update_count > 0;
}

void takeOneUpdate() {
    const std::lock_guard lock(update_lock);
    if (update_count > 0) --update_count;
}

void drawRubberBand() {
    glDisable(GL_DEPTH_TEST);
    const float sx = static_cast<float>(winX) / static_cast<float>(glutGet(GLUT_WINDOW_WIDTH));
    const float sy = static_cast<float>(winY) / static_cast<float>(glutGet(GLUT_WINDOW_HEIGHT));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    glDisable(GL_TEXTURE_2D);
    glLineWidth(2.0f);
    glColor3f(0.7f, 0.7f, 0.0f);
    const int left = static_cast<int>(static_cast<float>(mouse_x1) * sx);
    const int top = static_cast<int>(static_cast<float>(mouse_y1) * sy);
    const int right = static_cast<int>(static_cast<float>(mouse_x2) * sx);
    const int bottom = static_cast<int>(static_cast<float>(mouse_y2) * sy);
    glBegin(GL_LINE_LOOP);
    glVertex2i(left, top);
    glVertex2i(left, bottom);
    glVertex2i(right, bottom);
    glVertex2i(right, top);
    glEnd();
    glEnable(GL_DEPTH_TEST);
    glColor4fv(colour);
}

// Goes to the X server together with the frame, when the buffers are swapped.
void showWhatADragDoes() {
    setPointer(nextDragZooms() ? Pointer::crosshair : Pointer::arrow);
}

// Debug builds: a frame leaves the matrix stacks and the error flag as it found them.
void checkFrameEnd() {
#ifndef NDEBUG
    GLint depth = 0;
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    assert(depth == 1);
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    assert(depth == 1);
    const GLenum environmentCall = glGetError();
    assert(environmentCall == GL_INVALID_ENUM || environmentCall == GL_NO_ERROR);
    assert(glGetError() == GL_NO_ERROR);
#endif
}

// All that is seen, from what is there: the picture as last rendered, the band, the menus.
void drawScene() {
    drawPicture();
    if (rubber_banding) drawRubberBand();
    menu.Render();
    checkFrameEnd();
    showWhatADragDoes();
    glutSwapBuffers();
}

bool cursorBlinks() {
    const GlutMenu::CTextInput* dialog = GlutMenu::input_field;
    return dialog != nullptr && dialog->kind != GlutMenu::message;
}

// Keeps what is printed meanwhile to itself.
class Mute {
  public:
    Mute() : output(std::cout.rdbuf(nullptr)) {}
    ~Mute() {
        std::cout.rdbuf(output);
        std::cout.clear();
    }
    Mute(const Mute&) = delete;
    Mute& operator=(const Mute&) = delete;

  private:
    std::streambuf* output;
};

// Draws in place of asking for a redisplay: a cursor that blinks pays no render that is owed, and
// neither a timing line nor a dialog's trace tells of it.
void blink(int value) {
    blinking = cursorBlinks();
    if (!blinking) return;
    GlutMenu::CTextInput::cursor_visible = !GlutMenu::CTextInput::cursor_visible;
    const Mute mute;
    setProjection();
    drawScene();
    glutTimerFunc(BLINK_MILLISECONDS, blink, value);
}

// The timer runs only while there is a cursor. GLUT may not be there at all, as in a test.
void startBlinking() {
    if (blinking || !cursorBlinks() || glutGet(GLUT_INIT_STATE) == 0) return;
    blinking = true;
    glutTimerFunc(BLINK_MILLISECONDS, blink, BLINK_VALUE);
}

}  // namespace

void renderScene() {
    setProjection();
    paletteStep();
    const std::int64_t renderTime = renderIsOwed() ? renderFrame() : 0;
    takeOneUpdate();
    if (bLogging) {
        std::cout << "Rendering to texture took " << static_cast<double>(renderTime) / 1000000000.0
                  << " s" << std::endl;
    }
    totalTime += renderTime;
    startBlinking();
    drawScene();
}

void reshape(int w, int h) {
    glViewport(0, 0, w, h);
    menu.ReshapeCallback(w, h);
}

void keyboard(unsigned char key, int, int) {
    menu.keyboard_callback(key);
    glutPostRedisplay();
}

void special_keyboard(int key, int, int) {
    // A Shift on the way to Shift+Tab must not act on the menu that it is meant for.
    if (GlutMenu::IsModifierKey(key)) return;
    menu.special_key_callback(key);
    glutPostRedisplay();
}

void windowStatus(int state) {
    if (windowIsGone()) endWithoutWindow();
    if (state == GLUT_HIDDEN) {
        holdIdle();
    } else {
        releaseIdle();
    }
    if (state == GLUT_FULLY_COVERED) displayThoughCovered();
}

void watchWindow() {
    if (!hasXWindow()) return;
    watchForDestruction();
    glutWindowStatusFunc(windowStatus);
}

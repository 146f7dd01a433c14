// A window with every part of the toolkit in it: a bar, nested submenus, check marks, disabled
// items and the three kinds of dialog. The window takes the size of -geometry WIDTHxHEIGHT.

#include <GL/glut.h>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/GlutKeys.h"
#include "GlutMenu/demo/menus.h"

namespace {

// What GLUT's callbacks, which carry no context, act on.
Picture picture;
GlutMenu::CGlutMenu bar;

constexpr int blink_milliseconds = 500;
constexpr int blink_value = 1138;

// A line at each end of the window and at every division between, both ways.
void DrawLines(int divisions) {
    glBegin(GL_LINES);
    for (int i = 0; i <= divisions; ++i) {
        const float at = -1.0F + 2.0F * static_cast<float>(i) / static_cast<float>(divisions);
        glVertex2f(at, -1.0F);
        glVertex2f(at, 1.0F);
        glVertex2f(-1.0F, at);
        glVertex2f(1.0F, at);
    }
    glEnd();
}

void Display() {
    glClearColor(picture.colour[0], picture.colour[1], picture.colour[2], 1.0F);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    // The menus left it on; the axes lie as deep as the grid.
    glDisable(GL_DEPTH_TEST);
    glColor3f(0.6F, 0.6F, 0.6F);
    if (picture.has_grid) DrawLines(8);
    glColor3f(1.0F, 0.9F, 0.4F);
    if (picture.has_axes) DrawLines(2);
    bar.Render();
    glutSwapBuffers();
}

void Reshape(int w, int h) {
    glViewport(0, 0, w, h);
    bar.ReshapeCallback(w, h);
}

void Keyboard(unsigned char key, int /*x*/, int /*y*/) {
    bar.keyboard_callback(key);
    glutPostRedisplay();
}

void Special(int key, int /*x*/, int /*y*/) {
    if (GlutMenu::IsModifierKey(key)) return;
    bar.special_key_callback(key);
    glutPostRedisplay();
}

void Mouse(int button, int state, int x, int y) {
    bar.mouse_callback(button, state, x, y);
    glutPostRedisplay();
}

void Blink(int value) {
    GlutMenu::timer_func(value);
    glutTimerFunc(blink_milliseconds, Blink, value);
}

void RegisterCallbacks() {
    glutDisplayFunc(Display);
    glutReshapeFunc(Reshape);
    glutKeyboardFunc(Keyboard);
    glutSpecialFunc(Special);
    glutMouseFunc(Mouse);
    glutTimerFunc(blink_milliseconds, Blink, blink_value);
}

}  // namespace

int main(int argc, char** argv) {
    glutInitWindowSize(1024, 768);
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH);
    glutCreateWindow("GlutMenu demo");
    GlutMenu::EnableShiftTab();
    BuildMenus(bar, picture, glutGet(GLUT_WINDOW_WIDTH), glutGet(GLUT_WINDOW_HEIGHT));
    RegisterCallbacks();
    glutMainLoop();
}

// Clicks put dots into the window; a menu counts them in a dialog, or clears them.
#include <GL/glut.h>

#include "GlutMenu/CGlutMenu.h"

static std::vector<int> dots;  // x and y of each, from the top left
static GlutMenu::CGlutMenu bar;
static GlutMenu::CTextInput answer;

static void OnDots(int& item, GlutMenu::CGlutMenu* menu, void*) {
    if (menu->GetMenuText(item) == "Clear") return dots.clear();
    std::vector<std::string> lines = {std::to_string(dots.size() / 2) + " dots"};
    answer.Initialise("Count", lines, 100, 100, nullptr, nullptr);
    answer.Display();
}

static void Display() {
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_DEPTH_TEST);
    glBegin(GL_POINTS);
    for (std::size_t i = 0; i < dots.size(); i += 2) glVertex2i(dots[i] - 150, 150 - dots[i + 1]);
    glEnd();
    bar.Render();
    glutSwapBuffers();
}

static void Mouse(int button, int state, int x, int y) {
    const bool taken = bar.mouse_callback(button, state, x, y);
    if (!taken && state == GLUT_DOWN) dots.insert(dots.end(), {x, y});
    glutPostRedisplay();
}

int main(int argc, char** argv) {
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE);
    glutCreateWindow("Dots");
    glScalef(1.0F / 150.0F, 1.0F / 150.0F,
             1.0F);  // the window's 300 x 300 pixels around its middle
    glPointSize(10.0F);
    std::vector<std::string> items = {"Dots"};
    bar.Initialise(300, 300, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
    bar.AddSubMenu(0, {"Count", "Clear"}, OnDots, nullptr, "");
    bar.ReshapeCallback(300, 300);
    bar.Activate();
    glutDisplayFunc(Display);
    glutMouseFunc(Mouse);
    glutMainLoop();
}

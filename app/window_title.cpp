#include "app/window_title.h"

#include <GL/glut.h>

#include "app/platform_x11.h"

std::string current_filename;

std::string get_title() {
    return "Tessary with OpenCL V"
           "1.0"
           " :" +
           current_filename;
}

void setWindowTitle(const std::string& text) {
    glutSetWindowTitle(text.c_str());
    setUtf8Title(text);
}

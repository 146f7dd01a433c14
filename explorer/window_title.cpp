#include "explorer/window_title.h"

#include <GL/glut.h>

#include "explorer/platform_x11.h"

std::string current_filename;

std::string get_title() {
    return "Tessary with OpenCL V1.0 :" + current_filename;
}

namespace {

// A title travels to the X server in one request; one past the server's limit would end the
// program, and a name read from a file can have any length.
constexpr std::size_t LONGEST_TITLE = 100000;

}  // namespace

void setWindowTitle(const std::string& text) {
    const std::string shown = text.substr(0, LONGEST_TITLE);
    glutSetWindowTitle(shown.c_str());
    setUtf8Title(shown);
}

// OpenGL of any version for tests of PlainState: it keeps what it is told, refuses what its version
// does not have, and notes what is changed. Linked instead of the library.
#pragma once

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace versioned {

using Switch = std::pair<GLenum, GLenum>;  // texture unit and name
using Values = std::map<GLenum, std::vector<GLint>>;

constexpr GLint clip_planes = 6;
constexpr GLint texture_units = 4;

struct OpenGl {
    int number = 46;  // what the version comes to
    std::string version, extensions;

    // Its state: what is on, and by the name to ask for it everything else but the line width.
    std::set<Switch> on;
    Values values;
    float line_width = 1.0F;

    std::vector<std::string> refused;
    // Calls that set what was asked about, but for the texture unit and blending.
    std::vector<std::string> changes;

    [[nodiscard]] bool knows(GLenum name) const;
};

extern OpenGl gl;

// A fresh OpenGL of this version, with everything plain and off.
void start(const std::string& version, const std::string& extensions = "GL_ARB_multisample");

// Everything that the version knows and PlainState turns off, on every unit there is.
std::set<Switch> everything();

}  // namespace versioned

// PlainState on OpenGL of every version: it asks for nothing that came later, and leaves what was
// on as it was. OpenGL is a stand-in that refuses what its version does not have.
#include "GlutMenu/PlainState.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

// What came after version 1.0: ten times the major number and the minor one.
const std::map<GLenum, int> since = {
    {GL_COLOR_LOGIC_OP, 11},      {GL_TEXTURE_3D, 12},         {GL_SAMPLE_ALPHA_TO_COVERAGE, 13},
    {GL_SAMPLE_ALPHA_TO_ONE, 13}, {GL_SAMPLE_COVERAGE, 13},    {GL_TEXTURE_CUBE_MAP, 13},
    {GL_ACTIVE_TEXTURE, 13},      {GL_MAX_TEXTURE_UNITS, 13},  {GL_COLOR_SUM, 14},
    {GL_BLEND_SRC_RGB, 14},       {GL_BLEND_DST_RGB, 14},      {GL_BLEND_SRC_ALPHA, 14},
    {GL_BLEND_DST_ALPHA, 14},     {GL_BLEND_EQUATION_RGB, 20}, {GL_BLEND_EQUATION_ALPHA, 20},
    {GL_CURRENT_PROGRAM, 20},     {GL_TEXTURE_RECTANGLE, 31}};

const std::vector<std::string> versions = {
    "1.0", "1.1", "1.2",  "1.2.1", "1.3", "1.4 (2.1 Mesa)", "1.5", "2.0", "2.1 Mesa 22.3.6",
    "3.0", "3.1", "4.6.0"};

using Switch = std::pair<GLenum, GLenum>;  // texture unit and name

struct OpenGl {
    std::string version, extensions;
    GLenum unit = GL_TEXTURE0;
    std::set<Switch> on;
    std::map<GLenum, GLint> values = {{GL_MAX_CLIP_PLANES, 6}, {GL_MAX_TEXTURE_UNITS, 4}};
    std::vector<std::string> refused;
    int number = 46;  // what the version comes to

    [[nodiscard]] bool knows(GLenum name) const {
        const bool rectangles = extensions.find("GL_ARB_texture_rectangle") != std::string::npos;
        if (name == GL_TEXTURE_RECTANGLE && rectangles) return true;
        const auto found = since.find(name);
        return found == since.end() || found->second <= number;
    }
    void need(bool known, const char* call, GLenum name) {
        if (!known) refused.push_back(std::string(call) + " " + std::to_string(name));
    }
};

OpenGl gl;

bool isTexture(GLenum name) {
    return name == GL_TEXTURE_1D || name == GL_TEXTURE_2D || name == GL_TEXTURE_3D ||
           name == GL_TEXTURE_CUBE_MAP || name == GL_TEXTURE_RECTANGLE;
}

Switch here(GLenum name) {
    return {isTexture(name) ? gl.unit : GL_TEXTURE0, name};
}

// Everything that the version knows and PlainState turns off, on every unit there is.
std::set<Switch> everything() {
    std::set<Switch> all;
    for (const int each :
         {GL_ALPHA_TEST, GL_COLOR_LOGIC_OP, GL_COLOR_SUM, GL_CULL_FACE, GL_FOG, GL_LIGHTING,
          GL_LINE_SMOOTH, GL_LINE_STIPPLE, GL_POLYGON_SMOOTH, GL_POLYGON_STIPPLE,
          GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_ALPHA_TO_ONE, GL_SAMPLE_COVERAGE, GL_SCISSOR_TEST,
          GL_STENCIL_TEST, GL_CLIP_PLANE0, GL_CLIP_PLANE5}) {
        const auto name = static_cast<GLenum>(each);
        if (gl.knows(name)) all.insert({GL_TEXTURE0, name});
    }
    const GLenum units = gl.number < 13 ? 1 : 4;
    for (GLenum unit = 0; unit < units; ++unit) {
        for (const int each : {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP,
                               GL_TEXTURE_RECTANGLE}) {
            const auto name = static_cast<GLenum>(each);
            if (gl.knows(name)) all.insert({GL_TEXTURE0 + unit, name});
        }
    }
    return all;
}

void start(const std::string& version, const std::string& extensions = "GL_ARB_multisample") {
    gl = OpenGl();
    gl.version = version;
    gl.number = 10 * (version[0] - '0') + (version[2] - '0');
    gl.extensions = extensions;
    if (gl.number >= 13) gl.values[GL_ACTIVE_TEXTURE] = GL_TEXTURE0;
}

}  // namespace

extern "C" {

const GLubyte* glGetString(GLenum name) {
    const std::string& text = name == GL_VERSION ? gl.version : gl.extensions;
    return reinterpret_cast<const GLubyte*>(text.c_str());
}

GLboolean glIsEnabled(GLenum name) {
    gl.need(gl.knows(name), "glIsEnabled", name);
    return gl.on.count(here(name)) != 0 ? GL_TRUE : GL_FALSE;
}

void glEnable(GLenum name) {
    gl.need(gl.knows(name), "glEnable", name);
    gl.on.insert(here(name));
}

void glDisable(GLenum name) {
    gl.need(gl.knows(name), "glDisable", name);
    gl.on.erase(here(name));
}

void glGetIntegerv(GLenum name, GLint* values) {
    gl.need(gl.knows(name), "glGetIntegerv", name);
    if (!gl.knows(name)) return;
    if (name == GL_POLYGON_MODE) values[0] = values[1] = GL_FILL;
    if (name == GL_COLOR_WRITEMASK) values[0] = values[1] = values[2] = values[3] = GL_TRUE;
    if (gl.values.count(name) != 0) *values = gl.values[name];
}

void glActiveTexture(GLenum unit) {
    gl.need(gl.number >= 13 && unit >= GL_TEXTURE0 && unit < GL_TEXTURE0 + 4, "glActiveTexture",
            unit);
    gl.unit = unit;
    gl.values[GL_ACTIVE_TEXTURE] = static_cast<GLint>(unit);
}

void glUseProgram(GLuint program) {
    gl.need(gl.number >= 20, "glUseProgram", program);
}

void glBlendEquationSeparate(GLenum colour, GLenum) {
    gl.need(gl.number >= 20, "glBlendEquationSeparate", colour);
}

void glBlendFuncSeparate(GLenum colour, GLenum, GLenum, GLenum) {
    gl.need(gl.number >= 14, "glBlendFuncSeparate", colour);
}

void glBlendFunc(GLenum, GLenum) {}
void glColorMask(GLboolean, GLboolean, GLboolean, GLboolean) {}
void glGetFloatv(GLenum, GLfloat* value) {
    *value = 1.0F;
}
void glLineWidth(GLfloat) {}
void glMatrixMode(GLenum) {}
void glPolygonMode(GLenum, GLenum) {}

}  // extern "C"

TEST(PlainState, AsksNoVersionForWhatCameLater) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        { const GlutMenu::PlainState plain; }
        EXPECT_EQ(gl.refused, std::vector<std::string>()) << version;
    }
}

TEST(PlainState, TurnsOffAllThatTheVersionKnows) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        const GlutMenu::PlainState plain;
        EXPECT_EQ(gl.on, std::set<Switch>()) << version;
    }
}

TEST(PlainState, LeavesOnWhatWasOn) {
    for (const std::string& version : versions) {
        start(version);
        gl.on = everything();
        { const GlutMenu::PlainState plain; }
        EXPECT_EQ(gl.on, everything()) << version;
    }
}

TEST(PlainState, LeavesTheTextureUnitThatWasChosen) {
    start("1.4");
    glActiveTexture(GL_TEXTURE2);
    gl.on = everything();
    { const GlutMenu::PlainState plain; }
    EXPECT_EQ(gl.unit, GLenum{GL_TEXTURE2});
}

TEST(PlainState, TurnsOffRectanglesThatAreAnExtension) {
    start("2.1", "GL_ARB_multisample GL_ARB_texture_rectangle GL_EXT_fog_coord");
    gl.on = {{GL_TEXTURE1, GL_TEXTURE_RECTANGLE}};
    const GlutMenu::PlainState plain;
    EXPECT_EQ(gl.on, std::set<Switch>());
}

TEST(PlainState, TakesAVersionItCannotReadForTheFirst) {
    for (const char* version : {"", "x", "OpenGL ES 3.2"}) {
        start("1.0");
        gl.on = everything();
        gl.version = version;
        { const GlutMenu::PlainState plain; }
        EXPECT_EQ(gl.refused, std::vector<std::string>()) << version;
    }
}

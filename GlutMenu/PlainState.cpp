// Before all other headers: declares what came after version 1.1 of OpenGL.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include "GlutMenu/PlainState.h"

#include <algorithm>

// Weak: a program may bring an OpenGL that has only what the toolkit draws with, as tests without a
// window do. What that OpenGL draws is plain.
#pragma weak glActiveTexture
#pragma weak glBlendEquationSeparate
#pragma weak glBlendFuncSeparate
#pragma weak glColorMask
#pragma weak glGetIntegerv
#pragma weak glGetString
#pragma weak glIsEnabled
#pragma weak glPolygonMode
#pragma weak glUseProgram

namespace GlutMenu {

namespace {

// What changes the look of a plain shape while it is on. Colour material is not among them: it
// follows the current colour, also back to the one found.
constexpr GLenum effects[] = {GL_ALPHA_TEST,
                              GL_COLOR_LOGIC_OP,
                              GL_COLOR_SUM,
                              GL_CULL_FACE,
                              GL_FOG,
                              GL_LIGHTING,
                              GL_LINE_SMOOTH,
                              GL_LINE_STIPPLE,
                              GL_POLYGON_SMOOTH,
                              GL_POLYGON_STIPPLE,
                              GL_SAMPLE_ALPHA_TO_COVERAGE,
                              GL_SAMPLE_ALPHA_TO_ONE,
                              GL_SAMPLE_COVERAGE,
                              GL_SCISSOR_TEST,
                              GL_STENCIL_TEST};

constexpr GLenum textures[] = {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP,
                               GL_TEXTURE_RECTANGLE};

bool HasAll() {
    return glActiveTexture != nullptr && glBlendEquationSeparate != nullptr &&
           glBlendFuncSeparate != nullptr && glColorMask != nullptr && glGetIntegerv != nullptr &&
           glGetString != nullptr && glIsEnabled != nullptr && glPolygonMode != nullptr &&
           glUseProgram != nullptr;
}

// The text of a version begins with its major number.
bool IsModern() {
    const auto* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    return version != nullptr && version[0] >= '2' && version[0] <= '9';
}

GLint Integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

GLenum Name(GLint value) {
    return static_cast<GLenum>(value);
}

GLboolean Flag(GLint value) {
    return static_cast<GLboolean>(value);
}

bool IsOtherMatrix(GLint mode) {
    return mode == GL_PROJECTION || mode == GL_TEXTURE || mode == GL_COLOR;
}

bool IsUnfilled(GLint mode) {
    return mode == GL_LINE || mode == GL_POINT;
}

}  // namespace

PlainState::PlainState() {
    if (!HasAll()) return;
    is_modern = IsModern();
    matrix_mode = Integer(GL_MATRIX_MODE);
    if (IsOtherMatrix(matrix_mode)) glMatrixMode(GL_MODELVIEW);
    for (const GLenum effect : effects) TurnOff(GL_TEXTURE0, effect);
    TurnOffClipPlanes();
    TurnOffTextures();
    TurnOffProgram();
    FillPolygons();
    WriteEveryColour();
    glGetFloatv(GL_LINE_WIDTH, &line_width);
    if (line_width != 1.0F) glLineWidth(1.0F);
    ReadBlending();
}

PlainState::~PlainState() {
    if (!HasAll()) return;
    RestoreBlending();
    if (line_width != 1.0F) glLineWidth(line_width);
    if (is_masked) {
        glColorMask(Flag(colour_mask[0]), Flag(colour_mask[1]), Flag(colour_mask[2]),
                    Flag(colour_mask[3]));
    }
    if (is_unfilled) {
        glPolygonMode(GL_FRONT, Name(polygon_mode[0]));
        glPolygonMode(GL_BACK, Name(polygon_mode[1]));
    }
    if (program != 0) glUseProgram(Name(program));
    if (IsOtherMatrix(matrix_mode)) glMatrixMode(Name(matrix_mode));
    RestoreSwitches();
}

void PlainState::TurnOff(GLenum unit, GLenum name) {
    if (glIsEnabled(name) == GL_FALSE) return;
    glDisable(name);
    switches.push_back({unit, name});
}

void PlainState::TurnOffClipPlanes() {
    const GLint count = Integer(GL_MAX_CLIP_PLANES);
    for (GLint i = 0; i < count; ++i) TurnOff(GL_TEXTURE0, GL_CLIP_PLANE0 + Name(i));
}

void PlainState::TurnOffTextures() {
    const GLint count = Integer(GL_MAX_TEXTURE_UNITS);
    active_unit = Integer(GL_ACTIVE_TEXTURE);
    for (GLint i = 0; i < count; ++i) {
        const GLenum unit = GL_TEXTURE0 + Name(i);
        glActiveTexture(unit);
        for (const GLenum texture : textures) TurnOff(unit, texture);
    }
    if (count > 0) glActiveTexture(Name(active_unit));
}

void PlainState::TurnOffProgram() {
    if (is_modern) program = Integer(GL_CURRENT_PROGRAM);
    if (program != 0) glUseProgram(0);
}

void PlainState::FillPolygons() {
    glGetIntegerv(GL_POLYGON_MODE, polygon_mode);
    is_unfilled = IsUnfilled(polygon_mode[0]) || IsUnfilled(polygon_mode[1]);
    if (is_unfilled) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void PlainState::WriteEveryColour() {
    glGetIntegerv(GL_COLOR_WRITEMASK, colour_mask);
    is_masked = std::count(colour_mask, colour_mask + 4, GL_TRUE) < 4;
    if (is_masked) glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

// Before version 2, colour and alpha are not told apart.
void PlainState::ReadBlending() {
    blend_function[0] = Integer(is_modern ? GL_BLEND_SRC_RGB : GL_BLEND_SRC);
    blend_function[1] = Integer(is_modern ? GL_BLEND_DST_RGB : GL_BLEND_DST);
    if (!is_modern) return;
    blend_function[2] = Integer(GL_BLEND_SRC_ALPHA);
    blend_function[3] = Integer(GL_BLEND_DST_ALPHA);
    blend_equation[0] = Integer(GL_BLEND_EQUATION_RGB);
    blend_equation[1] = Integer(GL_BLEND_EQUATION_ALPHA);
    glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
}

void PlainState::RestoreBlending() const {
    if (!is_modern) {
        glBlendFunc(Name(blend_function[0]), Name(blend_function[1]));
        return;
    }
    glBlendFuncSeparate(Name(blend_function[0]), Name(blend_function[1]), Name(blend_function[2]),
                        Name(blend_function[3]));
    glBlendEquationSeparate(Name(blend_equation[0]), Name(blend_equation[1]));
}

void PlainState::RestoreSwitches() const {
    for (const Switch& found : switches) {
        glActiveTexture(found.unit);
        glEnable(found.name);
    }
    if (!switches.empty()) glActiveTexture(Name(active_unit));
}

}  // namespace GlutMenu

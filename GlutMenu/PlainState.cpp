// Before all other headers: declares what came after version 1.1 of OpenGL.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include "GlutMenu/PlainState.h"

#include <algorithm>
#include <iterator>
#include <string_view>

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

// Versions are ten times the major number and the minor one.
constexpr int first_version = 10;

// A name of OpenGL and the version that brought it.
struct Since {
    GLenum name;
    int version;
};

// What changes the look of a plain shape while it is on. Colour material is not among them: it
// follows the current colour, also back to the one found.
constexpr Since effects[] = {{GL_ALPHA_TEST, first_version},
                             {GL_COLOR_LOGIC_OP, 11},
                             {GL_COLOR_SUM, 14},
                             {GL_CULL_FACE, first_version},
                             {GL_FOG, first_version},
                             {GL_LIGHTING, first_version},
                             {GL_LINE_SMOOTH, first_version},
                             {GL_LINE_STIPPLE, first_version},
                             {GL_POLYGON_SMOOTH, first_version},
                             {GL_POLYGON_STIPPLE, first_version},
                             {GL_SAMPLE_ALPHA_TO_COVERAGE, 13},
                             {GL_SAMPLE_ALPHA_TO_ONE, 13},
                             {GL_SAMPLE_COVERAGE, 13},
                             {GL_SCISSOR_TEST, first_version},
                             {GL_STENCIL_TEST, first_version}};

constexpr Since textures[] = {{GL_TEXTURE_1D, first_version},
                              {GL_TEXTURE_2D, first_version},
                              {GL_TEXTURE_3D, 12},
                              {GL_TEXTURE_CUBE_MAP, 13}};

constexpr int first_with_texture_units = 13;
constexpr int first_with_programs = 20;
constexpr int first_with_rectangles = 31;

bool HasAll() {
    const bool there[] = {glActiveTexture != nullptr,     glBlendEquationSeparate != nullptr,
                          glBlendFuncSeparate != nullptr, glColorMask != nullptr,
                          glGetIntegerv != nullptr,       glGetString != nullptr,
                          glIsEnabled != nullptr,         glPolygonMode != nullptr,
                          glUseProgram != nullptr};
    return std::find(std::begin(there), std::end(there), false) == std::end(there);
}

std::string_view Text(GLenum name) {
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text == nullptr ? "" : text;
}

// The text of a version begins with two numbers of a digit each, as in "1.4" and "4.6".
int Version() {
    const std::string_view text = Text(GL_VERSION);
    if (text.size() < 3 || text[1] != '.') return first_version;
    return 10 * (text[0] - '0') + (text[2] - '0');
}

// Whether there are textures of GL_TEXTURE_RECTANGLE: an extension of what is older than they.
bool HasRectangles(int version) {
    return version >= first_with_rectangles ||
           Text(GL_EXTENSIONS).find("GL_ARB_texture_rectangle") != std::string_view::npos;
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
    version = Version();
    matrix_mode = Integer(GL_MATRIX_MODE);
    if (IsOtherMatrix(matrix_mode)) glMatrixMode(GL_MODELVIEW);
    for (const Since& effect : effects) TurnOffIfKnown(GL_TEXTURE0, effect.name, effect.version);
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

void PlainState::TurnOffIfKnown(GLenum unit, GLenum name, int since) {
    if (version >= since) TurnOff(unit, name);
}

void PlainState::TurnOffClipPlanes() {
    const GLint count = Integer(GL_MAX_CLIP_PLANES);
    for (GLint i = 0; i < count; ++i) TurnOff(GL_TEXTURE0, GL_CLIP_PLANE0 + Name(i));
}

// A program cannot choose a unit where there is only one.
void PlainState::TurnOffTextures() {
    if (version < first_with_texture_units) {
        TurnOffTexturesOf(GL_TEXTURE0);
        return;
    }
    active_unit = Integer(GL_ACTIVE_TEXTURE);
    const GLint count = Integer(GL_MAX_TEXTURE_UNITS);
    for (GLint i = 0; i < count; ++i) {
        glActiveTexture(GL_TEXTURE0 + Name(i));
        TurnOffTexturesOf(GL_TEXTURE0 + Name(i));
    }
    glActiveTexture(Name(active_unit));
}

void PlainState::TurnOffTexturesOf(GLenum unit) {
    for (const Since& texture : textures) TurnOffIfKnown(unit, texture.name, texture.version);
    if (HasRectangles(version)) TurnOff(unit, GL_TEXTURE_RECTANGLE);
}

void PlainState::TurnOffProgram() {
    if (version >= first_with_programs) program = Integer(GL_CURRENT_PROGRAM);
    if (program != 0) glUseProgram(0);
}

void PlainState::FillPolygons() {
    glGetIntegerv(GL_POLYGON_MODE, polygon_mode);
    is_unfilled = IsUnfilled(polygon_mode[0]) || IsUnfilled(polygon_mode[1]);
    if (is_unfilled) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void PlainState::WriteEveryColour() {
    glGetIntegerv(GL_COLOR_WRITEMASK, colour_mask);
    is_masked = std::find(std::begin(colour_mask), std::end(colour_mask), GL_FALSE) !=
                std::end(colour_mask);
    if (is_masked) glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

// Before version 2, colour and alpha are not told apart.
void PlainState::ReadBlending() {
    blend_function[0] = Integer(version >= first_with_programs ? GL_BLEND_SRC_RGB : GL_BLEND_SRC);
    blend_function[1] = Integer(version >= first_with_programs ? GL_BLEND_DST_RGB : GL_BLEND_DST);
    if (version < first_with_programs) return;
    blend_function[2] = Integer(GL_BLEND_SRC_ALPHA);
    blend_function[3] = Integer(GL_BLEND_DST_ALPHA);
    blend_equation[0] = Integer(GL_BLEND_EQUATION_RGB);
    blend_equation[1] = Integer(GL_BLEND_EQUATION_ALPHA);
    glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
}

void PlainState::RestoreBlending() const {
    if (version < first_with_programs) {
        glBlendFunc(Name(blend_function[0]), Name(blend_function[1]));
        return;
    }
    glBlendFuncSeparate(Name(blend_function[0]), Name(blend_function[1]), Name(blend_function[2]),
                        Name(blend_function[3]));
    glBlendEquationSeparate(Name(blend_equation[0]), Name(blend_equation[1]));
}

void PlainState::RestoreSwitches() const {
    const bool has_units = version >= first_with_texture_units;
    for (const Switch& found : switches) {
        if (has_units) glActiveTexture(found.unit);
        glEnable(found.name);
    }
    if (has_units) glActiveTexture(Name(active_unit));
}

}  // namespace GlutMenu

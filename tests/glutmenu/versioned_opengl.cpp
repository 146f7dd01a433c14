#include "tests/glutmenu/versioned_opengl.h"

#include <algorithm>

namespace versioned {

OpenGl gl;

namespace {

// What came after version 1.0: ten times the major number and the minor one.
const std::map<GLenum, int> since = {
    {GL_COLOR_LOGIC_OP, 11},      {GL_TEXTURE_3D, 12},         {GL_SAMPLE_ALPHA_TO_COVERAGE, 13},
    {GL_SAMPLE_ALPHA_TO_ONE, 13}, {GL_SAMPLE_COVERAGE, 13},    {GL_TEXTURE_CUBE_MAP, 13},
    {GL_ACTIVE_TEXTURE, 13},      {GL_MAX_TEXTURE_UNITS, 13},  {GL_COLOR_SUM, 14},
    {GL_BLEND_SRC_RGB, 14},       {GL_BLEND_DST_RGB, 14},      {GL_BLEND_SRC_ALPHA, 14},
    {GL_BLEND_DST_ALPHA, 14},     {GL_BLEND_EQUATION_RGB, 20}, {GL_BLEND_EQUATION_ALPHA, 20},
    {GL_CURRENT_PROGRAM, 20},     {GL_TEXTURE_RECTANGLE, 31}};

const Values plain = {{GL_MAX_CLIP_PLANES, {clip_planes}},
                      {GL_MAX_TEXTURE_UNITS, {texture_units}},
                      {GL_ACTIVE_TEXTURE, {GL_TEXTURE0}},
                      {GL_MATRIX_MODE, {GL_MODELVIEW}},
                      {GL_CURRENT_PROGRAM, {0}},
                      {GL_POLYGON_MODE, {GL_FILL, GL_FILL}},
                      {GL_COLOR_WRITEMASK, {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE}},
                      {GL_BLEND_SRC, {GL_ONE}},
                      {GL_BLEND_DST, {GL_ZERO}},
                      {GL_BLEND_SRC_RGB, {GL_ONE}},
                      {GL_BLEND_DST_RGB, {GL_ZERO}},
                      {GL_BLEND_SRC_ALPHA, {GL_ONE}},
                      {GL_BLEND_DST_ALPHA, {GL_ZERO}},
                      {GL_BLEND_EQUATION_RGB, {GL_FUNC_ADD}},
                      {GL_BLEND_EQUATION_ALPHA, {GL_FUNC_ADD}}};

// Around the clip planes there are names, and no planes.
bool isNoClipPlane(GLenum name) {
    constexpr GLenum last = GL_CLIP_PLANE0 + GLenum{clip_planes} - 1;
    return (name >= GL_CLIP_PLANE0 - 16 && name < GL_CLIP_PLANE0) ||
           (name > last && name <= last + 16);
}

bool isTexture(GLenum name) {
    return name == GL_TEXTURE_1D || name == GL_TEXTURE_2D || name == GL_TEXTURE_3D ||
           name == GL_TEXTURE_CUBE_MAP || name == GL_TEXTURE_RECTANGLE;
}

GLenum unit() {
    return gl.number < 13 ? GL_TEXTURE0 : static_cast<GLenum>(gl.values[GL_ACTIVE_TEXTURE][0]);
}

Switch here(GLenum name) {
    return {isTexture(name) ? unit() : GL_TEXTURE0, name};
}

void need(bool known, const char* call, GLenum name) {
    if (!known) gl.refused.push_back(std::string(call) + " " + std::to_string(name));
}

void set(GLenum name, std::vector<GLenum> values) {
    if (gl.knows(name)) gl.values[name] = {values.begin(), values.end()};
}

}  // namespace

bool OpenGl::knows(GLenum name) const {
    const bool rectangles = extensions.find("GL_ARB_texture_rectangle") != std::string::npos;
    if (name == GL_TEXTURE_RECTANGLE && rectangles) return true;
    const auto found = since.find(name);
    return !isNoClipPlane(name) && (found == since.end() || found->second <= number);
}

void start(const std::string& version, const std::string& extensions) {
    gl = OpenGl();
    gl.version = version;
    gl.number = 10 * (version[0] - '0') + (version[2] - '0');
    gl.extensions = extensions;
    for (const auto& [name, values] : plain) {
        if (gl.knows(name)) gl.values[name] = values;
    }
}

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
    const GLenum units = gl.number < 13 ? 1 : texture_units;
    for (GLenum unit = 0; unit < units; ++unit) {
        for (const int each : {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP,
                               GL_TEXTURE_RECTANGLE}) {
            const auto name = static_cast<GLenum>(each);
            if (gl.knows(name)) all.insert({GL_TEXTURE0 + unit, name});
        }
    }
    return all;
}

}  // namespace versioned

using namespace versioned;

extern "C" {

const GLubyte* glGetString(GLenum name) {
    const std::string& text = name == GL_VERSION ? gl.version : gl.extensions;
    return reinterpret_cast<const GLubyte*>(text.c_str());
}

GLboolean glIsEnabled(GLenum name) {
    need(gl.knows(name), "glIsEnabled", name);
    return gl.on.count(here(name)) != 0 ? GL_TRUE : GL_FALSE;
}

void glEnable(GLenum name) {
    need(gl.knows(name), "glEnable", name);
    gl.changes.emplace_back("glEnable");
    gl.on.insert(here(name));
}

void glDisable(GLenum name) {
    need(gl.knows(name), "glDisable", name);
    gl.changes.emplace_back("glDisable");
    gl.on.erase(here(name));
}

void glGetIntegerv(GLenum name, GLint* values) {
    need(gl.knows(name), "glGetIntegerv", name);
    const auto found = gl.values.find(name);
    if (found != gl.values.end()) std::copy(found->second.begin(), found->second.end(), values);
}

void glGetFloatv(GLenum name, GLfloat* value) {
    if (name == GL_LINE_WIDTH) *value = gl.line_width;
}

void glActiveTexture(GLenum unit) {
    need(gl.number >= 13 && unit >= GL_TEXTURE0 && unit < GL_TEXTURE0 + GLenum{texture_units},
         "glActiveTexture", unit);
    set(GL_ACTIVE_TEXTURE, {unit});
}

void glUseProgram(GLuint program) {
    need(gl.number >= 20, "glUseProgram", program);
    gl.changes.emplace_back("glUseProgram");
    set(GL_CURRENT_PROGRAM, {program});
}

void glBlendEquationSeparate(GLenum colour, GLenum alpha) {
    need(gl.number >= 20, "glBlendEquationSeparate", colour);
    set(GL_BLEND_EQUATION_RGB, {colour});
    set(GL_BLEND_EQUATION_ALPHA, {alpha});
}

void glBlendFuncSeparate(GLenum source, GLenum destination, GLenum source_alpha,
                         GLenum destination_alpha) {
    need(gl.number >= 14, "glBlendFuncSeparate", source);
    set(GL_BLEND_SRC, {source});
    set(GL_BLEND_DST, {destination});
    set(GL_BLEND_SRC_RGB, {source});
    set(GL_BLEND_DST_RGB, {destination});
    set(GL_BLEND_SRC_ALPHA, {source_alpha});
    set(GL_BLEND_DST_ALPHA, {destination_alpha});
}

void glBlendFunc(GLenum source, GLenum destination) {
    set(GL_BLEND_SRC, {source});
    set(GL_BLEND_DST, {destination});
    set(GL_BLEND_SRC_RGB, {source});
    set(GL_BLEND_DST_RGB, {destination});
    set(GL_BLEND_SRC_ALPHA, {source});
    set(GL_BLEND_DST_ALPHA, {destination});
}

void glColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    gl.changes.emplace_back("glColorMask");
    set(GL_COLOR_WRITEMASK, {red, green, blue, alpha});
}

void glLineWidth(GLfloat width) {
    gl.changes.emplace_back("glLineWidth");
    gl.line_width = width;
}

void glMatrixMode(GLenum mode) {
    gl.changes.emplace_back("glMatrixMode");
    set(GL_MATRIX_MODE, {mode});
}

void glPolygonMode(GLenum face, GLenum mode) {
    need(face == GL_FRONT || face == GL_BACK || face == GL_FRONT_AND_BACK, "glPolygonMode", face);
    gl.changes.emplace_back("glPolygonMode");
    if (face != GL_BACK) gl.values[GL_POLYGON_MODE][0] = static_cast<GLint>(mode);
    if (face != GL_FRONT) gl.values[GL_POLYGON_MODE][1] = static_cast<GLint>(mode);
}

}  // extern "C"

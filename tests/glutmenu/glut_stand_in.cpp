#include "tests/glutmenu/glut_stand_in.h"

#include <cstddef>
#include <sstream>

namespace stand_in {

State state;

namespace {

struct Transform {
    float x = 0.0F, y = 0.0F, scale_x = 1.0F, scale_y = 1.0F;
};

// The model-view matrix, as far as it moves and scales, with what was pushed below it.
std::vector<Transform> modelview = {Transform()};
// Whether the next glyph goes on with the last text.
bool text_goes_on = false;

constexpr int glyph_widths[] = {
    105, 27, 51, 79, 76, 97, 102, 14,  47, 48, 59, 97, 26, 101, 26, 82,   //
    77,  67, 78, 77, 80, 78, 74,  77,  78, 74, 26, 26, 82, 97,  82, 74,   //
    74,  80, 84, 84, 85, 78, 79,  90,  89, 21, 60, 79, 71, 97,  89, 89,   //
    86,  88, 82, 81, 72, 89, 82,  101, 72, 80, 74, 46, 78, 46,  90, 104,  //
    84,  67, 70, 69, 70, 69, 39,  71,  71, 29, 36, 63, 19, 124, 71, 72,   //
    71,  71, 49, 62, 39, 71, 61,  80,  56, 66, 62, 42, 24, 41,  91, 67};

// Between glBegin and glEnd vertices and colours may be given, and vertices nowhere else.
bool isMisplaced(const std::string& call) {
    if (call == "glVertex3f" || call == "glEnd") return !state.in_shape;
    return state.in_shape && call != "glColor4f";
}

template <typename... Arguments>
void record(const char* name, Arguments... arguments) {
    if (isMisplaced(name)) ++state.misplaced_calls;
    std::ostringstream call;
    call << name;
    ((call << ' ' << arguments), ...);
    state.calls.push_back(call.str());
    text_goes_on = false;
}

int& depth() {
    return state.matrix_mode == GL_PROJECTION ? state.projection_depth : state.modelview_depth;
}

bool* capability(GLenum name) {
    if (name == GL_BLEND) return &state.blending;
    return name == GL_DEPTH_TEST ? &state.depth_test : nullptr;
}

void setCapability(GLenum name, bool enabled) {
    if (bool* known = capability(name)) *known = enabled;
}

Transform& top() {
    return modelview.back();
}

}  // namespace

void reset() {
    state = State();
    modelview = {Transform()};
    text_goes_on = false;
}

int strokeWidth(int code) {
    constexpr int first = ' ';
    constexpr int count = sizeof(glyph_widths) / sizeof(glyph_widths[0]);
    return code >= first && code < first + count ? glyph_widths[code - first] : 0;
}

}  // namespace stand_in

using namespace stand_in;

extern "C" {

void* glutStrokeRoman = nullptr;
void* glutBitmapHelvetica18 = nullptr;

int glutStrokeWidth(void* font, int code) {
    return font == GLUT_STROKE_ROMAN ? stand_in::strokeWidth(code) : 1;
}

int glutBitmapWidth(void* font, int code) {
    return font == GLUT_BITMAP_HELVETICA_18 && code == 'H' ? 13 : 1;
}

int glutGet(GLenum query) {
    if (query == GLUT_WINDOW_WIDTH) return state.window_width;
    return query == GLUT_WINDOW_HEIGHT ? state.window_height : -1;
}

int glutGetModifiers() {
    return state.modifiers;
}

void glutPostRedisplay() {
    ++state.redisplays;
}

void glutStrokeCharacter(void* font, int code) {
    const Transform at = top();
    if (!text_goes_on) {
        record("glutStrokeCharacter", font == GLUT_STROKE_ROMAN ? "Roman" : "other");
        state.drawn.push_back({no_shape,
                               {{at.x, at.y}},
                               "",
                               state.colour,
                               state.line_width,
                               {at.scale_x, at.scale_y}});
        text_goes_on = true;
    }
    state.drawn.back().text.push_back(static_cast<char>(code));
}

void glBegin(GLenum mode) {
    record("glBegin", mode);
    state.in_shape = true;
    state.drawn.push_back({mode, {}, "", state.colour, state.line_width, {1.0F, 1.0F}});
}

void glVertex3f(GLfloat x, GLfloat y, GLfloat z) {
    record("glVertex3f", x, y, z);
    if (z != 0.0F) ++state.off_the_plane;
    state.drawn.back().points.push_back({x, y});
}

void glEnd() {
    record("glEnd");
    state.in_shape = false;
}

void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a) {
    record("glColor4f", r, g, b, a);
    state.colour = {r, g, b, a};
}

void glLineWidth(GLfloat width) {
    record("glLineWidth", width);
    state.line_width = width;
}

void glGetFloatv(GLenum name, GLfloat* values) {
    if (isMisplaced("glGetFloatv")) ++state.misplaced_calls;
    if (name == GL_LINE_WIDTH) *values = state.line_width;
    if (name != GL_CURRENT_COLOR) return;
    for (std::size_t i = 0; i < 4; ++i) values[i] = state.colour[i];
}

void glEnable(GLenum name) {
    record("glEnable", name);
    setCapability(name, true);
}

void glDisable(GLenum name) {
    record("glDisable", name);
    setCapability(name, false);
}

void glBlendFunc(GLenum source, GLenum destination) {
    record("glBlendFunc", source, destination);
}

void glMatrixMode(GLenum mode) {
    record("glMatrixMode", mode);
    state.matrix_mode = mode;
}

void glPushMatrix() {
    record("glPushMatrix");
    ++depth();
    if (state.matrix_mode == GL_MODELVIEW) modelview.push_back(top());
}

void glPopMatrix() {
    record("glPopMatrix");
    --depth();
    if (state.matrix_mode == GL_MODELVIEW && modelview.size() > 1) modelview.pop_back();
}

void glLoadIdentity() {
    record("glLoadIdentity");
    if (state.matrix_mode == GL_MODELVIEW) top() = Transform();
}

void glTranslatef(GLfloat x, GLfloat y, GLfloat z) {
    record("glTranslatef", x, y, z);
    if (z != 0.0F) ++state.off_the_plane;
    if (state.matrix_mode != GL_MODELVIEW) return;
    top().x += x * top().scale_x;
    top().y += y * top().scale_y;
}

void glScalef(GLfloat x, GLfloat y, GLfloat z) {
    record("glScalef", x, y, z);
    if (state.matrix_mode != GL_MODELVIEW) return;
    top().scale_x *= x;
    top().scale_y *= y;
}

void gluOrtho2D(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top_edge) {
    record("gluOrtho2D", left, right, bottom, top_edge);
}

}  // extern "C"

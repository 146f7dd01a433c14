#include "tests/support/glut_stand_in.h"

#include <GL/freeglut.h>
#include <GL/glx.h>

#include <algorithm>
#include <iostream>

namespace glut_stand_in {

State glut;

void reset() {
    glut = State();
}

std::vector<std::string> callsNamed(const std::vector<std::string>& names) {
    std::vector<std::string> found;
    for (const std::string& text : glut.calls) {
        const std::string name = text.substr(0, text.find('('));
        if (std::find(names.begin(), names.end(), name) != names.end()) found.push_back(text);
    }
    return found;
}

int indexOf(const std::string& wanted, int from) {
    const auto found = std::find(glut.calls.begin() + from, glut.calls.end(), wanted);
    return found == glut.calls.end() ? -1 : static_cast<int>(found - glut.calls.begin());
}

namespace {

GLfloat colour[4] = {1, 1, 1, 1};

template <class... Arguments>
void record(const std::string& name, Arguments... arguments) {
    if (!glut.recording) return;
    glut.calls.push_back(call(name, arguments...));
    if (glut.echo) std::cout << glut.calls.back() << std::endl;
    if (glut.onCall) glut.onCall(std::string(glut.calls.back()));
}

void useColour(GLfloat r, GLfloat g, GLfloat b, GLfloat a) {
    const GLfloat parts[4] = {r, g, b, a};
    std::copy_n(parts, 4, colour);
}

const char* setOrNot(bool set) {
    return set ? "set" : "null";
}

}  // namespace
}  // namespace glut_stand_in

using glut_stand_in::colour;
using glut_stand_in::glut;
using glut_stand_in::record;
using glut_stand_in::setOrNot;
using glut_stand_in::useColour;

extern "C" {

void glutInit(int*, char**) {
    record("glutInit");
}
void glutInitWindowSize(int w, int h) {
    record("glutInitWindowSize", w, h);
}
void glutInitDisplayMode(unsigned mode) {
    record("glutInitDisplayMode", mode);
}
void glutSetOption(GLenum what, int value) {
    record("glutSetOption", what, value);
}
int glutCreateWindow(const char* name) {
    record("glutCreateWindow", name);
    return 1;
}
void glutSetWindowTitle(const char* text) {
    record("glutSetWindowTitle", text);
    if (glut.recording) glut.titles.push_back(text);
}
void glutMainLoop() {
    record("glutMainLoop");
    if (glut.mainLoop) glut.mainLoop();
}
void glutLeaveMainLoop() {
    record("glutLeaveMainLoop");
}
void glutPostRedisplay() {
    record("glutPostRedisplay");
    ++glut.redisplays;
}
void glutSwapBuffers() {
    record("glutSwapBuffers");
}
void glutDisplayFunc(void (*f)()) {
    record("glutDisplayFunc", setOrNot(f != nullptr));
    glut.display = f;
}
void glutReshapeFunc(void (*f)(int, int)) {
    record("glutReshapeFunc", setOrNot(f != nullptr));
    glut.reshape = f;
}
void glutKeyboardFunc(void (*f)(unsigned char, int, int)) {
    record("glutKeyboardFunc", setOrNot(f != nullptr));
    glut.keyboard = f;
}
void glutSpecialFunc(void (*f)(int, int, int)) {
    record("glutSpecialFunc", setOrNot(f != nullptr));
    glut.special = f;
}
void glutMouseFunc(void (*f)(int, int, int, int)) {
    record("glutMouseFunc", setOrNot(f != nullptr));
    glut.mouse = f;
}
void glutMotionFunc(void (*f)(int, int)) {
    record("glutMotionFunc", setOrNot(f != nullptr));
    glut.motion = f;
}
void glutWindowStatusFunc(void (*f)(int)) {
    record("glutWindowStatusFunc", setOrNot(f != nullptr));
}
void glutIdleFunc(void (*f)()) {
    record("glutIdleFunc", setOrNot(f != nullptr));
    glut.idle = f;
}
int glutGet(GLenum what) {
    switch (what) {
        case GLUT_WINDOW_WIDTH:
            return glut.windowWidth;
        case GLUT_WINDOW_HEIGHT:
            return glut.windowHeight;
        case GLUT_SCREEN_WIDTH:
            return glut.screenWidth;
        case GLUT_SCREEN_HEIGHT:
            return glut.screenHeight;
        case GLUT_INIT_STATE:
            return glut.initialised ? 1 : 0;
        default:
            return 0;
    }
}
int glutGetModifiers() {
    return 0;
}
// freeglut's Roman and Helvetica 18 are of about this width.
int glutStrokeWidth(void*, int character) {
    return character == ' ' ? 105 : 90;
}
int glutBitmapWidth(void*, int) {
    return 13;
}
void glutStrokeCharacter(void*, int character) {
    record("glutStrokeCharacter", static_cast<char>(character));
}

void glMatrixMode(GLenum mode) {
    record("glMatrixMode", mode);
}
void glLoadIdentity() {
    record("glLoadIdentity");
}
void glPushMatrix() {
    record("glPushMatrix");
}
void glPopMatrix() {
    record("glPopMatrix");
}
void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble zNear,
             GLdouble zFar) {
    record("glOrtho", left, right, bottom, top, zNear, zFar);
}
void gluOrtho2D(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top) {
    record("gluOrtho2D", left, right, bottom, top);
}
void glTranslatef(GLfloat x, GLfloat y, GLfloat z) {
    record("glTranslatef", x, y, z);
}
void glScalef(GLfloat x, GLfloat y, GLfloat z) {
    record("glScalef", x, y, z);
}
void glViewport(GLint x, GLint y, GLsizei w, GLsizei h) {
    record("glViewport", x, y, w, h);
}
void glClear(GLbitfield mask) {
    record("glClear", mask);
}
void glEnable(GLenum what) {
    record("glEnable", what);
}
void glDisable(GLenum what) {
    record("glDisable", what);
}
void glBlendFunc(GLenum source, GLenum target) {
    record("glBlendFunc", source, target);
}
void glLineWidth(GLfloat width) {
    record("glLineWidth", width);
}

void glColor3f(GLfloat r, GLfloat g, GLfloat b) {
    record("glColor3f", r, g, b);
    useColour(r, g, b, 1.0f);
}
void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a) {
    record("glColor4f", r, g, b, a);
    useColour(r, g, b, a);
}
void glColor4fv(const GLfloat* c) {
    record("glColor4fv", c[0], c[1], c[2], c[3]);
    useColour(c[0], c[1], c[2], c[3]);
}
void glBegin(GLenum shape) {
    record("glBegin", shape);
}
void glEnd() {
    record("glEnd");
}
void glVertex2i(GLint x, GLint y) {
    record("glVertex2i", x, y);
}
void glVertex3f(GLfloat x, GLfloat y, GLfloat z) {
    record("glVertex3f", x, y, z);
}
void glTexCoord2f(GLfloat s, GLfloat t) {
    record("glTexCoord2f", s, t);
}

void glGenTextures(GLsizei count, GLuint* names) {
    record("glGenTextures", count);
    for (GLsizei i = 0; i < count; ++i) names[i] = 7;
}
void glDeleteTextures(GLsizei count, const GLuint* names) {
    record("glDeleteTextures", count, names[0]);
}
void glBindTexture(GLenum target, GLuint name) {
    record("glBindTexture", target, name);
}
void glTexImage2D(GLenum target, GLint level, GLint components, GLsizei w, GLsizei h, GLint border,
                  GLenum format, GLenum type, const GLvoid* pixels) {
    record("glTexImage2D", target, level, components, w, h, border, format, type);
    glut.refused = w > glut.largestTexture || h > glut.largestTexture;
    if (glut.refused || pixels == nullptr) return;
    const auto* bytes = static_cast<const unsigned char*>(pixels);
    glut.texture.assign(bytes,
                        bytes + 4 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
}
void glTexEnvi(GLenum target, GLenum what, GLint value) {
    record("glTexEnvi", target, what, value);
}
void glTexParameteri(GLenum target, GLenum what, GLint value) {
    record("glTexParameteri", target, what, value);
}

GLenum glGetError() {
    const GLenum error = glut.refused ? GL_INVALID_VALUE : GL_NO_ERROR;
    glut.refused = false;
    return error;
}
void glGetIntegerv(GLenum what, GLint* value) {
    *value = what == GL_MAX_TEXTURE_SIZE ? glut.namedTexture : 1;
}
void glGetFloatv(GLenum what, GLfloat* values) {
    if (what == GL_CURRENT_COLOR) {
        std::copy_n(colour, 4, values);
    } else {
        *values = 1.0f;
    }
}

Display* glXGetCurrentDisplay() {
    return nullptr;
}
GLXDrawable glXGetCurrentDrawable() {
    return 0;
}

}  // extern "C"

// GLUT and OpenGL for tests without a window: answers what the toolkit asks with settable values
// and records what it draws. Linked instead of the libraries; what is not defined here fails to
// link, so the toolkit cannot come to need more unnoticed.
#pragma once

#include <GL/glut.h>

#include <array>
#include <string>
#include <vector>

namespace stand_in {

using Colour = std::array<float, 4>;
using Point = std::array<float, 2>;

// One thing drawn, in the coordinates of the menu space.
struct Drawn {
    GLenum mode;                // what glBegin was given; no_shape for a text
    std::vector<Point> points;  // a shape's vertices; a text's baseline-left point
    std::string text;
    Colour colour;
    float line_width;
    Point glyph_scale;  // of a text
};
constexpr GLenum no_shape = 0xFFFF;

struct State {
    // What the stand-in answers.
    int window_width = 1024;
    int window_height = 768;
    int modifiers = 0;

    // OpenGL's state.
    Colour colour{0.1F, 0.2F, 0.3F, 0.4F};
    float line_width = 1.0F;
    bool blending = false;
    bool depth_test = true;
    GLenum matrix_mode = GL_MODELVIEW;
    int projection_depth = 0;
    int modelview_depth = 0;
    bool in_shape = false;  // between glBegin and glEnd

    // What happened.
    int misplaced_calls = 0;  // those OpenGL refuses where they stood
    int off_the_plane = 0;    // vertices and places of texts whose z is not 0
    int redisplays = 0;
    std::vector<std::string> calls;  // names with arguments, as "glScalef 1 -1 1"
    std::vector<Drawn> drawn;
};

// The one state; reset() puts it back to the start.
extern State state;
void reset();

// Width of a stroke Roman glyph as freeglut reports it, 0 for a code without one.
int strokeWidth(int code);

}  // namespace stand_in

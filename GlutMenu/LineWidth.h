// How thick lines are drawn.

#pragma once

#include <GL/glut.h>

namespace GlutMenu {

// Of the strokes of a text, and of the marks that stand beside texts.
constexpr float text_stroke = 2.0F;

// OpenGL's line width for as long as this lives, and after that the one found.
class LineWidth {
  public:
    explicit LineWidth(float pixels) : found(1.0F) {
        glGetFloatv(GL_LINE_WIDTH, &found);
        glLineWidth(pixels);
    }
    ~LineWidth() { glLineWidth(found); }
    LineWidth(const LineWidth&) = delete;
    LineWidth& operator=(const LineWidth&) = delete;

  private:
    float found;
};

}  // namespace GlutMenu

// The drawing helpers: the menu space, the few shapes, and text.

#include <GL/glut.h>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Colour.h"
#include "GlutMenu/LineWidth.h"

namespace GlutMenu {

namespace {

void Corners(GLenum shape, float x0, float y0, float x1, float y1) {
    glBegin(shape);
    glVertex3f(x0, y0, 0.0F);
    glVertex3f(x1, y0, 0.0F);
    glVertex3f(x1, y1, 0.0F);
    glVertex3f(x0, y1, 0.0F);
    glEnd();
}

}  // namespace

void UseColour(const float (&colour)[4]) {
    glColor4f(colour[0], colour[1], colour[2], colour[3]);
}

void CGlutMenu::setOrthographicProjection() {
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0.0, static_cast<double>(screen_width), 0.0, static_cast<double>(screen_height));
    // OpenGL's y grows upwards; menus count from the top edge down.
    glScalef(1.0F, -1.0F, 1.0F);
    glTranslatef(0.0F, -screen_height, 0.0F);
    glMatrixMode(GL_MODELVIEW);
}

void CGlutMenu::restorePersectionProjection() {
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

void CGlutMenu::renderQuad(float x0, float y0, float x1, float y1) {
    Corners(GL_QUADS, x0, y0, x1, y1);
}

void CGlutMenu::renderSquare(float x0, float y0, float x1, float y1) {
    Corners(GL_LINE_LOOP, x0, y0, x1, y1);
}

void CGlutMenu::renderLine(float line_x, float y0, float y1) {
    glBegin(GL_LINES);
    glVertex3f(line_x, y0, 0.0F);
    glVertex3f(line_x, y1, 0.0F);
    glEnd();
}

void CGlutMenu::renderBitmapString(float text_x, float text_y, float text_z, void* /*bitmap_font*/,
                                   std::string text) {
    glPushMatrix();
    const LineWidth stroke(text_stroke);
    glTranslatef(text_x, text_y, text_z);
    // Glyphs are drawn upwards, against the downward y of the menu space.
    glScalef(font_scale_x, -font_scale_y, 1.0F);
    for (const char c : text) {
        glutStrokeCharacter(GLUT_STROKE_ROMAN, static_cast<unsigned char>(c));
    }
    glPopMatrix();
}

}  // namespace GlutMenu

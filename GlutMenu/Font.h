// Widths of single glyphs, scaled to the current screen.

#pragma once

#include <GL/glut.h>

#include "GlutMenu/CGlutMenu.h"

namespace GlutMenu {

// Width in the units of the stroke font. Bytes above 127 have no glyph and are 0 wide.
inline int StrokeUnits(char c) {
    return glutStrokeWidth(stroked_font, static_cast<unsigned char>(c));
}

// Width in pixels.
inline float GlyphWidth(char c) {
    return static_cast<float>(StrokeUnits(c)) * CGlutMenu::font_scale_x;
}

}  // namespace GlutMenu

// Drawing a menu tree. Nothing here changes a menu.

#include <GL/glut.h>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Colour.h"
#include "GlutMenu/Font.h"
#include "GlutMenu/LineWidth.h"
#include "GlutMenu/PlainState.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

// How much of its brightness the text of a disabled item keeps.
constexpr double disabled_brightness = 0.6;

// How far below its baseline and above it a marker reaches, in text lines.
constexpr float marker_below = 0.02F;
constexpr float tick_above = 0.98F;
// The tick keeps this part of a glyph's width free of the menu's edge and starts that far from it.
constexpr float tick_right = 0.05F;
constexpr float tick_left = 0.95F;

// `right` is where the item's slot ends, `by` its baseline. As thick as the text beside it.
void RenderTick(float right, float by, float glyph) {
    const float xa = right - tick_left * glyph;
    const float xb = right - tick_right * glyph;
    const float yt = by + marker_below * char_height;
    const float yb = by - tick_above * char_height;
    const LineWidth stroke(text_stroke);
    glBegin(GL_LINE_STRIP);
    glVertex3f(xa, TruncateToFloat((yt + yb) * 0.5F), 0.0F);
    glVertex3f(TruncateToFloat((xb + xa) * 0.5F), yt, 0.0F);
    glVertex3f(xb, yb, 0.0F);
    glEnd();
}

void RenderArrow(float right, float by, float glyph) {
    const float below = by + marker_below * char_height;
    const float above = by - char_height;
    glBegin(GL_TRIANGLES);
    glVertex3f(right - glyph, below, 0.0F);
    glVertex3f(right - glyph, above, 0.0F);
    glVertex3f(right, (above + below) * 0.5F, 0.0F);
    glEnd();
}

void UseDimmedColour(const float (&colour)[4]) {
    const auto dim = [](float part) {
        return static_cast<float>(static_cast<double>(part) * disabled_brightness);
    };
    glColor4f(dim(colour[0]), dim(colour[1]), dim(colour[2]), colour[3]);
}

}  // namespace

void CGlutMenu::Render() {
    if (parent != nullptr) {
        RenderLevel();
        return;
    }
    const PlainState plain;
    float colour_before[4] = {1.0F, 1.0F, 1.0F, 1.0F};
    glGetFloatv(GL_CURRENT_COLOR, colour_before);
    setOrthographicProjection();
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    RenderLevel();
    UseColour(colour_before);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    restorePersectionProjection();
}

void CGlutMenu::RenderLevel() {
    if (active) RenderTree();
    if (input_field != nullptr) input_field->Render();
}

void CGlutMenu::RenderTree() {
    CGlutMenu* child = submenu_open ? GetSubMenu(selected_item) : nullptr;
    if (child != nullptr) child->Render();
    RenderBackground();
    for (int i = 0; IsIndex(i); ++i) RenderItem(i);
}

void CGlutMenu::RenderBackground() const {
    // A submenu beside its parent reaches over the parent's margin, so that no gap shows.
    const float left = IsInVerticalMenu() ? x - margin_x : x;
    UseColour(background_colour);
    renderQuad(left, y, static_cast<float>(width) + x, static_cast<float>(y_offset + height) + y);
}

void CGlutMenu::RenderItem(int i) const {
    if (i == highlighted_item) RenderHighlight(i);
    if (GetMenuItemState(i)) {
        UseColour(text_colour);
    } else {
        UseDimmedColour(text_colour);
    }
    int bx = 0;
    int by = 0;
    GetBottomLeft(i, bx, by);
    renderBitmapString(static_cast<float>(bx), static_cast<float>(by), 0.0F, font, GetMenuText(i));
    if (!is_menu_bar && check_states.find(i) != check_states.end()) RenderMarker(i, bx, by);
}

void CGlutMenu::RenderHighlight(int i) const {
    Rectangle area = ItemRectangle(i);
    if (!is_menu_bar && IsInVerticalMenu()) {
        area.bx = Truncate(static_cast<float>(area.bx) - margin_x);
    }
    UseColour(border_colour);
    renderQuad(static_cast<float>(area.bx), static_cast<float>(area.by),
               static_cast<float>(area.tx), static_cast<float>(area.ty));
}

// An arrow for an item with a submenu, a tick for a checked one without.
void CGlutMenu::RenderMarker(int i, int bx, int by) const {
    const float glyph = static_cast<float>(glutStrokeWidth(GLUT_STROKE_ROMAN, 'H')) * font_scale_x;
    const auto right = static_cast<float>(bx + width);
    if (HasSubMenu(i)) {
        UseColour(text_colour);
        RenderArrow(right, static_cast<float>(by), glyph);
    } else if (GetCheckState(i)) {
        UseColour(text_colour);
        RenderTick(right, static_cast<float>(by), glyph);
    }
}

}  // namespace GlutMenu

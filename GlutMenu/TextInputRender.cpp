// Drawing a dialog: the box with what it asks or says, the title bar over it, then the buttons.

#include <GL/glut.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Colour.h"
#include "GlutMenu/DialogKind.h"
#include "GlutMenu/FieldView.h"
#include "GlutMenu/Font.h"
#include "GlutMenu/LineWidth.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

// Free pixels between two text lines, and between a label's colon and its field.
constexpr float line_gap = 2.0F;
constexpr float message_line_gap = 4.0F;
constexpr float colon_gap = 2.0F;

// Lines of a box besides its fields or message lines: the title and the buttons.
constexpr std::size_t extra_lines = 3;

// Rows of a form that lie above its first field.
constexpr int rows_above = 2;

// The cursor of a form, and the room it takes between two letters. Strokes reach a pixel beyond
// their glyph, so the letter before the cursor is kept two away.
constexpr float cursor_width = 2.0F;
constexpr float cursor_gap = 2.0F;
constexpr float cursor_room = 6.0F;

// Height of a capital letter in the stroke font's units.
constexpr float capital_height = 100.0F;

void Text(float text_x, float baseline, const std::string& text) {
    CGlutMenu::renderBitmapString(text_x, baseline, 0.0F, font, text);
}

// The outline of the field being edited takes the same share of every screen, but at least that of
// the text's strokes.
float OutlineWidth() {
    return text_stroke * std::max(std::min(CGlutMenu::scale_x, CGlutMenu::scale_y), 1.0F);
}

}  // namespace

void CTextInput::Render() {
    if (previous != nullptr) previous->Render();
    if (!field_labels.empty()) {
        RenderForm();
    } else if (!message_lines.empty()) {
        RenderMessage();
    } else {
        RenderSingleField();
    }
    RenderTitleBar();
    RenderButtons();
}

void CTextInput::RenderBox() const {
    UseColour(background_colour);
    CGlutMenu::renderQuad(x, static_cast<float>(bottom), width + x, y);
    UseColour(text_colour);
}

void CTextInput::RenderLabel(const std::string& text, float baseline) const {
    Text(x, baseline, text);
    Text(x + label_width - GlyphWidth(':') - colon_gap, baseline, ":");
}

std::string CTextInput::TextBeforeCursor() const {
    return edit_text.substr(0, static_cast<std::size_t>(std::max(cursor_pos, 0)));
}

// A dialog beneath another takes no keys.
bool CTextInput::ShowsCursor() const {
    return cursor_visible && (input_field == this || !IsOpen());
}

void CTextInput::RenderCursor(float top) const {
    if (!ShowsCursor()) return;
    const float at = x + label_width + CGlutMenu::GetStringLength(TextBeforeCursor());
    UseColour(text_colour);
    CGlutMenu::renderLine(at, top, top + char_height);
}

void CTextInput::RenderSingleField() {
    bottom = Truncate(2.0F * margin_y + 5.0F * char_height + y);
    RenderBox();
    const float baseline = margin_y + y + 2.0F * char_height;
    const float field_x = x + label_width;
    const float field_y = y + char_height + margin_y;
    RenderLabel(label, baseline);
    CGlutMenu::renderSquare(field_x, field_y, field_x + field_width,
                            2.0F * margin_y + 2.0F * char_height + y);
    Text(field_x, baseline, edit_text);
    RenderCursor(field_y);
}

void CTextInput::RenderForm() {
    const auto rows = static_cast<float>(field_labels.size() + extra_lines);
    bottom = Truncate((char_height + line_gap) * rows + y + margin_y);
    RenderBox();
    for (int field = 0; static_cast<std::size_t>(field) < field_labels.size(); ++field) {
        RenderFormField(field);
    }
}

void CTextInput::RenderFormField(int field) const {
    const bool is_current = field == current_field;
    const auto row = static_cast<float>(field + rows_above);
    const float baseline = (char_height + line_gap) * row + y;
    RenderLabel(field_labels[static_cast<std::size_t>(field)], baseline);
    if (is_current) RenderFieldFrame(row);
    if (!IsField(field)) return;
    const std::string& value =
        is_current ? edit_text : field_values[static_cast<std::size_t>(field)];
    if (ValueList(field) != nullptr) {
        RenderChoice(value, baseline);
    } else if (is_current) {
        RenderEditedText(row, baseline);
    } else {
        Text(x + label_width, baseline, Beginning(value, field_width));
    }
}

// Top edge of the field in a row of the form.
float CTextInput::FieldTop(float row) const {
    return TruncateToFloat((char_height + line_gap) * (row - 1.0F) + y + line_gap);
}

// Marks the field being edited.
void CTextInput::RenderFieldFrame(float row) const {
    const float left = TruncateToFloat(x + label_width);
    const float top = FieldTop(row);
    const LineWidth outline(OutlineWidth());
    UseColour(highlight_colour);
    CGlutMenu::renderSquare(left, top, left + field_width, top + char_height + line_gap);
    UseColour(text_colour);
    std::cout << "x_offset " << CGlutMenu::GetStringLength(TextBeforeCursor()) << ", index "
              << cursor_pos << std::endl;
}

// The brackets stay, whatever of the value has to go.
void CTextInput::RenderChoice(const std::string& value, float baseline) const {
    std::string shown = Beginning(value, field_width - CGlutMenu::GetStringLength("<>"));
    shown.insert(shown.begin(), '<');
    shown.push_back('>');
    Text(x + label_width, baseline, Beginning(shown, field_width));
}

// The text makes room for the cursor, whether that is lit or not: nothing moves when it blinks.
void CTextInput::RenderEditedText(float row, float baseline) const {
    const std::size_t cursor = TextBeforeCursor().size();
    const Part shown = PartInSight(edit_text, cursor, field_width - cursor_room);
    const std::size_t end = shown.first + shown.length;
    const std::string before = edit_text.substr(shown.first, cursor - shown.first);
    const float left = x + label_width;
    const float at = left + CGlutMenu::GetStringLength(before);
    Text(left, baseline, before);
    Text(at + cursor_room, baseline, edit_text.substr(cursor, end - cursor));
    if (ShowsCursor()) RenderFormCursor(std::ceil(at) + cursor_gap, FieldTop(row));
}

// From whole pixel to whole pixel, between the lines of the field's frame.
void CTextInput::RenderFormCursor(float left, float top) const {
    const float inset = OutlineWidth();
    UseColour(highlight_colour);
    CGlutMenu::renderQuad(left, top + inset, left + cursor_width,
                          top + char_height + line_gap - inset);
    UseColour(text_colour);
}

void CTextInput::RenderMessage() {
    const auto rows = static_cast<float>(message_lines.size() + extra_lines);
    bottom = Truncate((char_height + message_line_gap) * rows + y);
    RenderBox();
    float row = 2.0F;
    for (const std::string& line : message_lines) {
        Text(x, (char_height + line_gap) * row + y, line);
        row += 1.0F;
    }
}

void CTextInput::RenderTitleBar() const {
    const float left = TruncateToFloat(x);
    const float top = TruncateToFloat(y);
    glColor4f(text_colour[0], text_colour[1], text_colour[2], 1.0F);
    CGlutMenu::renderQuad(left, top, TruncateToFloat(width + left),
                          TruncateToFloat(char_height + top + line_gap));
    UseColour(background_colour);
    Text(x, y + char_height, title);
}

void CTextInput::RenderButtons() {
    const int count = static_cast<int>(buttons.size());
    for (int i = 0; i < count; ++i) {
        int left = 0;
        int top = 0;
        int right = 0;
        int lower = 0;
        GetButtonDimension(i, left, top, right, lower);
        renderButton(left, top, right, buttons[static_cast<std::size_t>(i)]);
    }
}

// A frame in the colour that menus highlight with, and the label in its middle.
void CTextInput::renderButton(int left, int top, int right, std::string text) {
    const auto x0 = static_cast<float>(left);
    const auto y0 = static_cast<float>(top);
    const auto x1 = static_cast<float>(right);
    const auto y1 = static_cast<float>(ButtonBottom(top));
    UseColour(border_colour);
    CGlutMenu::renderQuad(x0, y0, x1, y1);
    UseColour(text_colour);
    CGlutMenu::renderSquare(x0, y0, x1, y1);
    const float capitals = capital_height * CGlutMenu::font_scale_y;
    Text((x0 + x1 - CGlutMenu::GetStringLength(text)) / 2.0F, (y0 + y1 + capitals) / 2.0F, text);
}

}  // namespace GlutMenu

// How big a dialog and its buttons are, and where they lie.

#include <GL/glut.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <utility>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/DialogKind.h"
#include "GlutMenu/Font.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

// Buttons stand this many button widths apart.
constexpr float button_pitch = 1.2F;

// The lines of a message reach almost from edge to edge.
constexpr float message_padding = 4.0F;

float LongestText(const std::vector<std::string>& texts) {
    int longest = 0;
    for (const std::string& text : texts) {
        longest = std::max(longest, Truncate(CGlutMenu::GetStringLength(text)));
    }
    return static_cast<float>(longest);
}

}  // namespace

void CTextInput::DefineButtons(std::vector<std::string> labels) {
    buttons = std::move(labels);
    SizeButtons();
    const float row = static_cast<float>(buttons.size()) * button_width * button_pitch;
    width = static_cast<float>(std::max(Truncate(width), Truncate(row)));
}

void CTextInput::SizeButtons() {
    button_width = LongestText(buttons) + 2.0F * GlyphWidth('I');
    const double row =
        static_cast<double>(button_width) * static_cast<double>(buttons.size()) * 1.2;
    width = static_cast<float>(std::max(Truncate(width), Truncate(row)));
}

void CTextInput::WorkOutSize() {
    label_width = field_width = 0.0F;
    switch (kind) {
        case form:
            label_width = LongestText(field_labels) + GlyphWidth(':');
            field_width = FieldWidth();
            width = label_width + field_width;
            break;
        case message:
            label_width = LongestText(message_lines);
            width = label_width + message_padding;
            break;
        default:
            label_width = CGlutMenu::GetStringLength(label + ":");
            field_width = FieldWidth();
            width = label_width + field_width;
            break;
    }
    if (centred != 0.0F) Center();
}

// Wide enough for max_length glyphs of an 'H'.
float CTextInput::FieldWidth() const {
    return static_cast<float>(max_length) * static_cast<float>(StrokeUnits('H')) *
           CGlutMenu::font_scale_x;
}

void CTextInput::Center() {
    centred = 1.0F;
    float lines = 2.0F;
    if (kind != single_field) {
        const std::size_t n = kind == message ? message_lines.size() : field_values.size();
        lines = static_cast<float>(n + 1);
    }
    const float h = TruncateToFloat(char_height * lines) / CGlutMenu::scale_y;
    const float w = field_width + label_width;
    // Halves of whole pixels, each cut off by itself.
    const int left = glutGet(GLUT_WINDOW_WIDTH) / 2 - Truncate(w) / 2;
    const int top = glutGet(GLUT_WINDOW_HEIGHT) / 2 - Truncate(h) / 2;
    x = static_cast<float>(left);
    y = static_cast<float>(top);
}

void CTextInput::Reinitialise() {
    if (kind == message) {
        label.clear();
        result.clear();
        cursor_pos = max_length = text_length = 0;
    }
    WorkOutSize();
    if (kind == single_field) text_length = static_cast<int32_t>(result.size());
    cursor_visible = true;
}

void CTextInput::GetButtonDimension(int i, int& left, int& top, int& right, int& lower) {
    const auto from_right = static_cast<float>(static_cast<int>(buttons.size()) - i);
    left = Truncate(x + width - from_right * button_width * button_pitch);
    right = Truncate(static_cast<float>(left) + button_width);
    top = Truncate(static_cast<float>(bottom) - 2.0F * char_height);
    lower = ButtonBottom(top);
    if (left > right) std::swap(left, right);
    if (top > lower) std::swap(top, lower);
}

int CTextInput::ButtonBottom(int top) {
    return Truncate(char_height + 3.0F + static_cast<float>(top));
}

void CTextInput::ReshapeCallback(float new_scale_x, float new_scale_y, float fx, float fy) {
    if (previous != nullptr) previous->ReshapeCallback(new_scale_x, new_scale_y, fx, fy);
    std::cout << "CTextInput::ReshapeCallback" << std::endl;
    std::cout << "CTextInput::(x,y) " << x << ", " << y << std::endl;
    x *= fx;
    y *= fy;
    width *= fx;
    bottom = Truncate(static_cast<float>(bottom) * fy);
    button_width *= fx;
    std::cout << "New CTextInput::(x,y) " << x << ", " << y << std::endl;
    Reinitialise();
}

}  // namespace GlutMenu

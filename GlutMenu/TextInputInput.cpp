// Keys and clicks of the open dialog. After an answer was delivered the dialog may be gone, so
// every path that delivers one touches nothing afterwards that it has not checked.

#include <GL/glut.h>

#include <algorithm>
#include <cstddef>
#include <iostream>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/DialogKind.h"
#include "GlutMenu/Keys.h"
#include "GlutMenu/Truncate.h"
#include "GlutMenu/Utf8.h"

namespace GlutMenu {

namespace {

bool IsPrintable(int key) {
    return key >= first_printable && key <= last_printable;
}

// A window coordinate in the drawing space.
int ToDrawingSpace(int position, GLenum window_size, float screen_size) {
    return Truncate(static_cast<float>(position) / static_cast<float>(glutGet(window_size)) *
                    screen_size);
}

// Where the left arrow takes the cursor: off the text only by one. As a size, what lies before the
// start is beyond the end as well.
int32_t PlaceBefore(const std::string& text, int32_t cursor) {
    const std::size_t before = static_cast<std::size_t>(cursor) - 1;
    if (before >= text.size()) return cursor - 1;
    return static_cast<int32_t>(CharacterStart(text, before));
}

// Where the right arrow takes a cursor that is not yet at the end.
int32_t PlaceAfter(const std::string& text, int32_t cursor) {
    if (cursor < 0) return cursor + 1;
    return static_cast<int32_t>(CharacterEnd(text, static_cast<std::size_t>(cursor)));
}

}  // namespace

void CTextInput::KeyboardHandler(int key, std::string button) {
    if (input_field == nullptr) return;
    const int shift = glutGetModifiers() & GLUT_ACTIVE_SHIFT;
    std::cout << "Key code is " << key << " and shift state is " << shift << std::endl;
    switch (key) {
        case key_escape:
            Close();
            break;
        case key_return:
            Confirm(button);
            break;
        case key_tab:
            shift != 0 ? PreviousField() : NextField();
            break;
        case key_back_tab:
            if (shift != 0) PreviousField();
            break;
        default:
            Edit(key);
            break;
    }
}

void CTextInput::Confirm(const std::string& button) {
    message_lines.clear();
    if (kind == form && IsField(current_field)) {
        field_values[static_cast<std::size_t>(current_field)] = edit_text;
    } else if (kind == single_field && field_values.empty()) {
        result = edit_text;
    }
    const std::weak_ptr<const bool> self = alive;
    const int32_t showing = showings;
    const bool accepted = Accepts(button);
    if (self.expired() || !accepted) return;
    // A callback that showed this dialog anew wants its next answer, too.
    if (showings == showing) Close();
}

bool CTextInput::Accepts(const std::string& button) const {
    if (kind == single_field && callback != nullptr) return callback(button, result, user_data);
    if (kind == form && form_callback != nullptr) {
        return form_callback(button, field_labels, field_values, user_data);
    }
    return true;
}

// A negative number is beyond every list as an index.
bool CTextInput::IsField(int i) const {
    return static_cast<std::size_t>(i) < field_values.size();
}

bool CTextInput::HasText() const {
    return kind == single_field || kind == form;
}

const std::vector<std::string>* CTextInput::ValueList(int field) const {
    const auto found = value_lists.find(field);
    return found == value_lists.end() || found->second.empty() ? nullptr : &found->second;
}

void CTextInput::SetText(int new_field, int old_field) {
    if (kind != form) return;
    if (IsField(old_field)) field_values[static_cast<std::size_t>(old_field)] = edit_text;
    edit_text.clear();
    if (!IsField(new_field)) return;
    edit_text = field_values[static_cast<std::size_t>(new_field)];
    text_length = cursor_pos = static_cast<int32_t>(edit_text.size());
}

std::string CTextInput::GetText(int i) const {
    return IsField(i) ? edit_text : std::string();
}

void CTextInput::MoveToField(int field) {
    const int32_t old_field = current_field;
    current_field = field;
    SetText(field, old_field);
    glutPostRedisplay();
}

void CTextInput::PreviousField() {
    if (kind != form || field_values.empty()) return;
    const auto last = static_cast<int32_t>(field_values.size()) - 1;
    MoveToField(IsField(current_field - 1) ? current_field - 1 : last);
}

void CTextInput::NextField() {
    if (kind != form) return;
    MoveToField(IsField(current_field + 1) ? current_field + 1 : 0);
}

// Backspace and Delete both delete backwards.
void CTextInput::Edit(int key) {
    const bool deletes = key == key_backspace || key == key_delete;
    if (!deletes && !IsPrintable(key)) return;
    if (!HasText() || ValueList(current_field) != nullptr) return;
    if (deletes) {
        DeleteBackwards();
    } else if (text_length < max_length) {
        InsertCharacter(static_cast<char>(key));
    } else {
        std::cout << '\a' << std::flush;
    }
    text_length = static_cast<int32_t>(edit_text.size());
    glutPostRedisplay();
}

// Before the start, where the left arrow can leave the cursor, counts as the end here: as a size it
// is beyond it.
void CTextInput::InsertCharacter(char c) {
    const auto at = static_cast<std::size_t>(cursor_pos);
    if (at >= edit_text.size()) {
        edit_text.push_back(c);
        ++cursor_pos;
    } else {
        const std::size_t boundary = CharacterBoundary(edit_text, at);
        edit_text.insert(boundary, 1, c);
        cursor_pos = static_cast<int32_t>(boundary) + 1;
    }
}

// Bytes that were no character may become one when what parted them goes; the cursor then stands
// behind it.
void CTextInput::DeleteBackwards() {
    if (cursor_pos <= 0) return;
    const auto at = static_cast<std::size_t>(cursor_pos);
    if (at > edit_text.size()) {
        --cursor_pos;
        return;
    }
    const std::size_t start = CharacterStart(edit_text, at - 1);
    edit_text.erase(start, CharacterEnd(edit_text, start) - start);
    cursor_pos = static_cast<int32_t>(CharacterBoundary(edit_text, start));
}

void CTextInput::SpecialKeyHandler(int key) {
    switch (key) {
        case GLUT_KEY_LEFT:
            if (HasText()) MoveLeft();
            break;
        case GLUT_KEY_UP:
            PreviousField();
            break;
        case GLUT_KEY_RIGHT:
            if (HasText()) MoveRight();
            break;
        case GLUT_KEY_DOWN:
            NextField();
            break;
        case GLUT_KEY_HOME:
            if (HasText()) MoveCursor(0);
            break;
        case GLUT_KEY_END:
            if (HasText()) MoveCursor(static_cast<int32_t>(edit_text.size()));
            break;
        default:
            break;
    }
}

void CTextInput::MoveCursor(int32_t position) {
    cursor_pos = position;
    glutPostRedisplay();
}

// The cursor may step once past the start; what is typed there lands at the end of the text.
void CTextInput::MoveLeft() {
    if (const auto* values = ValueList(current_field)) {
        const int last = static_cast<int>(values->size()) - 1;
        const int index = value_index[current_field];
        ChooseValue(*values, index <= 0 || index > last ? last : index - 1);
    } else if (cursor_pos >= 0) {
        MoveCursor(PlaceBefore(edit_text, cursor_pos));
    }
}

void CTextInput::MoveRight() {
    if (const auto* values = ValueList(current_field)) {
        const int last = static_cast<int>(values->size()) - 1;
        const int index = value_index[current_field];
        ChooseValue(*values, index < 0 || index >= last ? 0 : index + 1);
    } else {
        const auto end = static_cast<int32_t>(edit_text.size());
        MoveCursor(cursor_pos < end ? PlaceAfter(edit_text, cursor_pos) : 0);
    }
}

void CTextInput::ChooseValue(const std::vector<std::string>& values, int index) {
    value_index[current_field] = index;
    edit_text = values[static_cast<std::size_t>(index)];
    text_length = static_cast<int32_t>(edit_text.size());
    glutPostRedisplay();
}

bool CTextInput::MouseHandler(int button, int state, int mouse_x, int mouse_y) {
    if (num_dialogs_active == 0 || input_field == nullptr) return false;
    if (button != left_button || state != pressed) return false;
    const int px = ToDrawingSpace(mouse_x, GLUT_WINDOW_WIDTH, CGlutMenu::screen_width);
    const int py = ToDrawingSpace(mouse_y, GLUT_WINDOW_HEIGHT, CGlutMenu::screen_height);
    const int hit = ButtonAt(px, py);
    if (hit >= 0) KeyboardHandler(key_return, buttons[static_cast<std::size_t>(hit)]);
    return true;
}

int CTextInput::ButtonAt(int px, int py) {
    const int count = static_cast<int>(buttons.size());
    for (int i = 0; i < count; ++i) {
        int left = 0;
        int top = 0;
        int right = 0;
        int lower = 0;
        GetButtonDimension(i, left, top, right, lower);
        if (left <= px && px <= right && top <= py && py <= lower) return i;
    }
    return -1;
}

}  // namespace GlutMenu

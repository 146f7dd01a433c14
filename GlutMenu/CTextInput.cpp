// The dialog's life: what it is initialised with and its place among the open dialogs.

#include <GL/glut.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Colour.h"
#include "GlutMenu/DialogKind.h"

namespace GlutMenu {

namespace {

int32_t Length(const std::string& text) {
    return static_cast<int32_t>(text.size());
}

}  // namespace

bool CTextInput::cursor_visible = true;

CTextInput::CTextInput()
    : cursor_pos(0),
      x(0.0F),
      y(0.0F),
      max_length(0),
      text_length(0),
      current_field(0),
      label_width(0.0F),
      field_width(0.0F),
      previous(nullptr),
      callback(nullptr),
      form_callback(nullptr),
      user_data(nullptr),
      text_colour{1.0F, 1.0F, 1.0F, 1.0F},
      background_colour{0.0F, 0.0F, 1.0F, 0.7F},
      border_colour{0.8F, 0.8F, 0.0F, 0.7F},
      highlight_colour{0.0F, 1.0F, 0.0F, 0.7F},
      width(25.0F),
      kind(single_field),
      margin_x(5.0F),
      margin_y(5.0F),
      button_width(100.0F),
      centred(0.0F),
      bottom(0),
      showings(0),
      alive(std::make_shared<const bool>()) {}

CTextInput::~CTextInput() {
    Unlink();
    if (text_input == this) text_input = nullptr;
}

// What every Initialise starts from. Callbacks and buttons of an earlier use are dropped, so that a
// dialog that could not be initialised answers nobody.
void CTextInput::Reset(int32_t new_kind, std::string new_title, int left, int top, int max_chars) {
    kind = new_kind;
    centred = 0.0F;
    title = std::move(new_title);
    message_lines.clear();
    field_labels.clear();
    field_values.clear();
    value_lists.clear();
    value_index.clear();
    label.clear();
    result.clear();
    edit_text.clear();
    buttons.clear();
    x = static_cast<float>(left);
    y = static_cast<float>(top);
    max_length = max_chars;
    cursor_pos = text_length = current_field = 0;
    callback = nullptr;
    form_callback = nullptr;
}

bool CTextInput::Initialise(std::string new_title, std::string new_label, std::string text,
                            int left, int top, int max_chars, TextCallback new_callback,
                            void* new_user_data) {
    Reset(single_field, std::move(new_title), left, top, max_chars);
    label = std::move(new_label);
    result = text.substr(0, static_cast<std::size_t>(std::max(max_chars, 0)));
    edit_text = result;
    cursor_pos = Length(result);
    WorkOutSize();
    text_length = Length(result);
    if (new_callback == nullptr) return false;
    callback = new_callback;
    user_data = new_user_data;
    cursor_visible = true;
    DefineDefaultButtons();
    return true;
}

bool CTextInput::Initialise(std::string new_title, std::vector<std::string>& lines, int left,
                            int top, TextCallback new_callback, void* new_user_data) {
    // The lines may be this dialog's own, which Reset empties.
    std::vector<std::string> shown = lines;
    shown.insert(shown.end(), {"", "Press [RETURN]/[ENTER] to continue"});
    Reset(message, std::move(new_title), left, top, 0);
    message_lines = std::move(shown);
    WorkOutSize();
    callback = new_callback;
    user_data = new_user_data;
    cursor_visible = true;
    DefineDefaultButtons();
    return true;
}

bool CTextInput::Initialise(std::string new_title, std::vector<std::string>& labels,
                            std::vector<std::string>& values, int left, int top, int max_chars,
                            FormCallback new_callback, void* new_user_data) {
    std::vector<std::string> new_labels = labels;
    std::vector<std::string> new_values = values;
    Reset(form, std::move(new_title), left, top, max_chars);
    field_labels = std::move(new_labels);
    field_values = std::move(new_values);
    // There is no old field to store into: the first one is only loaded.
    SetText(0, -1);
    WorkOutSize();
    form_callback = new_callback;
    user_data = new_user_data;
    cursor_visible = true;
    DefineDefaultButtons();
    return true;
}

void CTextInput::DefineDefaultButtons() {
    buttons = {"OK", "Cancel"};
    SizeButtons();
}

void CTextInput::DefineFieldValues(int field, std::vector<std::string> values, int index) {
    value_lists[field] = std::move(values);
    value_index[field] = index;
}

bool CTextInput::IsOpen() const {
    const CTextInput* dialog = input_field;
    while (dialog != nullptr && dialog != this) dialog = dialog->previous;
    return dialog == this;
}

// Takes the dialog out of the open ones, wherever it stands among them: its callback may have
// opened another on top of it.
void CTextInput::Unlink() {
    if (!IsOpen()) return;
    CTextInput** link = &input_field;
    while (*link != this) link = &(*link)->previous;
    *link = previous;
    previous = nullptr;
    --num_dialogs_active;
}

bool CTextInput::Display() {
    Unlink();
    ++num_dialogs_active;
    previous = input_field;
    input_field = this;
    ++showings;
    glutPostRedisplay();
    return true;
}

void CTextInput::Close() {
    Unlink();
    glutPostRedisplay();
}

void CTextInput::SetTextColour(float r, float g, float b, float a) {
    SetColour(text_colour, r, g, b, a);
}

void CTextInput::SetBackgroundColour(float r, float g, float b, float a) {
    SetColour(background_colour, r, g, b, a);
}

void CTextInput::SetBorderColour(float r, float g, float b, float a) {
    SetColour(border_colour, r, g, b, a);
}

void CTextInput::SetHighlightColour(float r, float g, float b, float a) {
    SetColour(highlight_colour, r, g, b, a);
}

}  // namespace GlutMenu

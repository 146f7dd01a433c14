// A dialog at (50, 60) on the reference screen, and callbacks that note its answers.
#pragma once

#include <initializer_list>

#include "tests/glutmenu/toolkit_test.h"

// Answers as "[button] text" and "[button] label=value ...".
struct Answers {
    Strings given;
    bool accept = true;
};

// Completion callbacks whose user data is an Answers.
bool answerText(std::string button, std::string text, void* user_data);
bool answerForm(std::string button, Strings labels, Strings values, void* user_data);

class DialogTest : public ToolkitTest {
  protected:
    bool openSingleField(const std::string& text, int max_length);
    bool openMessage(Strings lines);
    bool openForm(Strings labels, Strings values, int max_length);

    // Plays keyboard keys, or special keys for the codes 100 to 107, on the dialog.
    void press(std::initializer_list<int> keys);
    void type(const std::string& text);
    static bool isOpen(const GlutMenu::CTextInput& one) { return GlutMenu::input_field == &one; }

    Answers answers;
    GlutMenu::CTextInput dialog;
};

// Height of a text line on the reference screen.
constexpr float line = 33.33F;

// Draws the dialogs alone and returns what was drawn.
std::vector<stand_in::Drawn> render(GlutMenu::CTextInput& dialog);

void expectBox(const stand_in::Drawn& shape, float x0, float y0, float x1, float y1);
void expectAt(const stand_in::Drawn& text, float x, float y);

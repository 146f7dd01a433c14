#include "tests/glutmenu/dialog_fixture.h"

#include <cstddef>

using GlutMenu::CTextInput;
using stand_in::Drawn;

bool answerText(std::string button, std::string text, void* user_data) {
    auto& answers = *static_cast<Answers*>(user_data);
    answers.given.push_back("[" + button + "] " + text);
    return answers.accept;
}

bool answerForm(std::string button, Strings labels, Strings values, void* user_data) {
    auto& answers = *static_cast<Answers*>(user_data);
    std::string answer = "[" + button + "]";
    for (std::size_t i = 0; i < labels.size(); ++i) answer += " " + labels[i] + "=" + values[i];
    answers.given.push_back(answer);
    return answers.accept;
}

bool DialogTest::openSingleField(const std::string& text, int max_length) {
    dialog.Initialise("Title", "Name", text, 50, 60, max_length, answerText, &answers);
    return dialog.Display();
}

bool DialogTest::openMessage(Strings lines) {
    dialog.Initialise("Title", lines, 50, 60, nullptr, nullptr);
    return dialog.Display();
}

bool DialogTest::openForm(Strings labels, Strings values, int max_length) {
    dialog.Initialise("Title", labels, values, 50, 60, max_length, answerForm, &answers);
    return dialog.Display();
}

void DialogTest::press(std::initializer_list<int> keys) {
    for (const int key : keys) {
        if (key >= 100 && key <= 107) {
            dialog.SpecialKeyHandler(key);
        } else {
            dialog.KeyboardHandler(key, "");
        }
    }
}

void DialogTest::type(const std::string& text) {
    for (const char c : text) dialog.KeyboardHandler(c, "");
}

std::vector<Drawn> render(CTextInput& dialog) {
    stand_in::state.drawn.clear();
    dialog.Render();
    return stand_in::state.drawn;
}

void expectBox(const Drawn& shape, float x0, float y0, float x1, float y1) {
    ASSERT_EQ(shape.points.size(), 4U);
    EXPECT_FLOAT_EQ(shape.points[0][0], x0);
    EXPECT_FLOAT_EQ(shape.points[0][1], y0);
    EXPECT_FLOAT_EQ(shape.points[2][0], x1);
    EXPECT_FLOAT_EQ(shape.points[2][1], y1);
}

void expectAt(const Drawn& text, float x, float y) {
    EXPECT_FLOAT_EQ(text.points[0][0], x);
    EXPECT_FLOAT_EQ(text.points[0][1], y);
}

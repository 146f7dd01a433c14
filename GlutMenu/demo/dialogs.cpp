#include "GlutMenu/demo/dialogs.h"

#include <cstddef>
#include <iostream>

#include "GlutMenu/CGlutMenu.h"

using GlutMenu::CTextInput;

namespace {

// The dialog that asks, and the one that tells, which may lie on top of it.
CTextInput question;
CTextInput notice;

bool OnName(std::string button, std::string text, void* /*user_data*/) {
    std::cout << "Name [" << button << "] " << text << std::endl;
    if (button == "Cancel") return true;
    if (text.empty()) return false;
    ShowMessage("Hello", {text});
    return true;
}

bool OnForm(std::string button, std::vector<std::string> labels, std::vector<std::string> values,
            void* /*user_data*/) {
    std::cout << "Form [" << button << "]";
    for (std::size_t i = 0; i < labels.size(); ++i) {
        std::cout << " " << labels[i] << "=" << values[i];
    }
    std::cout << std::endl;
    return true;
}

}  // namespace

void ShowSingleField() {
    question.Initialise("Who is there?", "Name", "Ada", 40, 120, 12, OnName, nullptr);
    question.Center();
    question.Display();
}

void ShowMessage(const std::string& title, std::vector<std::string> lines) {
    notice.Initialise(title, lines, 60, 80, nullptr, nullptr);
    notice.Display();
}

void ShowForm() {
    std::vector<std::string> labels = {"Title", "Count", "Shape"};
    std::vector<std::string> values = {"Tiles", "12", "Square"};
    question.Initialise("Pattern", labels, values, 40, 100, 10, OnForm, nullptr);
    question.DefineFieldValues(2, {"Round", "Square", "Star"}, 1);
    question.Display();
}

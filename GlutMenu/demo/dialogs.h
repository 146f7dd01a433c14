// The demo's three dialogs. Answers are written to standard output.

#pragma once

#include <string>
#include <vector>

// Asks for a name and refuses an empty one; shows the name in a message on top of the question.
void ShowSingleField();
void ShowMessage(const std::string& title, std::vector<std::string> lines);
// A form of two text fields and one that takes only listed values.
void ShowForm();

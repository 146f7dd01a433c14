// The dialog that shows and edits the current entry. All functions: GLUT thread.
#pragma once

#include <string>
#include <vector>

#include "GlutMenu/CGlutMenu.h"

// The application's one dialog. Initialised and shown by the menu handlers, driven by the toolkit;
// GLUT thread only.
extern GlutMenu::CTextInput input;

// The field labels, by which an edited value finds its member. Constant after static
// initialisation; any thread.
extern const std::string frac_name;
extern const std::string frac_maxIters;
extern const std::string frac_maxSize;
extern const std::string frac_xMin;
extern const std::string frac_yMin;
extern const std::string frac_xMax;
extern const std::string frac_yMax;

// Appends a label and its text, which ends at its first NUL, to two parallel lists.
void Append(std::string label, std::string value, std::vector<std::string>& labels,
            std::vector<std::string>& values);

// Appends a label and its number in fixed notation with six decimals and a decimal point whatever
// the locale.
void Append(std::string label, double value, std::vector<std::string>& labels,
            std::vector<std::string>& values);

// Shows the stored values of the current entry for editing; does nothing when there is no entry.
void showParameterDialog();

// Completion callback of that dialog: unless another button than "OK" was pressed, stores the
// values whose labels it knows in the current entry, makes it current again and owes one render. A
// text that is still what Append makes of the entry's value leaves that value as it is, to the last
// digit.
// Numbers are taken as atof takes them in the C locale, whatever the locale in force: text that is
// none gives 0; iterations are truncated toward zero and saturate. Always true.
bool param_change(std::string button, std::vector<std::string> labels,
                  std::vector<std::string> values, void* user);

#include "commands/parameter_dialog.h"

#include <locale.h>
#include <stdlib.h>

#include <array>
#include <charconv>
#include <iostream>

#include "backends/view_state.h"
#include "compute/saturate.h"
#include "explorer/navigation.h"

GlutMenu::CTextInput input;

const std::string frac_name = "Name";
const std::string frac_maxIters = "Maximum iterations";
const std::string frac_maxSize = "Maximum size squared";
const std::string frac_xMin = "Minimum X";
const std::string frac_yMin = "Minimum Y";
const std::string frac_xMax = "Maximum X";
const std::string frac_yMax = "Maximum Y";

namespace {

// The current entry, null where there is none: a file without records leaves the catalogue empty.
fractal* currentEntry() {
    if (currentFractal < 0 || currentFractal >= static_cast<int>(fractals.size())) return nullptr;
    return &fractals[static_cast<std::size_t>(currentFractal)];
}

// atof with a decimal point even where the locale in force writes a comma.
double readNumber(const std::string& text) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text.c_str(), nullptr, plain);
}

void storeValue(fractal& entry, const std::string& label, const std::string& value) {
    if (label == frac_name) {
        entry.name = value;
    } else if (label == frac_maxIters) {
        entry.maxIters = truncateToInt(readNumber(value));
    } else if (label == frac_maxSize) {
        entry.maxSize = readNumber(value);
    } else if (label == frac_xMin) {
        entry.xMin = readNumber(value);
    } else if (label == frac_yMin) {
        entry.yMin = readNumber(value);
    } else if (label == frac_xMax) {
        entry.xMax = readNumber(value);
    } else if (label == frac_yMax) {
        entry.yMax = readNumber(value);
    }
}

}  // namespace

void Append(std::string label, std::string value, std::vector<std::string>& labels,
            std::vector<std::string>& values) {
    labels.push_back(label);
    values.emplace_back(value.c_str());
}

void Append(std::string label, double value, std::vector<std::string>& labels,
            std::vector<std::string>& values) {
    std::array<char, 400> text;  // the longest double has 309 digits before the point
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6)
            .ptr;
    labels.push_back(label);
    values.emplace_back(text.data(), static_cast<std::size_t>(end - text.data()));
}

void showParameterDialog() {
    const fractal* entry = currentEntry();
    if (entry == nullptr) return;
    std::vector<std::string> labels, values;
    Append(frac_name, entry->name, labels, values);
    Append(frac_maxIters, entry->maxIters, labels, values);
    Append(frac_maxSize, entry->maxSize, labels, values);
    Append(frac_xMin, entry->xMin, labels, values);
    Append(frac_xMax, entry->xMax, labels, values);
    Append(frac_yMin, entry->yMin, labels, values);
    Append(frac_yMax, entry->yMax, labels, values);
    input.Initialise("Fractal information", labels, values, 100, 100, 40, param_change, nullptr);
    input.Center();
    input.Display();
}

bool param_change(std::string button, std::vector<std::string> labels,
                  std::vector<std::string> values, void*) {
    if (!button.empty() && button != "OK") return true;
    if (values.size() != labels.size()) return true;
    if (fractal* entry = currentEntry()) {
        for (std::size_t i = 0; i < labels.size(); ++i) storeValue(*entry, labels[i], values[i]);
    }
    std::cout << "Fractal parameters changed" << std::endl;
    advanceCursor(0, true);
    addUpdate();
    return true;
}

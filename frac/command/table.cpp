#include "frac/command/table.h"

#include <algorithm>
#include <array>

#include "frac/command/output.h"
#include "frac/formula_names.h"
#include "frac/number_text.h"

namespace {

// All columns but the last, the name, hold ASCII.
constexpr std::size_t COLUMNS = 10;
using Row = std::array<std::string, COLUMNS>;

Row headings() {
    return {"No", "Formula", "Limit", "Size limit", "Palette",
            "X",  "Y",       "Width", "Identity",   "Name"};
}

std::string nameOrNumber(std::span<const std::string_view> names, std::int32_t number) {
    const auto name = nameOf(names, number);
    return name ? std::string(*name) : std::to_string(number);
}

std::string middleText(double low, double high) {
    return numberText(low / 2 + high / 2);
}

Row rowOf(const fractal& entry, std::size_t number) {
    return {std::to_string(number),
            nameOrNumber(formulaNames(), entry.fractalType),
            std::to_string(entry.maxIters),
            numberText(entry.maxSize),
            nameOrNumber(paletteNames(), entry.paletteType),
            middleText(entry.xMin, entry.xMax),
            middleText(entry.yMin, entry.yMax),
            numberText(entry.xMax - entry.xMin),
            std::to_string(entry.fractalID),
            printable(entry.name)};
}

std::array<std::size_t, COLUMNS> widthsOf(const std::vector<Row>& rows) {
    std::array<std::size_t, COLUMNS> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < COLUMNS; ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    return widths;
}

}  // namespace

std::string tableOf(const std::vector<fractal>& entries) {
    std::vector<Row> rows = {headings()};
    for (const fractal& entry : entries) rows.push_back(rowOf(entry, rows.size()));
    const auto widths = widthsOf(rows);
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < COLUMNS; ++i) {
            text += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        }
        text += row.back() + '\n';
    }
    return text;
}

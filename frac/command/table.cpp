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

// A decimal, cut where it is long; its exponent is kept.
std::string shortDecimal(const std::string& decimal) {
    constexpr std::size_t MOST = 24;
    const std::size_t end = std::min(decimal.find_first_of("eE"), decimal.size());
    if (end <= MOST) return decimal;
    return decimal.substr(0, MOST).append("...").append(decimal, end);
}

// The middle, x first, and the width.
std::array<std::string, 3> placeOf(const fractal& entry) {
    if (!entry.exact) {
        return {middleText(entry.xMin, entry.xMax), middleText(entry.yMin, entry.yMax),
                numberText(entry.xMax - entry.xMin)};
    }
    return {shortDecimal(entry.exact->re), shortDecimal(entry.exact->im),
            shortDecimal(entry.exact->width)};
}

Row rowOf(const fractal& entry, std::size_t number) {
    const auto [x, y, width] = placeOf(entry);
    return {std::to_string(number),
            nameOrNumber(formulaNames(), entry.fractalType),
            std::to_string(entry.maxIters),
            numberText(entry.maxSize),
            nameOrNumber(paletteNames(), entry.paletteType),
            x,
            y,
            width,
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

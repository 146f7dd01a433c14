#include "frac/json_entry.h"

#include <cmath>
#include <limits>

#include "frac/decimal_text.h"
#include "frac/formula_names.h"
#include "frac/number_text.h"
#include "frac/presets.h"

namespace {

std::optional<double>* realOf(EntryDraft& draft, Field field) {
    switch (field) {
        case Field::xMin:
            return &draft.xMin;
        case Field::xMax:
            return &draft.xMax;
        case Field::yMin:
            return &draft.yMin;
        case Field::yMax:
            return &draft.yMax;
        case Field::cx:
            return &draft.cx;
        case Field::cy:
            return &draft.cy;
        case Field::maxSize:
            return &draft.maxSize;
        default:
            return nullptr;
    }
}

std::optional<std::int32_t>* wholeOf(EntryDraft& draft, Field field) {
    switch (field) {
        case Field::formula:
            return &draft.formula;
        case Field::maxIters:
            return &draft.maxIters;
        case Field::palette:
            return &draft.palette;
        case Field::fractalID:
            return &draft.fractalID;
        default:
            return nullptr;
    }
}

std::string* exactOf(EntryDraft& draft, Field field) {
    switch (field) {
        case Field::centerRe:
            return &draft.exact.re;
        case Field::centerIm:
            return &draft.exact.im;
        case Field::width:
            return &draft.exact.width;
        case Field::cx:
            return &draft.exact.cRe;
        case Field::cy:
            return &draft.exact.cIm;
        default:
            return nullptr;
    }
}

// 768 may also be written 768.0 or 7.68e2: to JSON they are one number.
std::optional<std::int32_t> wholeNumber(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const bool fits =
        value >= Limits::min() && value <= Limits::max() && value == std::trunc(value);
    return fits ? std::optional(static_cast<std::int32_t>(value)) : std::nullopt;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::optional<std::string> bytesOfHex(std::string_view digits) {
    std::string bytes;
    if (digits.size() % 2 != 0) return {};
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = hexDigit(digits[i]), low = hexDigit(digits[i + 1]);
        if (high < 0 || low < 0) return {};
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

// A name ends at its first NUL wherever it is stored.
bool takeName(EntryDraft& draft, std::optional<std::string> name) {
    if (!name || name->find('\0') != std::string::npos) return false;
    draft.name = std::move(name);
    return true;
}

bool takeDecimal(EntryDraft& draft, Field field, const std::string& text) {
    std::string* const place = exactOf(draft, field);
    if (place == nullptr || !isPlaceDecimal(text)) return false;
    if (field == Field::width && !isPositiveDecimal(text)) return false;
    *place = text;
    return true;
}

// A square of doubles about the centre.
void setNearRectangle(const ExactPlace& place, fractal& entry) {
    const double re = nearestNumber(place.re), im = nearestNumber(place.im);
    const double half = 0.5 * nearestNumber(place.width);
    entry.xMin = re - half, entry.xMax = re + half;
    entry.yMin = im - half, entry.yMax = im + half;
}

void setRectangle(const EntryDraft& draft, fractal& entry) {
    entry.xMin = draft.xMin.value();
    entry.xMax = draft.xMax.value();
    entry.yMin = draft.yMin.value();
    entry.yMax = draft.yMax.value();
}

// Decimals win over what the preset says.
void setNearConstant(const ExactPlace& place, fractal& entry) {
    if (!place.cRe.empty()) entry.cx = nearestNumber(place.cRe);
    if (!place.cIm.empty()) entry.cy = nearestNumber(place.cIm);
}

template <class T>
bool take(std::optional<T>* place, std::optional<T> value) {
    if (place == nullptr || !value) return false;
    *place = value;
    return true;
}

}  // namespace

bool takeNumber(EntryDraft& draft, Field field, double value) {
    return take(realOf(draft, field), std::optional(value)) ||
           take(wholeOf(draft, field), wholeNumber(value));
}

bool takeText(EntryDraft& draft, Field field, const std::string& text) {
    switch (field) {
        case Field::name:
            return takeName(draft, text);
        case Field::nameBytes:
            return takeName(draft, bytesOfHex(text));
        case Field::formula:
            return take(&draft.formula, numberOf(formulaNames(), text));
        case Field::palette:
            return take(&draft.palette, numberOf(paletteNames(), text));
        default:
            return take(realOf(draft, field), readNumberWord(text)) ||
                   takeDecimal(draft, field, text);
    }
}

void placeExactly(fractal& entry, const ExactPlace& place) {
    setNearRectangle(place, entry);
    setNearConstant(place, entry);
    entry.exact = std::make_shared<const ExactPlace>(place);
}

fractal finishedEntry(const EntryDraft& draft) {
    fractal entry = presetEntry(draft.formula.value(), 0);
    entry.fractalType = *draft.formula;
    entry.cx = draft.cx.value_or(entry.cx);
    entry.cy = draft.cy.value_or(entry.cy);
    entry.maxIters = draft.maxIters.value_or(entry.maxIters);
    entry.maxSize = draft.maxSize.value_or(entry.maxSize);
    entry.paletteType = draft.palette.value_or(entry.paletteType);
    entry.fractalID = draft.fractalID.value_or(entry.fractalID);
    entry.name = draft.name.value_or(entry.name);
    if (draft.exact.width.empty()) {
        setRectangle(draft, entry);
    } else {
        placeExactly(entry, draft.exact);
    }
    return entry;
}

#include "frac/command/edit.h"

#include <cmath>
#include <stdexcept>

#include "frac/decimal_text.h"
#include "frac/json_entry.h"
#include "frac/number_text.h"

namespace {

// A rectangle as people think of it; sides are negative where the edges are swapped.
struct Frame {
    double x, y, width, height;
};

// Halves first, so that edges far apart do not overflow.
double middle(double low, double high) {
    return low / 2 + high / 2;
}

Frame frameOf(const fractal& entry) {
    return {middle(entry.xMin, entry.xMax), middle(entry.yMin, entry.yMax), entry.xMax - entry.xMin,
            entry.yMax - entry.yMin};
}

void place(fractal& entry, const Frame& frame) {
    entry.xMin = frame.x - frame.width / 2;
    entry.xMax = frame.x + frame.width / 2;
    entry.yMin = frame.y - frame.height / 2;
    entry.yMax = frame.y + frame.height / 2;
}

void moveTo(Frame& frame, const std::array<TypedNumber, 2>& center) {
    frame.x = center[0].value;
    frame.y = center[1].value;
}

void widen(Frame& frame, double width) {
    const double factor = width / std::fabs(frame.width);
    frame.width = std::copysign(width, frame.width);
    frame.height *= factor;
}

bool isFinite(const Frame& frame) {
    return std::isfinite(frame.x) && std::isfinite(frame.y) && std::isfinite(frame.width) &&
           std::isfinite(frame.height);
}

void changeFrame(fractal& entry, const Changes& changes) {
    Frame frame = frameOf(entry);
    if (changes.center) moveTo(frame, *changes.center);
    const bool hasProportions = frame.width != 0;
    if (changes.width && !(changes.width->value > 0)) {
        throw Mistake("--width: no rectangle of doubles is as narrow as " + changes.width->text);
    }
    if (changes.width && hasProportions) widen(frame, changes.width->value);
    if (!isFinite(frame) || (changes.width && !hasProportions)) {
        throw std::runtime_error("the rectangle has no proportions to keep: give all of --view");
    }
    place(entry, frame);
}

// What was typed with all its digits, where it is a decimal; else the double it stands for.
std::string decimalOf(const TypedNumber& number) {
    std::string text = isDecimal(number.text) ? number.text : numberText(number.value);
    if (!isPlaceDecimal(text)) throw std::runtime_error("no view can lie at " + number.text);
    return text;
}

void changePlace(fractal& entry, const Changes& changes) {
    ExactPlace place = *entry.exact;
    if (changes.center) {
        place.re = decimalOf((*changes.center)[0]);
        place.im = decimalOf((*changes.center)[1]);
    }
    if (changes.width) place.width = decimalOf(*changes.width);
    placeExactly(entry, place);
}

void changeConstant(fractal& entry, const std::array<TypedNumber, 2>& c) {
    entry.cx = c[0].value, entry.cy = c[1].value;
    if (!entry.exact) return;
    ExactPlace place = *entry.exact;
    place.cRe = decimalOf(c[0]), place.cIm = decimalOf(c[1]);
    placeExactly(entry, place);
}

void changeView(fractal& entry, const std::array<double, 4>& view) {
    entry.xMin = view[0];
    entry.xMax = view[1];
    entry.yMin = view[2];
    entry.yMax = view[3];
    entry.exact.reset();
}

template <class T>
void set(T& member, const std::optional<T>& value) {
    if (value) member = *value;
}

}  // namespace

void change(fractal& entry, const Changes& changes) {
    set(entry.name, changes.name);
    set(entry.maxIters, changes.limit);
    set(entry.maxSize, changes.sizeLimit);
    set(entry.paletteType, changes.palette);
    if (changes.c) changeConstant(entry, *changes.c);
    if (changes.view) changeView(entry, *changes.view);
    if (changes.center || changes.width) (entry.exact ? changePlace : changeFrame)(entry, changes);
}

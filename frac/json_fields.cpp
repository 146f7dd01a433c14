#include "frac/json_fields.h"

#include <array>

namespace {

constexpr std::array<Key, 3> DOCUMENT = {{
    {"tessary", Field::tessary, true},
    {"entries", Field::entries, true},
    {"render", Field::render, false},
}};

// Of a view and what stands in its place, which of them are there is looked at as a whole.
constexpr std::array<Key, 11> ENTRY = {{
    {"name", Field::name, false},
    {"nameBytes", Field::nameBytes, false},
    {"formula", Field::formula, true},
    {"view", Field::view, false},
    {"center", Field::center, false},
    {"width", Field::width, false},
    {"c", Field::constant, false},
    {"maxIters", Field::maxIters, false},
    {"maxSize", Field::maxSize, false},
    {"palette", Field::palette, false},
    {"fractalID", Field::fractalID, false},
}};

constexpr std::array<Key, 4> VIEW = {{
    {"xMin", Field::xMin, true},
    {"xMax", Field::xMax, true},
    {"yMin", Field::yMin, true},
    {"yMax", Field::yMax, true},
}};

// The elements of an array of two.
struct Pair {
    Field array, first, second;
};
constexpr std::array<Pair, 2> PAIRS = {{
    {Field::constant, Field::cx, Field::cy},
    {Field::center, Field::centerRe, Field::centerIm},
}};

constexpr const char* WHOLE = "a whole number from -2147483648 to 2147483647";

constexpr const char* DECIMAL =
    "a decimal number as a text, such as \"-1.5e-30\", of an exponent from -1000000 to 1000000";

bool isOneOf(Field field, std::span<const Key> keys) {
    for (const Key& key : keys) {
        if (key.field == field) return true;
    }
    return false;
}

}  // namespace

std::span<const Key> keysOf(Field object) {
    switch (object) {
        case Field::document:
            return DOCUMENT;
        case Field::entry:
            return ENTRY;
        case Field::view:
            return VIEW;
        default:
            return {};
    }
}

Field containerOf(Field field) {
    for (const Field object : {Field::document, Field::entry, Field::view}) {
        if (isOneOf(field, keysOf(object))) return object;
    }
    for (const Pair& pair : PAIRS) {
        if (field == pair.first || field == pair.second) return pair.array;
    }
    return field == Field::entry ? Field::entries : Field::none;
}

Field firstIn(Field container) {
    for (const Pair& pair : PAIRS) {
        if (container == pair.array) return pair.first;
    }
    return container == Field::entries ? Field::entry : Field::none;
}

Field nextAfter(Field field) {
    for (const Pair& pair : PAIRS) {
        if (field == pair.first) return pair.second;
    }
    return field == Field::entry ? Field::entry : Field::none;
}

std::string expectationOf(Field field) {
    switch (field) {
        case Field::document:
            return R"(an object with "tessary" and "entries")";
        case Field::tessary:
            return "1, the only version of this form";
        case Field::entries:
            return "an array of entries";
        case Field::render:
            return "an object";
        case Field::entry:
            return "an entry, which is an object";
        case Field::name:
            return "a text without U+0000";
        case Field::nameBytes:
            return "a text of hexadecimal digits, two a byte and no byte 00";
        case Field::formula:
            return std::string("the name of a formula or ") + WHOLE;
        case Field::view:
            return R"(an object with "xMin", "xMax", "yMin" and "yMax")";
        case Field::constant:
            return "an array of two numbers";
        case Field::center:
            return "an array of two decimal numbers as texts";
        case Field::centerRe:
        case Field::centerIm:
            return DECIMAL;
        case Field::width:
            return std::string("a number above 0, ") + DECIMAL;
        case Field::maxIters:
        case Field::fractalID:
            return WHOLE;
        case Field::palette:
            return std::string(R"("random", "rgb" or )") + WHOLE;
        case Field::none:
            return "the end of the array";
        default:
            return R"(a number, "inf", "-inf" or "nan:0x" and 16 hexadecimal digits)";
    }
}

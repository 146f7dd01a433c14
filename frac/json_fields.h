// What may stand where in a JSON document: the keys of each object, which of them must be there,
// and what their values are.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// A value that a document holds, by its place.
enum class Field : std::uint8_t {
    none,
    document,
    tessary,
    entries,
    render,
    entry,
    name,
    nameBytes,
    formula,
    view,
    constant,
    cx,
    cy,
    maxIters,
    maxSize,
    palette,
    fractalID,
    xMin,
    xMax,
    yMin,
    yMax,
    center,
    centerRe,
    centerIm,
    width,
    count,
};

// Several fields of one object.
using FieldSet = std::uint32_t;

constexpr FieldSet only(Field field) {
    return FieldSet{1} << static_cast<unsigned>(field);
}

struct Key {
    std::string_view name;
    Field field;
    bool needed;
};

// The keys of an object, in the order in which they are written; none for other fields.
std::span<const Key> keysOf(Field object);

// The object or array that a field stands in; none for the document.
Field containerOf(Field field);

// What is awaited after the opening bracket of a container, and in it after a value of `field`:
// none where a key or the closing bracket must follow.
Field firstIn(Field container);
Field nextAfter(Field field);

// What stands there, as the end of "expected ...".
std::string expectationOf(Field field);

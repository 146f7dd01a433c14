// One entry of a JSON document, from its first key to its last.
#pragma once

#include <optional>
#include <string>

#include "frac/fractal.h"
#include "frac/json_fields.h"

// An entry as far as it has been read; what stays empty is the preset's.
struct EntryDraft {
    std::optional<std::string> name;
    std::optional<std::int32_t> formula, maxIters, palette, fractalID;
    std::optional<double> xMin, xMax, yMin, yMax, cx, cy, maxSize;
};

// Puts a value where its field is; false when no such value may stand there.
bool takeNumber(EntryDraft& draft, Field field, double value);
bool takeText(EntryDraft& draft, Field field, const std::string& text);

// The finished entry. Its formula and its edges must have been taken.
fractal finishedEntry(const EntryDraft& draft);

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
    ExactPlace exact;  // texts that are empty are not there

    bool hasExactConstant() const { return !exact.cRe.empty() || !exact.cIm.empty(); }
};

// Puts a value where its field is; false when no such value may stand there.
bool takeNumber(EntryDraft& draft, Field field, double value);
bool takeText(EntryDraft& draft, Field field, const std::string& text);

// The finished entry. Its formula and its edges, or its centre and width, must have been taken.
fractal finishedEntry(const EntryDraft& draft);

// Lets an entry lie there, its rectangle a square near it; so c, where the place says that too.
void placeExactly(fractal& entry, const ExactPlace& place);

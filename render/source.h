// What there is to render: a catalogue, from whatever holds it.
#pragma once

#include <string>
#include <vector>

#include "frac/fractal.h"
#include "render/settings.h"

namespace render {

struct Source {
    std::vector<fractal> entries;  // at least one
    Settings settings;             // of a picture or a document that has some
    std::string stem;              // what names of pictures begin with
    std::string warning;           // one line about damage; empty without
};

// The catalogue in the file at path, "-" for standard input: a .frac catalogue, a JSON document or
// a PNG that carries one, told apart by content. A std::runtime_error with the name of the file
// when it cannot be read, or is damaged beyond use, or has no entries.
Source readSource(const std::string& path);

}  // namespace render

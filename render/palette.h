// The colours of a picture.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "compute/pixels.h"

namespace render {

using Colour = std::array<unsigned char, 3>;  // red, green, blue

// The table that pixels take their colours from, and where it came from.
struct Palette {
    std::array<unsigned char, PALETTE_BYTES> table{};  // as compute/pixels.h describes it
    std::vector<Colour> colours;  // of a .map file, 1 to PALETTE_ENTRIES; empty for a built-in one
};

// The built-in palette of a record: 1 is the RGB cycle, anything else the random colours, as the
// window starts with them. Any thread.
Palette builtInPalette(std::int32_t paletteType);

// Entry n of the table is colour n mod K of the K colours. colours: 1 to PALETTE_ENTRIES.
Palette paletteOf(std::vector<Colour> colours);

// The palette of a .map file: a colour a line, "red green blue" as whole numbers from 0 to 255;
// what follows the third number is not read. Blank lines and lines that begin with '#' or ';' are
// skipped. Failure, with file and line, when the file cannot be read, a line is no colour, or there
// are no colours or more than PALETTE_ENTRIES.
Palette readMap(const std::string& path);

}  // namespace render

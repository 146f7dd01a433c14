// Which part of a value a field has room for.

#pragma once

#include <cstddef>
#include <string>

namespace GlutMenu {

// Bytes `first` to `first + length` of a text.
struct Part {
    std::size_t first, length;
};

// The part of `text` to show in `room` pixels, made of whole glyphs: all of it where it fits, else
// its beginning or its end where byte `cursor` is near to that, else what lies around it. The
// cursor, at most the text's size, stands within the part or at one of its ends. No part is shown
// in a room of less than nothing.
Part PartInSight(const std::string& text, std::size_t cursor, float room);

// As much of the text, from its start, as fits.
std::string Beginning(const std::string& text, float room);

}  // namespace GlutMenu

// The parts of a PNG file around its packed rows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "render/geometry.h"

namespace render {

// A text chunk. Any bytes but NUL in the text; what is not UTF-8 shows as U+FFFD.
struct PngText {
    std::string keyword;
    std::string text;
};

// Signature, header and the texts in their order, for pixels of red, green and blue of `depth` bits
// each, 8 or 16. Any thread.
std::string pngHead(Size size, const std::vector<PngText>& texts, int depth);

// A chunk of this type, four letters. The packed rows of a picture may come in any number of "IDAT"
// chunks; an empty "IEND" is the end of the file.
std::string pngChunk(std::string_view type, std::string_view data);

}  // namespace render

// The parts of a PNG file around its packed rows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "render/geometry.h"
#include "render/palette.h"

namespace render {

// A text chunk. Any bytes but NUL in the text; what is not UTF-8 shows as U+FFFD.
struct PngText {
    std::string keyword;
    std::string text;
};

// Signature, header, and the texts in their order; with colours (at most 256) a picture of one byte
// a pixel, which is a place among them, without any one of three, red, green and blue, of `depth`
// bits each, 8 or 16. Any thread.
std::string pngHead(Size size, const std::vector<Colour>& colours,
                    const std::vector<PngText>& texts, int depth = 8);

// A chunk of this type, four letters. The packed rows of a picture may come in any number of "IDAT"
// chunks; an empty "IEND" is the end of the file.
std::string pngChunk(std::string_view type, std::string_view data);

}  // namespace render

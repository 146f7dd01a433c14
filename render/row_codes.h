// Deflate blocks of filtered rows whose levels hardly differ from one pixel to the next, as those
// of dithered gradients do: such rows repeat nothing, so to look for matches in them is in vain,
// and nearly all of their bytes are small differences.
//
// The codes are fixed ones, made from the differences of smooth pictures of all rules; a code of
// each band's own would save one percent. They are such that a vector of bytes is looked up at
// once: a difference from -8 to 7 has bits of its own, and all others, sixteen by sixteen, have the
// prefix of their group and their lowest four bits.
#pragma once

#include <cstddef>

#include "render/block_codes.h"

namespace render {

// There are three, for ever greater differences.
inline constexpr std::size_t ROW_CODES = 3;
const RowCode& rowCode(std::size_t number);

// Writes filtered rows as a deflate block that is not the last one, and an empty one that ends on a
// byte. Returns the number of bytes written; `out` has room for codedRoom(length). The same bytes
// on every processor. Any thread.
std::size_t codeRows(const unsigned char* rows, std::size_t length, unsigned char* out);

// No difference takes more than 11 bits.
inline constexpr std::size_t codedRoom(std::size_t length) {
    return length / 8 * 11 + 512;
}

}  // namespace render

// The words of bytes in one of the codes of render/row_codes.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace render {

// Symbols of deflate (RFC 1951): bytes, the end of a block, and matches of 64 and 256 bytes.
inline constexpr std::size_t END_OF_BLOCK = 256, MATCH_64 = 276, MATCH_256 = 284, SYMBOLS = 285;

// Bits of a symbol, first bit lowest; `length` is 0 where there is none.
struct Codeword {
    std::uint16_t bits;
    std::uint8_t length;
};

// A code. Near: differences d from -8 to 7, at d + 8. Far: all others, d + 8 = 16 group + low.
struct RowCode {
    std::array<Codeword, SYMBOLS> words;
    int farLength;  // bits of a far difference
    alignas(16) std::array<std::uint8_t, 16> nearBits, nearLength;
    alignas(16) std::array<std::uint8_t, 16> prefix;  // by group
    alignas(16) std::array<std::uint8_t, 16> lowBits,
        highBits;  // what `low` adds to bits 0-7, 8-15
};

// Bits, one after the other, into memory that has 8 bytes more than they need.
class BitWriter {
  public:
    explicit BitWriter(unsigned char* to) : out(to) {}

    // length: up to 56.
    void put(std::uint64_t bits, unsigned length) {
        pending |= bits << used;
        used += length;
        std::memcpy(out, &pending, sizeof pending);
        out += used >> 3U;
        pending >>= used & 56U;
        used &= 7U;
    }

    // Zeros up to the next byte. Returns where that is.
    unsigned char* align() {
        if (used > 0) put(0, 8 - used);
        return out;
    }

  private:
    unsigned char* out;
    std::uint64_t pending = 0;
    unsigned used = 0;  // bits that are not yet a byte, fewer than 8
};

// Bytes that are coded together.
inline constexpr std::size_t CODED_BLOCK = 64;

// Puts the words of bytes one by one.
void putBytes(const RowCode& code, const unsigned char* bytes, std::size_t count, BitWriter& out);

// The same of whole blocks, with vectors where the machine has them.
void putBlocks(const RowCode& code, const unsigned char* rows, std::size_t blocks, BitWriter& out);

}  // namespace render

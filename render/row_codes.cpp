#include "render/row_codes.h"

#include <algorithm>

namespace render {
namespace {

// Lengths of the near differences, and of the prefixes of the far ones. Each code is complete with
// the lengths of the other symbols below.
struct Shape {
    std::array<std::uint8_t, 16> near;
    int prefix;
};

constexpr std::array<Shape, ROW_CODES> SHAPES = {{
    {{8, 8, 8, 7, 7, 7, 6, 3, 1, 3, 6, 7, 7, 8, 8, 8}, 7},
    {{7, 7, 7, 6, 6, 5, 5, 3, 2, 3, 5, 5, 6, 6, 7, 7}, 6},
    {{7, 7, 7, 7, 6, 6, 5, 4, 3, 3, 5, 6, 6, 7, 7, 7}, 5},
}};
constexpr std::uint8_t MATCH_64_LENGTH = 5, MATCH_256_LENGTH = 8, END_LENGTH = 8;
constexpr int LONGEST = 11;

using Lengths = std::array<std::uint8_t, SYMBOLS>;

constexpr std::size_t shifted(std::size_t byte) {
    return (byte + 8) & 0xffU;
}

constexpr Lengths lengthsOf(const Shape& shape) {
    Lengths lengths{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const std::size_t at = shifted(byte);
        lengths[byte] = at < 16 ? shape.near[at] : static_cast<std::uint8_t>(shape.prefix + 4);
    }
    lengths[END_OF_BLOCK] = END_LENGTH;
    lengths[MATCH_64] = MATCH_64_LENGTH;
    lengths[MATCH_256] = MATCH_256_LENGTH;
    return lengths;
}

constexpr unsigned reversed(unsigned bits, int length) {
    unsigned other = 0;
    for (int n = 0; n < length; ++n) other |= (bits >> n & 1U) << (length - 1 - n);
    return other;
}

// The words that deflate gives to symbols of these lengths: in ascending order of the length, then
// of the symbol.
constexpr std::array<Codeword, SYMBOLS> wordsOf(const Lengths& lengths) {
    std::array<Codeword, SYMBOLS> words{};
    unsigned next = 0;
    for (int length = 1; length <= LONGEST; ++length, next <<= 1U) {
        for (std::size_t symbol = 0; symbol < SYMBOLS; ++symbol) {
            if (lengths[symbol] != length) continue;
            words[symbol] = {static_cast<std::uint16_t>(reversed(next++, length)),
                             static_cast<std::uint8_t>(length)};
        }
    }
    return words;
}

// The far words are the longest, so they come last, in the order of their groups; the last of them
// has ones alone. So the first word of a group ends in four zeros, and the lowest bits of the
// others count up in their place.
constexpr RowCode codeOf(const Shape& shape) {
    RowCode code{wordsOf(lengthsOf(shape)), shape.prefix + 4, {}, {}, {}, {}, {}};
    for (unsigned n = 0; n < 16; ++n) {
        const Codeword& near = code.words[(n - 8) & 0xffU];
        code.nearBits[n] = static_cast<std::uint8_t>(near.bits);
        code.nearLength[n] = near.length;
        code.prefix[n] = static_cast<std::uint8_t>(code.words[(16 * n - 8) & 0xffU].bits);
        const unsigned low = reversed(n, 4) << shape.prefix;
        code.lowBits[n] = static_cast<std::uint8_t>(low & 0xffU);
        code.highBits[n] = static_cast<std::uint8_t>(low >> 8U);
    }
    return code;
}

constexpr std::array<RowCode, ROW_CODES> CODES = {codeOf(SHAPES[0]), codeOf(SHAPES[1]),
                                                  codeOf(SHAPES[2])};

// The code that is shortest for a sample of the bytes: a block of each sixteen.
const RowCode& bestFor(const unsigned char* rows, std::size_t length) {
    std::array<std::size_t, ROW_CODES> costs{};
    for (std::size_t first = 0; first < length; first += 16 * CODED_BLOCK) {
        const std::size_t end = std::min(first + CODED_BLOCK, length);
        for (std::size_t n = first; n < end; ++n) {
            for (std::size_t c = 0; c < ROW_CODES; ++c) costs[c] += CODES[c].words[rows[n]].length;
        }
    }
    const auto least = std::min_element(costs.begin(), costs.end()) - costs.begin();
    return CODES[static_cast<std::size_t>(least)];
}

void put(const Codeword& word, BitWriter& out) {
    out.put(word.bits, word.length);
}

// The lengths of the code, each in four bits of a code for lengths in which every length up to 15
// has the word that is its own number.
void putHead(const RowCode& code, BitWriter& out) {
    constexpr unsigned NOT_LAST = 0, OWN_CODES = 2, DISTANCES = 1, ORDERED = 19;
    out.put(NOT_LAST | OWN_CODES << 1U, 3);
    out.put(SYMBOLS - 257, 5);
    out.put(DISTANCES - 1, 5);
    out.put(ORDERED - 4, 4);
    for (unsigned n = 0; n < ORDERED; ++n) out.put(n < 3 ? 0 : 4, 3);  // 16, 17 and 18 come first
    for (const Codeword& word : code.words) out.put(reversed(word.length, 4), 4);
    out.put(reversed(1, 4), 4);  // distance 1
}

bool isZero(const unsigned char* block) {
    std::array<std::uint64_t, CODED_BLOCK / 8> words;
    std::memcpy(words.data(), block, CODED_BLOCK);
    std::uint64_t any = 0;
    for (const std::uint64_t word : words) any |= word;
    return any == 0;
}

// Number of blocks from `block` on that repeat the byte before them, a zero.
std::size_t repeated(const unsigned char* rows, std::size_t block, std::size_t end) {
    if (block == 0 || rows[block * CODED_BLOCK - 1] != 0) return 0;
    std::size_t last = block;
    while (last < end && isZero(rows + last * CODED_BLOCK)) ++last;
    return last - block;
}

// Matches with what lies one byte before, whose distance is one bit.
void putRepeats(const RowCode& code, std::size_t blocks, BitWriter& out) {
    for (; blocks >= 4; blocks -= 4) {
        put(code.words[MATCH_256], out);
        out.put(256 - 227, 5 + 1);
    }
    for (; blocks > 0; --blocks) {
        put(code.words[MATCH_64], out);
        out.put(64 - 59, 3 + 1);
    }
}

}  // namespace

const RowCode& rowCode(std::size_t number) {
    return CODES[number];
}

std::size_t codeRows(const unsigned char* rows, std::size_t length, unsigned char* out) {
    const RowCode& code = bestFor(rows, length);
    BitWriter bits(out);
    putHead(code, bits);
    const std::size_t blocks = length / CODED_BLOCK;
    for (std::size_t first = 0, last = 0; first < blocks; first = last) {
        std::size_t zeros = 0;
        while (last < blocks && (zeros = repeated(rows, last, blocks)) == 0) ++last;
        putBlocks(code, rows + first * CODED_BLOCK, last - first, bits);
        putRepeats(code, zeros, bits);
        last += zeros;
    }
    const std::size_t whole = blocks * CODED_BLOCK;
    putBytes(code, rows + whole, length - whole, bits);
    put(code.words[END_OF_BLOCK], bits);
    bits.put(0, 3);  // an empty block
    constexpr std::array<unsigned char, 4> LENGTHS{0, 0, 0xff, 0xff};
    unsigned char* const end = std::copy(LENGTHS.begin(), LENGTHS.end(), bits.align());
    return static_cast<std::size_t>(end - out);
}

}  // namespace render

#include "render/deflate.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <stdexcept>

#include "render/row_codes.h"
#include "render/row_filter.h"

namespace render {
namespace {

// What a band may grow to: where packing does not help, bytes are stored in blocks of up to 65,535
// with five more bytes each; a flush adds some.
std::size_t roomFor(std::size_t length) {
    return length + 8 * (length / 16384) + 1024;
}

Bytef* asBytes(std::string_view bytes) {
    return reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
}

// The blocks of `rows` in `room`, which is large enough.
std::string_view packWithZlib(std::string_view rows, std::string& room) {
    constexpr int RAW = -15, MEMORY = 9;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, RAW, MEMORY, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::bad_alloc();
    }
    stream.next_in = asBytes(rows);
    stream.avail_in = static_cast<uInt>(rows.size());
    stream.next_out = asBytes(room);
    stream.avail_out = static_cast<uInt>(room.size());
    const int status = deflate(&stream, Z_FULL_FLUSH);
    const std::string_view blocks(room.data(), stream.total_out);
    const bool complete = status == Z_OK && stream.avail_in == 0 && stream.avail_out > 0;
    deflateEnd(&stream);
    if (!complete) throw std::logic_error("packing failed");
    return blocks;
}

PackedBand withChecksum(std::string_view blocks, std::string_view rows) {
    return {blocks, adlerOf(1, rows), rows.size()};
}

// At least so many bytes; what is in them does not matter.
void makeRoom(std::string& room, std::size_t length) {
    if (room.size() < length) room.resize(length);
}

}  // namespace

struct BandPacker::FastState {
    isal_zstream stream;
};

BandPacker::BandPacker() = default;
BandPacker::~BandPacker() = default;

// Level 0 packs alike on every processor with SSE4.2. The levels above it make Huffman codes of
// their own for each block, and about one process in five hundred gets another, equally valid code
// for the same rows; at level 3 processors differ, too.
PackedBand BandPacker::packFast(std::string_view rows) {
    if (!fast) fast = std::make_unique<FastState>();
    makeRoom(room, roomFor(rows.size()));
    isal_zstream& stream = fast->stream;
    isal_deflate_stateless_init(&stream);
    stream.level = 0;
    stream.flush = FULL_FLUSH;
    stream.end_of_stream = 0;
    stream.next_in = asBytes(rows);
    stream.avail_in = static_cast<std::uint32_t>(rows.size());
    stream.next_out = asBytes(room);
    stream.avail_out = static_cast<std::uint32_t>(room.size());
    if (isal_deflate_stateless(&stream) != COMP_OK) throw std::logic_error("packing failed");
    return withChecksum({room.data(), stream.total_out}, rows);
}

PackedBand BandPacker::packDithered(std::string_view rows, std::size_t rowBytes,
                                    std::size_t bytesPerPixel) {
    makeRoom(room, codedRoom(rows.size()));
    subtractLeft(rows, rowBytes, bytesPerPixel, differences);
    const std::size_t packed =
        codeRows(reinterpret_cast<const unsigned char*>(differences.data()), differences.size(),
                 reinterpret_cast<unsigned char*>(room.data()));
    return withChecksum({room.data(), packed}, differences);
}

// Flat areas pack best as they are, smooth ones filtered.
PackedBand BandPacker::packSmall(std::string_view rows, std::size_t rowBytes,
                                 std::size_t bytesPerPixel) {
    const std::string filtered = filterRows(rows, rowBytes, bytesPerPixel);
    makeRoom(room, roomFor(rows.size()));
    makeRoom(otherRoom, roomFor(rows.size()));
    const auto plainBlocks = packWithZlib(rows, room);
    const auto filteredBlocks = packWithZlib(filtered, otherRoom);
    if (filteredBlocks.size() < plainBlocks.size()) return withChecksum(filteredBlocks, filtered);
    return withChecksum(plainBlocks, rows);
}

PackedBand BandPacker::pack(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel,
                            Compression compression) {
    if (compression == Compression::small) return packSmall(rows, rowBytes, bytesPerPixel);
    return packFast(rows);
}

std::string_view streamHead(Compression compression) {
    return compression == Compression::small ? "\x78\xda" : "\x78\x01";
}

std::string streamTail(std::uint32_t adler) {
    std::string tail("\x03\x00", 2);  // an empty block, the last one
    for (const int shift : {24, 16, 8, 0}) tail += static_cast<char>(adler >> shift & 0xff);
    return tail;
}

std::uint32_t adlerOf(std::uint32_t before, std::string_view bytes) {
    return isal_adler32(before, asBytes(bytes), bytes.size());
}

std::uint32_t joinAdler(std::uint32_t before, std::uint32_t adler, std::uint64_t length) {
    return static_cast<std::uint32_t>(adler32_combine(before, adler, static_cast<z_off_t>(length)));
}

}  // namespace render

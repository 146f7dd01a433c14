#include "render/deflate.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <memory>
#include <stdexcept>
#include <vector>

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

// Level 1 packs alike on every processor with SSE4.2; level 3 would not.
std::string packFast(std::string_view rows) {
    std::vector<std::uint8_t> workspace(ISAL_DEF_LVL1_DEFAULT);
    const auto stream = std::make_unique<isal_zstream>();
    isal_deflate_stateless_init(stream.get());
    std::string blocks(roomFor(rows.size()), '\0');
    stream->level = 1;
    stream->level_buf = workspace.data();
    stream->level_buf_size = ISAL_DEF_LVL1_DEFAULT;
    stream->flush = FULL_FLUSH;
    stream->end_of_stream = 0;
    stream->next_in = asBytes(rows);
    stream->avail_in = static_cast<std::uint32_t>(rows.size());
    stream->next_out = asBytes(blocks);
    stream->avail_out = static_cast<std::uint32_t>(blocks.size());
    if (isal_deflate_stateless(stream.get()) != COMP_OK) throw std::logic_error("packing failed");
    blocks.resize(stream->total_out);
    return blocks;
}

std::string packWithZlib(std::string_view rows) {
    constexpr int RAW = -15, MEMORY = 9;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, RAW, MEMORY, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::bad_alloc();
    }
    std::string blocks(roomFor(rows.size()), '\0');
    stream.next_in = asBytes(rows);
    stream.avail_in = static_cast<uInt>(rows.size());
    stream.next_out = asBytes(blocks);
    stream.avail_out = static_cast<uInt>(blocks.size());
    const int status = deflate(&stream, Z_FULL_FLUSH);
    blocks.resize(stream.total_out);
    const bool complete = status == Z_OK && stream.avail_in == 0 && stream.avail_out > 0;
    deflateEnd(&stream);
    if (!complete) throw std::logic_error("packing failed");
    return blocks;
}

PackedBand withChecksum(std::string blocks, std::string_view rows) {
    return {std::move(blocks), isal_adler32(1, asBytes(rows), rows.size()), rows.size()};
}

// Flat areas pack best as they are, smooth ones filtered.
PackedBand packSmall(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel) {
    const std::string filtered = filterRows(rows, rowBytes, bytesPerPixel);
    std::string plainBlocks = packWithZlib(rows), filteredBlocks = packWithZlib(filtered);
    if (filteredBlocks.size() < plainBlocks.size()) {
        return withChecksum(std::move(filteredBlocks), filtered);
    }
    return withChecksum(std::move(plainBlocks), rows);
}

}  // namespace

PackedBand packBand(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel,
                    Compression compression) {
    if (compression == Compression::small) return packSmall(rows, rowBytes, bytesPerPixel);
    return withChecksum(packFast(rows), rows);
}

std::string_view streamHead() {
    return "\x78\x01";
}

std::string streamTail(std::uint32_t adler) {
    std::string tail("\x03\x00", 2);  // an empty block, the last one
    for (const int shift : {24, 16, 8, 0}) tail += static_cast<char>(adler >> shift & 0xff);
    return tail;
}

std::uint32_t joinAdler(std::uint32_t before, const PackedBand& band) {
    return static_cast<std::uint32_t>(
        adler32_combine(before, band.adler, static_cast<z_off_t>(band.length)));
}

}  // namespace render

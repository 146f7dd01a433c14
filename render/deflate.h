// Packing the rows of a picture, band by band.
//
// The bands of a picture are packed apart from one another, each into whole deflate blocks that end
// on a byte and refer to nothing before them: joined in order they are one stream, whoever packed
// which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace render {

enum class Compression {
    fast,  // costs a look at the picture
    small  // costs many
};

// Deflate blocks that are not the last ones, and what they unpack to.
struct PackedBand {
    std::string_view blocks;   // in the packer's memory, until its next call
    std::uint32_t adler = 1;   // Adler-32 of the unpacked bytes
    std::uint64_t length = 0;  // number of the unpacked bytes
};

// Packs bands. An object serves one thread; it keeps its memory from one call to the next.
class BandPacker {
  public:
    BandPacker();
    ~BandPacker();
    BandPacker(const BandPacker&) = delete;
    BandPacker& operator=(const BandPacker&) = delete;

    // Packs `rows`: each row a filter byte 0 and then its pixels, `rowBytes` with it. The same rows
    // give the same blocks on every processor that has SSE4.2. With `small` rows are filtered where
    // that helps. bytesPerPixel: 1 to 6.
    PackedBand pack(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel,
                    Compression compression);

    // As `fast`, for rows of dithered colours, in which there is hardly a match to be found: each
    // pixel as its difference from the one before it, in a code for small differences
    // (render/row_codes.h). The same blocks on every processor.
    PackedBand packDithered(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel);

  private:
    struct FastState;

    PackedBand packFast(std::string_view rows);
    PackedBand packSmall(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel);

    std::unique_ptr<FastState> fast;  // made when first needed
    std::string room, otherRoom;      // where blocks are put
    std::string differences;
};

// What a zlib stream of bands begins with. It tells how they are packed.
std::string_view streamHead(Compression compression);

// What it ends with, after bands with this Adler-32 in all.
std::string streamTail(std::uint32_t adler);

// The Adler-32 of what `before` stands for, followed by these bytes; that of nothing is 1.
std::uint32_t adlerOf(std::uint32_t before, std::string_view bytes);

// The Adler-32 of what `before` stands for, followed by `length` bytes with this one.
std::uint32_t joinAdler(std::uint32_t before, std::uint32_t adler, std::uint64_t length);

}  // namespace render

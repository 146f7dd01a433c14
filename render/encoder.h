// How the rows of a picture become the bytes of a file.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "render/deflate.h"
#include "render/job.h"
#include "render/rows.h"

namespace render {

// A band as a part of a file, and what the tail of the file has to know of it.
struct EncodedBand {
    std::string bytes;
    std::uint32_t adler = 1;   // Adler-32 of what was packed
    std::uint64_t length = 0;  // number of its bytes
};

// What one thread needs to make bands; it keeps its memory from one band to the next.
struct Workshop {
    explicit Workshop(const std::atomic<bool>& stopFlag) : stop(stopFlag), rows(stopFlag) {}

    const std::atomic<bool>& stop;
    RowRenderer rows;
    BandPacker packer;
    NumberRows numbers;
    std::string pixels;
};

// One file format. A picture is its head, its bands from top to bottom and its tail; bands are
// made apart from one another, on any thread.
class Encoder {
  public:
    virtual ~Encoder() = default;

    virtual std::string head(const Job& job) const = 0;
    virtual EncodedBand band(const Job& job, RowRange range, Workshop& workshop) const = 0;

    // adler: of all bands together, as joinAdler() puts it together.
    virtual std::string tail(const Job& job, std::uint32_t adler) const = 0;
};

// PNG of three or six bytes a pixel, or of one where the palette has few colours.
class PngEncoder : public Encoder {
  public:
    PngEncoder(Compression packing, bool withMetadata)
        : compression(packing), metadata(withMetadata) {}

    std::string head(const Job& job) const override;
    EncodedBand band(const Job& job, RowRange range, Workshop& workshop) const override;
    std::string tail(const Job& job, std::uint32_t adler) const override;

  private:
    Compression compression;
    bool metadata;
};

// The bands of a picture: how many, and the rows of each. They depend on the size alone, so that
// the same picture is the same file however it is made.
int bandCount(Size size);
RowRange bandRows(Size size, int band);

}  // namespace render

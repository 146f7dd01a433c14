// How the rows of a picture become the bytes of a file.
#pragma once

#include <cstdint>
#include <string>

#include "render/deflate.h"
#include "render/job.h"
#include "render/rows.h"

namespace render {

// One file format. A picture is its head, its bands from top to bottom and its tail; bands are
// packed apart from one another, on any thread.
class Encoder {
  public:
    virtual ~Encoder() = default;

    virtual std::string head(const Job& job) const = 0;

    // A band as a part of the file, and what the tail has to know of it. `rows` renders for the
    // calling thread.
    struct Band {
        std::string bytes;
        PackedBand packed;  // its blocks moved into `bytes`
    };
    virtual Band band(const Job& job, RowRange range, RowRenderer& rows) const = 0;

    // adler: of all bands together, as joinAdler() puts it together.
    virtual std::string tail(std::uint32_t adler) const = 0;
};

// PNG of three bytes a pixel, or of one where the palette has few colours.
class PngEncoder : public Encoder {
  public:
    PngEncoder(Compression packing, bool withMetadata)
        : compression(packing), metadata(withMetadata) {}

    std::string head(const Job& job) const override;
    Band band(const Job& job, RowRange range, RowRenderer& rows) const override;
    std::string tail(std::uint32_t adler) const override;

  private:
    Compression compression;
    bool metadata;
};

// The bands of a picture: how many, and the rows of each. They depend on the size alone, so that
// the same picture is the same file however it is made.
int bandCount(Size size);
RowRange bandRows(Size size, int band);

}  // namespace render

// Pictures for a pipe.
#pragma once

#include "render/encoder.h"

namespace render {

// Binary PPM: "P6", size and depth in three lines, and then three bytes a pixel, or six where the
// depth is 16. One picture behind the other is a stream that video encoders read.
class PpmEncoder : public Encoder {
  public:
    std::string head(const Job& job) const override;
    EncodedBand band(const Job& job, RowRange range, Workshop& workshop) const override;
    std::string tail(const Job& job, std::uint32_t adler) const override;
};

}  // namespace render

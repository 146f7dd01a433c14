// The numbers of pictures, for NumPy.
#pragma once

#include "render/encoder.h"
#include "render/npy_head.h"

namespace render {

// A NumPy file of version 1.0 and shape (height, width) in place of a picture: counts as int32, the
// limit where no step escaped, or smooth values as float64, NaN there. The jobs have a colouring
// and one sample a pixel, or stored rows of such numbers. A band has a record behind its rows (see
// render/number_share.h).
class NpyEncoder : public Encoder {
  public:
    explicit NpyEncoder(NumberKind ofNumbers) : kind(ofNumbers) {}

    std::string head(const Job& job) const override;
    EncodedBand band(const Job& job, RowRange range, Workshop& workshop) const override;
    std::string tail(const Job& job, std::uint32_t adler) const override;

  private:
    EncodedBand stored(const Job& job, RowRange range) const;

    NumberKind kind;
};

}  // namespace render

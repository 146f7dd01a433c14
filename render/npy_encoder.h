// The numbers of pictures, for NumPy.
#pragma once

#include "render/encoder.h"

namespace render {

// A NumPy file of version 1.0 and shape (height, width) in place of a picture: counts as int32, the
// limit where no step escaped, or smooth values as float64, NaN there. The jobs have a colouring
// and one sample a pixel.
class NpyEncoder : public Encoder {
  public:
    explicit NpyEncoder(bool ofValues) : values(ofValues) {}

    std::string head(const Job& job) const override;
    EncodedBand band(const Job& job, RowRange range, Workshop& workshop) const override;
    std::string tail(std::uint32_t adler) const override;

  private:
    bool values;
};

}  // namespace render

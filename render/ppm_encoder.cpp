#include "render/ppm_encoder.h"

#include "render/colour_rows.h"

namespace render {

std::string PpmEncoder::head(const Job& job) const {
    return "P6\n" + std::to_string(job.size.width) + " " + std::to_string(job.size.height) +
           (pixelBytes(job) == 6 ? "\n65535\n" : "\n255\n");
}

EncodedBand PpmEncoder::band(const Job& job, RowRange range, Workshop& workshop) const {
    const std::size_t rowBytes =
        static_cast<std::size_t>(pixelBytes(job)) * static_cast<std::size_t>(job.size.width);
    EncodedBand made;
    made.bytes.resize(rowBytes * static_cast<std::size_t>(range.count()));
    workshop.rows.render(job, range, reinterpret_cast<unsigned char*>(made.bytes.data()), rowBytes);
    return made;
}

std::string PpmEncoder::tail(const Job&, std::uint32_t) const {
    return {};
}

}  // namespace render

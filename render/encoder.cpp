#include "render/encoder.h"

#include <algorithm>
#include <cstdint>

#include "render/colour_rows.h"
#include "render/png_writer.h"
#include "render/settings.h"

namespace render {
namespace {

// Rows of a band, a multiple of what the tile renderers work best with. A band is large enough to
// pack well and small enough that every core of a large machine gets some of a picture.
int bandHeight(Size size) {
    constexpr std::int64_t LEAST = 1 << 12, MOST = 1 << 16;  // pixels
    constexpr int PARTS = 32, MULTIPLE = 16;
    const std::int64_t pixels = std::int64_t{size.width} * size.height;
    const std::int64_t wanted = std::clamp(pixels / PARTS, LEAST, MOST) / size.width;
    return static_cast<int>(std::max<std::int64_t>(wanted / MULTIPLE, 1) * MULTIPLE);
}

}  // namespace

int bandCount(Size size) {
    const int height = bandHeight(size);
    return (size.height + height - 1) / height;
}

RowRange bandRows(Size size, int band) {
    const int height = bandHeight(size);
    return {band * height, std::min((band + 1) * height, size.height)};
}

std::string PngEncoder::head(const Job& job) const {
    std::vector<PngText> texts;
    if (metadata) {
        texts = {{"Title", job.view.name},
                 {"Software", "Tessary " TESSARY_VERSION},
                 {"tessary", describe(job)}};
    } else if (job.band) {
        texts = {{"tessary", describe(job)}};  // or nobody could join it
    }
    return pngHead(job.size, texts, pixelBytes(job) == 6 ? 16 : 8) +
           pngChunk("IDAT", streamHead(compression));
}

EncodedBand PngEncoder::band(const Job& job, RowRange range, Workshop& workshop) const {
    const auto pixel = static_cast<std::size_t>(pixelBytes(job));
    const std::size_t rowBytes = 1 + pixel * static_cast<std::size_t>(job.size.width);
    const auto rows = static_cast<std::size_t>(range.count());
    std::string& pixels = workshop.pixels;
    pixels.resize(rowBytes * rows);
    for (std::size_t y = 0; y < rows; ++y) pixels[y * rowBytes] = 0;  // the filter: none
    workshop.rows.render(job, range, reinterpret_cast<unsigned char*>(pixels.data()) + 1, rowBytes);
    const bool dithered = job.colouring && job.colouring->isDithered();
    const PackedBand packed = dithered && compression == Compression::fast
                                  ? workshop.packer.packDithered(pixels, rowBytes, pixel)
                                  : workshop.packer.pack(pixels, rowBytes, pixel, compression);
    return {pngChunk("IDAT", packed.blocks), packed.adler, packed.length};
}

std::string PngEncoder::tail(const Job&, std::uint32_t adler) const {
    return pngChunk("IDAT", streamTail(adler)) + pngChunk("IEND", {});
}

}  // namespace render

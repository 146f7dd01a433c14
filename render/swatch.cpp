#include "render/swatch.h"

#include "render/colour_rows.h"

namespace render {
namespace {

constexpr Size USUAL_SIZE = {1024, 64};

// Column x has the colour at its middle.
class SwatchRows : public RowSource {
  public:
    SwatchRows(int across, std::shared_ptr<const Colouring> colouring, int bytes)
        : width(across), colours(std::move(colouring)), pixel(bytes) {}

    void read(int first, int end, unsigned char* out, std::size_t stride) override {
        for (int y = first; y < end; ++y, out += stride) {
            for (int x = 0; x < width; ++x) {
                putLevels(colours->atPlace((x + 0.5) / width), *colours, x, y, out + x * pixel);
            }
        }
    }

  private:
    const int width;
    const std::shared_ptr<const Colouring> colours;
    const int pixel;
};

}  // namespace

Job planSwatch(const Options& options) {
    Job job;
    job.size = USUAL_SIZE;
    if (options.size) job.size.width = options.size->width;
    if (options.size && options.size->height) job.size.height = *options.size->height;
    WantedColours wanted = wantedColours(options.colour);
    wanted.smooth = true;
    job.colouring = std::make_shared<const Colouring>(wanted);
    job.output = options.output;
    job.stored = std::make_shared<SwatchRows>(job.size.width, job.colouring, pixelBytes(job));
    return job;
}

}  // namespace render

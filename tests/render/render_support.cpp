#include "tests/render/render_support.h"

#include <png.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "render/encoder.h"
#include "render/rows.h"
#include "render/run.h"

namespace test_support {
render::Job jobOf(const CatalogueRow& row, render::Size size, render::Precision precision) {
    render::Job job;
    job.view = {row.xMax, row.xMin,     row.yMax,    row.yMin,        row.cx,   row.cy,
                row.type, row.maxIters, row.maxSize, row.paletteType, row.name, 0};
    job.size = size;
    job.precision = precision;
    job.palette = std::make_shared<render::Palette>(render::builtInPalette(row.paletteType));
    return job;
}

Picture renderedRows(const render::Job& job) {
    const std::atomic<bool> never{false};
    render::RowRenderer rows(never);
    const auto width = static_cast<std::size_t>(job.size.width);
    std::vector<unsigned char> colours(3 * width * static_cast<std::size_t>(job.size.height));
    rows.render(job, {0, job.size.height}, colours.data(), 3 * width);
    Picture picture(job.size.width, job.size.height, 255);
    for (std::size_t n = 0; n < colours.size() / 3; ++n) {
        std::copy_n(colours.data() + 3 * n, 3, picture.bytes.data() + 4 * n);
    }
    return picture;
}

Picture readPng(const std::string& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        throw std::runtime_error(image.message);
    }
    image.format = PNG_FORMAT_RGBA;
    Picture picture(static_cast<int>(image.width), static_cast<int>(image.height), 0);
    if (png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    return picture;
}

void writePicture(render::Job job, const std::string& path, int threads) {
    job.output = path;
    render::makePictures({job}, render::PngEncoder(render::Compression::fast, true),
                         {.threads = threads, .quiet = true});
}

}  // namespace test_support

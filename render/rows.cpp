#include "render/rows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "compute/pixels.h"
#include "compute/saturate.h"
#include "compute/tile_renderer.h"
#include "render/colour_rows.h"
#include "render/linear_light.h"

namespace render {
namespace {

// As many rows of samples as the tile renderers work best with.
constexpr int SAMPLE_ROWS = 16;

std::size_t sampleStride(const Job& job) {
    return 4 * static_cast<std::size_t>(job.size.width) * static_cast<std::size_t>(job.supersample);
}

// Where the first row of the whole picture would lie if `rows` are at its row `first`: the tile
// renderers write a pixel at its place in the picture, and touch nothing but the rows asked for. A
// number on the way, for a pointer may not leave its array; what it points to is written.
// NOLINTNEXTLINE(readability-non-const-parameter)
unsigned char* wholePicture(unsigned char* rows, int first, std::size_t stride) {
    const auto address = reinterpret_cast<std::uintptr_t>(rows);
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<unsigned char*>(address - static_cast<std::size_t>(first) * stride);
}

template <class T>
void renderAs(const Job& job, RowRange rows, unsigned char* picture, StopFlag stop) {
    const fractal& v = job.view;
    const int width = job.size.width * job.supersample;
    renderTileUntilStopped<T>(
        {0, rows.first, width, rows.end, width, wholeSize(job).height * job.supersample,
         static_cast<T>(v.xMin), static_cast<T>(v.xMax), static_cast<T>(v.yMin),
         static_cast<T>(v.yMax), static_cast<T>(v.cx), static_cast<T>(v.cy),
         static_cast<T>(truncateToInt(v.maxSize)), v.maxIters, picture, job.palette->table.data(),
         stop},
        v.fractalType);
}

// Whether the n x n samples at `corner` are all the same.
bool isFlat(const unsigned char* corner, std::size_t stride, int n) {
    const std::size_t bytes = 4 * static_cast<std::size_t>(n);
    if (std::memcmp(corner, corner + 4, bytes - 4) != 0) return false;
    for (int y = 1; y < n; ++y) {
        if (std::memcmp(corner, corner + static_cast<std::size_t>(y) * stride, bytes) != 0) {
            return false;
        }
    }
    return true;
}

void average(const unsigned char* corner, std::size_t stride, int n, unsigned char* out) {
    const auto& light = lightOfLevel();
    std::array<std::uint64_t, 3> sum{};
    for (int y = 0; y < n; ++y, corner += stride) {
        for (int x = 0; x < n; ++x) {
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += light[corner[4 * x + static_cast<int>(c)]];
        }
    }
    const auto count = static_cast<std::uint64_t>(n * n);
    for (std::size_t c = 0; c < 3; ++c) out[c] = levelOfAverage(sum[c], count);
}

// Mixes the light of `from` into `row`.
void fade(const unsigned char* from, unsigned char* row, std::size_t bytes, const Fade& how) {
    const auto& light = lightOfLevel();
    const auto steps = static_cast<std::uint64_t>(how.steps);
    const auto own = static_cast<std::uint64_t>(how.step);
    for (std::size_t n = 0; n < bytes; ++n) {
        row[n] = levelOfAverage(own * light[row[n]] + (steps - own) * light[from[n]], steps);
    }
}

}  // namespace

void RowRenderer::renderSamples(const Job& job, RowRange sampleRows) {
    const std::size_t stride = sampleStride(job);
    samples.resize(static_cast<std::size_t>(sampleRows.count()) * stride);
    if (job.precision == Precision::exact) return renderExactly(job, sampleRows);
    unsigned char* picture = wholePicture(samples.data(), sampleRows.first, stride);
    if (job.precision == Precision::doubles) {
        renderAs<double>(job, sampleRows, picture, &stop);
    } else {
        renderAs<float>(job, sampleRows, picture, &stop);
    }
}

void RowRenderer::renderExactly(const Job& job, RowRange sampleRows) {
    computeNumbers(job, sampleRows, false, stop, numbers);
    const int limit = job.view.maxIters;
    unsigned char* pixel = samples.data();
    for (const std::int32_t count : numbers.counts) {
        colourPixel(pixel, stays(job, count) ? limit : count, limit, job.palette->table.data());
        pixel += 4;
    }
}

void RowRenderer::copyRow(const Job& job, int sampleRow, unsigned char* out) const {
    const unsigned char* in =
        samples.data() + static_cast<std::size_t>(sampleRow) * sampleStride(job);
    const int last = job.size.width - 1;
    // Four bytes at once are cheaper than three; the fourth is overwritten by the next pixel.
    for (int x = 0; x < last; ++x, in += 4, out += 3) std::memcpy(out, in, 4);
    std::memcpy(out, in, 3);
}

void RowRenderer::averageRow(const Job& job, int sampleRow, unsigned char* out) const {
    const std::size_t stride = sampleStride(job);
    const int n = job.supersample;
    const unsigned char* in = samples.data() + static_cast<std::size_t>(sampleRow) * stride;
    for (int x = 0; x < job.size.width; ++x, in += 4 * n, out += 3) {
        if (isFlat(in, stride, n)) {
            std::memcpy(out, in, 3);
        } else {
            average(in, stride, n, out);
        }
    }
}

void RowRenderer::render(const Job& job, RowRange rows, unsigned char* out, std::size_t stride) {
    if (job.stored) {
        job.stored->read(rows.first, rows.end, out, stride);
        return;
    }
    if (job.band && job.band->blank) {
        std::fill_n(
            out,
            static_cast<std::size_t>(pixelBytes(job)) * static_cast<std::size_t>(job.size.width),
            std::uint8_t{0});
    } else if (job.band) {
        compute(job, {job.band->first + rows.first, job.band->first + rows.end}, out, stride);
    } else {
        compute(job, rows, out, stride);
    }
    if (job.fade) fadeRows(job, rows, out, stride);
}

void RowRenderer::fadeRows(const Job& job, RowRange rows, unsigned char* out, std::size_t stride) {
    const int pixel = pixelBytes(job);
    const std::size_t rowBytes =
        static_cast<std::size_t>(pixel) * static_cast<std::size_t>(job.size.width);
    other.resize(rowBytes * static_cast<std::size_t>(rows.count()));
    compute(*job.fade->from, rows, other.data(), rowBytes);
    for (int y = 0; y < rows.count(); ++y) {
        const auto row = static_cast<std::size_t>(y);
        const auto mix = pixel == 3 ? fade : fadeDeep;
        mix(other.data() + row * rowBytes, out + row * stride, rowBytes, *job.fade);
    }
}

// Rows of the whole picture.
void RowRenderer::compute(const Job& job, RowRange rows, unsigned char* out, std::size_t stride) {
    if (job.colouring) {
        colours.render(job, rows, out, stride);
        return;
    }
    const int n = job.supersample;
    const int step = std::max(SAMPLE_ROWS / n, 1);
    for (int first = rows.first; first < rows.end && !stop; first += step) {
        const int end = std::min(first + step, rows.end);
        renderSamples(job, {first * n, end * n});
        for (int y = first; y < end; ++y, out += stride) {
            if (n == 1) {
                copyRow(job, y - first, out);
            } else {
                averageRow(job, (y - first) * n, out);
            }
        }
    }
}

}  // namespace render

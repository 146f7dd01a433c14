#include "render/colour_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "compute/pixels.h"
#include "compute/value_colours.h"
#include "compute/value_tile.h"
#include "render/colour_curves.h"

namespace render {
namespace {

constexpr int SAMPLE_ROWS = 16;  // as many as the tile renderers work best with

template <class T>
void computeAs(const Job& job, RowRange rows, bool values, const std::atomic<bool>& stop,
               NumberRows& out) {
    const fractal& v = job.view;
    const int width = job.size.width * job.supersample;
    const ValueTile<T> tile{0,
                            rows.first,
                            width,
                            rows.end,
                            width,
                            wholeSize(job).height * job.supersample,
                            static_cast<T>(v.xMin),
                            static_cast<T>(v.xMax),
                            static_cast<T>(v.yMin),
                            static_cast<T>(v.yMax),
                            static_cast<T>(v.cx),
                            static_cast<T>(v.cy),
                            static_cast<T>(escapeBound(v, job.colouring->wanted())),
                            v.maxIters,
                            values ? nullptr : out.counts.data(),
                            values ? out.values.data() : nullptr,
                            0,
                            rows.first,
                            width,
                            &stop};
    renderValues(tile, v.fractalType);
}

// The colours of samples from the palette.
class Samples {
  public:
    Samples(const Job& which, const NumberRows& from) : job(which), numbers(from) {}

    Levels at(std::size_t n) const {
        const int count = numbers.counts[n];
        return stays(job, count) ? job.colouring->inside() : ofPalette(count);
    }

    // The average, in linear light, of the samples from n on.
    Levels average(std::size_t n) const {
        const int side = job.supersample;
        const auto stride = static_cast<std::size_t>(job.size.width * side);
        Levels sum{};
        for (int y = 0; y < side; ++y, n += stride) {
            for (int x = 0; x < side; ++x) add(at(n + static_cast<std::size_t>(x)), sum);
        }
        for (double& light : sum) light = levelOf(light / (side * side));
        return sum;
    }

  private:
    Levels ofPalette(int count) const {
        const unsigned char* entry = job.palette->table.data() + 4 * (count % PALETTE_ENTRIES);
        return {entry[0] / 255.0, entry[1] / 255.0, entry[2] / 255.0};
    }

    static void add(const Levels& colour, Levels& sum) {
        for (std::size_t c = 0; c < 3; ++c) sum[c] += lightOf(colour[c]);
    }

    const Job& job;
    const NumberRows& numbers;
};

unsigned deepLevel(const unsigned char* at) {
    return unsigned{at[0]} << 8U | at[1];
}

// A level as the whole number below it, raised; in the arithmetic of compute/value_colours.h.
unsigned cut(double level, float rounding) {
    return static_cast<unsigned>(std::clamp(static_cast<float>(level), 0.0F, 1.0F) * 255 +
                                 rounding);
}

void putDeep(double level, unsigned char* out) {
    // Half up, as levels of 8 bits are. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    const auto whole = static_cast<unsigned>(std::clamp(level, 0.0, 1.0) * 65535 + 0.5);
    out[0] = static_cast<unsigned char>(whole >> 8U);
    out[1] = static_cast<unsigned char>(whole & 0xffU);
}

// What is added to levels of row y before they are cut.
const float* roundingsOf(const Colouring& how, int y) {
    constexpr auto HALVES = [] {
        std::array<float, ROUNDINGS> halves{};
        halves.fill(0.5F);
        return halves;
    }();
    static constexpr std::array<float, ROUNDINGS> NEAREST = HALVES;
    return how.isDithered() ? DITHER[static_cast<unsigned>(y) % DITHER.size()].data()
                            : NEAREST.data();
}

}  // namespace

void computeNumbers(const Job& job, RowRange rows, bool values, const std::atomic<bool>& stop,
                    NumberRows& out) {
    const auto elements = static_cast<std::size_t>(rows.count()) *
                          static_cast<std::size_t>(job.size.width * job.supersample);
    if (values) {
        out.values.resize(elements);
    } else {
        out.counts.resize(elements);
    }
    if (job.precision == Precision::exact) {
        job.exact->compute(rows, values ? nullptr : out.counts.data(),
                           values ? out.values.data() : nullptr, &stop, out.held);
    } else if (job.precision == Precision::doubles) {
        computeAs<double>(job, rows, values, stop, out);
    } else {
        computeAs<float>(job, rows, values, stop, out);
    }
}

void putLevels(const Levels& colour, const Colouring& how, int x, int y, unsigned char* out) {
    const float rounding = how.isDithered() ? ditherThreshold(x, y) : 0.5F;
    for (int c = 0; c < 3; ++c) {
        const double level = colour[static_cast<std::size_t>(c)];
        if (how.isDeep()) {
            putDeep(level, out + 2 * c);
        } else {
            out[c] = static_cast<unsigned char>(cut(level, rounding));
        }
    }
}

void colourRow(const Colouring& how, int y, const double* values, std::vector<std::int32_t>& left,
               unsigned char* out) {
    const int pixel = how.isDeep() ? 6 : 3;
    const int count = colourValues(how.forRows(), roundingsOf(how, y), values,
                                   static_cast<int>(left.size()), out, left.data());
    for (int n = 0; n < count; ++n) {
        const int x = left[static_cast<std::size_t>(n)];
        putLevels(how.of(values[x]), how, x, y, out + x * pixel);
    }
}

Light averageLight(const Colouring& how, const double* values, std::ptrdiff_t stride, int side) {
    Light sum{};
    for (int y = 0; y < side; ++y, values += stride) {
        for (int x = 0; x < side; ++x) {
            const Light light = how.lightOf(values[x]);
            for (std::size_t c = 0; c < 3; ++c) sum[c] += light[c];
        }
    }
    for (float& light : sum) light *= 1 / static_cast<float>(side * side);
    return sum;
}

void colourSamples(const Colouring& how, int y, const double* values, int side,
                   std::vector<std::int32_t>& left, unsigned char* out) {
    const int pixel = how.isDeep() ? 6 : 3, width = static_cast<int>(left.size());
    const SampleRows samples{values, std::ptrdiff_t{width} * side, side};
    const int count =
        colourAverages(how.forSamples(), roundingsOf(how, y), samples, width, out, left.data());
    for (int n = 0; n < count; ++n) {
        const int x = left[static_cast<std::size_t>(n)];
        const Light light = averageLight(how, values + x * side, samples.stride, side);
        putLevels({levelOfLight(light[0]), levelOfLight(light[1]), levelOfLight(light[2])}, how, x,
                  y, out + x * pixel);
    }
}

int pixelBytes(const Job& job) {
    return job.colouring && job.colouring->isDeep() ? 6 : 3;
}

void ColourRows::render(const Job& job, RowRange rows, unsigned char* out, std::size_t stride) {
    const int n = job.supersample;
    const int step = std::max(SAMPLE_ROWS / n, 1);
    left.resize(static_cast<std::size_t>(job.size.width));
    const auto rowOfPixels =
        static_cast<std::size_t>(n * n) * static_cast<std::size_t>(job.size.width);
    for (int first = rows.first; first < rows.end && !stop; first += step) {
        const int end = std::min(first + step, rows.end);
        computeNumbers(job, {first * n, end * n}, job.colouring->isSmooth(), stop, numbers);
        std::size_t sample = 0;
        for (int y = first; y < end; ++y, out += stride, sample += rowOfPixels) {
            renderRow(job, y, sample, out);
        }
    }
}

void ColourRows::renderRow(const Job& job, int y, std::size_t sample, unsigned char* out) {
    const Colouring& how = *job.colouring;
    if (!how.hasGradient()) {
        averageRow(job, y, sample, out);
    } else if (job.supersample == 1) {
        colourRow(how, y, valuesFrom(job, sample), left, out);
    } else {
        colourSamples(how, y, valuesFrom(job, sample), job.supersample, left, out);
    }
}

// Values of the samples of a row of pixels. A count is one; that of a point that stays is none.
const double* ColourRows::valuesFrom(const Job& job, std::size_t sample) {
    if (job.colouring->isSmooth()) return numbers.values.data() + sample;
    constexpr double INSIDE = std::numeric_limits<double>::quiet_NaN();
    const auto samples = static_cast<std::size_t>(job.supersample * job.supersample);
    row.resize(samples * static_cast<std::size_t>(job.size.width));
    for (double& value : row) {
        const std::int32_t count = numbers.counts[sample++];
        value = stays(job, count) ? INSIDE : count;
    }
    return row.data();
}

void ColourRows::averageRow(const Job& job, int y, std::size_t sample, unsigned char* out) const {
    const Samples samples(job, numbers);
    const int n = job.supersample, pixel = pixelBytes(job);
    for (int x = 0; x < job.size.width; ++x, sample += static_cast<std::size_t>(n)) {
        putLevels(n == 1 ? samples.at(sample) : samples.average(sample), *job.colouring, x, y,
                  out + x * pixel);
    }
}

void fadeDeep(const unsigned char* from, unsigned char* row, std::size_t bytes, const Fade& how) {
    const double own = static_cast<double>(how.step) / how.steps;
    for (std::size_t n = 0; n < bytes; n += 2) {
        const double light = own * lightOf(deepLevel(row + n) / 65535.0) +
                             (1 - own) * lightOf(deepLevel(from + n) / 65535.0);
        putDeep(levelOf(light), row + n);
    }
}

}  // namespace render

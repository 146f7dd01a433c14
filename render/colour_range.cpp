#include "render/colour_range.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

#include "render/colour_rows.h"
#include "render/encoder.h"
#include "render/pipeline.h"
#include "render/run.h"

namespace render {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr ValueRange NOTHING = {INFINITE, -INFINITE};

ValueRange joined(const ValueRange& a, const ValueRange& b) {
    return {std::min(a.least, b.least), std::max(a.greatest, b.greatest)};
}

ValueRange rangeOf(const NumberRows& numbers, const Job& job) {
    ValueRange range = NOTHING;
    const auto take = [&](double value) { range = joined(range, {value, value}); };
    if (job.colouring->isSmooth()) {
        for (const double value : numbers.values) {
            if (!std::isnan(value)) take(value);
        }
    } else {
        for (const std::int32_t count : numbers.counts) {
            if (!stays(job, count)) take(count);
        }
    }
    return range;
}

// In pieces of a few rows of samples, so that memory stays small.
ValueRange rangeIn(const Job& job, RowRange rows, const std::atomic<bool>& stop) {
    constexpr int ROWS = 16;
    const int end = rows.end * job.supersample;
    ValueRange range = NOTHING;
    NumberRows numbers;
    for (int y = rows.first * job.supersample; y < end; y += ROWS) {
        computeNumbers(job, {y, std::min(y + ROWS, end)}, job.colouring->isSmooth(), stop, numbers);
        range = joined(range, rangeOf(numbers, job));
    }
    return range;
}

}  // namespace

ValueRange valuesIn(const Job& job, int threads) {
    const Size size = wholeSize(job);
    const std::atomic<bool> never{false};
    const auto bands = static_cast<std::uint64_t>(bandCount(size));
    const int count = threadCount(threads);
    Pipeline<ValueRange> pipeline(bands, count, static_cast<std::uint64_t>(2 * count), [&] {
        return [&](std::uint64_t band) {
            return rangeIn(job, bandRows(size, static_cast<int>(band)), never);
        };
    });
    ValueRange range = NOTHING;
    for (std::uint64_t band = 0; band < bands; ++band) range = joined(range, pipeline.next());
    if (job.exact) job.exact->countAnew();
    return range.least <= range.greatest ? range : ValueRange{};
}

Job stretched(Job job, const ValueRange& range) {
    job.colouring = std::make_shared<const Colouring>(job.colouring->over(range));
    return job;
}

}  // namespace render

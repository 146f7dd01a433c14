// What stands in a NumPy file.
#include "render/npy_encoder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "render/colour_rows.h"
#include "render/deflate.h"
#include "render/number_share.h"
#include "tests/render/render_support.h"

namespace {

using render::EncodedBand;
using render::Job;
using render::NpyEncoder;
using render::NumberKind;
using render::NumberRows;

constexpr NumberKind KINDS[] = {NumberKind::counts, NumberKind::values};
const std::atomic<bool> NEVER{false};

Job numberJob() {
    const auto& row = test_support::catalogueRows()[0];
    Job job = test_support::jobOf(row, {7, 12}, render::Precision::doubles);
    job.colouring = std::make_shared<const render::Colouring>(render::WantedColours{});
    return job;
}

Job bandOf(Job job, int first, int rows) {
    job.band = render::Band{.number = 2, .count = 3, .first = first, .whole = job.size};
    job.size.height = rows;
    return job;
}

// The bytes of rows of all the picture.
std::string bytesOf(const Job& job, NumberKind kind, render::RowRange rows) {
    NumberRows numbers;
    computeNumbers(job, rows, kind == NumberKind::values, NEVER, numbers);
    std::string bytes(
        numbers.counts.size() * sizeof(std::int32_t) + numbers.values.size() * sizeof(double),
        '\0');
    const void* from = kind == NumberKind::values ? static_cast<const void*>(numbers.values.data())
                                                  : numbers.counts.data();
    std::memcpy(bytes.data(), from, bytes.size());
    return bytes;
}

EncodedBand encoded(const Job& job, NumberKind kind, render::RowRange rows) {
    render::Workshop workshop(NEVER);
    return NpyEncoder(kind).band(job, rows, workshop);
}

TEST(ANumberFile, IsAHeadAndItsNumbers) {
    const Job job = numberJob();
    for (const NumberKind kind : KINDS) {
        EXPECT_EQ(NpyEncoder(kind).head(job), npyHead({7, 12}, kind));
        EXPECT_EQ(encoded(job, kind, {0, 12}).bytes, bytesOf(job, kind, {0, 12}));
        EXPECT_EQ(encoded(job, kind, {3, 8}).bytes, bytesOf(job, kind, {3, 8}));
        EXPECT_EQ(NpyEncoder(kind).tail(job, 17), "");
    }
}

TEST(AShareOfNumbers, HasItsOwnRowsAndTheirChecksum) {
    const Job whole = numberJob(), job = bandOf(whole, 4, 5);
    for (const NumberKind kind : KINDS) {
        EXPECT_EQ(NpyEncoder(kind).head(job), npyHead({7, 5}, kind));
        const EncodedBand made = encoded(job, kind, {1, 4});
        EXPECT_EQ(made.bytes, bytesOf(whole, kind, {5, 8}));
        EXPECT_EQ(made.length, made.bytes.size());
        EXPECT_EQ(made.adler, render::adlerOf(1, made.bytes));
        EXPECT_EQ(NpyEncoder(kind).tail(job, 17), numberRecord(job, kind, 17));
    }
}

TEST(AShareOfNumbersWithoutARow, IsEmpty) {
    Job job = bandOf(numberJob(), 4, 1);
    job.band->blank = true;
    const EncodedBand made = encoded(job, NumberKind::counts, {0, 1});
    EXPECT_EQ(made.bytes, "");
    EXPECT_EQ(made.adler, 1u);
    EXPECT_EQ(NpyEncoder(NumberKind::counts).head(job), npyHead({7, 0}, NumberKind::counts));
}

// Rows whose bytes tell where they stand.
class RowsOfTheirPlaces : public render::RowSource {
  public:
    void read(int first, int end, unsigned char* out, std::size_t stride) override {
        for (int y = first; y < end; ++y, out += stride) std::memset(out, y, stride);
    }
};

TEST(StoredNumbers, AreTakenAsTheyStand) {
    Job job = numberJob();
    job.stored = std::make_shared<RowsOfTheirPlaces>();
    EXPECT_EQ(encoded(job, NumberKind::counts, {2, 4}).bytes,
              std::string(7 * 4, '\2') + std::string(7 * 4, '\3'));
    EXPECT_EQ(encoded(job, NumberKind::values, {5, 6}).bytes, std::string(7 * 8, '\5'));
}

}  // namespace

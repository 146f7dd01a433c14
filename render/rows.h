// The pixels of a picture, some rows at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "render/colour_rows.h"
#include "render/job.h"

namespace render {

// Computes rows of pictures, each pixel as the window computes it in a picture of this size. An
// object serves one thread; it keeps its memory from one call to the next.
class RowRenderer {
  public:
    // Once `stopFlag` is set a call returns soon, and what it leaves is not a picture.
    explicit RowRenderer(const std::atomic<bool>& stopFlag) : stop(stopFlag), colours(stopFlag) {}

    // Writes red, green and blue of each pixel of these rows: row y to out + (y - rows.first) *
    // stride, left to right. stride: bytes, at least pixelBytes() * width.
    void render(const Job& job, RowRange rows, unsigned char* out, std::size_t stride);

  private:
    void compute(const Job& job, RowRange rows, unsigned char* out, std::size_t stride);
    void fadeRows(const Job& job, RowRange rows, unsigned char* out, std::size_t stride);
    void renderSamples(const Job& job, RowRange sampleRows);
    void renderExactly(const Job& job, RowRange sampleRows);
    void copyRow(const Job& job, int sampleRow, unsigned char* out) const;
    void averageRow(const Job& job, int sampleRow, unsigned char* out) const;

    const std::atomic<bool>& stop;
    ColourRows colours;                  // of jobs with a colouring
    NumberRows numbers;                  // counts of exact arithmetic
    std::vector<unsigned char> samples;  // four bytes each, rows of the picture N times as large
    std::vector<unsigned char> other;    // rows of the picture left by a fade
};

}  // namespace render

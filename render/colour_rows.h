// The pixels of pictures whose colours are not the window's: from counts or values over a gradient
// or a palette to levels of 8 or 16 bits.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "render/exact_picture.h"
#include "render/job.h"

namespace render {

// Counts and values of rows of a picture. Elements lie row behind row without gaps.
struct NumberRows {
    std::vector<std::int32_t> counts;  // empty when not asked for
    std::vector<double> values;
    HeldPicture held;  // the exact picture that they are of, to which the next rows may belong
};

// Whether a count is that of a point that stays. One that exact arithmetic left undecided, -1, is
// shown as such a point.
inline bool stays(const Job& job, std::int32_t count) {
    return count < 0 || count >= job.view.maxIters;
}

// Computes those of rows `rows` of the picture with `samples` samples a side for each pixel.
void computeNumbers(const Job& job, RowRange rows, bool values, const std::atomic<bool>& stop,
                    NumberRows& out);

// Computes rows of pictures with a colouring. An object serves one thread.
class ColourRows {
  public:
    explicit ColourRows(const std::atomic<bool>& stopFlag) : stop(stopFlag) {}

    // Writes three levels a pixel of rows of the whole picture, row y to out + (y - rows.first) *
    // stride; levels of 16 bits are two bytes, the greater one first.
    void render(const Job& job, RowRange rows, unsigned char* out, std::size_t stride);

  private:
    void renderRow(const Job& job, int y, std::size_t sample, unsigned char* out);
    void averageRow(const Job& job, int y, std::size_t sample, unsigned char* out) const;
    const double* valuesFrom(const Job& job, std::size_t sample);

    const std::atomic<bool>& stop;
    NumberRows numbers;
    std::vector<double> row;         // counts of a row of pixels as values
    std::vector<std::int32_t> left;  // pixels of a row that vectors leave
};

// A row of colours as such levels. y: in the whole picture.
void putLevels(const Levels& colour, const Colouring& how, int x, int y, unsigned char* out);

// The levels of a row of values over a gradient, as putLevels() makes them of how.of(value), with
// vectors where the machine has them. room: as many elements as there are pixels.
void colourRow(const Colouring& how, int y, const double* values, std::vector<std::int32_t>& room,
               unsigned char* out);

// The same of averages of side x side values for each pixel; left: their number of pixels.
void colourSamples(const Colouring& how, int y, const double* values, int side,
                   std::vector<std::int32_t>& room, unsigned char* out);

// The light of the values of one pixel, whose rows are `stride` elements apart.
Light averageLight(const Colouring& how, const double* values, std::ptrdiff_t stride, int side);

// Number of bytes of a pixel: 3 or 6.
int pixelBytes(const Job& job);

// Mixes the light of `from` into `row`, both of levels of 16 bits.
void fadeDeep(const unsigned char* from, unsigned char* row, std::size_t bytes, const Fade& how);

}  // namespace render

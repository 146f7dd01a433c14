// One picture to make: everything that its pixels, its chunks and its place depend on.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "frac/fractal.h"
#include "render/colouring.h"
#include "render/geometry.h"
#include "render/palette.h"

namespace render {

inline constexpr int MOST_SUPERSAMPLE = MOST_SAMPLES;

// automatic: exact where doubles do not suffice; no job has it (see render/precision.h).
enum class Precision { singles, doubles, exact, automatic };

class ExactPicture;

struct Job;

// A picture in which one view fades into another: `step` of `steps` parts of its light are those
// of the job's own view, the rest those of `from`, a picture of the same size.
struct Fade {
    std::shared_ptr<const Job> from;
    int step = 0, steps = 1;
};

// Rows of a picture that is made in parts, as a picture of its own.
struct Band {
    int number = 1, count = 1;  // band `number` of `count`, from the top
    int first = 0;              // its first row
    Size whole;                 // of all the picture
    bool blank = false;         // no row is left for it: its one row stands for none
    // How the bands are to be joined; all have the same.
    bool small = false, metadata = true;
};

// Pixels that are there already.
class RowSource {
  public:
    virtual ~RowSource() = default;

    // Writes rows `first` up to `end`: red, green and blue of each pixel in levels of the depth
    // that the job has, or where the job is about numbers those: row y to out + (y - first) *
    // stride. Called from the top down, on one thread at a time.
    virtual void read(int first, int end, unsigned char* out, std::size_t stride) = 0;
};

struct Job {
    fractal view;  // the rectangle after the fit, limit and palette after the options
    Size size;
    Precision precision = Precision::doubles;
    int supersample = 1;  // samples a side for each pixel, 1 to MOST_SUPERSAMPLE
    std::shared_ptr<const Palette> palette;
    std::shared_ptr<const Colouring> colouring;  // null: the palette by counts, as in the window
    std::string output;                          // path, or "-" for standard output
    std::shared_ptr<ExactPicture> exact;         // with exact precision, unless pixels are stored
    std::optional<Fade> fade;
    std::optional<Band> band;           // `size` is that of the band
    std::shared_ptr<RowSource> stored;  // where pixels are read from rather than computed
};

// The size of the picture of which a job makes all or a band.
inline Size wholeSize(const Job& job) {
    return job.band ? job.band->whole : job.size;
}

}  // namespace render

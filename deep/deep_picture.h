// Iteration counts of Mandelbrot and Julia sets at any depth, proven to be those of exact
// arithmetic at the pixel's exact point: no count is a guess, and no result depends on threads, on
// the part of the picture that is asked for or on the instruction set (docs/deep-zoom.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compute/stop_flag.h"
#include "deep/view.h"

namespace deep {

// A view with all that its pixels share. Const once made: any threads render parts at once, which
// may overlap only if they write elsewhere. A view that refusal() refuses must not come here.
class Picture {
  public:
    explicit Picture(const View& view, StopFlag stop = nullptr);
    // Takes over the reference orbit of `before` where it serves this view as well, and else makes
    // one: same texts of centre and constant, same limit, no more iterations, a spacing no smaller.
    // So the deepest frame of a flight is the one to begin with. The other may go at any time.
    Picture(const View& view, const Picture& before, StopFlag stop = nullptr);
    ~Picture();
    Picture(Picture&&) noexcept;
    Picture& operator=(Picture&&) noexcept;

    // Writes the pixels [xStart, xEnd) x [yStart, yEnd), which lie within the picture: (x, y) is
    // element (y - yStart) * stride + (x - xStart). Either pointer may be null.
    //
    // A count is the first step n < maxIters, from 0, with |z|^2 > limit behind it, maxIters where
    // there is none, and -1 where that could not be decided within the effort that multi_orbit.h
    // states. A value is that of compute/value_tile.h, rounded to VALUE_UNIT; NaN where the orbit
    // stays or is undecided.
    //
    // Returns how many pixels were left undecided. Once `stop` is set it returns within some
    // milliseconds, and what was not known by then is not written.
    std::int64_t render(int xStart, int yStart, int xEnd, int yEnd, std::int32_t* counts,
                        double* values, std::ptrdiff_t stride, StopFlag stop = nullptr) const;

    // Whether both pictures follow their pixels from one reference orbit.
    bool sharesReference(const Picture& other) const;

  private:
    class Work;
    std::unique_ptr<const Work> work;
};

}  // namespace deep

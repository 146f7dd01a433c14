// Guards that leave the program's globals as they found them.
#pragma once

#include <cstdint>

#include "backends/image.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "tests/support/picture.h"

namespace test_support {

// Saves the view globals and puts them back.
class ViewGuard {
  public:
    ViewGuard();
    ~ViewGuard();
    ViewGuard(const ViewGuard&) = delete;
    ViewGuard& operator=(const ViewGuard&) = delete;

  private:
    fractal view;
    std::vector<fractal> catalogue;
    std::int32_t index, owed;
    std::string prefix;
    bool cpu, doubles;
};

// Gives the program an image of this size and palette storage, as start-up would, and takes them
// back. Every byte of the image starts as `fill`.
class ImageGuard {
  public:
    ImageGuard(int width, int height, unsigned char fill = 0);
    ~ImageGuard();
    ImageGuard(const ImageGuard&) = delete;
    ImageGuard& operator=(const ImageGuard&) = delete;

    // A copy of the image as it is now.
    Picture picture() const;

  private:
    std::int64_t savedX, savedY;
    auto_array<unsigned char> savedBuffer, savedTemp, savedPalette;
    unsigned char* savedInForce;
};

// A running pool; stops it at the end, drops what is queued, and makes another pool possible.
class Pool {
  public:
    explicit Pool(std::int32_t threads);
    ~Pool();
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
};

// A nameless catalogue entry of this formula and rectangle, with palette 0 and c = 0.
fractal makeView(int type, double left, double right, double low, double high, int limit,
                 double bound = 4.0);

// A view whose every pixel takes 100,000 steps: by the cusp of the Mandelbrot set orbits creep,
// never repeat and never escape, so that no renderer can cut them short.
fractal slowView();

// The picture of the view globals, by plain arithmetic.
Picture expectedPicture();

// Drops every queued tile.
void clearQueue();

}  // namespace test_support

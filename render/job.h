// One picture to make: everything that its pixels, its chunks and its place depend on.
#pragma once

#include <memory>
#include <string>

#include "frac/fractal.h"
#include "render/geometry.h"
#include "render/palette.h"

namespace render {

inline constexpr int MOST_SUPERSAMPLE = 8;

enum class Precision { singles, doubles };

struct Job {
    fractal view;  // the rectangle after the fit, limit and palette after the options
    Size size;
    Precision precision = Precision::doubles;
    int supersample = 1;  // samples a side for each pixel, 1 to MOST_SUPERSAMPLE
    std::shared_ptr<const Palette> palette;
    std::string output;  // path, or "-" for standard output
};

}  // namespace render

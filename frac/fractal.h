// The catalogue record: plain data, as files, catalogue and renderers share it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "frac/exact_place.h"

// One catalogue entry. The member order (maximum before minimum, x before y) is the order in which
// every copy of a record is made.
struct fractal {
    double xMax = 0.0;             // right edge of the view rectangle (real axis)
    double xMin = 0.0;             // left edge
    double yMax = 0.0;             // top edge (imaginary axis)
    double yMin = 0.0;             // bottom edge
    double cx = 0.0;               // constant c, real part; read by the Julia-like formulas only
    double cy = 0.0;               // constant c, imaginary part
    std::int32_t fractalType = 0;  // formula number, 0..13 (see compute/rules.h)
    std::int32_t maxIters = 0;     // iteration limit
    double maxSize = 0.0;          // escape bound, compared with |z|^2
    std::int32_t paletteType = 0;  // 0 random colours, 1 RGB cycle
    std::string name;              // shown in the window title, any bytes
    std::int32_t fractalID = 0;    // serial number; zoomed copies share their parent's
    // Where the view lies to the last digit, if a document says so; the rectangle and c are then
    // only near that, and the rectangle is a square. Null in whatever a catalogue file has held.
    std::shared_ptr<const ExactPlace> exact = nullptr;
};

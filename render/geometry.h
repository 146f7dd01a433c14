// Sizes of pictures, and what part of the plane one of them shows. Plain functions; any thread.
#pragma once

#include <cstdint>

#include "frac/fractal.h"

namespace render {

inline constexpr int LARGEST_SIDE = 65535;

// Width and height of a picture in pixels, each 1 to LARGEST_SIDE.
struct Size {
    int width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

// The rows from `first` up to `end` of a picture.
struct RowRange {
    int first = 0, end = 0;
    int count() const { return end - first; }
};

// How a rectangle of other proportions than the picture's is brought to it.
enum class Fit {
    contain,  // the side that is too short grows: all of the rectangle is seen
    cover,    // the side that is too long shrinks: the rectangle fills the picture
    stretch   // the rectangle stays as it is
};

// The height that gives a picture of this width the proportions of the view, rounded and at least
// 1; a square where the view lies at an exact place. A view without proportions, or one that wants
// more than LARGEST_SIDE rows, is a Failure.
int heightFor(const fractal& view, int width);

// The record with its rectangle fitted to the picture's proportions. The side that changes does so
// about its centre and keeps its orientation, the other one keeps its bits. Proportions are those
// of absolute lengths; a rectangle with a side that is zero or not finite, or that would become so,
// stays as it is. So does one that fits as well as its edges can tell: what is fitted once is
// fitted for good.
fractal fitted(fractal view, Size size, Fit fit);

}  // namespace render

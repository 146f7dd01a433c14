#include "render/geometry.h"

#include <algorithm>
#include <cmath>

#include "render/failure.h"

namespace render {
namespace {

bool hasLength(double side) {
    return std::isfinite(side) && side != 0;
}

// Gives the side from low to high this absolute length about its centre. Halves are added rather
// than the sum halved: the sum of two finite ends may not be finite.
void resize(double& low, double& high, double length) {
    const double centre = 0.5 * low + 0.5 * high;
    const double half = std::copysign(0.5 * length, high - low);
    const double newLow = centre - half, newHigh = centre + half;
    if (!hasLength(newHigh - newLow)) return;
    low = newLow;
    high = newHigh;
}

// Whether the rounding of edges alone can make the products of the sides unequal, which ought to be
// equal in a rectangle that fits. It may change a side by a thousandth at most.
bool alreadyFits(const fractal& view, double wide, double high, Size size) {
    constexpr double ROUNDING = 0x1p-51, MOST = 0x1p-10;
    const double edges =
        (ROUNDING * std::abs(view.xMin) + ROUNDING * std::abs(view.xMax)) * size.height +
        (ROUNDING * std::abs(view.yMin) + ROUNDING * std::abs(view.yMax)) * size.width;
    return std::abs(wide - high) <= std::min(edges, MOST * std::min(wide, high));
}

}  // namespace

int heightFor(const fractal& view, int width) {
    if (view.exact) return width;
    const double wide = std::abs(view.xMax - view.xMin), high = std::abs(view.yMax - view.yMin);
    const double height = std::round(width * (high / wide));
    if (!(height <= LARGEST_SIDE)) {
        throw Failure(
            "a view of these proportions has no picture of this width: its height is not "
            "between 1 and 65535");
    }
    return height < 1 ? 1 : static_cast<int>(height);
}

fractal fitted(fractal view, Size size, Fit fit) {
    const double wide = std::abs(view.xMax - view.xMin), high = std::abs(view.yMax - view.yMin);
    if (fit == Fit::stretch || !hasLength(wide) || !hasLength(high)) return view;
    const double wideEnough = high * size.width / size.height;
    const double highEnough = wide * size.height / size.width;
    if (alreadyFits(view, wide * size.height, high * size.width, size)) return view;
    const bool tooNarrow = wide * size.height < high * size.width;
    if (tooNarrow == (fit == Fit::contain)) {
        resize(view.xMin, view.xMax, wideEnough);
    } else {
        resize(view.yMin, view.yMax, highEnough);
    }
    return view;
}

}  // namespace render

// Views of quadratic Julia sets whose orbits turn about a point for long, and the state in which a
// thread seeks the region that they stay in. For both kinds of View of these tests.
#pragma once

#include <complex>

#include "compute/staying_region.h"

namespace turning {

// Numbers of float, so that they are the same in both precisions.
constexpr std::complex<double> SIEGEL(-0.39054087f, -0.58678788f), CATALOGUE(-0.391f, -0.587f),
    PARABOLIC(0.25f, 0.0f), NEAR_TWO(-0.75f, 0.01f);

// The middle of the plane under the rule z^2 + c, in tiles of 8 x 8.
template <class View>
View juliaView(std::complex<double> c, bool doublePrecision, int limit) {
    View v;
    v.type = 1;
    v.doublePrecision = doublePrecision;
    v.xMin = v.yMin = -1.25;
    v.xMax = v.yMax = 1.25;
    v.cx = c.real();
    v.cy = c.imag();
    v.maxIters = limit;
    v.tileWidth = v.tileHeight = 8;
    return v;
}

// Lets the next orbit that stays begin a search. Of this thread alone.
template <class View>
void seekAtOnce(const View& v) {
    lastRegion = {};
    lastRegion.turnTo({{v.cx, v.cy}, v.maxIters});
    lastRegion.next = 1;
}

}  // namespace turning

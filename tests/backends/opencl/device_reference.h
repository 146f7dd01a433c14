// What a device must draw, as plain arithmetic: a second evaluation of the fourteen rules in the
// form the OpenCL program has them (escape limit as it is, Hermite with the pixel's point,
// constants that scale, trigonometry in the precision in force). It shares no code with the
// renderers.
#pragma once

#include "tests/support/picture.h"

namespace device_reference {

struct View {
    int type = 0;
    int width = 256, height = 256;
    double xMin = -2, xMax = 2, yMin = -2, yMax = 2;
    double cx = 0, cy = 0;
    double maxSize = 4;
    int maxIters = 64;
};

// The iteration count of pixel (x, y) in float or double; the rule must be one of 0..13.
template <class T>
int count(const View& view, int x, int y);

// The whole picture in single or double precision. palette: 768 entries of four bytes.
test_support::Picture picture(const View& view, bool doublePrecision, const unsigned char* palette);

// The number of pixels that differ in any byte; the pictures must be of one size.
long differingPixels(const test_support::Picture& a, const test_support::Picture& b);

}  // namespace device_reference

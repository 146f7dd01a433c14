// What the program's own CPU renderer draws of a view, beside what a device draws of it.
#pragma once

#include "tests/backends/opencl/device_reference.h"

namespace cpu_picture {

// The whole picture in single or double precision. palette: 768 entries of four bytes.
test_support::Picture picture(const device_reference::View& view, bool doublePrecision,
                              const unsigned char* palette);

// Whether the rule is made of sums and products of the same numbers on a device as on the CPU, so
// that their pictures are the same bytes where the escape limit is whole: not so trigonometry,
// which a device has functions of its own for, and Hermite, to which a device adds the point.
bool isExact(int type);

}  // namespace cpu_picture

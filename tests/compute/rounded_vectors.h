// The correctly rounded functions on vectors, and orbits that are followed with them, with the
// instruction set that is forced (tests/compute/trig_claims.h). Compiled apart from the renderers,
// so that a changed line is tested within seconds.
#pragma once

#include <cstdint>
#include <vector>

#include "compute/sine_cosine.h"
#include "compute/stop_flag.h"

namespace rounded_vectors {

struct Functions {
    SineCosine trigonometric, hyperbolic;
};

// Of each argument, `x.size()` of them, as many at once as a vector has lanes.
std::vector<Functions> functions(const std::vector<double>& x);

struct Point {
    double r, i;
};

// Where an orbit escaped; a count alone for one that stays.
struct Escape {
    std::uint64_t count;
    double before, after;
};

// Follows the orbits of at most 256 points by the rule of `type`, 2 to 5. Empty when told to stop.
std::vector<Escape> follow(int type, const std::vector<Point>& points, double maxSize, int limit,
                           bool detect, StopFlag stop);

}  // namespace rounded_vectors

// What the orbits of the scalar trigonometric rules in float claim, followed on vectors, with the
// instruction set that is forced. Compiled apart from the renderers, so that a changed line is
// tested within seconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "compute/vector_renderer.h"

namespace float_claims {

// The instruction sets of this machine that follow floats so; perhaps none. forceTarget(0): the
// best one.
const std::vector<vector_control::Target>& targets();
void forceTarget(std::int64_t bit);

// A state, and a ball about it that holds the orbits of the scalar rule that began in a saved one.
struct Claim {
    float r, i;
    double ball;
};

// The claim one step after `claim`. type: 2 to 5. limit: the escape limit.
Claim step(int type, const Claim& claim, float cr, float ci, double limit);

// Whether an orbit is seen to stay: its claim, and the saved state and radius.
bool stays(const Claim& claim, double savedR, double savedI, double radius);

// The four functions; the hyperbolic ones may both have turned their sign with the others.
vector_control::TrigValues factors(double circular, double hyperbolic);

// Whether a product of such functions is said to round as the scalar rule's, as one part of a value
// whose other part surely does.
enum class Part { real, imaginary };
bool roundsSafely(double product, Part part);

struct Point {
    float r, i;
};

// The counts of the pixels at these points. stopped: whether the stop flag is set from the start;
// then there are none.
std::vector<std::uint64_t> counts(int type, const std::vector<Point>& points, float maxSize,
                                  int limit, bool detect, bool stopped = false);

}  // namespace float_claims

// The machine's limit for z^2 + c: the same operations in a loop that touches nothing but
// registers.
#pragma once

#include <cstdint>

namespace bench {

// Steps a second of `threads` threads together, every lane counted, with the instruction set in
// force (see vector_control::forceTarget). The mix of one step is that of the renderer's inner
// loop: 3 multiplications, 5 additions, 1 comparison, none of them fused. Takes about 0.3 s.
double peakStepsPerSecond(bool doublePrecision, std::int32_t threads);

}  // namespace bench

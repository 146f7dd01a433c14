// Pairs of a trigonometric and a hyperbolic argument.
#pragma once

namespace vector_test {

struct HardFloat {
    float trigonometric, hyperbolic;
};

inline constexpr HardFloat HARD_FLOATS[] = {
    {1.0f, 1.0f},
};

}  // namespace vector_test

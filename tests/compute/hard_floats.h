// Floats whose functions are hard to round, found by a search of four thousand million pairs.
#pragma once

namespace vector_test {

// At each pair a product of a factor of one argument and a factor of the other (sine or cosine,
// hyperbolic sine or cosine) lies as close to the middle between two floats as doubles go.
struct HardFloat {
    float trigonometric, hyperbolic;
};

inline constexpr HardFloat HARD_FLOATS[] = {
    {0.153420031f, 1.94768894f}, {0.199409187f, 0.139343411f}, {0.604876459f, 2.50319409f},
    {0.76091975f, 0.626362503f}, {0.939002872f, 1.75829542f},  {1.0526042f, 0.629212439f},
    {1.0896771f, 0.9474594f},    {1.44716132f, 1.19142461f},   {1.54523504f, 1.43668854f},
    {1.64029288f, 1.04516447f},  {2.43178725f, 0.458443135f},  {2.92963314f, 1.72200823f},
};

}  // namespace vector_test

// The views that benchmarks render.
#pragma once

#include <array>

namespace bench {

struct View {
    const char* label;
    int type;
    double xMin, xMax, yMin, yMax;
    double cx, cy;
    int maxIters;
    double maxSize;
};

// The built-in ones: every formula, and every constant of the Julia formula.
inline constexpr std::array<View, 18> views = {{
    {"Mandelbrot", 0, -2.0, 2.0, -1.5, 1.5, 0, 0, 768, 4.0},
    {"JuliaSanMarco", 1, -1.5, 1.5, -1.5, 1.5, 0, -0.75, 768, 4.0},
    {"JuliaRabbit", 1, -1.5, 1.5, -1.5, 1.5, -0.123, 0.745, 768, 4.0},
    {"JuliaSiegelDisk", 1, -1.5, 1.5, -1.5, 1.5, -0.391, -0.587, 768, 4.0},
    {"JuliaDendrite", 1, -1.5, 1.5, -1.5, 1.5, 0, -1.0, 768, 4.0},
    {"JuliaDefault", 1, -1.5, 1.5, -1.5, 1.5, -0.8, 0.156, 768, 4.0},
    {"Sine", 2, -8.0, 8.0, -4.0, 4.0, 0, 0, 256, 128.0},
    {"Cosine", 3, -8.0, 8.0, -7.0, 7.0, 0, 0, 256, 128.0},
    {"HyperbolicSine", 4, -5.0, 5.0, -4.5, 4.5, 0, 0, 256, 128.0},
    {"HyperbolicCosine", 5, -8.0, 8.0, -5.5, 5.5, 0, 0, 256, 128.0},
    {"Barnsley1", 6, -4.0, 4.0, -3.0, 3.0, 0.6, 1.1, 128, 4.0},
    {"Barnsley2", 7, -4.0, 4.0, -3.0, 3.0, 0.6, 1.1, 128, 4.0},
    {"Barnsley3", 8, -2.2, 1.7, -1.1, 1.1, 1.0, 0, 128, 4.0},
    {"BarnsleySierpinski", 9, -2.0, 2.0, -1.2, 1.2, 0, 0, 128, 4.0},
    {"Dragon", 10, -0.4, 1.4, -0.8, 0.8, 1.6493, 0.961, 4096, 4.0},
    {"Chebyshev", 11, -2.0, 2.0, -1.5, 1.5, 0, 0, 768, 16.0},
    {"Hermite", 12, -2.0, 2.0, -1.5, 1.5, 0, 0, 768, 16.0},
    {"Legendre", 13, -2.0, 2.0, -1.5, 1.5, 0, 0, 768, 16.0},
}};

// Views that no menu offers: three deep ones, of which the last two want double precision, and one
// where no orbit escapes.
inline constexpr std::array<View, 4> moreViews = {{
    {"DeepSpiral", 0, -0.743643887, -0.743543887, 0.131825904, 0.131925904, 0, 0, 4096, 4.0},
    {"DeepNeedle", 0, -1.7490863749, -1.7490863748, -0.00000000005, 0.00000000005, 0, 0, 4096, 4.0},
    {"DeepMiniature", 0, -1.7687788005, -1.7687788000, 0.0017389255, 0.0017389260, 0, 0, 4096, 4.0},
    {"AllInterior", 0, -0.1, 0.1, -0.1, 0.1, 0, 0, 768, 4.0},
}};

}  // namespace bench

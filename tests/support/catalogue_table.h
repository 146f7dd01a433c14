// The built-in views written out a second time, from the description and not from the program, so
// that tests have something to hold the program's own table against.
#pragma once

#include <string>
#include <vector>

namespace test_support {

struct CatalogueRow {
    int type;
    int preset;
    std::string label;  // fit for a test's name
    std::string name;
    double xMax, xMin, yMax, yMin;
    double cx, cy;
    int maxIters;
    double maxSize;
    int paletteType;
};

// Every formula once and every Julia constant once: 18 rows, in order of type.
inline const std::vector<CatalogueRow>& catalogueRows() {
    static const std::vector<CatalogueRow> rows = {
        {0, 0, "Mandelbrot", "Mandelbrot", 2.0, -2.0, 1.5, -1.5, 0, 0, 768, 4.0, 0},
        {1, 100, "JuliaSanMarco", "Julia", 1.5, -1.5, 1.5, -1.5, 0, -0.75, 768, 4.0, 1},
        {1, 101, "JuliaRabbit", "Julia", 1.5, -1.5, 1.5, -1.5, -0.123, 0.745, 768, 4.0, 0},
        {1, 102, "JuliaSiegelDisk", "Julia", 1.5, -1.5, 1.5, -1.5, -0.391, -0.587, 768, 4.0, 0},
        {1, 103, "JuliaDendrite", "Julia", 1.5, -1.5, 1.5, -1.5, 0, -1.0, 768, 4.0, 0},
        {1, 5, "JuliaDefault", "Julia", 1.5, -1.5, 1.5, -1.5, -0.8, 0.156, 768, 4.0, 1},
        {2, 0, "Sine", "Sine", 8.0, -8.0, 4.0, -4.0, 0, 0, 256, 128.0, 0},
        {3, 0, "Cosine", "Cosine", 8.0, -8.0, 7.0, -7.0, 0, 0, 256, 128.0, 0},
        {4, 0, "HyperbolicSine", "Hyperbolic Sine", 5.0, -5.0, 4.5, -4.5, 0, 0, 256, 128.0, 0},
        {5, 0, "HyperbolicCosine", "Hyperbolic Cosine", 8.0, -8.0, 5.5, -5.5, 0, 0, 256, 128.0, 0},
        {6, 0, "Barnsley1", " First Barnsley Fractal", 4.0, -4.0, 3.0, -3.0, 0.6, 1.1, 128, 4.0, 0},
        {7, 0, "Barnsley2", " Second Barnsley Fractal", 4.0, -4.0, 3.0, -3.0, 0.6, 1.1, 128, 4.0,
         0},
        {8, 0, "Barnsley3", " Third Barnsley Fractal", 1.7, -2.2, 1.1, -1.1, 1.0, 0, 128, 4.0, 0},
        {9, 0, "BarnsleySierpinski", " Barnsley-Sierpinski Fractal", 2.0, -2.0, 1.2, -1.2, 0, 0,
         128, 4.0, 0},
        {10, 0, "Dragon", " Dragon Fractal", 1.4, -0.4, 0.8, -0.8, 1.6493, 0.961, 4096, 4.0, 1},
        {11, 0, "Chebyshev", "Chebyshev T5", 2.0, -2.0, 1.5, -1.5, 0, 0, 768, 16.0, 0},
        {12, 0, "Hermite", "Hermite H4", 2.0, -2.0, 1.5, -1.5, 0, 0, 768, 16.0, 0},
        {13, 0, "Legendre", "Legendre P3", 2.0, -2.0, 1.5, -1.5, 0, 0, 768, 16.0, 0},
    };
    return rows;
}

}  // namespace test_support

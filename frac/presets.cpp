#include "frac/presets.h"

#include <array>

namespace {

// What a new entry of each formula starts from, in the member order of `fractal`. The names of the
// Barnsley and Dragon entries begin with a blank, and several views are neither 4:3 nor square:
// files and titles depend on both.
const std::array<fractal, 14> presets = {{
    {2.0, -2.0, 1.5, -1.5, 0, 0, 0, 768, 4.0, 0, "Mandelbrot", 0},
    {1.5, -1.5, 1.5, -1.5, 0, 0, 1, 768, 4.0, 0, "Julia", 0},  // c and palette: juliaPresets
    {8.0, -8.0, 4.0, -4.0, 0, 0, 2, 256, 128.0, 0, "Sine", 0},
    {8.0, -8.0, 7.0, -7.0, 0, 0, 3, 256, 128.0, 0, "Cosine", 0},
    {5.0, -5.0, 4.5, -4.5, 0, 0, 4, 256, 128.0, 0, "Hyperbolic Sine", 0},
    {8.0, -8.0, 5.5, -5.5, 0, 0, 5, 256, 128.0, 0, "Hyperbolic Cosine", 0},
    {4.0, -4.0, 3.0, -3.0, 0.6, 1.1, 6, 128, 4.0, 0, " First Barnsley Fractal", 0},
    {4.0, -4.0, 3.0, -3.0, 0.6, 1.1, 7, 128, 4.0, 0, " Second Barnsley Fractal", 0},
    {1.7, -2.2, 1.1, -1.1, 1.0, 0, 8, 128, 4.0, 0, " Third Barnsley Fractal", 0},
    {2.0, -2.0, 1.2, -1.2, 0, 0, 9, 128, 4.0, 0, " Barnsley-Sierpinski Fractal", 0},
    {1.4, -0.4, 0.8, -0.8, 1.6493, 0.961, 10, 4096, 4.0, 1, " Dragon Fractal", 0},
    {2.0, -2.0, 1.5, -1.5, 0, 0, 11, 768, 16.0, 0, "Chebyshev T5", 0},
    {2.0, -2.0, 1.5, -1.5, 0, 0, 12, 768, 16.0, 0, "Hermite H4", 0},
    {2.0, -2.0, 1.5, -1.5, 0, 0, 13, 768, 16.0, 0, "Legendre P3", 0},
}};

struct JuliaPreset {
    int preset;
    double cx, cy;
    std::int32_t paletteType;
};

constexpr JuliaPreset juliaDefault = {5, -0.8, 0.156, 1};
constexpr std::array<JuliaPreset, 4> juliaPresets = {{
    {100, 0.0, -0.75, 1},      // San Marco
    {101, -0.123, 0.745, 0},   // Douady's Rabbit
    {102, -0.391, -0.587, 0},  // Siegel Disk
    {103, 0.0, -1.0, 0},       // Dendrite
}};

JuliaPreset findJuliaPreset(int preset) {
    for (const JuliaPreset& candidate : juliaPresets) {
        if (candidate.preset == preset) return candidate;
    }
    return juliaDefault;
}

}  // namespace

fractal presetEntry(int type, int preset) {
    if (type < 0 || type >= static_cast<int>(presets.size())) return {};
    fractal entry = presets[static_cast<std::size_t>(type)];
    if (type == 1) {
        const JuliaPreset julia = findJuliaPreset(preset);
        entry.cx = julia.cx;
        entry.cy = julia.cy;
        entry.paletteType = julia.paletteType;
    }
    return entry;
}

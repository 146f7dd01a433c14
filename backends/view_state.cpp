#include "backends/view_state.h"

#include <limits>

std::recursive_mutex update_lock;

std::vector<fractal> fractals;
std::int32_t currentFractal = -1;

double xMax = 0.0, xMin = 0.0, yMax = 0.0, yMin = 0.0;
double cx = 0.0, cy = 0.0;
std::atomic<std::int32_t> maxIters{768};
std::atomic<double> maxSize{4.0};
std::atomic<std::int32_t> currentFractalType{-1};
std::int32_t paletteType = 0;

std::int32_t update_count = 1;
std::string title;

double oldXMax = 0.0, oldXMin = 0.0, oldYMax = 0.0, oldYMin = 0.0;
double newXMax = 0.0, newXMin = 0.0, newYMax = 0.0, newYMin = 0.0;

void copyToView(const fractal& f) {
    xMax = f.xMax;
    xMin = f.xMin;
    yMax = f.yMax;
    yMin = f.yMin;
    cx = f.cx;
    cy = f.cy;
    maxIters = f.maxIters;
    maxSize = f.maxSize;
    paletteType = f.paletteType;
    currentFractalType = f.fractalType;
}

void addUpdate() {
    const std::lock_guard lock(update_lock);
    if (update_count < std::numeric_limits<std::int32_t>::max()) ++update_count;
}

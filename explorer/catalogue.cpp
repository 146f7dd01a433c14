#include "explorer/catalogue.h"

#include <cstdio>

#include "explorer/window_title.h"
#include "frac/presets.h"

namespace {

// Serial number of the next new entry. GLUT thread only; it only grows, also over a file load.
std::int32_t nextFractalID = 0;

}  // namespace

void CreateNewFractal(int type, int preset) {
    addUpdate();
    fractal entry = presetEntry(type, preset);
    entry.fractalID = nextFractalID++;
    setCurrentFractal(entry);

    const std::lock_guard lock(mutex);
    fractals.push_back(entry);
    currentFractal = static_cast<std::int32_t>(fractals.size()) - 1;
}

void setCurrentFractal(fractal& f) {
    copyToView(f);
    Report(f.name);
    setWindowTitle(title + " " + f.name);
}

void Report(std::string name) {
    std::printf("%s Z-range:(%lf, %lf)-(%lf, %lf), c = (%lf,%lf), maxIters = %d, maxSize = %lf\r\n",
                name.c_str(), xMin, yMin, xMax, yMax, cx, cy, maxIters.load(), maxSize.load());
    std::fflush(stdout);
}

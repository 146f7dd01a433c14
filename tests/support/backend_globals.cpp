#include "tests/support/backend_globals.h"

#include <algorithm>
#include <mutex>

#include "tests/support/reference_fractal.h"

namespace test_support {

ViewGuard::ViewGuard()
    : catalogue(fractals),
      index(currentFractal),
      owed(update_count),
      prefix(title),
      cpu(bCPU),
      doubles(bDoublePrecision) {
    view.xMax = xMax;
    view.xMin = xMin;
    view.yMax = yMax;
    view.yMin = yMin;
    view.cx = cx;
    view.cy = cy;
    view.maxIters = maxIters;
    view.maxSize = maxSize;
    view.paletteType = paletteType;
    view.fractalType = currentFractalType;
}

ViewGuard::~ViewGuard() {
    copyToView(view);
    fractals = catalogue;
    currentFractal = index;
    update_count = owed;
    title = prefix;
    bCPU = cpu;
    bDoublePrecision = doubles;
}

ImageGuard::ImageGuard(int width, int height, unsigned char fill)
    : savedX(winX),
      savedY(winY),
      savedBuffer(std::move(buffer)),
      savedTemp(std::move(tempColours)),
      savedPalette(std::move(badAssColourPalette)),
      savedInForce(cpuPalette) {
    winX = width;
    winY = height;
    buffer = makeArray<unsigned char>(imageBytes());
    std::fill_n(buffer.get(), imageBytes(), fill);
    tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
}

ImageGuard::~ImageGuard() {
    winX = savedX;
    winY = savedY;
    buffer = std::move(savedBuffer);
    tempColours = std::move(savedTemp);
    badAssColourPalette = std::move(savedPalette);
    cpuPalette = savedInForce;
}

Picture ImageGuard::picture() const {
    Picture copy(static_cast<int>(winX), static_cast<int>(winY), 0);
    std::copy_n(buffer.get(), imageBytes(), copy.bytes.data());
    return copy;
}

Pool::Pool(std::int32_t threads) {
    shutdown_threads = false;
    startWorkers(threads);
    numCPUThreads = threads;
}

Pool::~Pool() {
    stopWorkers(false);
    clearQueue();
    shutdown_threads = false;
}

fractal makeView(int type, double left, double right, double low, double high, int limit,
                 double bound) {
    fractal f;
    f.fractalType = type;
    f.xMin = left;
    f.xMax = right;
    f.yMin = low;
    f.yMax = high;
    f.maxIters = limit;
    f.maxSize = bound;
    return f;
}

fractal slowView() {
    return makeView(0, 0.25 - 1e-9, 0.25, -1e-12, 1e-12, 100000);
}

Picture expectedPicture() {
    const ReferenceView v{.type = currentFractalType,
                          .doublePrecision = bDoublePrecision,
                          .width = static_cast<int>(winX),
                          .height = static_cast<int>(winY),
                          .xMin = xMin,
                          .xMax = xMax,
                          .yMin = yMin,
                          .yMax = yMax,
                          .cx = cx,
                          .cy = cy,
                          .maxSize = maxSize,
                          .maxIters = maxIters};
    Picture picture(v.width, v.height, 0);
    for (int y = 0; y < v.height; ++y) {
        for (int x = 0; x < v.width; ++x) {
            referencePixel(v, cpuPalette, x, y, picture.pixel(x, y));
        }
    }
    return picture;
}

void clearQueue() {
    const std::lock_guard lock(mutex);
    workQ.clear();
    task_count = 0;
}

}  // namespace test_support

#include "tests/backends/opencl/cpu_picture.h"

#include <vector>

#include "compute/tile_renderer.h"

namespace cpu_picture {
namespace {

template <class T>
void render(const device_reference::View& v, std::vector<unsigned char>& palette,
            test_support::Picture& picture) {
    threadCPU<T>(0, 0, v.width, v.height, v.width, v.height, static_cast<T>(v.xMin),
                 static_cast<T>(v.xMax), static_cast<T>(v.yMin), static_cast<T>(v.yMax),
                 static_cast<T>(v.cx), static_cast<T>(v.cy), static_cast<int>(v.maxSize),
                 v.maxIters, picture.bytes.data(), palette.data(), v.type);
}

}  // namespace

test_support::Picture picture(const device_reference::View& v, bool doublePrecision,
                              const unsigned char* palette) {
    test_support::Picture result(v.width, v.height, 0);
    std::vector<unsigned char> colours(palette, palette + 768 * 4);
    if (doublePrecision) {
        render<double>(v, colours, result);
    } else {
        render<float>(v, colours, result);
    }
    return result;
}

bool isExact(int type) {
    const bool trigonometric = type >= 2 && type <= 5;
    return !trigonometric && type != 12;
}

}  // namespace cpu_picture

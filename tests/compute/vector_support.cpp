#include "tests/compute/vector_support.h"

#include "compute/pixels.h"
#include "compute/tile_renderer.h"

namespace vector_test {

using test_support::Picture;

namespace {

// Every entry differs from its neighbours, so that counts that are off by one show.
std::vector<unsigned char> makePalette() {
    std::vector<unsigned char> palette(PALETTE_BYTES);
    for (std::size_t n = 0; n < PALETTE_ENTRIES; ++n) {
        palette[4 * n] = static_cast<unsigned char>(n);
        palette[4 * n + 1] = static_cast<unsigned char>(n >> 8);
        palette[4 * n + 2] = static_cast<unsigned char>(97 * n);
        palette[4 * n + 3] = 0x5A;
    }
    return palette;
}

template <class T, class Render>
void renderTiles(const View& v, Picture& picture, Render&& render) {
    static std::vector<unsigned char> palette = makePalette();
    for (int x = 0; x < v.width; x += v.tileWidth) {
        for (int y = 0; y < v.height; y += v.tileHeight) {
            render(x, y, x + v.tileWidth, y + v.tileHeight, v.width, v.height,
                   static_cast<T>(v.xMin), static_cast<T>(v.xMax), static_cast<T>(v.yMin),
                   static_cast<T>(v.yMax), static_cast<T>(v.cx), static_cast<T>(v.cy), v.maxSize,
                   v.maxIters, picture.bytes.data(), palette.data(), v.type);
        }
    }
}

}  // namespace

Picture vectorPicture(const View& view) {
    Picture picture(view.width, view.height, 0xA5);
    if (view.doublePrecision) {
        renderTiles<double>(view, picture, threadCPU<double>);
    } else {
        renderTiles<float>(view, picture, threadCPU<float>);
    }
    return picture;
}

Picture scalarPicture(const View& view) {
    Picture picture(view.width, view.height, 0xA5);
    if (view.doublePrecision) {
        renderTiles<double>(view, picture, threadScalar<double>);
    } else {
        renderTiles<float>(view, picture, threadScalar<float>);
    }
    return picture;
}

const std::vector<vector_control::Target>& allTargets() {
    static const std::vector<vector_control::Target> targets = vector_control::targets();
    return targets;
}

testing::AssertionResult allTargetsAgree(const View& view, const std::string& name) {
    const Picture expected = scalarPicture(view);
    for (const vector_control::Target& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        auto result = samePicture(vectorPicture(view), expected, name + "." + target.name);
        if (!result) return result << " on " << target.name << ", " << view;
    }
    return testing::AssertionSuccess();
}

}  // namespace vector_test

#include "explorer/window_icon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "compute/formulas.h"

namespace {

constexpr int LIMIT = 32;

struct Colour {
    float red, green, blue;
};

constexpr Colour INSIDE = {11, 13, 20}, FAR = {24, 52, 118}, NEAR = {80, 210, 230};

// From dark blue far from the set to light blue at its edge, where orbits take long to escape.
Colour colourOf(int count) {
    if (count == LIMIT) return INSIDE;
    constexpr float COUNTS_TO_NEAR = 14;
    const float t = std::min(static_cast<float>(count) / COUNTS_TO_NEAR, 1.0f);
    return {std::lerp(FAR.red, NEAR.red, t), std::lerp(FAR.green, NEAR.green, t),
            std::lerp(FAR.blue, NEAR.blue, t)};
}

// Whether sample (x, y) of a square lies on it once its corners are rounded.
bool isOnIcon(int x, int y, int side) {
    const float radius = 18.0f / 128.0f * static_cast<float>(side);
    const auto beyond = [&](int at) {
        const float centre = static_cast<float>(at) + 0.5f;
        return std::max({radius - centre, centre - (static_cast<float>(side) - radius), 0.0f});
    };
    const float dx = beyond(x), dy = beyond(y);
    return dx * dx + dy * dy <= radius * radius;
}

unsigned long byteOf(float value) {
    return static_cast<unsigned long>(std::lround(value));
}

// The average of samples x samples points of pixel (column, row).
unsigned long pixelOf(int column, int row, int side, int samples) {
    Colour sum = {0, 0, 0};
    int covered = 0;
    for (int y = row * samples; y < (row + 1) * samples; ++y) {
        for (int x = column * samples; x < (column + 1) * samples; ++x) {
            if (!isOnIcon(x, y, side * samples)) continue;
            const Colour c =
                colourOf(pixelCount<MandelbrotRule>(x, y, side * samples, side * samples, -2.1f,
                                                    0.7f, -1.4f, 1.4f, 0.0f, 0.0f, 4.0f, LIMIT));
            sum = {sum.red + c.red, sum.green + c.green, sum.blue + c.blue};
            ++covered;
        }
    }
    if (covered == 0) return 0;
    const auto count = static_cast<float>(covered);
    const float alpha = 255.0f * count / static_cast<float>(samples * samples);
    return byteOf(alpha) << 24 | byteOf(sum.red / count) << 16 | byteOf(sum.green / count) << 8 |
           byteOf(sum.blue / count);
}

// An icon's size, and how many samples a side make a pixel: small ones lose their threads
// otherwise.
struct IconSize {
    int side, samples;
};

constexpr std::array<IconSize, 5> SIZES = {{{16, 4}, {32, 3}, {48, 2}, {64, 2}, {128, 2}}};

// The lower half of a picture whose upper half stands at the end: the set is its own mirror image.
void appendMirrored(std::vector<unsigned long>& pictures, int side) {
    const auto columns = static_cast<std::size_t>(side);
    for (std::size_t row = 1; row <= columns / 2; ++row) {
        const std::size_t from = pictures.size() - (2 * row - 1) * columns;
        for (std::size_t column = 0; column < columns; ++column) {
            pictures.push_back(pictures[from + column]);
        }
    }
}

}  // namespace

std::vector<unsigned long> drawWindowIcons() {
    std::vector<unsigned long> pictures;
    for (const auto& [side, samples] : SIZES) {
        pictures.insert(pictures.end(), 2, static_cast<unsigned long>(side));
        for (int row = 0; row < side / 2; ++row) {
            for (int column = 0; column < side; ++column) {
                pictures.push_back(pixelOf(column, row, side, samples));
            }
        }
        appendMirrored(pictures, side);
    }
    return pictures;
}

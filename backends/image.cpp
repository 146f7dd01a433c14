#include "backends/image.h"

#include <algorithm>

std::int64_t winX = 2048, winY = 2048;
auto_array<unsigned char> buffer;

std::int64_t roundImageSide(std::int64_t side) {
    return std::max<std::int64_t>((side + 7) & ~std::int64_t{7}, 256);
}

// The picture as plain arithmetic says it must be: a second evaluation of every formula that shares
// no code with the renderers it judges. Slow and simple on purpose.
#pragma once

#include <cstdint>

namespace test_support {

struct ReferenceView {
    int type = 0;
    bool doublePrecision = false;
    int width = 2048, height = 2048;
    double xMin = 0, xMax = 0, yMin = 0, yMax = 0;
    double cx = 0, cy = 0;
    double maxSize = 4;  // as the view holds it: the whole part alone counts
    int maxIters = 0;
};

// The iteration count of pixel (x, y); wide enough for one past the largest int. The formula must
// be one of 0..13.
std::int64_t referenceCount(const ReferenceView& view, int x, int y);

// The four bytes of pixel (x, y); any formula number, one outside 0..13 is black.
void referencePixel(const ReferenceView& view, const unsigned char* palette, int x, int y,
                    unsigned char* rgba);

}  // namespace test_support

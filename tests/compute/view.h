// One view of the plane under one rule.
#pragma once

#include <ostream>

namespace vector_test {

// All that a picture depends on.
struct View {
    int type = 0;
    bool doublePrecision = false;
    double xMin = -2, xMax = 2, yMin = -1.5, yMax = 1.5;
    double cx = 0, cy = 0;
    int maxSize = 4, maxIters = 768;
    int width = 64, height = 64;
    int tileWidth = 8, tileHeight = 8;
};

// With every digit, so that the line is enough to draw the view again.
inline std::ostream& operator<<(std::ostream& out, const View& v) {
    const auto digits = out.precision(17);
    out << "type " << v.type << (v.doublePrecision ? " double" : " float") << " x " << v.xMin
        << ".." << v.xMax << " y " << v.yMin << ".." << v.yMax << " c (" << v.cx << ", " << v.cy
        << ") limit " << v.maxIters << " size " << v.maxSize << " " << v.width << "x" << v.height
        << " in tiles of " << v.tileWidth << "x" << v.tileHeight;
    out.precision(digits);
    return out;
}

}  // namespace vector_test

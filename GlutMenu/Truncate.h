// The one conversion of a layout value to whole pixels.

#pragma once

#include <cmath>
#include <limits>

namespace GlutMenu {

// Truncates toward zero. A value no int can hold, which a degenerate window size may produce, is
// held at the nearest int, and a NaN counts as 0, because the bare conversion would be undefined.
inline int Truncate(double value) {
    if (std::isnan(value)) return 0;
    if (value >= std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (value <= std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

// The same, kept as the float that the layout goes on with.
inline float TruncateToFloat(double value) {
    return static_cast<float>(Truncate(value));
}

}  // namespace GlutMenu

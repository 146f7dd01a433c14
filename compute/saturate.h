#pragma once

#include <limits>

// v truncated toward zero; values beyond an int saturate, NaN gives 0. Any thread.
inline int truncateToInt(double v) {
    constexpr int low = std::numeric_limits<int>::min();
    constexpr int high = std::numeric_limits<int>::max();
    if (v != v) return 0;
    if (v <= low) return low;
    if (v >= high) return high;
    return static_cast<int>(v);
}

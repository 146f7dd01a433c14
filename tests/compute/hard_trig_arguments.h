// Arguments whose sine or cosine, or hyperbolic sine or cosine, lies next to the middle between two
// doubles, within 2^-25 of their distance: found by `trig_search 3e7 7` and, from the second row on,
// `trig_search 6e7 8`.
#pragma once

inline constexpr double HARD_TRIGONOMETRIC[] = {
    0x1.3668660c69506p+2, 0x1.8f52bafb598ecp+1, 0x1.4bdd702637502p+2, 0x1.46039ea26057fp+2,
};

inline constexpr double HARD_HYPERBOLIC[] = {
    0x1.51ce2490a78dep+2, 0x1.ed6895a7536a6p+2, 0x1.197d17c55e3aap+2,
};

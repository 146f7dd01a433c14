// Arguments whose sine or cosine, or hyperbolic sine or cosine, lies next to the middle between two
// doubles, within 2^-25 to 2^-29.6 of their distance: what `trig_search 3e7 7` found (the
// first four and the first three) and `trig_search 6e7 8`.
#pragma once

inline constexpr double HARD_TRIGONOMETRIC[] = {
    0x1.3668660c69506p+2, 0x1.8f52bafb598ecp+1, 0x1.4bdd702637502p+2, 0x1.46039ea26057fp+2,
    0x1.5f13db8930c0fp+2, 0x1.48c517cdb29fcp+0, 0x1.b3a742212bb5ep+2,
};

inline constexpr double HARD_HYPERBOLIC[] = {
    0x1.51ce2490a78dep+2, 0x1.ed6895a7536a6p+2, 0x1.197d17c55e3aap+2, 0x1.6aa10a384c088p-1,
    0x1.84b2483003786p+2, 0x1.c3bb4d750a79fp+2, 0x1.9905ea1f3660ep+2,
};

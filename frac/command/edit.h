// Changing one entry. Plain functions; any thread.
#pragma once

#include "frac/command/options.h"
#include "frac/fractal.h"

// Makes the changes. A width keeps the proportions and the center of the rectangle, a center keeps
// its sides to the last bit where they are exact, and both keep which edge is the larger one.
// Throws std::runtime_error where the rectangle has no sides that could be kept, Mistake where
// doubles do not go as far as a width. An exact place takes the digits as they were typed.
void change(fractal& entry, const Changes& changes);

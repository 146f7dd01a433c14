// The views that new catalogue entries start from. Plain functions; any thread.
#pragma once

#include "frac/fractal.h"

// The entry of formula `type` (0..13) with serial number 0. `preset` picks the constant of a Julia
// entry (100 San Marco, 101 Douady's Rabbit, 102 Siegel Disk, 103 Dendrite, any other the default)
// and is ignored for other types. An unknown type gives an entry with no name and zero values.
fractal presetEntry(int type, int preset);

// The two colour tables as plain functions. Each fills the red, green and blue of the
// PALETTE_ENTRIES entries at `table` (PALETTE_BYTES) and leaves every fourth byte alone. Any
// thread, on tables of its own.
#pragma once

#include "compute/pixels.h"

// Random colours: red, green and blue, entry by entry, are the low bytes of what the C library's
// rand() gives in a process that never seeds it; what this one has drawn before plays no part.
void fillRandomColours(unsigned char* table);

// Green, blue, then red ramps of 256 entries, each starting again from black.
void fillCycleColours(unsigned char* table);

// The two colour tables as plain functions. Each fills the red, green and blue of the
// PALETTE_ENTRIES entries at `table` (PALETTE_BYTES) and leaves every fourth byte alone. Any
// thread, on tables of its own.
#pragma once

#include <functional>

#include "compute/pixels.h"

// Random colours: the low bytes of successive results of `next`, entry by entry.
void fillRandomColours(unsigned char* table, const std::function<int()>& next);

// The random colours of every process that draws them from the C library's rand() and never seeds
// it, whatever this one has drawn before.
void fillRandomColours(unsigned char* table);

// Green, blue, then red ramps of 256 entries, each starting again from black.
void fillCycleColours(unsigned char* table);

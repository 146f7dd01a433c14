// The table of `tessary-frac list`.
#pragma once

#include <string>
#include <vector>

#include "frac/fractal.h"

// A line with the headings and one for each entry, columns apart by two blanks. Numbers are the
// shortest that read back to the same bits; in a name, "?" stands for what is not printable.
std::string tableOf(const std::vector<fractal>& entries);

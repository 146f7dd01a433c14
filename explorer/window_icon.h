// The window's icon: the Mandelbrot set in the colours of the installed icon, drawn by the
// program's own formula.
#pragma once

#include <vector>

// The icon in 16, 32, 48, 64 and 128 pixels a side, as setWindowIcon takes them. Some milliseconds
// of work; any thread.
std::vector<unsigned long> drawWindowIcons();

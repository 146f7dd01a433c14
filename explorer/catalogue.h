// Creating catalogue entries and making one current.
#pragma once

#include <string>

#include "backends/view_state.h"

// Creates an entry of formula `type` (0..13) from its preset values, makes it current and appends
// it. `preset` picks the constant of a Julia entry (100 San Marco, 101 Douady's Rabbit, 102 Siegel
// Disk, 103 Dendrite, any other the default) and is ignored for other types. An unknown type
// appends an entry with no name and zero values. Owes one render. GLUT thread, with a window open.
void CreateNewFractal(int type, int preset);

// Makes f's values the live view, prints the Report line and retitles the window. Takes no lock and
// owes no render: both are the caller's. GLUT thread, with a window open.
void setCurrentFractal(fractal& f);

// Prints one line, ended by carriage return and line feed, with `name` and the live view. GLUT
// thread.
void Report(std::string name);

// The command line of tessary-frac.
#pragma once

#include "frac/command/options.h"

// The options of a command line that is sound. Prints help or version, or one line about a mistake,
// and ends the process (status 0 or 2) where that is all.
Options readCommandLine(int argc, char** argv);

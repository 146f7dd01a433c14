// The command line of tessary-frac.
#pragma once

#include "frac/command/options.h"

// Thrown where the command line is all there is to do.
struct CommandLineEnd {
    int status;
};

// The options of a command line that is sound. Prints help or version, or one line about a mistake,
// and throws CommandLineEnd (status 0 or 2, or 1 where it cannot be printed) where that is all.
Options readCommandLine(int argc, char** argv);

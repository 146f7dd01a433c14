// Standard input, output and error as the program finds and leaves them.
#pragma once

// Opens the null device wherever one of them is closed: else the next file or connection would take
// its place, and the program's lines would go into it. Main thread, first of all.
void openClosedStandardStreams();

// One line on standard error when standard output did not take all that was printed, as on a full
// disk. Main thread, last of all; once.
void tellOfLostOutput();

// Ending by a signal: as orderly as a closed window, and the parent still sees the signal.
#pragma once

// Lets a closed output pipe end the process without a word, whatever was inherited. Main thread,
// first of all.
void endQuietlyOnClosedPipe();

// From now on SIGINT, SIGTERM and SIGHUP leave the GLUT main loop and the frame being waited for; a
// second one ends the process at once. Main thread, after the window exists.
void stopMainLoopOnSignals();

// Ends the process by the signal that left the main loop, if one did. Main thread, last of all.
void endBySignal();

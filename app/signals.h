// Ending by a signal: as orderly as a closed window, and the parent still sees the signal.
#pragma once

// Lets a closed output pipe end the process without a word, whatever was inherited. Main thread,
// first of all.
void endQuietlyOnClosedPipe();

// From now on SIGINT, SIGTERM and SIGHUP set shutdown_threads, which leaves the frame being waited
// for, and leave the GLUT main loop. More of them within half a second are taken for the same wish;
// a later one ends the process at once. Main thread, after the window exists.
void stopMainLoopOnSignals();

// From now on the signals only leave a note for endBySignal: GLUT may be gone. Also what exit()
// does first. Main thread, when the main loop has returned.
void leaveMainLoopAlone();

// Ends the process by the first signal that asked for it, if one did. Main thread, last of all.
void endBySignal();

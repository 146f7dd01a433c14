// The program from its first line to the GLUT main loop.
#pragma once

// Prints the options, one a line.
void listOptions();

// Everything main does; returns the exit status. Main thread, once a process.
int runTessary(int argc, char** argv);

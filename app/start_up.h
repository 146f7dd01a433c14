// The program from its first line to the GLUT main loop.
#pragma once

// Opens the null device wherever standard input, output or error is closed: else the next file or
// connection would take its place, and the program's lines would go into it. Main thread, first of
// all.
void openClosedStandardStreams();

// Prints the options, one a line.
void listOptions();

// Everything main does; returns the exit status. Main thread, once a process.
int runTessary(int argc, char** argv);

// Names on their way to standard output.
#pragma once

#include <string>

// What is printed for a name that comes from a file or from the user. On a terminal each control
// character is a "?", so that no file can drive the terminal; anywhere else the bytes stay exact.
// Any bytes; any thread.
std::string printedName(const std::string& name);

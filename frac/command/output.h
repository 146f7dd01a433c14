// What tessary-frac says and writes.
#pragma once

#include <string>
#include <string_view>

// The text without anything that a terminal would obey: a "?" for what is not printable or no
// UTF-8.
std::string printable(std::string_view text);

// One line on standard error that names the program.
void say(const std::string& message);

// Makes bytes the content of the file at path, or writes them to standard output for "-". A regular
// file is replaced as a whole, and signals that end the process wait until that is done. Throws
// std::runtime_error.
void writeOutput(const std::string& path, std::string_view bytes);

// Gives descriptors 0 to 2 that were closed something that fails, so that no file opened later
// takes their place, and makes failing writes errors instead of signals.
void prepareStreams();

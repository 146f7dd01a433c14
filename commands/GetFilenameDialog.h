// The desktop's own file panels. GLUT thread; both run modally until the user answers. Where the
// desktop's toolkit is missing or does not start, each call prints a line and chooses nothing.
#pragma once

#include <string>

// Asks for a file to open, under the text `message`. On true, path is the absolute path chosen, in
// UTF-8, made to end in ".frac"; on false nothing was chosen and path is as it was.
bool GetOpenFilename(std::string& path, std::string message);

// The same for a file to write; path also gives the name and folder the panel starts from. The user
// has agreed to every existing file that path names.
bool GetSaveFilename(std::string& path, std::string message);

// The desktop's own file panels. GLUT thread; both run modally until the user answers. Where the
// desktop's toolkit is missing or does not start, each call prints a line and chooses nothing. A
// signal that ends the program ends a panel and all that it asks.
#pragma once

#include <string>

// Asks for a file to open, under the text `message`. On true, path is the absolute path chosen, in
// UTF-8, made to end in ".frac"; on false nothing was chosen and path is as it was. The panel opens
// in the folder of path, of current_filename when path is empty, else in the current one.
bool GetOpenFilename(std::string& path, std::string message);

// The same for a file to write; path also gives the name and folder the panel starts from. On true
// the user has agreed to replace the file that path names, if there is one, and it is no folder.
bool GetSaveFilename(std::string& path, std::string message);

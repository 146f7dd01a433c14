// What the window's title says.
#pragma once

#include <string>

// The file last loaded or saved, empty at start. Written by the menu handlers, read by get_title;
// GLUT thread only.
extern std::string current_filename;

// The title prefix: program, version and current_filename.
std::string get_title();

// Titles the GLUT window with the bytes of `text`, taken as UTF-8; more than 100,000 are cut off.
// GLUT thread, with a window open.
void setWindowTitle(const std::string& text);

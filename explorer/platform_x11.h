// What freeglut leaves out on X11. Each function acts on the window whose GL context is current and
// does nothing where there is no X display behind it. GLUT thread only.
#pragma once

#include <string>

// Gives the window its class, so that desktops group and theme it as Tessary.
void setWindowClass();

// Whether the user has asked to close the window, and GLUT will do so at its next look at the
// events. They all stay where they are.
bool closeIsRequested();

// Lets Shift+Tab arrive as Tab with the shift bit; freeglut drops the key symbol that X sends.
void enableShiftTab();

// Titles the window with UTF-8 bytes; freeglut alone declares every title to be Latin-1.
void setUtf8Title(const std::string& text);

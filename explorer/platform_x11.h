// What freeglut leaves out on X11. Each function acts on the window whose GL context is current and
// does nothing where there is no X display behind it. GLUT thread only.
#pragma once

#include <string>
#include <vector>

// Whether there is an X window behind the current GL context.
bool hasXWindow();

// Gives the window its class, so that desktops group and theme it as Tessary.
void setWindowClass();

// Whether GLUT will end the window at its next look at the events: the user has asked to close it,
// or another client has destroyed it. The events all stay where they are.
bool windowIsToEnd();

// Titles the window with `text`, which must be valid UTF-8; freeglut alone declares every title to
// be Latin-1.
void setUtf8Title(const std::string& text);

// Gives the window its icon. Each picture is its width, its height and then its rows from the top,
// each pixel one number of 8 bits alpha, red, green and blue; the pictures stand one after another.
void setWindowIcon(const std::vector<unsigned long>& pictures);

// What the mouse pointer looks like over the window.
enum class Pointer { arrow, crosshair, watch };

// Gives the pointer this look; what is sent for it waits for the next flush or swap. A failure
// leaves the pointer as it is.
void setPointer(Pointer look);

// Sends what waits for the X server, before a wait in which nothing else would send it.
void flushRequests();

// Makes freeglut go on displaying a window that others cover. To be called each time it reports the
// window as covered.
void displayThoughCovered();

// Has the destruction of the window by another X client noticed: freeglut then reports the window
// as hidden, also when it was before, and X errors are no longer fatal.
void watchForDestruction();

// Whether another client has destroyed the window, as far as the X server has told by now.
bool windowIsGone();

// Ends the process for want of its window, as it ends when the display is lost: with one line on
// standard error and status 1. Not to be called while Xlib calls back.
[[noreturn]] void endWithoutWindow();

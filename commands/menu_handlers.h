// What the menu commands do. The three callbacks have the toolkit's selection signature: `item` is
// the chosen item of `source`, the user pointer is not used. All functions: GLUT thread.
#pragma once

#include "GlutMenu/CGlutMenu.h"

// Every command outside the "Devices" menu. Acts on the item's text, so it serves any menu; an
// unknown text does nothing. Asks for a redisplay; "Quit" ends the process with status 0.
void selection_callback(int& item, GlutMenu::CGlutMenu* source, void* user);

// The "Devices" menu: item 0 is the CPU, item k device k - 1, the rest is told by its text. Owes
// one render. A failing device set-up ends the process with the back-end's status.
void devices_callback(int& item, GlutMenu::CGlutMenu* source, void* user);

// The "CPU Threads" menu: item i chooses i + 1 workers from the next frame on; an index beyond the
// workers there are only refreshes the check marks.
void threads_callback(int& item, GlutMenu::CGlutMenu* source, void* user);

// Whether `device` is an index into the device list.
bool isDevice(int device);

// Whether `device` can run double precision; false for what is no device.
bool hasDoublePrecision(int device);

// On the "CPU Threads" submenu of the "Devices" menu, if there is one, checks exactly the number in
// force.
void checkThreadCount(const GlutMenu::CGlutMenu& devicesMenu);

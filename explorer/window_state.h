// What the callbacks of the window share. All of it belongs to the GLUT thread.
#pragma once

#include <cstdint>

#include "GlutMenu/CGlutMenu.h"

// Initial window size in pixels, 90 % of the screen. Written at start-up, read by createMenu; GLUT
// thread only.
extern std::int32_t screen_width, screen_height;

// The on-screen menu bar. Built at start-up, changed by the menu handlers; GLUT thread only.
extern GlutMenu::CGlutMenu menu;

// Sum of all render times in nanoseconds. Written by renderScene and start-up, read by idle for the
// benchmark's total; GLUT thread only.
extern std::int64_t totalTime;

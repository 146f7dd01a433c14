// Shift+Tab for a GLUT window on X11.

#pragma once

// X turns Shift+Tab into a key of its own, which freeglut drops; this makes it arrive as a Tab with
// the shift bit set. Call once, after the window was created.
void DeliverShiftTab();

// Zooming with the mouse, the glide to a new view, and stepping through the catalogue. All
// functions run on the GLUT thread.
#pragma once

#include <cstdint>

// A drag may start a zoom. Cleared by a committed zoom, set by the "Zoom" command; GLUT thread
// only.
extern bool zooming_enabled;

// The selection rectangle is to be drawn. Written by the mouse callbacks, read by renderScene; GLUT
// thread only.
extern bool rubber_banding;

// Selection corners in window pixels. Written by the mouse callbacks, read by renderScene; GLUT
// thread only.
extern std::int32_t mouse_x1, mouse_y1, mouse_x2, mouse_y2;

// Cleared by mouse activity and menu handlers, set by idle and menu handlers; GLUT thread only.
extern bool image_refreshed;

// Automatic stepping through the catalogue: 0 off, 1 or -1 the direction. Written by start-up, idle
// and the "Cycle" command, read by idle; GLUT thread only.
extern std::int32_t cycleDir;

// Benchmark mode. Written by start-up, cleared by idle at the end of the run; GLUT thread only.
extern bool bBench;

// Mouse button callback: button 0 is left, state 0 is a press, x and y in window pixels. The menu
// is asked first; a left drag it leaves selects the rectangle to zoom into.
void mouse(int button, int state, int x, int y);

// Motion callback while a drag is in progress.
void mouse_motion_func(int x, int y);

// Idle callback while a glide or the cycling runs: owes one render on each call.
void idle();

// Moves the current entry by dir (1 forward, -1 back, anything else stays) without wrapping round
// and, if `apply` is set or dir is 0, makes it current. Owes one render in every case. Returns
// whether it moved (true for dir 0).
bool advanceCursor(int dir, bool apply);

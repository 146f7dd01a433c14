// The display callback, which is the only place where a picture is computed, and the small
// callbacks that hand window and keyboard events on. All run on the GLUT thread.
#pragma once

// Print the timing line after each display call. Written by the menu handlers, read by renderScene;
// GLUT thread only.
extern bool bLogging;

// Display callback: renders when a render is owed, shows the picture, the rubber band and the menu.
void renderScene();

// Reshape callback: new window size in pixels.
void reshape(int w, int h);

// Keyboard callbacks: the key goes to the menu, then a redisplay is asked for. Special keys that
// are bare modifiers go nowhere.
void keyboard(unsigned char key, int x, int y);
void special_keyboard(int key, int x, int y);

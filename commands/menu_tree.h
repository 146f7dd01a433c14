// The program's menu tree and how it is built.
#pragma once

// Builds the whole tree into `menu`, with the check marks and enabled states of the renderer,
// palette and logging in force. GLUT thread, once, when devices and renderer are settled and a
// window is open.
void createMenu();

// The program without a window and without threads: menus, dialogs, catalogue and frames, on a
// small picture. What a file panel would ask is answered by the target.
#pragma once

#include <string>
#include <vector>

// Every global as it is when the window opens on the Mandelbrot view, on the CPU. devices: for each
// device that there is, whether it can do double precision.
void startProgram(const std::vector<bool>& devices = {});

// Every frame to come takes few steps: the limit of the view is held down.
void limitSteps();

// What the next file panels answer; empty: the user cancels.
extern std::string panelAnswer;

// Catalogue, frame loop and navigation as the program has them at its start, whatever was done to
// them. Without a window: what asks for GLUT is linked with the stand-in.
#pragma once

namespace test_support {

// Hides the menu, ends a drag and a glide, and puts the values back.
void resetExplorer();

// Puts the values back: an empty catalogue, nothing owed, rendering on the CPU.
void resetExplorerValues();

}  // namespace test_support

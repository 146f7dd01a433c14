// The picture on the screen: `buffer` as a texture over the whole window. GLUT thread only, with a
// window open and one unit of the projection being one buffer pixel.
#pragma once

// Draws `buffer`, row 0 at the top. Where OpenGL refuses a texture of the picture's size, which the
// first call finds out and prints once, it is drawn in pieces that fit.
void drawPicture();

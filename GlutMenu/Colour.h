// RGBA colours held as four floats.

#pragma once

namespace GlutMenu {

inline void SetColour(float (&colour)[4], float r, float g, float b, float a) {
    colour[0] = r;
    colour[1] = g;
    colour[2] = b;
    colour[3] = a;
}

// Makes it OpenGL's current colour.
void UseColour(const float (&colour)[4]);

}  // namespace GlutMenu

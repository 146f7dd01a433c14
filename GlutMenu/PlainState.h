// OpenGL set so that plain shapes in the current colour look like themselves.

#pragma once

#include <vector>

namespace GlutMenu {

// For as long as this lives, whatever the program has set for its own picture does not touch what
// is drawn: textures of every unit, shaders, lighting, culling, clip planes, stencil, fog, stipples
// and the rest are off, polygons are filled, every colour is written, lines are a pixel wide, and
// matrix calls act on the model-view matrix. After that, all of it is as it was found; so are the
// blend function and equation, which may be changed meanwhile. Whether blending and depth testing
// are on is left to others. Only what is not plain already is changed,
// and OpenGL is asked for nothing that its version does not know. GLUT thread; needs a current
// context.
class PlainState {
  public:
    PlainState();
    ~PlainState();
    PlainState(const PlainState&) = delete;
    PlainState& operator=(const PlainState&) = delete;

  private:
    // Something that was on; `unit` is the texture unit it belongs to.
    struct Switch {
        unsigned int unit, name;
    };

    void TurnOff(unsigned int unit, unsigned int name);
    void TurnOffIfKnown(unsigned int unit, unsigned int name, int since);
    void TurnOffClipPlanes();
    void TurnOffTextures();
    void TurnOffTexturesOf(unsigned int unit);
    void TurnOffProgram();
    void FillPolygons();
    void WriteEveryColour();
    void ReadBlending();
    void RestoreBlending() const;
    void RestoreSwitches() const;

    // Filled by the constructor. Empty lists and zeros stand for what was plain, or cannot be
    // asked.
    int version = 0;  // ten times OpenGL's major number and the minor one
    std::vector<Switch> switches;
    int active_unit = 0;
    int matrix_mode = 0;
    int program = 0;
    int polygon_mode[2] = {};  // front, back
    bool is_unfilled = false;
    int colour_mask[4] = {};
    bool is_masked = false;
    int blend_function[4] = {};  // source and destination of colour, then of alpha
    int blend_equation[2] = {};  // of colour, of alpha
    float line_width = 1.0F;
};

}  // namespace GlutMenu

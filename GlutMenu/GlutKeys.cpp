#include "GlutMenu/GlutKeys.h"

#include <GL/glx.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <vector>

namespace GlutMenu {

namespace {

constexpr KeySym modifiers[] = {XK_Shift_L, XK_Num_Lock, XK_Caps_Lock, XK_Control_L, XK_Alt_L};
constexpr unsigned modifier_count = 5;

// The modifiers that the bits of `choice` pick.
std::vector<KeySym> HeldModifiers(unsigned choice) {
    std::vector<KeySym> held;
    for (unsigned i = 0; i < modifier_count; ++i) {
        if ((choice >> i & 1U) != 0) held.push_back(modifiers[i]);
    }
    return held;
}

}  // namespace

void EnableShiftTab() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    // libX11 1.8 waits for itself when XRebindKeysym is the first to need the keyboard's tables;
    // asking for a modifier loads them before.
    XkbKeysymToModifiers(display, XK_Shift_L);
    const unsigned char tab[] = "\t";
    // Shift may or may not count as held: where it took part in choosing the key's symbol, X does
    // not count it any more.
    for (unsigned choice = 0; choice < 1U << modifier_count; ++choice) {
        std::vector<KeySym> held = HeldModifiers(choice);
        XRebindKeysym(display, XK_ISO_Left_Tab, held.data(), static_cast<int>(held.size()), tab, 1);
    }
}

}  // namespace GlutMenu

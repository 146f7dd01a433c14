#include "GlutMenu/demo/back_tab.h"

#include <GL/glx.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <vector>

namespace {

// The modifiers that may be held down along with Shift, picked by the bits of `choice`.
std::vector<KeySym> HeldModifiers(unsigned choice) {
    constexpr KeySym others[] = {XK_Num_Lock, XK_Caps_Lock, XK_Control_L, XK_Alt_L};
    std::vector<KeySym> held;
    for (const KeySym modifier : others) {
        if ((choice & 1U) != 0) held.push_back(modifier);
        choice >>= 1U;
    }
    return held;
}

}  // namespace

void DeliverShiftTab() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    // libX11 1.8 waits for itself when XRebindKeysym is the first to need the keyboard's tables;
    // asking for a modifier loads them before.
    XkbKeysymToModifiers(display, XK_Shift_L);
    const unsigned char tab[] = "\t";
    for (const KeySym shift : {XK_Shift_L, XK_Shift_R}) {
        for (unsigned choice = 0; choice < 16; ++choice) {
            std::vector<KeySym> held = HeldModifiers(choice);
            held.push_back(shift);
            XRebindKeysym(display, XK_ISO_Left_Tab, held.data(), static_cast<int>(held.size()), tab,
                          1);
        }
    }
}

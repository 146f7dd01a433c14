#include "explorer/platform_x11.h"

#include <GL/glx.h>
#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <vector>

void setWindowClass() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    char instance[] = "tessary";
    char windowClass[] = "Tessary";
    XClassHint hint = {instance, windowClass};
    XSetClassHint(display, glXGetCurrentDrawable(), &hint);
}

bool closeIsRequested() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return false;
    struct Search {
        Atom close;
        bool found = false;
    } search{.close = XInternAtom(display, "WM_DELETE_WINDOW", False)};
    // No event is taken, and none of Xlib's functions may be called in here.
    const auto note = [](Display*, XEvent* event, XPointer argument) -> Bool {
        Search& wanted = *reinterpret_cast<Search*>(argument);
        const bool isClose = event->type == ClientMessage &&
                             static_cast<Atom>(event->xclient.data.l[0]) == wanted.close;
        wanted.found = wanted.found || isClose;
        return False;
    };
    XEvent event;
    XCheckIfEvent(display, &event, note, reinterpret_cast<XPointer>(&search));
    return search.found;
}

void enableShiftTab() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    // libX11 1.8 deadlocks in XRebindKeysym unless its keyboard tables were loaded before.
    XkbKeysymToModifiers(display, XK_Shift_L);
    const KeySym keys[] = {XK_Shift_L, XK_Num_Lock, XK_Caps_Lock, XK_Control_L, XK_Alt_L};
    unsigned char tab[] = "\t";
    // All subsets, also those without Shift: X no longer counts a Shift that took part in choosing
    // the key's symbol.
    for (unsigned subset = 0; subset < 32; ++subset) {
        std::vector<KeySym> modifiers;
        for (unsigned bit = 0; bit < 5; ++bit) {
            if (subset & (1u << bit)) modifiers.push_back(keys[bit]);
        }
        XRebindKeysym(display, XK_ISO_Left_Tab, modifiers.data(),
                      static_cast<int>(modifiers.size()), tab, 1);
    }
}

void setUtf8Title(const std::string& text) {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    const Atom name = XInternAtom(display, "_NET_WM_NAME", False);
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    XChangeProperty(display, glXGetCurrentDrawable(), name, utf8, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.data()),
                    static_cast<int>(text.size()));
}

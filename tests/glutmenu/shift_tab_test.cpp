// What EnableShiftTab asks of X, which is a stand-in here.
#include "GlutMenu/GlutKeys.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

// Behind the others, whose names they take for macros of their own.
#include <GL/glx.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

namespace {

using Modifiers = std::multiset<KeySym>;

struct Rebinding {
    Display* display;
    KeySym key;
    Modifiers held;
    std::string text;
};

struct X11 {
    Display* display = nullptr;
    bool has_tables = false;  // the keyboard's, which rebinding must not be the first to need
    bool rebound_without_tables = false;
    std::vector<Rebinding> rebindings;
};

X11 x;

Display* someDisplay() {
    static int place;
    return reinterpret_cast<Display*>(&place);
}

}  // namespace

extern "C" {

Display* glXGetCurrentDisplay() {
    return x.display;
}

unsigned XkbKeysymToModifiers(Display* display, KeySym) {
    x.has_tables = display == x.display;
    return 0;
}

int XRebindKeysym(Display* display, KeySym key, KeySym* modifiers, int modifier_count,
                  const unsigned char* text, int length) {
    x.rebound_without_tables |= !x.has_tables;
    x.rebindings.push_back({display, key, Modifiers(modifiers, modifiers + modifier_count),
                            std::string(text, text + length)});
    return 0;
}

}  // extern "C"

TEST(ShiftTab, does_nothing_where_there_is_no_display) {
    x = X11();
    GlutMenu::EnableShiftTab();
    EXPECT_FALSE(x.has_tables);
    EXPECT_TRUE(x.rebindings.empty());
}

TEST(ShiftTab, makes_a_tab_of_the_key_on_the_window_s_display) {
    x = X11();
    x.display = someDisplay();
    GlutMenu::EnableShiftTab();
    for (const Rebinding& rebinding : x.rebindings) {
        EXPECT_EQ(rebinding.display, someDisplay());
        EXPECT_EQ(rebinding.key, KeySym{XK_ISO_Left_Tab});
        EXPECT_EQ(rebinding.text, "\t");
    }
}

TEST(ShiftTab, does_so_once_for_all_that_may_be_held_with_it) {
    x = X11();
    x.display = someDisplay();
    GlutMenu::EnableShiftTab();
    std::set<Modifiers> wanted = {{}};
    for (const int each : {XK_Shift_L, XK_Num_Lock, XK_Caps_Lock, XK_Control_L, XK_Alt_L}) {
        for (Modifiers with : std::set<Modifiers>(wanted)) {
            with.insert(static_cast<KeySym>(each));
            wanted.insert(with);
        }
    }
    std::multiset<Modifiers> given;
    for (const Rebinding& rebinding : x.rebindings) given.insert(rebinding.held);
    EXPECT_EQ(given, std::multiset<Modifiers>(wanted.begin(), wanted.end()));
    EXPECT_EQ(given.size(), 32U);
}

TEST(ShiftTab, loads_the_keyboard_s_tables_first) {
    x = X11();
    x.display = someDisplay();
    GlutMenu::EnableShiftTab();
    EXPECT_FALSE(x.rebound_without_tables);
}

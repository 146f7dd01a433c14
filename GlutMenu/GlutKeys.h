// Help with keys that GLUT passes on otherwise than menus want them. Optional: EnableShiftTab alone
// is in a library of its own (GlutMenu::Keys, or glutmenu-keys for pkg-config), which needs X11.

#pragma once

namespace GlutMenu {

// Whether a code from GLUT's special-key callback is a modifier pressed by itself: Shift, Control,
// Alt, Super or Num Lock, on either side. An open drop-down closes on a key that it has no use for,
// so keep these from special_key_callback.
constexpr bool IsModifierKey(int special_key) {
    constexpr int num_lock = 109;
    constexpr int left_shift = 112;
    constexpr int right_super = 119;
    return special_key == num_lock || (special_key >= left_shift && special_key <= right_super);
}

// X turns Shift+Tab into a key of its own, which freeglut drops; this lets it arrive as a Tab with
// the shift bit set. Acts on the display of the current window, for all of the program's windows;
// does nothing where there is no X display behind it. Call once, after the first window was
// created.
void EnableShiftTab();

}  // namespace GlutMenu

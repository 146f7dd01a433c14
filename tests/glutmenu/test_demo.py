"""The toolkit in a real window: the demo program driven by mouse and keyboard, its printed lines, and
its pictures compared with those in gold/.

A picture agrees when at most PIXELS_OFF of its pixels differ by more than LEVELS_OFF in any channel:
room for another rasteriser's line ends and for the blinking cursor, not for a misplaced text. After a
wanted change of looks, run with GLUTMENU_NEW_GOLD=1 and look at what changed.
"""

import os
import subprocess
import sys
import time
import unittest

import numpy as np
from PIL import Image

try:
    import harness
except ImportError:  # run by hand rather than by ctest
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))
    import harness

GOLD = os.path.join(os.path.dirname(os.path.abspath(__file__)), "gold")
DEMO = os.environ.get("GLUTMENU_DEMO") or os.path.join(harness.BUILD, "GlutMenu/demo/glutmenu_demo")
NEW_GOLD = bool(os.environ.get("GLUTMENU_NEW_GOLD"))

LEVELS_OFF = 40
PIXELS_OFF = 0.0005


class Demo(harness.Program):
    def _find_window(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the demo ended with status {self.process.returncode}")
        _, found = self.screen.tool(
            "xdotool", "search", "--onlyvisible", "--name", "^GlutMenu demo", check=False
        )
        return found.split()[-1].decode() if found.split() else None

    def focus(self):
        """The window that has the keyboard."""
        return self.screen.tool("xdotool", "getwindowfocus", check=False)[1].decode().strip()

    def wait_for_window(self, timeout=30):
        """What is typed before the window has the keyboard goes nowhere."""
        super().wait_for_window(timeout)

        def has_the_keyboard():
            if self.focus() == self.window:
                return True
            self.screen.tool("xdotool", "windowactivate", self.window, check=False)
            return False

        harness.wait_until(has_the_keyboard, timeout, "the keyboard")
        return self.window

    def key(self, *names):
        super().key(*names)
        self._assert_keyboard(names)

    def type(self, text):
        """Into an open dialog, which traces each key that it gets."""
        super().type(text)
        for character in text:
            self.wait_for_line(f"^Key code is {ord(character)} ")
        self._assert_keyboard(text)

    def _assert_keyboard(self, typed):
        focus = self.focus()
        if focus != self.window and not self._ends():
            raise AssertionError(f"keys may be lost: the window {focus} has the keyboard, {typed}")

    def _ends(self):
        """Whether a key has ended the demo, whose window may be gone before it is."""
        try:
            self.process.wait(3 * harness.PATIENCE)
        except subprocess.TimeoutExpired:
            return False
        return True

    def wait_for_selection(self, text):
        self.wait_for_line(f"^Selected {text}$")


def part_off(picture, gold):
    """The part of the pixels that differ, 1 for pictures of different sizes."""
    if picture.shape != gold.shape:
        return 1.0
    off = np.abs(picture.astype(int) - gold.astype(int)).max(axis=2) > LEVELS_OFF
    return float(off.mean())


class DemoTest(harness.WindowTest):
    def setUp(self):
        screen = harness.Screen()
        self.addCleanup(screen.stop)
        # Mesa is unloaded before its leaks could be told from others at an exit within a callback;
        # the toolkit's own would show in its unit tests.
        env = {"ASAN_OPTIONS": "detect_leaks=0:exitcode=99"}
        self.demo = Demo(screen, ["-geometry", "640x480+60+60"], env, program=DEMO)
        self._programs.append(self.demo)
        self.addCleanup(self._finish, self.demo)
        self.demo.wait_for_window()

    def assert_looks_like(self, name):
        """Waits until the window looks like a gold picture, the cursor blinking or not."""
        path = os.path.join(GOLD, name + ".png")
        if NEW_GOLD:
            time.sleep(1.0)
            Image.fromarray(self.demo.screenshot()).quantize(256).save(path, optimize=True)
            return
        gold = np.asarray(Image.open(path).convert("RGB"))
        deadline = time.monotonic() + 3.0 * harness.PATIENCE
        while True:
            picture = self.demo.screenshot()
            off = part_off(picture, gold)
            if off <= PIXELS_OFF:
                return
            if time.monotonic() > deadline:
                self.artifact(name, picture)
                self.fail(f"{off:.3%} of the picture is not as in gold/{name}.png")
            time.sleep(0.1)


class Menus(DemoTest):
    def test_the_bar_is_shown_at_once(self):
        self.assert_looks_like("bar")

    def test_arrows_open_nested_submenus(self):
        self.demo.key("Return", "Down", "Down", "Right", "Down", "Down", "Right")
        self.assert_looks_like("nested")

    def test_right_on_a_leaf_moves_along_the_bar(self):
        self.demo.key("Return", "Right", "Return")
        self.assert_looks_like("view")

    def test_a_selection_changes_tick_and_picture(self):
        self.demo.key("Right", "Return", "Down", "Return")
        self.demo.wait_for_selection("Axes")
        self.demo.key("Return")
        self.assert_looks_like("axes")

    def test_a_disabled_item_cannot_be_chosen(self):
        self.demo.key("Return", "Down", "Return", "Return", "Return")
        self.demo.wait_for_selection("New")
        self.assertNotIn("Selected Open", self.demo.lines)

    def test_a_bare_modifier_key_leaves_a_menu_open(self):
        self.demo.key("Right", "Return", "shift", "ctrl", "alt")
        self.assert_looks_like("view")

    def test_escape_closes_the_menus(self):
        self.demo.key("Return", "Down", "Down", "Right", "Escape")
        self.assert_looks_like("bar")

    def test_clicks_choose_from_a_nested_submenu(self):
        self.demo.click(10, 15)
        self.demo.click(15, 98)
        self.demo.click(62, 98)
        self.demo.wait_for_selection("First")
        self.assert_looks_like("bar")

    def test_a_click_traces_its_item(self):
        self.demo.click(40, 15)
        self.demo.wait_for_line("^Item View$")
        self.assert_looks_like("view")

    def test_a_click_elsewhere_closes_the_menus(self):
        self.demo.click(10, 15)
        self.demo.click(500, 400)
        self.assert_looks_like("bar")

    def test_the_tree_can_be_rebuilt_from_its_own_callback(self):
        self.demo.key("Right", "Return", "Down", "Return")
        self.demo.wait_for_selection("Axes")
        self.demo.key("Left", "Left", "Return")
        self.demo.wait_for_selection("Reset")
        self.assert_looks_like("bar")
        self.demo.key("Return", "Return")
        self.demo.wait_for_selection("New")

    def test_menus_follow_a_new_window_size(self):
        self.demo.resize(900, 500)
        self.demo.wait_for_line("^Reshaping to 900x500$")
        self.demo.click(70, 15)
        self.demo.wait_for_line("^Item View$")
        self.assert_looks_like("reshaped")

    def test_quit_ends_with_status_0(self):
        self.demo.key("Return", "Up", "Return")
        self.demo.wait_for_selection("Quit")
        self.assertEqual(self.demo.wait_exit(), 0)


class Dialogs(DemoTest):
    def open_dialog(self, downs):
        self.demo.key("Right", "Right", "Return", *["Down"] * downs, "Return")
        self.demo.wait_for_line("^Selected ")

    def test_a_single_field_takes_text(self):
        self.open_dialog(0)
        self.assert_looks_like("single_field")
        self.demo.type("!")
        self.demo.key("Left", "BackSpace", "End")
        self.demo.type("defg")
        self.demo.key("Return")
        self.demo.wait_for_line(r"^Name \[\] Ad!defg$")

    def test_a_refused_answer_leaves_the_dialog_open(self):
        self.open_dialog(0)
        self.demo.key("BackSpace", "Delete", "BackSpace", "Return")
        self.demo.wait_for_line(r"^Name \[\] $")
        self.demo.type("Bo")
        self.demo.key("Return")
        self.demo.wait_for_line(r"^Name \[\] Bo$")

    def test_a_message_opened_by_an_answer_takes_over(self):
        self.open_dialog(0)
        self.demo.key("Return")
        self.demo.wait_for_line("^Name")
        self.assert_looks_like("notice")
        self.demo.key("Return")
        self.demo.key("Right")
        self.assert_looks_like("reset")

    def test_a_message_is_shown_until_return(self):
        self.open_dialog(1)
        self.assert_looks_like("message")

    def test_shift_tab_moves_to_the_field_before(self):
        self.open_dialog(2)
        self.demo.key("shift+Tab")
        self.demo.wait_for_line("^Key code is 9 and shift state is 1$")
        self.demo.key("Right")
        self.assert_looks_like("form_last")
        self.demo.key("Tab")
        self.demo.wait_for_line("^Key code is 9 and shift state is 0$")
        self.demo.type("s")
        self.demo.key("Down")
        self.demo.type("0")
        self.demo.key("Return")
        self.demo.wait_for_line(r"^Form \[\] Title=Tiless Count=120 Shape=Star$")

    def test_a_click_on_a_button_answers_with_its_label(self):
        self.open_dialog(2)
        self.assert_looks_like("form")
        self.demo.click(5, 470)
        self.demo.click(133, 216)
        self.demo.wait_for_line(r"^Form \[Cancel\] Title=Tiles Count=12 Shape=Square$")

    def test_a_long_value_stays_within_its_field(self):
        self.open_dialog(2)
        self.demo.key("Down")
        self.demo.type("mmmmmmmm")
        self.demo.wait_for_line("^x_offset .*, index 10$")
        self.assert_looks_like("form_long_end")
        self.demo.key("Home", "Right", "Right", "Right", "Right", "Right")
        self.demo.wait_for_line("^x_offset .*, index 5$")
        self.assert_looks_like("form_long_middle")

    def test_the_cursor_of_a_form_is_two_pixels_wide_and_touches_no_letter(self):
        self.open_dialog(2)
        self.demo.key("Left")
        self.demo.wait_for_line("^x_offset .*, index 4$")
        (field,) = harness.wait_until(self._fields_with_cursor, 5, "the cursor to be lit")
        (cursor,) = self._green_stripes(field)
        self.assertEqual(len(cursor), 2)
        ink = (field.min(axis=2) > 200).any(axis=0)
        self.assertTrue(ink[: cursor[0]].any() and ink[cursor[-1] + 1 :].any())
        self.assertFalse(ink[cursor[0] - 1] or ink[cursor[-1] + 1])

    def _fields_with_cursor(self):
        """What lies within the frame of the form's first field, if the cursor is lit there."""
        field = self.demo.screenshot()[128:144, 78:150].astype(int)
        return [field] if self._green_stripes(field) else []

    def _green_stripes(self, field):
        """Columns that are green from top to bottom, those side by side in one array each."""
        red, green, blue = field[..., 0], field[..., 1], field[..., 2]
        columns = np.flatnonzero(((green > red + 60) & (green > blue)).all(axis=0))
        stripes = np.split(columns, np.flatnonzero(np.diff(columns) > 1) + 1)
        return [stripe for stripe in stripes if len(stripe)]

    def test_escape_leaves_without_an_answer(self):
        self.open_dialog(2)
        self.demo.key("Escape", "Right")
        self.assert_looks_like("reset")
        self.assertNotIn("Form", "".join(line[:4] for line in self.demo.lines))

    def test_the_cursor_blinks(self):
        self.open_dialog(0)
        seen = set()
        harness.wait_until(
            lambda: seen.add(self.demo.screenshot().tobytes()) or len(seen) > 1,
            5, "the cursor to blink",
        )

    def test_an_open_dialog_follows_a_new_window_size(self):
        self.open_dialog(0)
        self.demo.resize(900, 500)
        self.demo.wait_for_line("^New CTextInput")
        self.assert_looks_like("dialog_reshaped")


if __name__ == "__main__":
    unittest.main()

"""What the window tells the eye beside its picture: the mouse pointer, the text cursor, the icon; and
the picture itself on an OpenGL that takes only small textures."""

import os
import tempfile
import unittest

import catalogues
import harness
import numpy as np
from test_window import BELOW_THE_BAR, REPORT, START_VIEW, TessaryTest
from x_client import XClient

SMALL_TEXTURES = os.path.join(harness.BUILD, "tests", "e2e", "libtessary_small_textures.so")

ARROW, CROSSHAIR, WATCH = 68, 34, 150  # their numbers in the cursor font


class MousePointer(TessaryTest):
    def start(self, *arguments, **options):
        screen = harness.Screen()
        self.addCleanup(screen.stop)
        self.client = self.enterContext(XClient(screen))
        looks = self.client.looks_of((ARROW, CROSSHAIR, WATCH))
        self.assertEqual(len(set.union(*looks)), sum(map(len, looks)), "they look alike")
        self.arrow, self.crosshair, self.watch = looks
        return super().start(*arguments, screen=screen, **options)

    def assert_pointer(self, program, look, what):
        program.move(600, 600)
        harness.wait_until(lambda: self.client.pointer() in look, 15, f"the pointer: {what}")

    def test_it_is_a_crosshair_while_the_next_drag_zooms(self):
        program = self.start_and_settle()
        self.assert_pointer(program, self.crosshair, "a crosshair at the start")
        program.drag(400, 400, 688, 616)
        program.wait_for_line(REPORT)
        program.wait_for_line(REPORT, timeout=120)
        self.assert_pointer(program, self.arrow, "an arrow after the zoom")
        program.key("Right", "Right", "Return")
        self.assert_pointer(program, self.crosshair, "a crosshair once Zoom was chosen")

    def test_it_is_an_arrow_while_a_dialog_is_open(self):
        program = self.start_and_settle()
        program.key("Return", *["Down"] * 5, "Return")
        self.assert_pointer(program, self.arrow, "an arrow over the dialog")
        program.key("Escape")
        self.assert_pointer(program, self.crosshair, "a crosshair after it")

    def test_it_is_a_watch_while_a_frame_is_computed(self):
        with tempfile.NamedTemporaryFile(suffix=".frac") as file:
            # The orbits of a Siegel disc neither escape nor repeat.
            for identity in range(2):
                file.write(catalogues.record(
                    "slow", catalogues.JULIA, catalogues.SQUARE, (-0.390541, -0.586788),
                    iterations=1 + 999999999 * identity, identity=identity))
            file.flush()
            program = self.start([f"--bench:{file.name}", "--double"])
            program.wait_for_line("^Enqueuing")
            program.wait_for_line("^Enqueuing")
            self.assert_pointer(program, self.watch, "a watch")
            self.assertNotIn("Total", "".join(program.lines))


class TextCursor(TessaryTest):
    def test_it_blinks_in_a_form_without_a_line_or_a_render(self):
        program = self.start_and_settle()
        program.key("Return", *["Down"] * 5, "Return")
        program.wait_until_quiet()
        printed = len(program.lines)
        first = program.screenshot()

        def changed():
            shown = program.screenshot()
            return [shown] if (shown != first).any() else None

        [other] = harness.wait_until(changed, 10, "the cursor to change")
        rows, columns = (other != first).any(axis=2).nonzero()
        self.assertLess(columns.max() - columns.min(), 12, "only the cursor changes")
        harness.wait_until(lambda: (program.screenshot() == first).all(), 10, "it to come back")
        self.assertEqual(program.lines[printed:], [])

    def test_it_goes_with_the_dialog(self):
        program = self.start_and_settle()
        program.key("Return", *["Down"] * 5, "Return")
        program.wait_until_quiet()
        program.key("Escape")
        program.wait_until_quiet()
        first = program.screenshot()
        for _ in range(5):
            harness.time.sleep(0.3)
            self.assertTrue((program.screenshot() == first).all())


class Icon(TessaryTest):
    INSIDE, AROUND = (11, 13, 20), (24, 52, 118)

    def icons(self, program):
        """The window's icons, by side: rows of pixels of red, green, blue, alpha."""
        _, text = program.screen.tool(
            "xprop", "-id", program.window, "-notype", "-f", "_NET_WM_ICON", "32c", " = $0+\\n",
            "_NET_WM_ICON")
        numbers = [int(number) for number in text.decode().split(" = ")[1].split(", ")]
        icons = {}
        while numbers:
            width, height = numbers[:2]
            self.assertEqual(width, height)
            pixels = np.array(numbers[2:2 + width * height], dtype=np.uint32)
            icons[width] = pixels.byteswap().view(np.uint8).reshape(height, width, 4)[..., [1, 2, 3, 0]]
            numbers = numbers[2 + width * height:]
        return icons

    def test_it_is_a_mandelbrot_set_in_several_sizes(self):
        program = self.start()
        program.wait_for_frames(1)
        icons = self.icons(program)
        self.assertEqual(sorted(icons), [16, 32, 48, 64, 128])
        for side, icon in icons.items():
            with self.subTest(side=side):
                # The origin lies at three quarters of the width.
                self.assertEqual(tuple(icon[side // 2, side * 3 // 4 - 1]), (*self.INSIDE, 255))
                self.assertLess(abs(icon[side // 2, -1].astype(int) - (*self.AROUND, 255)).max(), 40)
                self.assertLess(icon[0, 0, 3], 80, "the corners are round")
                self.assertTrue((icon == icon[::-1]).all(), "the set is its own mirror image")


class SmallTextures(TessaryTest):
    def test_the_picture_is_the_same_in_pieces(self):
        whole = self.start_and_settle().screenshot()
        for largest, pieces in ((1500, 1024), (512, 512), (100, 64)):
            with self.subTest(largest=largest):
                program = self.start_and_settle(
                    env={"LD_PRELOAD": SMALL_TEXTURES, "TESSARY_LARGEST_TEXTURE": str(largest)})
                self.assertEqual(
                    [line for line in program.lines if "refuses" in line],
                    ["OpenGL refuses a texture of 2048 x 2048 pixels: the picture is drawn in pieces"
                     f" of {pieces} x {pieces}"])
                self.assert_shows(program, START_VIEW)
                shown = program.screenshot()
                different = abs(shown.astype(int) - whole)[BELOW_THE_BAR:].max(axis=2) > 8
                self.assertLess(different.mean(), 0.001)

    def test_an_ordinary_opengl_is_not_talked_about(self):
        program = self.start_and_settle()
        self.assertFalse([line for line in program.lines if "OpenGL" in line])


if __name__ == "__main__":
    unittest.main()

"""Windows of unusual sizes, sizes that change with every frame, and two programs side by side. In
all of this nothing is left over in OpenGL, and neither it nor the X server objects."""

import os
import random
import re
import sys
import tempfile
import unittest

import catalogues
import expected
import harness
import resources
from test_window import LEAST_SHARE, REPORT, START_VIEW, TessaryTest

RENDER = "Enqueuing 65536"
GLIDE = 20
SEED = int(os.environ.get("TESSARY_SIZES_SEED", "4096"))


class CountedTest(TessaryTest):
    def setUp(self):
        self.counts = resources.Counts()
        self.addCleanup(self.counts.close)

    def start_counted(self, *arguments, **options):
        return self.start_and_settle(*arguments, env=self.counts.environment, **options)

    def assert_nothing_left(self):
        counts = self.counts.read()
        for name in ("textures", "lists", "gl_errors", "x_errors"):
            self.assertEqual(counts[name], 0, name)

    def assert_shows_below_the_bar(self, program, view, palette=None):
        """The lower half of the window shows the Mandelbrot picture of this view."""
        colours = expected.random_palette() if palette is None else palette
        picture = expected.coloured(expected.mandelbrot(view), colours)
        shown = program.screenshot()
        height, width, _ = shown.shape
        half = height // 2
        meant = expected.stretched(picture, width, height)[half:]
        difference = abs(shown[half:].astype(float) - meant).max(axis=2)
        share = (difference <= 4).mean()
        if share < LEAST_SHARE:
            self.artifact("expected", meant)
            self.artifact("shown", shown)
        self.assertGreaterEqual(share, LEAST_SHARE)


class Sizes(CountedTest):
    # One that all of them fit on.
    SCREEN = (4200, 4200)

    def setUp(self):
        super().setUp()
        screen = self.enterContext(harness.Screen(wm=False, size=self.SCREEN))
        self.program = self.start_counted("--cpu", screen=screen)
        # Without a window manager its corner is just off the screen.
        screen.tool("xdotool", "windowmove", "--sync", self.program.window, "0", "0")

    def take(self, width, height):
        self.program.resize(width, height)
        self.program.wait_until_quiet()

    def test_a_high_and_narrow_one_shows_the_picture(self):
        self.take(100, 4000)
        self.assert_shows_below_the_bar(self.program, START_VIEW)
        self.assert_nothing_left()

    def test_one_larger_than_the_picture_shows_the_picture(self):
        self.take(4096, 4096)
        self.assert_shows_below_the_bar(self.program, START_VIEW)
        self.assert_nothing_left()

    def test_one_of_a_single_pixel_is_survived(self):
        self.take(1, 1)
        self.assertEqual(self.program.screenshot().shape, (1, 1, 3))
        self.program.click(0, 0)
        self.program.key("Return", "Down", "Escape", "Escape")
        self.program.wait_until_quiet()
        self.take(640, 480)
        self.assert_shows_below_the_bar(self.program, START_VIEW)
        self.assert_nothing_left()

    def test_keys_reach_the_menus_in_each(self):
        for width, height in ((1, 1), (100, 4000), (4000, 100)):
            with self.subTest(width=width, height=height):
                self.take(width, height)
                self.program.skip_output()
                self.program.move(0, 0)  # without a window manager keys go where the pointer is
                self.program.key("Escape", "Escape", "Return", "Return", "Return")
                self.program.wait_for_line(RENDER)
                self.program.wait_until_quiet()
        self.assert_nothing_left()


class EveryFrame(CountedTest):
    DRAG = (400, 400, 688, 616)

    def test_a_size_of_its_own_for_each_frame_of_a_glide(self):
        print(f"TESSARY_SIZES_SEED={SEED}", file=sys.stderr)
        sizes = random.Random(SEED)
        program = self.start_counted("--cpu")
        _x, _y, width, height = program.geometry()
        program.skip_output()
        program.drag(*self.DRAG)
        program.wait_for_line(REPORT)
        for _ in range(GLIDE - 2):
            program.wait_for_line(RENDER)
            program.ask_for_size(sizes.randint(200, 1200), sizes.randint(150, 900))
        program.wait_for_line(REPORT, timeout=120)
        program.wait_until_quiet()
        reports = [at for at, line in enumerate(program.lines) if re.search(REPORT, line)]
        self.assertEqual(len(reports), 3, "one at the start, two around the glide")
        # A picture for a new size may pay the render that the release of the drag owed.
        self.assertIn(program.lines[reports[1]:].count(RENDER), (GLIDE, GLIDE + 1))
        program.resize(800, 600)
        program.wait_until_quiet()
        self.assert_shows_below_the_bar(
            program, expected.zoomed(START_VIEW, self.DRAG, (width, height)))
        self.assert_nothing_left()


class SideBySide(CountedTest):
    # Few points of these stay, and those take the evaluation here its time.
    VIEWS = [(-2.4, -1.2, -0.6, 0.6), (-2.1, -1.5, -0.3, 0.3)]
    DRAG = (330, 60, 480, 170)

    def catalogue(self):
        """The path of a catalogue with two relatives, in the palette that the start view has not."""
        with tempfile.NamedTemporaryFile(suffix=".frac", delete=False) as file:
            self.addCleanup(os.remove, file.name)
            for view in self.VIEWS:
                file.write(catalogues.record("other", 0, view, palette=1, identity=1))
        return file.name

    def place(self, program, x, y):
        program.resize(600, 450)
        program.screen.tool("xdotool", "windowmove", program.window, str(x), str(y))
        program.wait_until_quiet()

    def test_each_of_two_programs_draws_its_own_picture(self):
        screen = self.enterContext(harness.Screen(size=(1400, 1200)))
        one = self.start_counted("--cpu", screen=screen)
        self.place(one, 20, 40)
        other = self.start([f"--bench:{self.catalogue()}"], screen=screen,
                           env=self.counts.environment)
        screen.tool("xdotool", "windowsize", other.window, "600", "450",
                    "windowmove", other.window, "700", "600")
        one.skip_output()
        one.drag(*self.DRAG)
        one.wait_for_line(REPORT)
        one.wait_for_line(REPORT, timeout=120)
        other.wait_for_line("^Total rendering time ", timeout=120)
        for program in (one, other):
            program.wait_until_quiet()
        self.assertIn(self.shown(other), self.VIEWS)
        self.assert_shows_below_the_bar(other, self.shown(other), expected.rgb_palette())
        self.assert_shows_below_the_bar(
            one, expected.zoomed(START_VIEW, self.DRAG, (600, 450)))
        self.assert_nothing_left()
        one.close()
        self.assertEqual(one.wait_exit(), 0)
        self.assert_shows_below_the_bar(other, self.shown(other), expected.rgb_palette())
        other.close()
        self.assertEqual(other.wait_exit(), 0)

    def shown(self, program):
        """The view that it reported last."""
        pattern = r"^other Z-range:\((\S+), (\S+)\)-\((\S+), (\S+)\)"
        found = [re.search(pattern, line) for line in program.lines]
        x_min, y_min, x_max, y_max = map(float, [match for match in found if match][-1].groups())
        return x_min, x_max, y_min, y_max


if __name__ == "__main__":
    unittest.main()

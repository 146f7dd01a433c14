"""The window while it is covered, minimised, resized or destroyed in the middle of a run of frames."""

import os
import re
import tempfile
import unittest

import catalogues
import harness
from test_window import BELOW_THE_BAR, REPORT, TessaryTest
from x_client import XClient

RENDER = "Enqueuing 65536"
GLIDE = 20
DESTROYED = "The window was destroyed by another program\n"

# Long enough for whatever is still under way when the window goes.
A_WHILE = 1.5


def catalogue(entries):
    """The path of a catalogue with these (identity, width) of Mandelbrot views."""
    with tempfile.NamedTemporaryFile(suffix=".frac", delete=False) as file:
        for identity, width in entries:
            file.write(catalogues.record(
                f"entry {identity}", 0, (-width, width, -width, width), iterations=200,
                identity=identity))
    return file.name


def endless_catalogue():
    """The path of a catalogue with one view that nobody lives to see rendered."""
    with tempfile.NamedTemporaryFile(suffix=".frac", delete=False) as file:
        file.write(catalogues.endless())
    return file.name


class RunTest(TessaryTest):
    def catalogue(self, entries):
        path = catalogue(entries)
        self.addCleanup(os.remove, path)
        return path

    def minimise(self, program):
        program.screen.tool("xdotool", "windowminimize", program.window)
        harness.wait_until(lambda: self.map_state(program) == "IsUnMapped", 10, "the window to go")
        harness.time.sleep(A_WHILE)

    def show_again(self, program):
        program.screen.tool("xdotool", "windowmap", program.window)
        harness.wait_until(lambda: self.map_state(program) == "IsViewable", 10, "the window")

    @staticmethod
    def map_state(program):
        _, text = program.screen.tool("xwininfo", "-id", program.window)
        return re.search(r"Map State:\s*(\w+)", text.decode())[1]

    def assert_rests(self, program):
        """Nothing is printed, and the program hardly runs."""
        def ran():
            with open(f"/proc/{program.process.pid}/task/{program.process.pid}/schedstat") as file:
                return int(file.read().split()[0]) / 1e9

        printed, before = len(program.lines), ran()
        harness.time.sleep(A_WHILE)
        self.assertEqual(program.lines[printed:], [])
        self.assertLess(ran() - before, 0.2 * A_WHILE)


class BenchmarkRun(RunTest):
    STRANGERS = [(1, 2.0), (2, 1.9), (3, 1.8), (4, 1.7), (5, 1.6), (6, 1.5)]
    FAMILY = [(1, 2.0), (1, 1.0), (1, 0.5)]

    @staticmethod
    def renders(program):
        """How many frames were rendered up to the line of the total, and from it on."""
        program.wait_for_line("^Total rendering time ", timeout=120)
        program.wait_until_quiet()
        lines = program.lines
        total = next(at for at, line in enumerate(lines) if line.startswith("Total"))
        return lines[:total].count(RENDER), lines[total:].count(RENDER)

    def test_strangers_are_rendered_once_each_and_the_last_in_20_more_frames(self):
        for wm in (True, False):
            with self.subTest(window_manager=wm):
                program = self.start([f"--bench:{self.catalogue(self.STRANGERS)}"], wm=wm)
                self.assertEqual(self.renders(program), (6, GLIDE))

    def test_relatives_are_reached_in_20_frames_each(self):
        program = self.start([f"--bench:{self.catalogue(self.FAMILY)}"])
        self.assertEqual(self.renders(program), (1 + 2 * GLIDE, GLIDE))

    def test_a_covered_window_renders_the_same_frames(self):
        screen = harness.Screen()
        self.addCleanup(screen.stop)
        with XClient(screen) as other:
            other.cover(*harness.SCREEN_SIZE)
            program = self.start([f"--bench:{self.catalogue(self.FAMILY)}"], screen=screen)
            self.assertEqual(self.renders(program), (1 + 2 * GLIDE, GLIDE))

    def test_a_window_covered_and_uncovered_on_the_way_renders_the_same_frames(self):
        program = self.start([f"--bench:{self.catalogue(self.FAMILY)}"])
        program.wait_for_frames(5)
        with XClient(program.screen) as other:
            window = other.cover(*harness.SCREEN_SIZE)
            program.wait_for_frames(10)
            other.destroy(window)
        self.assertEqual(self.renders(program), (1 + 2 * GLIDE, GLIDE))

    def test_a_minimised_window_pauses_it(self):
        program = self.start([f"--bench:{self.catalogue(self.FAMILY)}"])
        program.wait_for_frames(5)
        self.minimise(program)
        self.assert_rests(program)
        self.assertFalse([line for line in program.lines if line.startswith("Total")])
        self.show_again(program)
        before, after = self.renders(program)
        # What is drawn to show the window again may pay a render that start-up owes.
        self.assertIn(before, (1 + 2 * GLIDE, 2 + 2 * GLIDE))
        self.assertEqual(after, GLIDE)

    def test_started_minimised_it_begins_when_shown(self):
        program = self.start([f"--bench:{self.catalogue(self.FAMILY)}", "-iconic"], window=False)
        program.wait_for_line("^Running on CPU")
        harness.time.sleep(A_WHILE)
        self.assertEqual(program.lines.count(RENDER), 0)
        _, found = program.screen.tool("xdotool", "search", "--name", "^Tessary")
        program.window = found.split()[-1].decode()
        self.show_again(program)
        self.assertEqual(self.renders(program), (1 + 2 * GLIDE, GLIDE))


class DuringAGlide(RunTest):
    def start_gliding(self):
        """A program in the first frames of a glide to a slow view."""
        program = self.start_and_settle()
        program.skip_output()
        program.drag(400, 400, 688, 616)
        program.wait_for_line(REPORT)
        program.wait_for_frames(3)
        return program

    def frames(self, program):
        """The frames rendered since the drag, once all is quiet."""
        program.wait_until_quiet()
        start = [at for at, line in enumerate(program.lines) if re.search(REPORT, line)][1]
        return program.lines[start:].count(RENDER)

    def landings(self, program):
        """How often the view was reported since the glide began: once when it landed."""
        return len([line for line in program.lines if re.search(REPORT, line)]) - 2

    def test_a_press_stops_nothing_while_zooming_is_off(self):
        program = self.start_gliding()
        program.click(600, 600)
        program.wait_for_line(REPORT)
        self.assertEqual(self.frames(program), GLIDE)
        self.assertEqual(self.landings(program), 1)

    def test_a_press_stops_it_where_it_is_once_zoom_was_chosen(self):
        program = self.start_gliding()
        program.key("Right", "Right", "Return")
        program.press(600, 600)
        frames = self.frames(program)
        self.assertLess(frames, GLIDE)
        self.assertEqual(self.landings(program), 0)
        program.release(600, 600)
        program.wait_until_quiet()
        self.assertEqual(self.landings(program), 0)

    def test_a_click_on_the_menu_leaves_it_going(self):
        program = self.start_gliding()
        program.click(30, 25)
        program.wait_for_line("^Item Fractals$")
        program.wait_for_line(REPORT)
        self.assertEqual(self.frames(program), GLIDE)

    def test_a_new_size_leaves_it_going(self):
        program = self.start_gliding()
        program.resize(800, 600)
        program.wait_for_line(REPORT)
        # The picture for the new size pays the render that the release of the drag owed.
        self.assertIn(self.frames(program), (GLIDE, GLIDE + 1))
        self.assertEqual(self.landings(program), 1)

    def test_covered_it_goes_on(self):
        program = self.start_gliding()
        with XClient(program.screen) as other:
            other.cover(*harness.SCREEN_SIZE)
            program.wait_for_line(REPORT)
            self.assertEqual(self.frames(program), GLIDE)

    def test_minimised_it_pauses_and_lands_when_shown_again(self):
        program = self.start_gliding()
        self.minimise(program)
        self.assert_rests(program)
        self.assertEqual(self.landings(program), 0)
        self.show_again(program)
        program.wait_for_line(REPORT)
        self.assertIn(self.frames(program), (GLIDE, GLIDE + 1))

    def test_minimised_cycling_pauses_and_owes_nothing(self):
        program = self.start_and_settle()
        program.key("Return", *["Down"] * 4, "Return")
        program.wait_for_frames(3)
        self.minimise(program)
        self.assert_rests(program)
        self.show_again(program)
        program.skip_output()
        program.wait_for_frames(2)
        program.key("Escape", "Escape", "Return", *["Down"] * 4, "Return")
        program.wait_until_quiet()


class Destroyed(RunTest):
    def destroy(self, program):
        with XClient(program.screen) as other:
            other.destroy(program.window)

    def assert_ended(self, program):
        self.assertEqual(program.wait_exit(), 1)
        self.assertEqual(program.errors, DESTROYED)

    def test_by_another_client_it_ends_with_1_and_a_line(self):
        for wm in (True, False):
            with self.subTest(window_manager=wm):
                program = self.start(wm=wm)
                program.wait_for_frames(1)
                program.wait_until_quiet()
                self.destroy(program)
                self.assert_ended(program)

    def test_in_the_middle_of_drawing_it_ends_the_same(self):
        path = catalogue(BenchmarkRun.FAMILY)
        self.addCleanup(os.remove, path)
        program = self.start([f"--bench:{path}"])
        program.wait_for_frames(5)
        self.destroy(program)
        self.assert_ended(program)

    def test_in_the_middle_of_a_slow_frame_it_ends_the_same_and_counts_no_frame(self):
        path = endless_catalogue()
        self.addCleanup(os.remove, path)
        for precision in ("--single", "--double"):
            with self.subTest(precision=precision):
                program = self.start([f"--bench:{path}", precision])
                program.wait_for_line("^Enqueuing")
                self.destroy(program)
                self.assert_ended(program)
                self.assertFalse([line for line in program.lines if line.startswith("Total")])

    def test_while_minimised_it_ends_the_same(self):
        program = self.start_and_settle()
        self.minimise(program)
        self.destroy(program)
        self.assert_ended(program)


if __name__ == "__main__":
    unittest.main()

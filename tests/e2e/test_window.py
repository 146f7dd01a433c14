"""The program in its window on the CPU: what it prints, what it shows, zooming by mouse, and every
way out."""

import os
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

import catalogues
import expected
import harness

START_VIEW = (-2.0, 2.0, -1.5, 1.5)
START_REPORT = (
    "Mandelbrot Z-range:(-2.000000, -1.500000)-(2.000000, 1.500000), "
    "c = (0.000000,0.000000), maxIters = 768, maxSize = 4.000000\r"
)
REPORT = r"^Mandelbrot Z-range:\((\S+), (\S+)\)-\((\S+), (\S+)\)"
CORES = os.cpu_count()

# The bar of the menu covers the top of the picture.
BELOW_THE_BAR = 120

# Llvmpipe weighs the four texels around a point in eighths of a bit less than a float would.
LEAST_SHARE = 0.995


def shut_down_lines(threads=CORES):
    return [
        "Releasing OpenCL resources ...[DONE]",
        "Shutting down threads",
        *[f"Waiting for thread {number}" for number in range(threads)],
        "Thread shutdown complete",
    ]


def reports(program):
    """Numbers of the printed lines that report the view."""
    return [at for at, line in enumerate(program.lines) if re.search(REPORT, line)]


class TessaryTest(harness.WindowTest):
    def assert_shows(self, program, view):
        """The window shows the random-coloured Mandelbrot picture of this view."""
        counts = expected.mandelbrot(view)
        picture = expected.coloured(counts, expected.random_palette())
        shown = program.screenshot()
        below = expected.stretched(picture, shown.shape[1], shown.shape[0])[BELOW_THE_BAR:]
        difference = abs(shown[BELOW_THE_BAR:].astype(float) - below).max(axis=2)
        share = (difference <= 4).mean()
        if share < LEAST_SHARE:
            self.artifact("expected", below)
            self.artifact("difference", (difference > 4)[..., None].repeat(3, axis=2) * 255)
        self.assertGreaterEqual(share, LEAST_SHARE)

    def assert_shut_down_in_order(self, program):
        lines = shut_down_lines()
        self.assertEqual(program.lines[-len(lines):], lines)

    def start_and_settle(self, *arguments, **options):
        """The program with its first picture shown and no render owed: of the two that start-up
        owes one is left, and a click pays it."""
        program = self.start(arguments, **options)
        program.wait_for_frames(1)
        program.click(500, 700)
        program.wait_for_frames(1)
        program.wait_until_quiet()
        return program


class StartUp(TessaryTest):
    def test_the_lines_come_in_order(self):
        program = self.start()
        program.wait_for_frames(1)
        lines = program.lines
        menus = 8  # the bar and the seven below it
        self.assertEqual(
            lines[:4 + menus],
            [
                f"Maximum CPU threads: {CORES}",
                "No OpenCL devices are available. Reverting to CPU rendering",
                f"Running on CPU with {CORES} threads in Single precision",
                START_REPORT,
                *["font x scaling is 0.164326"] * menus,
            ],
        )
        for line in lines[4 + menus:-2]:
            self.assertRegex(line, r"^(Resh|Resizing|old |new |scale |font scale )", "a reshape")
        self.assertEqual(lines[-2], "Enqueuing 65536")
        self.assertRegex(lines[-1], r"^Rendering to texture took \d+(\.\d+)?(e-\d+)? s$")

    def test_a_thread_count_gives_way_where_there_is_no_device(self):
        program = self.start(["--cpu1", "--double"])
        program.wait_for_frames(1)
        self.assertEqual(program.lines[1], "CPU Threads: 1")
        self.assertIn(f"Running on CPU with {CORES} threads in Double precision", program.lines)

    def test_glut_is_given_the_arguments(self):
        screen = harness.Screen()
        self.addCleanup(screen.stop)
        program = self.start(["-display", screen.display], env={"DISPLAY": None}, screen=screen)
        program.wait_for_frames(1)

    def test_the_window_takes_nine_tenths_of_the_screen(self):
        program = self.start()
        self.assertEqual(program.geometry()[2:], (1152, 921))

    def test_the_title_names_the_program_and_the_fractal(self):
        program = self.start()
        program.wait_for_frames(1)
        self.assertEqual(program.window_title(), "Tessary with OpenCL V1.0 : Mandelbrot")

    def test_the_window_has_a_class(self):
        program = self.start()
        self.assertEqual(program.property("WM_CLASS"), '"tessary", "Tessary"')

    def test_the_start_view_is_shown(self):
        program = self.start_and_settle()
        self.assert_shows(program, START_VIEW)

    def test_a_resized_window_stretches_the_same_picture(self):
        program = self.start_and_settle()
        program.resize(800, 600)
        program.wait_until_quiet()
        program.skip_output()
        self.assert_shows(program, START_VIEW)

    def test_it_runs_without_a_window_manager(self):
        program = self.start(wm=False)
        program.wait_for_frames(1)
        program.signal(signal.SIGTERM)
        program.wait_exit()
        self.assert_shut_down_in_order(program)


class Zooming(TessaryTest):
    DRAG = (400, 400, 688, 616)

    def drag_and_glide(self, program, drag=DRAG):
        """Drags, waits for the glide's end and answers what was printed since its start, which
        like its end is a report of the view."""
        program.skip_output()
        before = len(reports(program))
        program.drag(*drag)
        program.wait_for_line(REPORT)
        program.wait_for_line(REPORT, timeout=120)
        program.wait_until_quiet()
        return program.lines[reports(program)[before]:]

    def test_a_drag_glides_in_20_frames_to_what_was_selected(self):
        program = self.start_and_settle()
        _x, _y, width, height = program.geometry()
        lines = self.drag_and_glide(program)
        self.assertEqual(lines.count("Enqueuing 65536"), 20)
        target = expected.zoomed(START_VIEW, self.DRAG, (width, height))
        self.assert_shows(program, target)

    def test_the_view_is_reported_before_and_after_the_glide(self):
        program = self.start_and_settle()
        _x, _y, width, height = program.geometry()
        self.drag_and_glide(program)
        printed = [program.lines[at] for at in reports(program)]
        self.assertEqual(printed[:2], [START_REPORT, START_REPORT])
        shown = [float(number) for number in re.search(REPORT, printed[2]).groups()]
        x_min, x_max, y_min, y_max = expected.zoomed(START_VIEW, self.DRAG, (width, height))
        for number, meant in zip(shown, (x_min, y_min, x_max, y_max)):
            self.assertAlmostEqual(number, meant, places=6)
        self.assertEqual(len(printed), 3)

    def test_the_direction_of_the_drag_does_not_matter(self):
        x1, y1, x2, y2 = self.DRAG
        program = self.start_and_settle()
        _x, _y, width, height = program.geometry()
        self.drag_and_glide(program, (x2, y2, x1, y1))
        self.assert_shows(program, expected.zoomed(START_VIEW, self.DRAG, (width, height)))

    def test_a_second_drag_zooms_nothing(self):
        program = self.start_and_settle()
        self.drag_and_glide(program)
        before = program.screenshot()[BELOW_THE_BAR:]
        printed = len(reports(program))
        program.drag(*self.DRAG)
        program.wait_until_quiet()
        self.assertEqual(len(reports(program)), printed)
        self.assertTrue((program.screenshot()[BELOW_THE_BAR:] == before).all())

    def test_a_click_without_movement_zooms_nothing_and_a_drag_may_follow(self):
        program = self.start_and_settle()
        before = program.screenshot()[BELOW_THE_BAR:]
        program.click(600, 500)
        program.wait_until_quiet()
        self.assertEqual(len(reports(program)), 1)
        self.assertTrue((program.screenshot()[BELOW_THE_BAR:] == before).all())
        self.assertEqual(self.drag_and_glide(program).count("Enqueuing 65536"), 20)

    def test_the_other_buttons_zoom_nothing(self):
        program = self.start_and_settle()
        for button in (2, 3):
            program.drag(*self.DRAG, button=button)
        program.wait_until_quiet()
        self.assertEqual(len(reports(program)), 1)

    def test_the_rectangle_is_drawn_while_dragging_without_rendering(self):
        program = self.start_and_settle()
        program.skip_output()
        before = program.screenshot()
        program.press(300, 300)
        program.move(500, 450)
        program.move(600, 500)
        program.wait_until_quiet()
        shown = program.screenshot()
        changed = (shown != before).any(axis=2)[BELOW_THE_BAR:]
        rows, columns = changed.nonzero()
        self.assertAlmostEqual(columns.min(), 300, delta=3)
        self.assertAlmostEqual(columns.max(), 600, delta=3)
        self.assertAlmostEqual(rows.min() + BELOW_THE_BAR, 300, delta=3)
        self.assertAlmostEqual(rows.max() + BELOW_THE_BAR, 500, delta=3)
        self.assertFalse(changed[200:300, 320:580].any(), "only the outline is drawn")
        middle = shown[400, 298:303].astype(int)
        self.assertTrue((abs(middle - [178, 178, 0]).max(axis=1) <= 2).any())
        self.assertTrue(program.lines[-1].endswith("took 0 s"))


class WaysOut(TessaryTest):
    def test_closing_the_window_ends_with_0_in_order(self):
        program = self.start()
        program.wait_for_frames(1)
        program.close()
        self.assertEqual(program.wait_exit(), 0)
        self.assert_shut_down_in_order(program)

    def test_closing_the_window_during_a_glide_ends_with_0(self):
        program = self.start_and_settle()
        program.drag(400, 400, 600, 600)
        program.wait_for_line(REPORT)
        program.close()
        self.assertEqual(program.wait_exit(), 0)
        self.assert_shut_down_in_order(program)

    def test_signals_shut_down_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number.name):
                program = self.start()
                program.wait_for_frames(1)
                program.signal(number)
                self.assertEqual(program.wait_exit(), -number)
                self.assert_shut_down_in_order(program)
                self.assertEqual(program.errors, "")

    def test_a_signal_during_a_render_shuts_down_in_order(self):
        program = self.start()
        program.wait_for_line("Enqueuing")
        program.signal(signal.SIGTERM)
        self.assertEqual(program.wait_exit(), -signal.SIGTERM)
        self.assert_shut_down_in_order(program)

    def start_endless(self, *arguments):
        """The program at work on a picture that nobody lives to see."""
        folder = tempfile.mkdtemp(prefix="tessary-endless-")
        self.addCleanup(shutil.rmtree, folder)
        path = os.path.join(folder, "endless.frac")
        with open(path, "wb") as file:
            file.write(catalogues.endless())
        program = self.start([f"--bench:{path}", *arguments])
        program.wait_for_line("Enqueuing")
        return program

    def test_a_signal_ends_an_endless_tile(self):
        for precision in ("--single", "--double"):
            for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
                with self.subTest(precision=precision, signal=number.name):
                    program = self.start_endless(precision)
                    program.signal(number)
                    self.assertEqual(program.wait_exit(), -number)
                    self.assert_shut_down_in_order(program)
                    self.assertEqual(program.errors, "")

    def test_closing_the_window_ends_an_endless_tile(self):
        program = self.start_endless("--double")
        program.close()
        self.assertEqual(program.wait_exit(), 0)
        self.assert_shut_down_in_order(program)
        self.assertFalse([line for line in program.lines if line.startswith("Total")])
        self.assertEqual(program.errors, "")

    def test_a_display_lost_during_an_endless_tile_ends_with_1(self):
        program = self.start_endless("--double")
        program.screen.kill_server()
        self.assertEqual(program.wait_exit(), 1)

    def test_a_signal_to_the_process_and_its_group_is_one_signal(self):
        program = self.start_endless("--double")
        program.signal(signal.SIGTERM)
        os.killpg(program.process.pid, signal.SIGTERM)
        self.assertEqual(program.wait_exit(), -signal.SIGTERM)
        self.assert_shut_down_in_order(program)

    def test_a_lost_display_ends_with_1(self):
        program = self.start()
        program.wait_for_frames(1)
        program.screen.kill_server()
        self.assertEqual(program.wait_exit(), 1)

    def test_a_display_lost_during_a_glide_ends_with_1(self):
        program = self.start_and_settle()
        program.drag(400, 400, 600, 600)
        program.wait_for_line(REPORT)
        program.screen.kill_server()
        self.assertEqual(program.wait_exit(), 1)

    def test_a_pipe_closed_at_the_other_end_ends_it_quietly(self):
        with harness.Screen() as screen:
            done = subprocess.run(
                ["bash", "-c", '"$0" --cpu | head -n 3; exit "${PIPESTATUS[0]}"', harness.TESSARY],
                env=screen.env, capture_output=True, text=True, timeout=60 * harness.PATIENCE,
            )
        self.assertEqual(done.returncode, 128 + signal.SIGPIPE)
        self.assertEqual(done.stderr, "")
        self.assertEqual(len(done.stdout.splitlines()), 3)


class StandardStreams(TessaryTest):
    def test_closed_ones_are_the_null_device(self):
        closed = os.path.join(tempfile.mkdtemp(prefix="tessary-closed-"), "tessary")
        self.addCleanup(shutil.rmtree, os.path.dirname(closed))
        with open(closed, "w") as file:
            file.write(f'#!/bin/sh\nexec "{harness.TESSARY}" "$@" <&- >&- 2>&-\n')
        os.chmod(closed, 0o755)
        screen = self.enterContext(harness.Screen())
        program = harness.Program(screen, ["--cpu"], program=closed)
        self.addCleanup(program.stop)
        program.wait_for_window()
        for stream in range(3):
            self.assertEqual(os.readlink(f"/proc/{program.process.pid}/fd/{stream}"), "/dev/null")
        harness.wait_until(
            lambda: len(set(map(tuple, program.screenshot()[300:600:20, 300:600:20].reshape(-1, 3)))) > 5,
            30, "the picture")
        program.close()
        self.assertEqual(program.wait_exit(), 0)


class WithoutAWindow(unittest.TestCase):
    def test_help_lists_the_options_and_ends_with_0(self):
        for spelling in ("--help", "--Help"):
            done = harness.run_program([spelling])
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            lines = done.stdout.decode().split("\n")
            self.assertEqual(lines[0], f"Maximum CPU threads: {CORES}")
            self.assertEqual(lines[1:3], ["CL Tessary V1.0", ""])
            self.assertEqual(
                [line.split()[0] for line in lines[3:10]],
                ["--cpuN", "--deviceN", "--list", "--single", "--double", "--bench:filename", "--help"],
            )
            self.assertEqual(lines[10:-1], shut_down_lines())

    def test_the_list_of_no_devices_is_empty_and_ends_with_0(self):
        done = harness.run_program(["--LIST"])
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        lines = done.stdout.decode().splitlines()
        self.assertEqual(lines, [f"Maximum CPU threads: {CORES}", *shut_down_lines()])

    def test_options_that_must_be_a_whole_argument_are_not_found_inside_one(self):
        for argument in ("x--list", "--list=1", "x--help"):
            with self.subTest(argument=argument):
                done = harness.run_program([argument])
                self.assertEqual(done.returncode, 1)
                self.assertIn(b"Reverting to CPU rendering", done.stdout)

    def test_a_device_that_is_not_there_is_refused(self):
        for argument in ("--device7", "--device-1", "--device0"):
            with self.subTest(argument=argument):
                done = harness.run_program([argument])
                self.assertEqual((done.returncode, done.stderr), (1, b""))
                self.assertEqual(
                    done.stdout.decode().splitlines()[1:],
                    ["Invalid device Id. Run this app with the --list option to see available devices"],
                )

    def test_no_display_is_one_line_and_status_1(self):
        for display in (None, ":987"):
            with self.subTest(display=display):
                done = harness.run_program(["--cpu"], display=display)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(len(done.stderr.decode().splitlines()), 1, done.stderr)
                self.assertIn(b"display", done.stderr)


class Benchmark(TessaryTest):
    def test_a_file_that_is_not_there_is_reported_and_the_window_opens(self):
        program = self.start(["--bench:/nonexistent/a.frac"])
        program.wait_for_line("^Could not read from disk$")
        self.assertEqual(program.errors, "")
        program.wait_for_line("^Total rendering time ")
        program.close()
        self.assertEqual(program.wait_exit(), 0)
        self.assert_shut_down_in_order(program)


if __name__ == "__main__":
    unittest.main()

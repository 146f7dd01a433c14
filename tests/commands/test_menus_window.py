"""The menus, dialogs and file panels of the real program, walked with real keys and mouse."""

import os
import re
import shutil
import signal
import subprocess
import tempfile

import catalogues
import harness
import menus
from menus import MenuTest, TOUR
from x_client import XClient

REPORT = r"Z-range:"
SMALL_CATALOGUE = [
    catalogues.record(f"entry {n}", n % 3, (-2.0 - n, 2.0, -1.5, 1.5), iterations=50 + n,
                      identity=n)
    for n in range(3)
]


class Walk(MenuTest):
    def test_every_fractal_command_shows_its_fractal(self):
        program = self.start_and_settle()
        for number, path in enumerate(menus.CREATIONS):
            with self.subTest(command=path[-1]):
                self.choose(program, *path)
                self.settle(program)
                self.assert_shows(program, self.picture(TOUR, number))
        reports = [line for line in program.lines if re.search(REPORT, line)]
        self.assertEqual(len(reports), 1 + 18)
        self.quit(program)


class Mouse(MenuTest):
    """At 1152 x 921 an item of a drop-down is 50 pixels high, the first one begins at 51."""

    @staticmethod
    def item_y(number):
        return 51 + 50 * number + 25

    def test_clicks_walk_the_menus(self):
        program = self.start_and_settle()
        program.skip_output()
        program.click(30, 25)
        program.wait_for_line("^Item Fractals$")
        program.click(30, self.item_y(0))
        program.wait_for_line("^Item Fractals$")
        program.click(290, self.item_y(7))
        program.wait_for_line("^Item Dragon$")
        program.wait_for_line("Dragon Fractal Z-range:")
        self.settle(program)
        self.assertEqual(program.window_title(), "Tessary with OpenCL V1.0 :  Dragon Fractal")

    def test_a_click_beside_an_open_menu_closes_it_and_zooms_nothing(self):
        program = self.start_and_settle()
        before = program.screenshot()
        program.click(30, 25)
        program.wait_for_line("^Item Fractals$")
        program.click(800, 700)
        self.settle(program)
        self.assertTrue((program.screenshot()[120:] == before[120:]).all())


class Parameters(MenuTest):
    def test_edited_parameters_are_rendered_and_saved(self):
        with tempfile.TemporaryDirectory() as folder:
            program = self.start_and_settle(cwd=folder)
            self.choose(program, "Fractals", "Information")
            program.key(*["BackSpace"] * 10)
            self.type(program, "My \"own\" set")
            program.key("Tab", *["BackSpace"] * 10)
            self.type(program, "25.9")
            program.key("Tab", "Tab", *["BackSpace"] * 9)
            self.type(program, "-1.5")
            program.key("Return")
            program.wait_for_line("^Fractal parameters changed$")
            report = program.wait_for_line(REPORT).string
            self.assertIn('My "own" set Z-range:(-1.500000, -1.500000)', report)
            self.assertIn("maxIters = 25,", report)
            self.settle(program)
            self.save_as(program, "mine.frac")
            program.wait_for_line("^Saved fractal 0$")
            self.settle(program)
            self.assert_shows(program, self.picture(os.path.join(folder, "mine.frac"), 0))
            self.quit(program)

    def test_escape_discards_the_edits(self):
        program = self.start_and_settle()
        before = program.screenshot()
        self.choose(program, "Fractals", "Information")
        self.type(program, "xyz")
        program.key("Tab")
        self.type(program, "123")
        program.key("Escape")
        self.settle(program)
        self.assertNotIn("Fractal parameters changed", program.lines)
        self.assertTrue((program.screenshot()[120:] == before[120:]).all())

    def test_typed_numbers_have_a_point_for_a_user_who_writes_a_comma(self):
        with tempfile.TemporaryDirectory() as folder:
            made = subprocess.run(["localedef", "-f", "UTF-8", "-i", "de_DE",
                                   os.path.join(folder, "de_DE.UTF-8")], capture_output=True)
            if made.returncode != 0:
                self.skipTest("no such locale can be made")
            program = self.start_and_settle(
                env={"LC_ALL": "de_DE.UTF-8", "LOCPATH": folder, "LANGUAGE": None})
            self.choose(program, "Fractals", "Load from disk")
            self.panel(program, "Load fractals")
            program.key("Escape")
            self.wait_without_panels(program)
            self.choose(program, "Fractals", "Information")
            program.key("Tab", "Tab", "Tab", *["BackSpace"] * 9)
            self.type(program, "-1.75")
            program.key("Return")
            self.assertIn("(-1.750000, -1.500000)", program.wait_for_line(REPORT).string)


class Panels(MenuTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-panels-")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def test_a_zoom_is_saved_and_comes_back_with_the_same_pictures(self):
        program = self.start_and_settle(cwd=self.folder)
        start = program.screenshot()[120:]
        program.drag(400, 400, 688, 616)
        program.wait_for_line(REPORT)
        program.wait_for_line(REPORT, timeout=120)
        self.settle(program)
        zoomed = program.screenshot()[120:]
        self.save_as(program, "zoomed")
        program.wait_for_line("^Saved fractal 1$")
        self.settle(program)
        self.assertEqual(program.window_title(),
                         f"Tessary with OpenCL V1.0 :{self.path('zoomed.frac')}")
        self.quit(program)

        program = self.start_and_settle(cwd=self.folder)
        self.choose(program, "Fractals", "Fractals", "Dragon")
        self.settle(program)
        self.load_from(program, self.path("zoomed.frac"))
        program.wait_for_line("^Loaded  2 fractals.$")
        for command, picture in (("Next Fractal", zoomed), ("Previous Fractal", start)):
            self.choose(program, "Fractals", command)
            self.settle(program)
            self.assertTrue((program.screenshot()[120:] == picture).all(), command)
        self.quit(program)

    def test_a_loaded_file_is_named_in_the_title(self):
        program = self.start_and_settle(cwd=self.folder)
        self.load_from(program, TOUR)
        program.wait_for_line("^Loaded  18 fractals.$")
        self.assertEqual(program.window_title(), f"Tessary with OpenCL V1.0 :{TOUR}")

    def test_cancelled_panels_change_nothing(self):
        program = self.start_and_settle(cwd=self.folder)
        title, before = program.window_title(), len(program.lines)
        for command, name in (("Save to disk", "Save fractals"), ("Load from disk", "Load fractals")):
            self.choose(program, "Fractals", command)
            self.panel(program, name)
            program.key("Escape")
            self.wait_without_panels(program)
        self.settle(program)
        self.assertEqual(program.window_title(), title)
        self.assertEqual(os.listdir(self.folder), [])
        printed = {line for line in program.lines[before:] if "Rendering to" not in line}
        self.assertFalse({line for line in printed if "fractal" in line.lower()}, printed)
        self.assertEqual(program.errors, "")

    def test_the_window_destroyed_under_a_panel_ends_the_program(self):
        for command, name in (("Save to disk", "Save fractals"), ("Load from disk", "Load fractals")):
            program = self.start_and_settle(cwd=self.folder)
            self.choose(program, "Fractals", command)
            self.panel(program, name)
            with XClient(program.screen) as other:
                other.destroy(program.window)
            self.assertEqual(program.wait_exit(), 1)
            self.assertEqual(program.errors, "The window was destroyed by another program\n")

    def test_a_panel_goes_though_its_toolkit_keeps_that_to_itself(self):
        program = self.start_and_settle(cwd=self.folder, env={"LD_PRELOAD": menus.NO_FLUSH})
        self.choose(program, "Fractals", "Load from disk")
        self.panel(program, "Load fractals")
        program.key("Escape")
        self.wait_without_panels(program)

    def test_the_panel_starts_from_the_last_name(self):
        program = self.start_and_settle(cwd=self.folder)
        self.choose(program, "Fractals", "Save to disk")
        self.panel(program, "Save fractals")
        program.key("Return")
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(os.listdir(self.folder), ["Fractal1.frac"])

    def test_replacing_a_file_is_asked_by_the_panel(self):
        with open(self.path("there.frac"), "wb") as file:
            file.write(b"precious")
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "there.frac")
        self.panel(program, "Replace file")
        self.assertEqual(os.path.getsize(self.path("there.frac")), 8, "not before an answer")
        program.key("Escape")
        self.panel(program, "Save fractals")
        program.key("Escape")
        self.wait_without_panels(program)
        self.assertNotIn("Saved fractal 0", program.lines)

    def test_replacing_a_file_that_the_extension_leads_to_is_asked_too(self):
        with open(self.path("there.frac"), "wb") as file:
            file.write(b"precious")
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "there")
        self.panel(program, "Replace file")
        self.assertEqual(os.path.getsize(self.path("there.frac")), 8, "not before an answer")
        program.key("Escape")
        harness.time.sleep(1)
        self.panel(program, "Save fractals")
        program.key("Return")
        self.panel(program, "Replace file")
        program.key("Tab", "Return")
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(os.path.getsize(self.path("there.frac")), 87)

    def test_names_with_blanks_quotes_and_accents_survive(self):
        name = "ol\u00e9 se\u00f1\u00e1 \"two\" 'three'.frac"
        program = self.start_and_settle(cwd=self.folder)
        # A keyboard with these letters: xdotool lends a missing one a key for too short a time.
        program.screen.tool("setxkbmap", "us", "altgr-intl")
        self.save_as(program, name)
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(os.listdir(self.folder), [name])
        self.wait_without_panels(program)
        self.assertEqual(program.window_title(),
                         f"Tessary with OpenCL V1.0 :{self.path(name)}")

    def test_a_signal_ends_the_program_under_an_open_panel(self):
        program = self.start_and_settle(cwd=self.folder)
        self.choose(program, "Fractals", "Save to disk")
        self.panel(program, "Save fractals")
        program.signal(signal.SIGTERM)
        self.assertEqual(program.wait_exit(), -signal.SIGTERM)

    def test_the_panel_belongs_to_the_window(self):
        program = self.start_and_settle(cwd=self.folder)
        self.choose(program, "Fractals", "Save to disk")
        panel = self.panel(program, "Save fractals")
        _, text = program.screen.tool("xprop", "-id", panel, "WM_TRANSIENT_FOR")
        self.assertEqual(int(text.split()[-1], 16), int(program.window))


class Quitting(MenuTest):
    def test_quit_at_rest(self):
        self.quit(self.start_and_settle())

    def test_quit_during_a_glide(self):
        program = self.start_and_settle()
        program.drag(400, 400, 688, 616)
        program.wait_for_line(REPORT)
        self.quit(program)
        reports = [line for line in program.lines if re.search(REPORT, line)]
        self.assertEqual(len(reports), 2, "the glide had not ended")

    def test_quit_while_cycling(self):
        program = self.start_and_settle()
        self.choose(program, "Fractals", "Fractals", "Sin")
        self.choose(program, "Fractals", "Cycle")
        program.wait_for_line("^Mandelbrot Z-range")
        self.quit(program)

    def test_closing_the_window_under_an_open_dialog(self):
        program = self.start_and_settle()
        self.choose(program, "Fractals", "Information")
        self.settle(program)
        program.close()
        self.assertEqual(program.wait_exit(), 0)

    def test_quit_after_a_dialog(self):
        program = self.start_and_settle()
        self.choose(program, "Devices", "System information")
        program.key("Return")
        self.quit(program)


class Switching(MenuTest):
    DEVICES = 2

    def choose_and_see(self, program, path, told):
        """Chooses what makes a new picture, and waits for the line with which its renderer starts and
        for the picture: a device builds its program for as long as it takes, in silence."""
        program.skip_output()
        self.choose(program, *path)
        program.wait_for_line(told, timeout=120)
        program.wait_for_frames(1, timeout=120)
        self.settle(program)

    def test_everything_switches_while_cycling(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "small.frac")
            with open(path, "wb") as file:
                file.write(b"".join(SMALL_CATALOGUE))
            program = self.start_and_settle(env=menus.TWO_DEVICES)
            self.load_from(program, path)
            program.wait_for_line("^Loaded  3 fractals.$")
        self.choose(program, "Fractals", "Cycle")
        for path in (("Palette", "RGB Cycle"), ("Devices", "Double precision"), ("Devices", "CPU"),
                     ("Devices", "CPU Threads", "1"), ("Devices", "Double precision"),
                     ("Palette", "Random Colours"), ("Devices", "device 0"),
                     ("Devices", "Double precision"), ("Devices", "device 1"), ("Devices", "CPU"),
                     ("Devices", "CPU Threads", str(os.cpu_count())),
                     ("Devices", "Double precision")):
            self.choose(program, *path)
            program.wait_for_frames(2, timeout=120)
        self.choose(program, "Fractals", "Cycle")
        self.settle(program)
        self.choose_and_see(program, ("Fractals", "Fractals", "Sinh"), "^Enqueuing")
        self.assert_shows(program, self.picture(TOUR, 8))
        self.assertEqual(program.errors.replace("1 warning generated.\n", ""), "")
        self.quit(program)

    def test_devices_and_precisions_show_the_same_fractal(self):
        program = self.start_and_settle(env=menus.TWO_DEVICES)
        on_device, on_cpu = "^OpenCL (single|double) precison on", "^Enqueuing"
        for path, told, precision in ((("Devices", "Double precision"), on_device, "double"),
                                      (("Devices", "CPU"), on_cpu, "double"),
                                      (("Devices", "Double precision"), on_cpu, "single"),
                                      (("Devices", "device 1"), on_device, "single")):
            self.choose_and_see(program, path, told)
            self.assert_shows(program, self.picture(TOUR, 0, precision), least=0.98)
        self.quit(program)


class Benchmark(MenuTest):
    def test_a_saved_catalogue_is_timed_from_its_first_entry_to_its_last(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "small.frac")
            with open(path, "wb") as file:
                file.write(b"".join(SMALL_CATALOGUE))
            program = self.start([f"--bench:{path}"])
            total = float(program.wait_for_line(r"^Total rendering time (\S+) s$", 120)[1])
            lines = program.lines
            until = next(n for n, line in enumerate(lines) if line.startswith("Total"))
            times = [float(found[1]) for line in lines[:until]
                     if (found := re.search(harness.RENDERED_LINE, line))]
            self.assertAlmostEqual(sum(times), total, delta=0.001 * len(times))
            self.assertEqual(len(times), 3, "each entry once")
            self.settle(program)
            after = [line for line in program.lines[until:]
                     if re.search(harness.RENDERED_LINE, line)]
            self.assertEqual(len(after), 20, "the glide of the last entry onto itself")
            names = [found[1] for line in lines[:until]
                     if (found := re.search(r"^(entry \d) Z-range", line))]
            self.assertEqual(names, ["entry 0", "entry 1", "entry 2"])
            self.quit(program)


class Loading(MenuTest):
    @staticmethod
    def libraries(program):
        with open(f"/proc/{program.process.pid}/maps") as maps:
            return {os.path.basename(line.split()[-1]) for line in maps if ".so" in line}

    def test_the_desktop_toolkit_is_loaded_at_the_first_panel(self):
        program = self.start_and_settle()
        self.assertFalse({name for name in self.libraries(program) if "libgtk" in name})
        self.choose(program, "Fractals", "Load from disk")
        self.panel(program, "Load fractals")
        self.assertTrue({name for name in self.libraries(program) if "libgtk" in name})

    def test_without_the_desktop_toolkit_each_try_is_one_line(self):
        folder = tempfile.mkdtemp(prefix="tessary-libraries-")
        self.addCleanup(shutil.rmtree, folder)
        with open(os.path.join(folder, "libgtk-3.so.0"), "w") as file:
            file.write("no library")
        program = self.start_and_settle(env={"LD_LIBRARY_PATH": folder}, cwd=folder)
        for times, command in ((1, "Load from disk"), (2, "Save to disk"), (3, "Load from disk")):
            self.choose(program, "Fractals", command)
            harness.wait_until(lambda: times <= sum(
                line.startswith("No file panel can be shown: ") for line in program.lines), 30,
                "the line")
        self.assertEqual(self.open_panels(program), [])
        self.assertEqual(os.listdir(folder), ["libgtk-3.so.0"])
        self.assertEqual(program.errors, "")
        self.quit(program)

    def test_a_panel_leaves_the_window_as_it_was(self):
        program = self.start_and_settle()
        before = program.screenshot()
        self.choose(program, "Fractals", "Load from disk")
        self.panel(program, "Load fractals")
        program.key("Escape")
        self.wait_without_panels(program)
        self.settle(program)
        self.assertTrue((program.screenshot() == before).all())


if __name__ == "__main__":
    menus.main()

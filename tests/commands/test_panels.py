"""What the file panels of the real program ask, where they open and what they leave behind."""

import os
import re
import shutil
import signal
import tempfile

import harness
import menus
from menus import MenuTest, TOUR

IGNORE_PIPE = os.path.join(harness.BUILD, "tests", "commands", "libtessary_ignore_pipe.so")


class PanelTest(MenuTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-panels-")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def write(self, *names, content=b"precious"):
        with open(self.path(*names), "wb") as file:
            file.write(content)

    def read(self, *names):
        with open(self.path(*names), "rb") as file:
            return file.read()

    def open_panel(self, program, command):
        self.choose(program, "Fractals", f"{command} disk")
        return self.panel(program, f"{command.split()[0]} fractals")

    def leave_panel(self, program):
        program.key("Escape")
        self.wait_without_panels(program)

    def confirm(self, program):
        """Presses Return until the panel goes: the file it proposes is there after a while."""
        for _ in range(10):
            harness.time.sleep(0.7)
            program.key("Return")
            harness.time.sleep(0.7)
            if not self.open_panels(program):
                break
        self.wait_without_panels(program)


class Questions(PanelTest):
    def test_a_file_that_is_not_the_one_to_be_written_is_not_asked_about(self):
        self.write("plain")
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "plain")
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(sorted(os.listdir(self.folder)), ["plain", "plain.frac"])
        self.assertEqual(self.read("plain"), b"precious")

    def test_a_name_that_needs_no_extension_is_asked_about_once(self):
        self.write("There.FRAC")
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "There.FRAC")
        self.panel(program, "Replace file")
        self.assertEqual(self.read("There.FRAC"), b"precious")
        program.key("Tab", "Return")
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(os.listdir(self.folder), ["There.FRAC"])
        self.assertEqual(len(self.read("There.FRAC")), 87)

    def test_a_folder_is_refused_and_another_name_taken(self):
        os.mkdir(self.path("dir.frac"))
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "dir")
        self.panel(program, "Folder in the way")
        program.key("Return")
        self.panel(program, "Save fractals")
        self.assertNotIn("Could not write to disk", program.lines)
        program.key("ctrl+a")
        self.type(program, "other")
        harness.time.sleep(0.7)
        program.key("Return")
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(sorted(os.listdir(self.folder)), ["dir.frac", "other.frac"])


class Signals(PanelTest):
    """A signal ends the program while a panel asks something."""

    def windows(self, program):
        return program.screen.tool("wmctrl", "-l", check=False)[1].splitlines()

    def assert_ends(self, program, number):
        program.signal(number)
        self.assertEqual(program.wait_exit(), -number)

    def test_whether_to_replace_a_file(self):
        self.write("there.frac")
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number.name):
                program = self.start_and_settle(cwd=self.folder)
                self.save_as(program, "there.frac")
                self.panel(program, "Replace file")
                self.assert_ends(program, number)
                self.assertEqual(self.read("there.frac"), b"precious")

    def test_that_a_folder_is_in_the_way(self):
        os.mkdir(self.path("dir.frac"))
        program = self.start_and_settle(cwd=self.folder)
        self.save_as(program, "dir")
        self.panel(program, "Folder in the way")
        self.assert_ends(program, signal.SIGTERM)

    def test_that_the_contents_of_a_folder_cannot_be_shown(self):
        """The toolkit's own question, of which the program knows nothing."""
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number.name):
                program = self.start_and_settle(cwd=self.folder)
                self.save_as(program, "/nonexistent/folder/a")
                harness.wait_until(lambda: len(self.windows(program)) == 3, 30, "the question")
                self.assert_ends(program, number)


class Places(PanelTest):
    """Where panels open, and what they show there."""

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("here"))
        os.mkdir(self.path("elsewhere"))

    def start_here(self):
        return self.start_and_settle(cwd=self.path("here"))

    def test_a_name_in_any_mix_of_cases_is_shown(self):
        shutil.copy(TOUR, self.path("here", "Mixed.FrAc"))
        program = self.start_here()
        self.open_panel(program, "Load from")
        self.confirm(program)
        program.wait_for_line("^Loaded  18 fractals.$")
        self.assertEqual(program.window_title(),
                         f"Tessary with OpenCL V1.0 :{self.path('here', 'Mixed.FrAc')}")

    def test_load_opens_where_a_file_was_loaded(self):
        shutil.copy(TOUR, self.path("elsewhere", "tour.frac"))
        program = self.start_here()
        self.load_from(program, self.path("elsewhere", "tour.frac"))
        program.wait_for_line("^Loaded  18 fractals.$")
        self.settle(program)
        self.open_panel(program, "Load from")
        self.confirm(program)
        program.wait_for_line("^Loaded  18 fractals.$")

    def test_load_opens_where_a_file_was_saved(self):
        program = self.start_here()
        self.save_as(program, self.path("elsewhere", "mine"))
        program.wait_for_line("^Saved fractal 0$")
        self.wait_without_panels(program)
        self.open_panel(program, "Load from")
        self.confirm(program)
        program.wait_for_line("^Loaded  1 fractals.$")


class Shortcut(PanelTest):
    """A program that was installed, by a copy of it, offers the folder of its catalogues."""

    def setUp(self):
        super().setUp()
        os.makedirs(self.path("bin"))
        os.makedirs(self.path("share", "tessary"))
        os.makedirs(self.path("here"))
        shutil.copy(harness.TESSARY, self.path("bin", "tessary"))

    def start_installed(self):
        installed, harness.TESSARY = harness.TESSARY, self.path("bin", "tessary")
        try:
            return self.start_and_settle(cwd=self.path("here"))
        finally:
            harness.TESSARY = installed

    def sidebar(self, program, panel):
        """The left part of a panel, once nothing changes in it."""
        look = harness.Unchanged(lambda: program.screen._grab(panel)[:, :150].tobytes())
        harness.wait_until(lambda: look.seconds() >= 1.0, 30, "the panel to be drawn")
        return program.screen._grab(panel)[:, :150]

    def click_new_row(self, program, command):
        """Opens the panel without and with the folder of catalogues, and clicks on the first row
        that only the second one has."""
        os.rename(self.path("share", "tessary"), self.path("share", "hidden"))
        without = self.sidebar(program, self.open_panel(program, command))
        self.leave_panel(program)
        os.rename(self.path("share", "hidden"), self.path("share", "tessary"))
        panel = self.open_panel(program, command)
        different = (self.sidebar(program, panel) != without).any(axis=(1, 2))
        self.assertTrue(different.any(), "the same rows")
        program.screen.tool("xdotool", "mousemove", "--window", panel, "75",
                            str(different.argmax() + 5), "sleep", "0.3", "click", "1")
        harness.time.sleep(1)

    def test_load_offers_the_catalogues(self):
        shutil.copy(TOUR, self.path("share", "tessary", "tour.frac"))
        program = self.start_installed()
        self.click_new_row(program, "Load from")
        program.key("ctrl+l")
        self.type(program, "tour.frac")
        self.confirm(program)
        program.wait_for_line("^Loaded  18 fractals.$")
        self.assertTrue(program.window_title().endswith("/share/tessary/tour.frac"))

    def test_save_offers_them_too(self):
        program = self.start_installed()
        self.click_new_row(program, "Save to")
        program.key("alt+n", "ctrl+a")
        self.type(program, "mine")
        self.confirm(program)
        program.wait_for_line("^Saved fractal 0$")
        self.assertEqual(os.listdir(self.path("share", "tessary")), ["mine.frac"])


class ClosedPipe(PanelTest):
    """What a closed output pipe does is what it did before the first panel: it ends the program."""

    def ignores_pipes(self, program):
        with open(f"/proc/{program.process.pid}/status") as status:
            mask = int(re.search(r"SigIgn:\s*([0-9a-f]+)", status.read())[1], 16)
        return bool(mask >> (signal.SIGPIPE - 1) & 1)

    def test_the_toolkit_has_it_not_ignored_from_its_start_on(self):
        program = self.start_and_settle(cwd=self.folder)
        self.assertFalse(self.ignores_pipes(program))
        self.open_panel(program, "Load from")
        self.assertFalse(self.ignores_pipes(program))
        self.leave_panel(program)
        self.assertFalse(self.ignores_pipes(program))

    def test_what_a_panel_does_to_it_ends_with_the_panel(self):
        program = self.start_and_settle(cwd=self.folder, env={"LD_PRELOAD": IGNORE_PIPE})
        self.assertFalse(self.ignores_pipes(program))
        self.open_panel(program, "Load from")
        harness.wait_until(lambda: self.ignores_pipes(program), 30, "the folder to be watched")
        self.leave_panel(program)
        self.settle(program)
        self.assertFalse(self.ignores_pipes(program))


if __name__ == "__main__":
    menus.main()

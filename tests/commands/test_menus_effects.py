"""What menu commands and dialog buttons do to the picture, the title and the printed lines of the
real program."""

import os
import re
import shutil
import subprocess
import tempfile

import catalogues
import harness
import menus
from menus import MenuTest

DRAGON = catalogues.record("elsewhere", catalogues.DRAGON, (-0.4, 1.4, -0.8, 0.8),
                           c=(1.6493, 0.961), iterations=200)


def named(name):
    """A record whose name is these bytes."""
    stand_in = "n" * len(name)
    record = catalogues.record(stand_in, 0, catalogues.START, iterations=20)
    return record.replace(stand_in.encode(), name)


class EffectsTest(MenuTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-effects-")
        self.addCleanup(shutil.rmtree, self.folder)

    def catalogue(self, *records):
        """The path of a file with these records."""
        path = os.path.join(self.folder, "catalogue.frac")
        with open(path, "wb") as file:
            file.write(b"".join(records))
        return path

    def below_the_bar(self, program):
        return program.screenshot()[menus.BELOW_THE_BAR:]

    def printed_since(self, program, mark, pattern):
        return [line for line in program.lines[mark:] if re.search(pattern, line)]


class Buttons(EffectsTest):
    """The buttons of "Information" in a window of 1152 x 921."""

    OK = (857, 692)
    CANCEL = (940, 692)

    def edit_name(self, program):
        self.choose(program, "Fractals", "Information")
        self.type(program, "xyz")
        self.settle(program)

    def test_ok_stores_the_edits_and_closes_the_dialog(self):
        program = self.start_and_settle()
        before = self.below_the_bar(program)
        self.edit_name(program)
        program.click(*self.OK)
        program.wait_for_line("^Fractal parameters changed$")
        program.wait_for_line("^Mandelbrotxyz Z-range:")
        self.settle(program)
        self.assertEqual(program.window_title(), "Tessary with OpenCL V1.0 : Mandelbrotxyz")
        self.assertTrue((self.below_the_bar(program) == before).all())

    def test_cancel_discards_the_edits_and_closes_the_dialog(self):
        program = self.start_and_settle()
        before = self.below_the_bar(program)
        self.edit_name(program)
        self.assertFalse((self.below_the_bar(program) == before).all(), "the dialog is open")
        program.click(*self.CANCEL)
        self.settle(program)
        self.assertTrue((self.below_the_bar(program) == before).all())
        self.assertNotIn("Fractal parameters changed", program.lines)
        self.assertEqual(program.window_title(), "Tessary with OpenCL V1.0 : Mandelbrot")


class Logs(EffectsTest):
    def test_the_timing_lines_stop_and_resume(self):
        program = self.start_and_settle()
        self.choose(program, "Fractals", "Toggle Timing Logs")
        program.wait_until_quiet()
        mark = len(program.lines)
        program.skip_output()
        self.choose(program, "Fractals", "Fractals", "Dragon")
        program.wait_for_line("^Enqueuing 65536$")
        program.wait_until_quiet()
        self.assertEqual(self.printed_since(program, mark, "Rendering to texture"), [])
        program.skip_output()
        self.choose(program, "Fractals", "Toggle Timing Logs")
        program.wait_for_line(harness.FRAME_LINE)


class LoadedPicture(EffectsTest):
    def test_what_was_loaded_is_shown_after_one_render(self):
        path = self.catalogue(DRAGON)
        program = self.start_and_settle(cwd=self.folder)
        program.key("Escape")  # start-up owes two renders and has paid one
        program.wait_for_frames(1)
        self.settle(program)
        mark = len(program.lines)
        self.load_from(program, path)
        program.wait_for_line("^Loaded  1 fractals.$")
        program.wait_for_frames(1)
        self.settle(program)
        self.assertEqual(self.printed_since(program, mark, "^Enqueuing"), ["Enqueuing 65536"])
        self.assert_shows(program, self.picture(path, 0))


class LongName(EffectsTest):
    def test_every_byte_of_a_long_name_is_in_the_title(self):
        name = "first" + "n" * 9991 + "last"
        path = self.catalogue(catalogues.record(name, 0, catalogues.START))
        program = self.start([f"--bench:{path}"])
        program.wait_for_line("^Total rendering time ")
        self.settle(program)
        title = f'"Tessary with OpenCL V1.0 : {name}"'
        for name_property in ("_NET_WM_NAME", "WM_NAME"):
            self.assertEqual(program.property(name_property), title)

    def test_the_title_of_a_name_that_is_no_utf8_is_utf8_and_ends_in_a_whole_character(self):
        name = b"\x9b" + "\u20ac".encode() * 40000
        path = self.catalogue(named(name))
        program = self.start([f"--bench:{path}"])
        program.wait_for_line("^Total rendering time ")
        self.settle(program)
        prefix = "Tessary with OpenCL V1.0 : \ufffd"
        signs = (100000 - len(prefix.encode())) // 3
        self.assertTrue(self.utf8_title(program) == (prefix + "\u20ac" * signs).encode())

    def utf8_title(self, program):
        """The bytes of the title where desktops look for UTF-8."""
        _, listing = program.screen.tool("xprop", "-id", program.window, "-notype", "-f",
                                         "_NET_WM_NAME", "8x", "_NET_WM_NAME")
        return bytes(int(byte, 16) for byte in re.findall(rb"0x[0-9a-f]+", listing))


class Terminal(EffectsTest):
    """Standard output is a terminal."""

    def lines_of_a_benchmark(self, path):
        """What the program, started on this file, writes to a terminal until the total."""
        screen = harness.Screen()
        self.addCleanup(screen.stop)
        keyboard, terminal = os.openpty()
        program = subprocess.Popen(
            [harness.TESSARY, f"--bench:{path}"], stdin=terminal, stdout=terminal, stderr=terminal,
            env=harness.program_environment(screen.home, screen.display))
        os.close(terminal)
        self.addCleanup(os.close, keyboard)
        self.addCleanup(program.wait)
        self.addCleanup(program.kill)
        written = b""
        while b"Total rendering time" not in written:
            written += os.read(keyboard, 4096)
        return written.splitlines()

    def test_no_name_drives_the_terminal(self):
        path = self.catalogue(named(b"\x1b]0;mine\x07\x9b2J"), named("caf\u00e9".encode()))
        reports = [line for line in self.lines_of_a_benchmark(path) if b" Z-range:" in line]
        self.assertTrue(reports[0].startswith(b"?]0;mine??2J Z-range:"), reports)
        self.assertTrue(reports[1].startswith("caf\u00e9 Z-range:".encode()), reports)


if __name__ == "__main__":
    menus.main()

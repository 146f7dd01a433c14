"""What menu commands and dialog buttons do to the picture, the title and the printed lines of the
real program."""

import os
import re
import shutil
import tempfile

import catalogues
import harness
import menus
from menus import MenuTest

DRAGON = catalogues.record("elsewhere", catalogues.DRAGON, (-0.4, 1.4, -0.8, 0.8),
                           c=(1.6493, 0.961), iterations=200)


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
    def test_the_old_picture_stays_until_a_render_is_owed(self):
        path = self.catalogue(DRAGON)
        program = self.start_and_settle(cwd=self.folder)
        program.key("Escape")  # start-up owes two renders and has paid one
        program.wait_for_frames(1)
        self.settle(program)
        before, mark = self.below_the_bar(program), len(program.lines)
        self.load_from(program, path)
        program.wait_for_line("^Loaded  1 fractals.$")
        self.settle(program)
        self.assertEqual(self.printed_since(program, mark, "^Enqueuing"), [])
        self.assertTrue((self.below_the_bar(program) == before).all())
        program.skip_output()
        self.choose(program, "Fractals", "Previous Fractal")
        program.wait_for_line("^Enqueuing 65536$")
        self.settle(program)
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


if __name__ == "__main__":
    menus.main()

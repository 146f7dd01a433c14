"""What the real program does when the display or the OpenCL device goes for good, whatever it was at:
a line, the status that is meant, nothing left behind."""

import os
import shutil
import tempfile

import harness
import menus
from menus import MenuTest, TOUR


# Xlib's own words, in which it names the display. The toolkit of the panels has a connection of its
# own, and the OpenGL driver asks for something while the process ends: there may be more lines.
LOST = r"\A(X connection to :\d+ broken|XIO:  fatal IO error .* on X server)"


class Display(MenuTest):
    """Its X server is killed."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-lost-")
        self.addCleanup(shutil.rmtree, self.folder)

    def start_here(self, *arguments):
        return self.start_and_settle(*arguments, cwd=self.folder)

    def lose(self, program):
        program.screen.kill_server()
        self.assertEqual(program.wait_exit(), 1)
        self.assertRegex(program.errors, LOST)

    def test_under_an_open_menu(self):
        program = self.start_here()
        program.key("Return")
        program.wait_until_quiet(0.3)
        self.lose(program)

    def test_under_an_open_dialog(self):
        program = self.start_here()
        self.choose(program, "Fractals", "Information")
        program.wait_until_quiet(0.3)
        program.key("Tab", "4", "2")
        self.lose(program)

    def test_under_a_file_panel(self):
        for command, title in (("Load from disk", "Load fractals"),
                               ("Save to disk", "Save fractals")):
            with self.subTest(title):
                program = self.start_here()
                self.choose(program, "Fractals", command)
                self.panel(program, title)
                self.lose(program)
                self.assertEqual(os.listdir(self.folder), [])

    def test_under_the_question_whether_to_replace_a_file(self):
        path = os.path.join(self.folder, "there.frac")
        shutil.copy(TOUR, path)
        program = self.start_here()
        self.save_as(program, "there.frac")
        self.panel(program, "Replace file")
        self.lose(program)
        with open(path, "rb") as file, open(TOUR, "rb") as tour:
            self.assertEqual(file.read(), tour.read())

    def test_while_cycling(self):
        program = self.start_here(f"--bench:{TOUR}")
        program.wait_for_frames(3)
        self.lose(program)


class Device(MenuTest):
    """Calls of OpenCL fail, in the real program on a real runtime."""

    DEVICES = 1
    LAYER = os.path.join(harness.BUILD, "tests", "backends", "opencl",
                         "libtessary_opencl_layer.so")

    def environment(self, settings):
        return {"OCL_ICD_VENDORS": "/etc/OpenCL/vendors/pocl.icd", "POCL_DEVICES": "pthread",
                "OPENCL_LAYERS": self.LAYER, "TESSARY_LAYER": settings}

    def start_on(self, settings):
        return self.start_and_settle("--device0", env=self.environment(settings))

    def assert_ended(self, program, message, status):
        self.assertEqual(program.wait_exit(), status)
        self.assertEqual(program.lines[-len(message):], message)

    def test_each_call_of_a_set_up_fails_after_a_switch_of_precision(self):
        for call, message, status in (
                ("clCreateContext", ["Could not create context"], 2),
                ("clCreateKernel", ["Could not create kernel"], 6),
                ("clEnqueueReadBuffer", ["Could not read back buffer", "Error code -5"], 6)):
            with self.subTest(call):
                # Start-up renders one frame, and a click that is the first pays another one.
                nth = 2 if call.startswith("clCreate") else 3
                program = self.start_on(f"fail={call}#{nth}:-5")
                program.click(500, 700)
                self.settle(program)
                self.choose(program, "Devices", "Double precision")
                self.assert_ended(program, message, status)

    def test_it_disappears_in_the_middle_of_a_glide(self):
        """Of the 15 calls of a frame the last three that are looked at end it."""
        for call in (160, 170):
            with self.subTest(call=call):
                program = self.start_on(f"lost={call}")
                program.drag(400, 400, 688, 616)
                self.assertIn(program.wait_exit(), (4, 5, 6))
                self.assertRegex("\n".join(program.lines[-2:]),
                                 "Could not (set kernel arg|enqueue task|read back buffer)")


if __name__ == "__main__":
    menus.main()

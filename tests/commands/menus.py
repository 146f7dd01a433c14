"""Hands on the program's menus, dialogs and file panels, and eyes for what they lead to."""

import os
import re
import subprocess
import unittest

import expected
import harness

SHARE = os.path.join(harness.SOURCE, "share")
TOUR = os.path.join(SHARE, "tour.frac")
NO_FLUSH = os.path.join(harness.BUILD, "tests", "commands", "libtessary_no_flush.so")
PICTURES = os.path.join(harness.BUILD, "tests", "commands", "frac_picture")

# The bar of the menu covers the top of the picture.
BELOW_THE_BAR = 120

# Llvmpipe weighs the four texels around a point in eighths of a bit less than a float would.
LEAST_SHARE = 0.995

TYPES = ["Mandelbrot", "Julia", "Sin", "Cos", "Sinh", "Cosh", "Barnsley", "Dragon",
         "Chebyshev T5", "Hermite H4", "Legendre P3"]
JULIAS = ["Default", "Dendrite", "Douady's Rabbit", "San Marco", "Siegel Disk"]
BARNSLEYS = ["1st Fractal", "2nd Fractal", "3rd Fractal", "Sierpinski"]
COMMANDS = ["Fractals", "Toggle Timing Logs", "Previous Fractal", "Next Fractal", "Cycle",
            "Information", "Load from disk", "Save to disk", "Quit"]
BAR = ["Fractals", "Palette", "Zoom", "Devices"]
PALETTES = ["Random Colours", "RGB Cycle"]

# Paths of the 18 commands that create an entry, in the order of the tour.
CREATIONS = [
    ("Fractals", "Fractals", *path)
    for kind in TYPES
    for path in {
        "Julia": [("Julia", preset) for preset in JULIAS],
        "Barnsley": [("Barnsley", number) for number in BARNSLEYS],
    }.get(kind, [(kind,)])
]


# Two devices of one OpenCL library, whatever else is installed.
TWO_DEVICES = {"OCL_ICD_VENDORS": "/etc/OpenCL/vendors/pocl.icd", "POCL_DEVICES": "pthread basic"}


def device_items(devices=0):
    return ["CPU", *[f"device {number}" for number in range(devices)], "Double precision",
            "CPU Threads", "System information"]


def items_below(path, devices=0):
    """The item texts of the menu that these choices open; devices are "device 0" and so on."""
    return {
        (): BAR,
        ("Fractals",): COMMANDS,
        ("Palette",): PALETTES,
        ("Devices",): device_items(devices),
        ("Devices", "CPU Threads"): [str(n + 1) for n in range(os.cpu_count())],
        ("Fractals", "Fractals"): TYPES,
        ("Fractals", "Fractals", "Julia"): JULIAS,
        ("Fractals", "Fractals", "Barnsley"): BARNSLEYS,
    }[tuple(path)]


def keys_to(*path, devices=0):
    """The keys that choose a command from any state of the menus without a dialog: Escape closes
    what is open and puts the highlight on the first item of the bar."""
    keys = ["Escape", "Escape", "Escape", "Escape"]
    for depth, text in enumerate(path):
        step = "Right" if depth == 0 else "Down"
        keys += [step] * items_below(path[:depth], devices).index(text) + ["Return"]
    return keys


class MenuTest(harness.WindowTest):
    """A program whose menus are walked by keys."""

    DEVICES = 0  # that the program will list

    def start_and_settle(self, *arguments, **options):
        program = self.start(arguments, **options)
        program.wait_for_frames(1)
        self.settle(program)
        return program

    def choose(self, program, *path):
        program.key(*keys_to(*path, devices=self.DEVICES))

    def settle(self, program):
        """Waits until no picture is being made and none is coming. A device says nothing before its
        picture is done, so it is given longer."""
        def last(pattern):
            found = [n for n, line in enumerate(program.lines) if re.search(pattern, line)]
            return found[-1] if found else -1

        def settled():
            program.wait_until_quiet(2.0 if self.DEVICES else 0.5)
            return last("^Enqueuing") <= last(harness.RENDERED_LINE)

        harness.wait_until(settled, 120, "the last picture")

    def quit(self, program):
        self.choose(program, "Fractals", "Quit")
        self.assertEqual(program.wait_exit(), 0)

    def picture(self, file, index, precision="single"):
        """The evaluation, apart from the window, of an entry of a file."""
        done = subprocess.run([PICTURES, file, str(index), precision], stdout=subprocess.PIPE,
                              check=True)
        header = b"P6\n2048 2048\n255\n"
        self.assertTrue(done.stdout.startswith(header))
        np = expected.np
        return np.frombuffer(done.stdout[len(header):], np.uint8).reshape(2048, 2048, 3)

    def assert_shows(self, program, picture, least=LEAST_SHARE):
        shown = program.screenshot()
        height, width, _ = shown.shape
        meant = expected.stretched(picture, width, height)[BELOW_THE_BAR:]
        difference = abs(shown[BELOW_THE_BAR:].astype(float) - meant).max(axis=2)
        share = (difference <= 4).mean()
        if share < least:
            self.artifact("expected", meant)
            self.artifact("shown", shown)
        self.assertGreaterEqual(share, least)

    # ---- file panels

    def panel(self, program, title):
        """The X window of the file panel with this title, once it has the keyboard."""
        def find():
            _, found = program.screen.tool(
                "xdotool", "search", "--onlyvisible", "--name", f"^{title}$", check=False)
            return found.split()[-1].decode() if found.split() else None

        window = harness.wait_until(find, 30, f"the panel {title}")
        program.screen.tool("xdotool", "windowfocus", "--sync", window)
        # The window manager may still be busy with a request from before and take the keyboard away.
        focus = harness.Unchanged(lambda: self.keyboard_focus(program))
        harness.wait_until(lambda: focus.seconds() >= 0.5 and focus.value == window, 30,
                           f"the keyboard of {title}")
        return window

    def keyboard_focus(self, program):
        """The X window that keys go to."""
        return program.screen.tool("xdotool", "getwindowfocus", check=False)[1].decode().strip()

    def open_panels(self, program):
        return [
            title for title in ("Save fractals", "Load fractals")
            if program.screen.tool("xdotool", "search", "--onlyvisible", "--name", f"^{title}$",
                                   check=False)[1].split()]

    def wait_without_panels(self, program):
        harness.wait_until(lambda: not self.open_panels(program), 30, "the panel to go")
        program.screen.tool("xdotool", "windowactivate", program.window, check=False)

    def type(self, program, text):
        program.screen.tool("xdotool", "type", "--delay", "40", "--", text)

    def save_as(self, program, path):
        """Answers the save panel with a typed name; what follows is up to the caller."""
        self.choose(program, "Fractals", "Save to disk")
        self.panel(program, "Save fractals")
        program.key("ctrl+a")
        self.type(program, path)
        harness.time.sleep(0.7)
        program.key("Return")

    def load_from(self, program, path):
        self.choose(program, "Fractals", "Load from disk")
        self.panel(program, "Load fractals")
        self.type(program, path)
        for _ in range(3):
            # The entry may take the first Return as the answer to what it proposes.
            harness.time.sleep(0.7)
            program.key("Return")
            harness.time.sleep(0.7)
            if not self.open_panels(program):
                break
        self.wait_without_panels(program)


main = unittest.main

"""Somebody who tries everything at random, from a seed: menus, drags, dialogs, file panels, other
window sizes, other devices."""

import os
import random
import shutil
import subprocess
import tempfile

import harness
import menus
from menus import MenuTest, TOUR

CALM_COMMANDS = ["Previous Fractal", "Next Fractal", "Cycle", "Toggle Timing Logs"]
KEYS = ["Left", "Right", "Up", "Down", "Tab", "shift+Tab", "Home", "End", "BackSpace", "Delete",
        "Escape", "a", "d", "e", "f", "g", "space", "7", "minus", "period", "Prior", "Shift_L"]


class Visitor(MenuTest):
    SEED = 0

    def setUp(self):
        self.random = random.Random(self.SEED)
        self.folder = tempfile.mkdtemp(prefix="tessary-session-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.events = 0  # keys and mouse movements so far
        self.actions = [
            (self.new_fractal, 4), (self.calm_command, 4), (self.palette, 2), (self.device, 2),
            (self.threads, 1), (self.drag, 3), (self.zoom_again, 2), (self.click, 4),
            (self.loose_keys, 4), (self.parameters, 3), (self.information, 1), (self.resize, 1),
            (self.file_panel, 1)]

    def keys(self, *names):
        self.events += len(names)
        self.program.key(*names)

    def command(self, *path):
        self.keys(*menus.keys_to(*path, devices=self.DEVICES))

    def point(self):
        _x, _y, width, height = self.program.geometry()
        return self.random.randrange(width), self.random.randrange(height)

    # ---- what somebody may do

    def new_fractal(self):
        self.command(*self.random.choice(menus.CREATIONS))

    def calm_command(self):
        self.command("Fractals", self.random.choice(CALM_COMMANDS))

    def palette(self):
        self.command("Palette", self.random.choice(menus.PALETTES))

    def device(self):
        devices = [f"device {number}" for number in range(self.DEVICES)]
        self.command("Devices", self.random.choice(["CPU", *devices, "Double precision"]))

    def threads(self):
        self.command("Devices", "CPU Threads", str(self.random.randint(1, os.cpu_count())))

    def drag(self):
        self.events += 6
        self.program.drag(*self.point(), *self.point())

    def zoom_again(self):
        self.command("Zoom")
        self.drag()

    def click(self):
        self.events += 3
        self.program.click(*self.point(), button=self.random.choice([1, 1, 1, 2, 3, 4, 5]))

    def loose_keys(self):
        self.keys(*self.random.choices(KEYS, k=10))

    def parameters(self):
        self.command("Fractals", "Information")
        self.keys(*self.random.choices(KEYS, k=8))
        self.keys(self.random.choice(["Return", "Escape"]))

    def information(self):
        self.command("Devices", "System information")
        self.keys(self.random.choice(["Return", "Escape"]))

    def resize(self):
        self.events += 1
        size = self.random.choice([(640, 480), (900, 700), (1152, 921), (301, 977)])
        self.program.screen.tool("xdotool", "windowsize", self.program.window, *map(str, size))

    def file_panel(self):
        command = self.random.choice(["Save to disk", "Load from disk"])
        self.command("Fractals", command)
        harness.time.sleep(1.5)
        if not self.open_panels(self.program):
            return
        if self.random.random() < 0.6:
            self.type(self.program, TOUR if command.startswith("Load") else
                      os.path.join(self.folder, f"s{self.events}"))
            harness.time.sleep(0.7)
            self.keys("Return")
        self.leave_panels()

    def leave_panels(self):
        for _ in range(20):
            harness.time.sleep(0.3)
            panels = self.open_panels(self.program)
            if not panels:
                break
            # The window manager may have given the keyboard back to the program's own window.
            self.program.screen.tool("xdotool", "search", "--onlyvisible", "--name",
                                     f"^{panels[0]}$", "windowfocus", check=False)
            self.keys("Escape")
        self.program.screen.tool("xdotool", "windowactivate", self.program.window, check=False)

    def act(self):
        """One of these at random."""
        actions, weights = zip(*self.actions)
        action = self.random.choices(actions, weights)[0]
        try:
            action()
        except AssertionError:
            if not self.ended():
                raise

    # ---- beginning and end

    def ended(self):
        return self.program.process.poll() is not None

    def quit_from_anywhere(self):
        """Quit, though the bar may be waiting for the drag that follows "Zoom", or a dialog be
        open, or cycling be on."""
        for _ in range(10):
            try:
                self.leave_panels()
                self.program.key("Escape", "Escape")
                _x, _y, width, height = self.program.geometry()
                self.program.drag(width / 4, height / 2, width / 2, height * 3 / 4)
                self.program.key(*menus.keys_to("Fractals", "Quit"))
            except AssertionError:
                pass  # the window is gone already; the process may take a while longer
            try:
                self.program.process.wait(10 * harness.PATIENCE)
                return
            except subprocess.TimeoutExpired:
                continue

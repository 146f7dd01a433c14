"""Drives the real program in a real window: a virtual screen with a window manager, a real mouse
and keyboard, the printed lines and the pixels on the screen.

A windowed test reads like this:

    class Zooming(harness.WindowTest):
        def test_a_drag_glides(self):
            tessary = self.start(["--cpu2"])
            tessary.wait_for_frames(1)
            tessary.drag(200, 200, 600, 500)
            tessary.wait_for_frames(20)
            picture = tessary.screenshot()

Every coordinate is a pixel of the window's client area, (0, 0) at its top left. Each test has a
screen of its own, so tests may run side by side. When a test fails, what the screen showed and what
the program printed is left in $TESSARY_BUILD/artifacts.
"""

import io
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import types
import unittest

import numpy as np
from PIL import Image

TESSARY = os.environ.get("TESSARY", "")
BUILD = os.environ.get("TESSARY_BUILD", tempfile.gettempdir())
SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
SANITIZE = os.environ.get("TESSARY_SANITIZE", "")
ARTIFACTS = os.path.join(BUILD, "artifacts")

# A sanitized program is an order of magnitude slower, and much else may run beside this test: waiting
# longer costs nothing where the awaited thing comes.
PATIENCE = float(os.environ.get("TESSARY_PATIENCE", "20" if SANITIZE else "10"))

SCREEN_SIZE = (1280, 1024)
FRAME_LINE = r"Rendering to texture took (\S+) s"
RENDERED_LINE = r"Rendering to texture took (?!0 s)(\S+) s"


def wait_until(condition, timeout, what):
    """Polls until condition() is true; returns its value. Fails naming `what` after timeout
    seconds (scaled by PATIENCE)."""
    deadline = time.monotonic() + timeout * PATIENCE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {timeout * PATIENCE:.0f} s in vain for {what}")
        time.sleep(0.02)


class Unchanged:
    """How long a value has been the same, as far as was looked."""

    def __init__(self, read):
        self._read = read
        self._since = 0.0
        self.value = object()

    def seconds(self):
        value, now = self._read(), time.monotonic()
        if value != self.value:
            self.value, self._since = value, now
        return now - self._since


def _dies_with_us(command):
    """The command, made to end with this process even when that is killed."""
    return ["setpriv", "--pdeathsig", "KILL"] + command


def program_environment(home, display=None, extra=None):
    """Environment of the program under test: no session bus, no settings, no OpenCL unless the test
    gives an OCL_ICD_VENDORS of its own (None removes a variable)."""
    env = dict(os.environ)
    for name in ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER"):
        env.pop(name, None)
    support = os.path.join(SOURCE, "tests", "support")
    env.update(
        HOME=home,
        XDG_RUNTIME_DIR=home,
        XDG_CONFIG_HOME=os.path.join(home, "config"),
        XDG_DATA_HOME=os.path.join(home, "data"),
        XDG_CACHE_HOME=os.path.join(home, "cache"),
        DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent",
        NO_AT_BRIDGE="1",
        GSETTINGS_BACKEND="memory",
        GDK_BACKEND="x11",
        LIBGL_ALWAYS_SOFTWARE="1",
        OCL_ICD_VENDORS="/nonexistent",
        POCL_CACHE_DIR=os.path.join(BUILD, "pocl-cache"),
    )
    # Mesa's driver leaks and is unloaded before leaks are counted, so that no suppression could name
    # it: windowed runs do not count them.
    env["ASAN_OPTIONS"] = "detect_leaks=0:exitcode=99"
    env.setdefault("UBSAN_OPTIONS", "print_stacktrace=1")
    # What Mesa's, GTK's and pocl's own threads do is theirs.
    env.setdefault(
        "TSAN_OPTIONS",
        f"suppressions={support}/tsan.supp:ignore_noninstrumented_modules=1:exitcode=98",
    )
    if display is not None:
        env["DISPLAY"] = display
    for name, value in (extra or {}).items():
        if value is None:
            env.pop(name, None)
        else:
            env[name] = value
    return env


class Screen:
    """A virtual X screen with a window manager on it (none with wm=False)."""

    def __init__(self, wm=True, size=SCREEN_SIZE):
        self.home = tempfile.mkdtemp(prefix="tessary-home-")
        self._processes = []
        self.taken = {}  # the windows of the programs on it, with their processes
        try:
            self.display = self._start_server(size)
            self.env = program_environment(self.home, self.display)
            if wm:
                self._start_window_manager()
        except BaseException:
            self.stop()
            raise

    def _spawn(self, command, **options):
        process = subprocess.Popen(
            _dies_with_us(command),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            **options,
        )
        self._processes.append(process)
        return process

    def _start_server(self, size):
        read_end, write_end = os.pipe()
        self.server = self._spawn(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{size[0]}x{size[1]}x24",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=[write_end],
        )
        os.close(write_end)
        with os.fdopen(read_end) as answer:
            number = answer.readline().strip()
        if not number:
            raise AssertionError("Xvfb did not start")
        return ":" + number

    def _start_window_manager(self):
        """It names itself before it is ready and loses windows that are mapped in between, so it is
        asked for something until it has done it: to show the desktop, and to show windows again."""
        self._spawn(["openbox", "--sm-disable"], env=self.env)
        for mode in ("on", "off"):
            wait_until(lambda: self._window_manager_shows_desktop(mode), 15, "openbox")

    def _window_manager_shows_desktop(self, mode):
        self.tool("wmctrl", "-k", mode, check=False)
        _, facts = self.tool("wmctrl", "-m", check=False)
        return f"showing the desktop\" mode: {mode.upper()}".encode() in facts

    def tool(self, *command, check=True, timeout=60):
        """Runs an X client on this screen; answers (status, standard output as bytes)."""
        done = subprocess.run(command, env=self.env, stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=timeout * PATIENCE)
        if check and done.returncode != 0:
            raise AssertionError(f"{' '.join(command)}: {done.stderr.decode(errors='replace')}")
        return done.returncode, done.stdout

    def kill_server(self):
        """Takes the X server away from under its clients."""
        self.server.kill()
        self.server.wait()

    def screenshot(self):
        """The whole screen as an array of shape (height, width, 3), one unsigned byte each."""
        return self._grab("root")

    def _grab(self, window):
        _, pixels = self.tool("import", "-silent", "-window", window, "-depth", "8", "ppm:-")
        return np.asarray(Image.open(io.BytesIO(pixels)).convert("RGB"))

    def stop(self):
        for process in reversed(self._processes):
            if process.poll() is None:
                process.terminate()
        for process in reversed(self._processes):
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()


class Program:
    """The program running on a screen, with what it prints."""

    def __init__(self, screen, args=(), env=None, cwd=None, program=None):
        self.screen = screen
        self.args = list(args)
        self.env = program_environment(screen.home, screen.display, env)
        self._lines = []
        self._next = 0
        self._news = threading.Condition()
        self._stderr = tempfile.TemporaryFile()
        self.window = None
        self.process = subprocess.Popen(
            _dies_with_us([program or TESSARY] + self.args),
            env=self.env,
            cwd=cwd,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=self._stderr,
            process_group=0,  # in a session of its own it could not be stopped
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for raw in self.process.stdout:
            # "\r\n" ends a line too; a lone "\r" within one stays.
            line = raw.decode("utf-8", "surrogateescape").rstrip("\n")
            with self._news:
                self._lines.append(line)
                self._news.notify_all()
        with self._news:
            self._news.notify_all()

    # ---- what it prints

    @property
    def lines(self):
        """Every line printed so far, without line ends (a trailing "\\r" is kept)."""
        with self._news:
            return list(self._lines)

    @property
    def errors(self):
        """Everything written to standard error so far."""
        self._stderr.seek(0)
        return self._stderr.read().decode("utf-8", "replace")

    def skip_output(self):
        """The next wait looks only at lines printed from now on."""
        with self._news:
            self._next = len(self._lines)

    def wait_for_line(self, pattern, timeout=30):
        """The match of the first line, after the one the last wait found, in which the regular
        expression is found."""
        expression = re.compile(pattern)
        deadline = time.monotonic() + timeout * PATIENCE
        with self._news:
            while True:
                while self._next < len(self._lines):
                    match = expression.search(self._lines[self._next])
                    self._next += 1
                    if match:
                        return match
                left = deadline - time.monotonic()
                if left <= 0 or not self._reader.is_alive():
                    why = "the program ended" if left > 0 else "no such line"
                    raise AssertionError(
                        f"{why}, waiting for /{pattern}/; the last lines were:\n"
                        + "\n".join(self._lines[-12:])
                        + "\n" + self.errors[-4000:]
                    )
                self._news.wait(min(left, 0.5))

    def wait_for_frames(self, count, timeout=30):
        """Waits for this many more display calls that rendered; answers their times in seconds."""
        return [float(self.wait_for_line(RENDERED_LINE, timeout)[1]) for _ in range(count)]

    def wait_until_quiet(self, seconds=1.0, timeout=60):
        """Waits until nothing has been printed for a while, and the program has come to rest: a
        frame is drawn after its line is printed, on a busy machine long after."""
        quiet = seconds * (2.0 if SANITIZE else 1.0)
        printed = Unchanged(lambda: len(self.lines))
        at_work = Unchanged(self.drawing_threads)
        wait_until(lambda: printed.seconds() >= quiet and at_work.seconds() >= 0.1, timeout,
                   "the output to fall quiet")

    def drawing_threads(self):
        """How long the threads that draw, the first one and the software OpenGL's, have run so far;
        nothing two times the same while one runs or could run."""
        folder = f"/proc/{self.process.pid}/task"
        try:
            return [self.work_of(f"{folder}/{thread}") for thread in os.listdir(folder)]
        except OSError:
            return "ended"

    def work_of(self, folder):
        """How long a thread has run; None of one that does not draw."""
        with open(f"{folder}/stat") as file:
            number, name, state = re.match(r"(\d+) \((.*)\) (\S)", file.read()).groups()
        if int(number) != self.process.pid and not name.startswith("llvmpipe"):
            return None
        with open(f"{folder}/schedstat") as file:
            ran = file.read().split()[0]
        return (ran, time.monotonic()) if state == "R" else ran

    # ---- its window

    def wait_for_window(self, timeout=30):
        """Finds the program's window, waits until it is shown, and gives it the keyboard."""
        self.window = wait_until(self._find_window, timeout, "the window")
        self.screen.taken[self.window] = self.process
        self.screen.tool("xdotool", "windowactivate", self.window, check=False)
        return self.window

    def _find_window(self):
        if self.process.poll() is not None:
            raise AssertionError(
                f"the program ended with status {self.process.returncode} and no window\n"
                + "\n".join(self.lines[-12:]) + "\n" + self.errors[-4000:]
            )
        _, found = self.screen.tool(
            "xdotool", "search", "--onlyvisible", "--name", "^Tessary", check=False
        )
        identifiers = [name for name in found.decode().split() if not self._is_anothers(name)]
        return identifiers[-1] if identifiers else None

    def _is_anothers(self, window):
        # The server gives the names of a program that has ended to the next one.
        owner = self.screen.taken.get(window)
        return owner not in (None, self.process) and owner.poll() is None

    def _window_id(self):
        return self.window or self.wait_for_window()

    def geometry(self):
        """(x, y, width, height) of the client area; x and y on the screen."""
        _, text = self.screen.tool("xwininfo", "-id", self._window_id())
        fields = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return tuple(
            int(re.search(rf"{field}:\s*(-?\d+)", text.decode())[1]) for field in fields
        )

    def property(self, name):
        """An X property of the window as xprop prints it, or None when it is not set."""
        _, text = self.screen.tool("xprop", "-id", self._window_id(), "-notype", name)
        text = text.decode("utf-8", "surrogateescape").rstrip("\n")
        return text.split(" = ", 1)[1] if " = " in text else None

    def window_title(self):
        """The title as a window manager shows it (UTF-8), from wmctrl's list."""
        _, listing = self.screen.tool("wmctrl", "-l")
        for line in listing.decode("utf-8", "surrogateescape").splitlines():
            identifier, _desktop, rest = line.split(None, 2)
            if int(identifier, 16) == int(self._window_id()):
                return rest.split(" ", 1)[1]
        raise AssertionError("the window manager does not list the window")

    def ask_for_size(self, width, height):
        """Asks for another client size, without waiting for it."""
        self.screen.tool("xdotool", "windowsize", self._window_id(), str(width), str(height))

    def resize(self, width, height):
        """Asks the window manager for another client size and waits until it is so."""
        self.ask_for_size(width, height)
        wait_until(lambda: self.geometry()[2:] == (width, height), 10, "the new window size")

    def screenshot(self):
        """The client area as shown: shape (height, width, 3), one unsigned byte each."""
        _x, _y, width, height = self.geometry()
        picture = self.screen._grab(self._window_id())
        assert picture.shape == (height, width, 3), picture.shape
        return picture

    # ---- hands on mouse and keyboard

    def _at(self, x, y):
        left, top, _w, _h = self.geometry()
        return [str(left + int(x)), str(top + int(y))]

    def move(self, x, y):
        self.screen.tool("xdotool", "mousemove", *self._at(x, y), "sleep", "0.05")

    def click(self, x, y, button=1):
        """Moves there, presses and releases without moving in between."""
        self.screen.tool(
            "xdotool", "mousemove", *self._at(x, y), "sleep", "0.05",
            "mousedown", str(button), "sleep", "0.05", "mouseup", str(button), "sleep", "0.05",
        )

    def press(self, x, y, button=1):
        self.screen.tool(
            "xdotool", "mousemove", *self._at(x, y), "sleep", "0.05", "mousedown", str(button))

    def release(self, x, y, button=1):
        self.screen.tool(
            "xdotool", "mousemove", *self._at(x, y), "sleep", "0.05", "mouseup", str(button))

    def drag(self, x1, y1, x2, y2, button=1, steps=4):
        """Presses at (x1, y1), moves in a straight line and releases at (x2, y2)."""
        command = ["xdotool", "mousemove", *self._at(x1, y1), "sleep", "0.05",
                   "mousedown", str(button), "sleep", "0.05"]
        for step in range(1, steps + 1):
            x = round(x1 + (x2 - x1) * step / steps)
            y = round(y1 + (y2 - y1) * step / steps)
            command += ["mousemove", *self._at(x, y), "sleep", "0.05"]
        self.screen.tool(*command, "mouseup", str(button), "sleep", "0.05")

    def key(self, *names):
        """Presses keys by their X names, such as "Return", "Left", "shift+Tab"."""
        self.screen.tool("xdotool", "key", "--delay", "40", *names)

    def type(self, text):
        self.screen.tool("xdotool", "type", "--delay", "40", text)

    # ---- ways out

    def close(self):
        """Closes the window as a click on its close button would."""
        self.screen.tool("wmctrl", "-i", "-c", f"0x{int(self._window_id()):x}")

    def signal(self, number):
        os.kill(self.process.pid, number)

    def wait_exit(self, timeout=30):
        """The exit status (negative for a signal), once the program and all its output are done."""
        try:
            status = self.process.wait(timeout * PATIENCE)
        except subprocess.TimeoutExpired:
            raise AssertionError(
                "the program did not end; the last lines were:\n" + "\n".join(self.lines[-12:])
            ) from None
        self._reader.join(10)
        return status

    def leftovers(self):
        """Whether processes that the program started outlive it."""
        try:
            os.killpg(self.process.pid, 0)
        except (ProcessLookupError, PermissionError):
            return False
        return True

    def stop(self):
        """Ends what still runs; for clean-up, not for tests of the ways out."""
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        if self.leftovers():
            os.killpg(self.process.pid, signal.SIGKILL)
        self._reader.join(10)
        self.process.stdout.close()
        self._stderr.close()


def run_program(args=(), env=None, timeout=60, program=None, display=None, **options):
    """Runs the program without a screen (or on `display`) to its end; answers a
    subprocess.CompletedProcess with bytes in stdout and stderr."""
    with tempfile.TemporaryDirectory(prefix="tessary-home-") as home:
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        return subprocess.run(
            [program or TESSARY] + list(args),
            env=program_environment(home, display, env),
            stdin=subprocess.DEVNULL,
            timeout=timeout * PATIENCE,
            **options,
        )


class WindowTest(unittest.TestCase):
    """Base of windowed tests: start() gives a program on a screen of its own; everything is cleaned
    up, no process may be left over, and a failure leaves the screen behind as a picture."""

    def __init__(self, method="runTest"):
        super().__init__(method)
        self._programs = []
        test = getattr(self, method)

        def test_with_artifacts(_self):
            try:
                test()
            except unittest.SkipTest:
                raise
            except BaseException:
                self._keep_artifacts()
                raise

        test_with_artifacts.__doc__ = test.__doc__
        # A method, as unittest takes a plain function for a static one when a test is named.
        setattr(self, method, types.MethodType(test_with_artifacts, self))

    def start(self, args=(), env=None, wm=True, screen=None, window=True, cwd=None):
        """The program with these arguments, its window shown (unless window=False)."""
        if screen is None:
            screen = Screen(wm=wm)
            self.addCleanup(screen.stop)
        program = Program(screen, args, env, cwd)
        self._programs.append(program)
        self.addCleanup(self._finish, program)
        if window:
            program.wait_for_window()
        return program

    def _finish(self, program):
        ended = program.process.poll() is not None
        left = ended and program.leftovers()
        program.stop()
        self.assertFalse(left, "the program left processes behind")

    def artifact(self, name, picture):
        """Leaves an array of shape (height, width, 3) behind as a picture; answers its path."""
        os.makedirs(ARTIFACTS, exist_ok=True)
        path = os.path.join(ARTIFACTS, f"{self.id().replace('__main__.', '')}-{name}.png")
        Image.fromarray(np.asarray(picture, dtype=np.uint8)).save(path)
        print("left", path, file=sys.stderr)
        return path

    def _keep_artifacts(self):
        for number, program in enumerate(self._programs):
            os.makedirs(ARTIFACTS, exist_ok=True)
            stem = os.path.join(ARTIFACTS, f"{self.id().replace('__main__.', '')}-{number}")
            with open(stem + ".txt", "w", errors="surrogateescape") as log:
                log.write("\n".join(program.lines) + "\n---- standard error\n" + program.errors)
            try:
                self.artifact(f"{number}-screen", program.screen.screenshot())
            except Exception as problem:  # the screen itself may be what failed
                print("no screenshot:", problem, file=sys.stderr)


def nearest_pixels(buffer, width, height):
    """The buffer (rows, columns, 3) as a window of that size shows it when each window pixel takes
    the nearest buffer pixel."""
    rows = (np.arange(height) + 0.5) * buffer.shape[0] / height
    columns = (np.arange(width) + 0.5) * buffer.shape[1] / width
    return buffer[rows.astype(int)][:, columns.astype(int)]

"""tessary-frac ends in order: help and mistakes, streams that fail, signals, what it links."""

import os
import resource
import signal
import subprocess
import tempfile
import threading
import time
import unittest

from frac_command import BUILD, FRAC, FracTest, record

COMMANDS = ["list", "check", "export", "import", "set", "new", "merge", "take"]


class Help(FracTest):
    def test_help_names_every_command(self):
        page = self.frac("--help").decode()
        for command in COMMANDS:
            self.assertRegex(page, rf"(?m)^  {command} ")

    def test_every_command_has_its_help(self):
        for command in COMMANDS:
            self.assertIn(f"Usage: tessary-frac {command} ", self.frac(command, "--help").decode())

    def test_the_version_is_one_line(self):
        self.assertRegex(self.frac("--version"), rb"\Atessary-frac \(Tessary\) \d+\.\d+\.\d+\n\Z")

    def test_help_that_cannot_be_printed_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            self.fails(1, "--help", stdout=full)
            self.fails(1, "--version", stdout=full)


class Mistakes(FracTest):
    def test_each_is_one_line_and_status_2(self):
        self.write("a.frac", record())
        for arguments in ([], ["unknown"], ["--unknown"], ["a.frac"], ["list"], ["list", "a", "b"],
                          ["list", "--unknown", "a.frac"], ["export", "a.frac", "-o"],
                          ["check", "--json", "a.frac"], ["list", "a.frac", "check", "a.frac"],
                          ["import", "a.json"], ["import", "-o", "b.frac"],
                          ["export", "a.frac", "-o", "b", "-o", "c"]):
            with self.subTest(arguments=arguments):
                self.fails(2, *arguments)

    def test_after_two_dashes_everything_is_a_file(self):
        self.write("--json", record())
        self.assertEqual(len(self.frac("list", "--", "--json").splitlines()), 2)
        self.frac("merge", "-o", "b.frac", "--", "--json", "--json")
        self.assertEqual(len(self.entries("b.frac")), 2)

    def test_a_file_may_be_called_as_a_command_is(self):
        self.write("list", record())
        self.frac("merge", "list", "list", "-o", "set")
        self.assertEqual(len(self.frac("list", "set").splitlines()), 3)

    def test_a_message_stays_one_line_whatever_the_file_is_called(self):
        self.assertIn("a?b?[m", self.fails(1, "list", "a\nb\x1b[m"))


class Files(FracTest):
    def test_what_cannot_be_read_is_told(self):
        os.mkdir(self.path("folder"))
        self.assertEqual(self.fails(1, "list", "nowhere"), "nowhere: No such file or directory")
        self.assertEqual(self.fails(1, "list", "folder"), "folder: Is a directory")

    def test_what_cannot_be_written_is_told(self):
        self.write("a.frac", record())
        os.mkdir(self.path("folder"))
        for target in ("nowhere/b.json", "folder", "folder/", "/dev/full"):
            with self.subTest(target=target):
                self.assertIn(f"{target} cannot be written: ",
                              self.fails(1, "export", "a.frac", "-o", target))
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.frac", "folder"])

    def test_a_file_that_may_not_grow_stays_as_it_was(self):
        self.write("a.frac", record() * 100)
        self.write("b.json", b"old")
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
        self.fails(1, "export", "a.frac", "-o", "b.json", preexec_fn=limit)
        self.assertEqual(self.read("b.json"), b"old")
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.frac", "b.json"])

    def test_endless_input_ends(self):
        self.assertNotEqual(self.run_frac("import", "/dev/zero", "-o", "b.frac").returncode, 0)


class Streams(FracTest):
    def setUp(self):
        super().setUp()
        self.write("a.frac", record() * 1000)

    def test_a_full_disk_is_told(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["list", "a.frac"], ["list", "--json", "a.frac"],
                              ["export", "a.frac"], ["take", "a.frac", "1", "-o", "-"]):
                self.assertIn("standard output cannot be written: No space",
                              self.fails(1, *arguments, stdout=full))

    def test_a_closed_pipe_is_told(self):
        read, write = os.pipe()
        os.close(read)
        self.addCleanup(os.close, write)
        self.assertIn("Broken pipe", self.fails(1, "export", "a.frac", stdout=write))

    def test_closed_streams_are_told_and_do_no_harm(self):
        line = self.fails(1, "export", "a.frac", preexec_fn=lambda: os.close(1))
        self.assertIn("Bad file descriptor", line)
        done = self.run_frac("export", "nowhere", "-o", "b", preexec_fn=lambda: os.close(2))
        self.assertEqual(done.returncode, 1)
        self.assertIn("Bad file descriptor",
                      self.fails(1, "list", "-", preexec_fn=lambda: os.close(0)))

    def test_no_file_takes_the_place_of_a_closed_stream(self):
        close = lambda: (os.close(1), os.close(2))
        process = self.begins("list", "-", stdin=subprocess.PIPE, preexec_fn=close)
        self.wait_until_reading(process)
        streams = [os.readlink(f"/proc/{process.pid}/fd/{number}") for number in (1, 2)]
        self.assertEqual(streams, ["/dev/null", "/dev/null"])

    def wait_until_reading(self, process):
        """Waits until standard input has a second descriptor, which is what it is read by."""
        folder = f"/proc/{process.pid}/fd"
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            links = []
            for name in os.listdir(folder):
                try:
                    links.append(os.readlink(os.path.join(folder, name)))
                except FileNotFoundError:
                    pass
            if len([link for link in links if link.startswith("pipe:")]) > 1:
                return
            time.sleep(0.01)
        self.fail("it does not read")

    def test_output_that_may_not_grow_is_told(self):
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
        with open(self.path("out"), "wb") as file:
            self.assertIn("File too large",
                          self.fails(1, "export", "a.frac", stdout=file, preexec_fn=limit))

    def test_a_pipe_can_be_written_to_and_read_from(self):
        os.mkfifo(self.path("pipe"))
        received = []
        reader = threading.Thread(target=lambda: received.append(self.read("pipe")))
        reader.start()
        self.frac("export", "a.frac", "-o", "pipe")
        reader.join(60)
        self.assertEqual(received, [self.frac("export", "a.frac")])


class Signals(FracTest):
    def start(self, *arguments):
        return self.begins(*arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE)

    def test_each_ends_it_as_itself_and_leaves_nothing(self):
        self.write("b.frac", b"old")
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.start("take", "-", "1", "-o", "b.frac")
            process.stdin.write(record()[:50])
            process.stdin.flush()
            time.sleep(0.05)
            process.send_signal(number)
            self.assertEqual(process.wait(60), -number)
            self.assertEqual(self.read("b.frac"), b"old")
            self.assertEqual(os.listdir(self.folder), ["b.frac"])

    def test_at_any_moment_of_a_write_there_is_the_old_file_or_the_new_one(self):
        old, new = record() * 20000, record(limit=9) + record() * 19999
        for attempt in range(20):
            self.write("a.frac", old)
            process = self.start("set", "a.frac", "--entry", "1", "--limit", "9")
            time.sleep(attempt * 0.002)
            process.send_signal(signal.SIGTERM)
            self.assertIn(process.wait(60), (0, -signal.SIGTERM))
            self.assertIn(self.read("a.frac"), (old, new))
            self.assertEqual(os.listdir(self.folder), ["a.frac"])

    def test_a_pipe_that_nobody_reads_does_not_hold_it(self):
        os.mkfifo(self.path("pipe"))
        process = self.start("new", "--formula", "julia", "-o", "pipe")
        time.sleep(0.2)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(60), -signal.SIGTERM)


class Linking(unittest.TestCase):
    WINDOWS = r"lib(GL|GLU|GLX|OpenGL|EGL|glut|OpenCL|X11|Xext|Xmu|xcb|gtk|gdk|glib)[-.\d]"

    def libraries(self, program):
        done = subprocess.run(["ldd", program], capture_output=True, text=True, check=True)
        return done.stdout

    def test_no_window_system_is_linked(self):
        self.assertRegex(self.libraries(FRAC), r"libpng")
        self.assertNotRegex(self.libraries(FRAC), self.WINDOWS)

    def test_the_program_with_a_window_links_none_of_the_commands_libraries(self):
        self.assertRegex(self.libraries(os.environ["TESSARY"]), self.WINDOWS)
        needed = subprocess.run(["readelf", "-d", os.environ["TESSARY"]], capture_output=True,
                                text=True, check=True).stdout
        self.assertNotIn("libpng", needed)


if __name__ == "__main__":
    unittest.main()

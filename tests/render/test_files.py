"""Files of tessary-render are whole or not there, whatever comes between."""

import fcntl
import os
import pty
import random
import resource
import signal
import stat
import subprocess
import time
import unittest

from render_command import BUILD, ENDLESS, RENDER, RenderTest, chunks, pixels, record

STAND_IN = os.path.join(os.path.abspath(BUILD), "tests", "render", "libtessary_no_nameless_files.so")
UNFINISHED = ".tessary-render-0123456789ab.tmp"


class Failures(RenderTest):
    def test_a_full_disk(self):
        with open("/dev/full", "wb") as full:
            self.assertIn("standard output", self.fails(1, "-", "--size", 64, "-o", "-",
                                                        data=record(), stdout=full))
        self.assertIn("/dev/full", self.fails(1, "-", "--size", 64, "-o", "/dev/full",
                                              data=record()))

    def test_a_full_disk_leaves_nothing(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))
        self.write("stdin-001.png", b"old")
        self.assertIn("stdin-001.png", self.fails(1, "-", "--size", 512, data=record(),
                                                  preexec_fn=limit))
        self.assertEqual((self.names(), self.read("stdin-001.png")), (["stdin-001.png"], b"old"))

    def test_a_closed_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.assertIn("standard output", self.fails(1, "-", "--size", 512, "-o", "-",
                                                    data=record(), stdout=writer))
        os.close(writer)

    def test_a_failure_does_not_wait_for_rows_in_work(self):
        """The first picture does not fit when a thread is at the second one, which has no end."""
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        self.fails(1, "-", "--size", "64x64", "--supersample", 4, "--metadata", "none",
                   "--threads", 2, data=record() + ENDLESS, preexec_fn=limit)

    def test_folders_that_cannot_be_written(self):
        self.assertIn("none/a.png", self.fails(1, "-", "-o", "none/a.png", data=record()))
        self.fails(1, "-", "-o", "none/", data=record())
        self.fails(1, "-", "-o", "/proc/a.png", data=record())

    def test_folders_that_may_not_be_written(self):
        os.chmod(self.folder, 0o755)
        os.mkdir(self.path("locked"), 0o555)
        nobody = (lambda: os.setuid(65534)) if os.geteuid() == 0 else None  # root may write anywhere
        self.assertIn("locked", self.fails(1, "-", "-o", "locked/", data=record(),
                                           preexec_fn=nobody))

    def test_more_pictures_than_names(self):
        self.assertIn("a.png", self.fails(1, "-", "-o", "a.png", data=record() * 2))
        self.fails(1, "-", "-o", "-", data=record() * 2)
        self.assertEqual(self.names(), [])

    def closed(self, streams, *arguments):
        command = ["sh", "-c", f'"$0" "$@" {streams}', RENDER, self.write("a.frac", record()),
                   "--size", "16x16", *arguments]
        return subprocess.run(command, cwd=self.folder, stderr=subprocess.PIPE, timeout=60)

    def test_closed_streams_do_no_harm(self):
        self.assertEqual(self.closed("<&- >&- 2>&-").returncode, 0)
        self.assertEqual(pixels(self.read("a-001.png")).shape, (16, 16, 3))

    def test_a_closed_standard_output_takes_no_picture(self):
        done = self.closed(">&-", "-o", "-")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, rb"\Atessary-render: standard output: [^\n]+\n\Z")


class Places(RenderTest):
    def test_the_old_file_is_replaced_and_its_mode_kept(self):
        self.write("a.png", b"old")
        os.chmod(self.path("a.png"), 0o640)
        self.render("-", "--size", 16, "-o", "a.png", data=record())
        self.assertEqual(stat.S_IMODE(os.stat(self.path("a.png")).st_mode), 0o640)
        self.assertEqual(chunks(self.read("a.png"))[-1][0], b"IEND")
        self.assertEqual(self.names(), ["a.png"])

    def test_a_new_file_follows_the_umask(self):
        self.render("-", "--size", 16, "-o", "a.png", data=record(),
                    preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("a.png")).st_mode), 0o640)

    def test_a_link_stays_a_link(self):
        os.mkdir(self.path("sub"))
        self.write("sub/target", b"old")
        os.symlink("sub/target", self.path("a.png"))
        self.render("-", "--size", 16, "-o", "a.png", data=record())
        self.assertTrue(os.path.islink(self.path("a.png")))
        self.assertEqual(chunks(self.read("sub/target"))[-1][0], b"IEND")

    def test_devices_are_written_and_not_replaced(self):
        self.render("-", "--size", 16, "-o", "/dev/null", data=record())
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_a_picture_may_replace_what_it_was_made_from(self):
        self.render("-", "--size", 16, "-o", "a.png", data=record())
        self.render("a.png", "--size", 32, "-o", "a.png")
        self.assertEqual(pixels(self.read("a.png")).shape, (24, 32, 3))


class Leftovers(RenderTest):
    def test_those_of_a_run_that_is_no_more_are_removed(self):
        self.write(UNFINISHED, b"half")
        self.write("other.tmp", b"not ours")
        self.render("-", "--size", 16, data=record())
        self.assertEqual(self.names(), ["other.tmp", "stdin-001.png"])

    def test_those_of_a_run_at_work_stay(self):
        with open(self.path(UNFINISHED), "wb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            self.render("-", "--size", 16, data=record())
            self.assertIn(UNFINISHED, self.names())

    def test_the_folder_of_the_pictures_counts(self):
        os.mkdir(self.path("out"))
        self.write("out/" + UNFINISHED, b"half")
        self.render("-", "--size", 16, "-o", "out/", data=record())
        self.assertEqual(os.listdir(self.path("out")), ["stdin-001.png"])


@unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers must be loaded first")
class WithoutNamelessFiles(RenderTest):
    """Where a file must have a name from its beginning on."""

    ENVIRONMENT = {**os.environ, "LD_PRELOAD": STAND_IN}

    def test_pictures_take_the_place_of_old_ones(self):
        self.write("a.png", b"old")
        self.render("-", "--size", 16, "-o", "a.png", data=record(), env=self.ENVIRONMENT)
        self.assertEqual(chunks(self.read("a.png"))[-1][0], b"IEND")
        self.assertEqual(self.names(), ["a.png"])

    def test_a_failure_leaves_nothing(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))
        self.fails(1, "-", "--size", 512, data=record(), env=self.ENVIRONMENT, preexec_fn=limit)
        self.assertEqual(self.names(), [])

    def locked_file(self):
        """The name of the file beside the catalogue, once somebody holds a lock on it."""
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            for name in set(self.names()) - {"a.frac"}:
                with open("/proc/locks", encoding="ascii") as locks:
                    if f":{os.stat(self.path(name)).st_ino} " in locks.read():
                        return name
            time.sleep(0.01)
        self.fail("no file was locked")

    def test_what_a_killed_run_leaves_is_not_touched_before_and_removed_after(self):
        self.write("a.frac", ENDLESS)
        process = self.begins("a.frac", "--size", "64x64", env=self.ENVIRONMENT)
        unfinished = self.locked_file()
        self.assertTrue(unfinished.startswith(".tessary-render-"))
        self.render("-", "--size", 16, data=record())
        self.assertIn(unfinished, self.names())
        process.kill()
        process.wait()
        self.render("-", "--size", 16, data=record())
        self.assertEqual(self.names(), ["a.frac", "stdin-001.png"])


class Signals(RenderTest):
    def start(self, *arguments):
        return self.begins(*arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE)

    def test_each_ends_it_at_once_as_that_signal(self):
        self.write("a.frac", ENDLESS)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(signal=number):
                process = self.start("a.frac", "--size", "64x64")
                time.sleep(0.3)
                process.send_signal(number)
                _, said = process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assertLessEqual(said.count(b"\n"), 1)
                self.assertEqual(self.names(), ["a.frac"])

    def test_a_killed_run_leaves_whole_pictures_only(self):
        self.write("a.frac", record(limit=2000) * 40)
        for _ in range(12):
            process = self.start("a.frac", "--size", "200x150")
            time.sleep(random.uniform(0, 0.25))
            process.kill()
            process.communicate(timeout=60)
            for name in self.names():
                if name.endswith(".png"):
                    self.assertEqual(pixels(self.read(name)).shape, (150, 200, 3))
                    os.remove(self.path(name))
        self.render("a.frac", "--entry", 1, "--size", "8x8")
        self.assertEqual(self.names(), ["a-001.png", "a.frac"])


class Progress(RenderTest):
    def on_terminal(self, *arguments):
        """What a run writes to the terminal that its standard error is."""
        master, slave = pty.openpty()
        process = self.begins(*arguments, stderr=slave)
        os.close(slave)
        written = b""
        while True:
            try:
                block = os.read(master, 65536)
            except OSError:
                break
            if not block:
                break
            written += block
        os.close(master)
        self.assertEqual(process.wait(timeout=60), 0)
        return written

    def setUp(self):
        super().setUp()
        # Some tenths of a second: by the cusp nothing can be cut short.
        self.write("a.frac", record(x=(0.25 - 1e-9, 0.25), y=(-1e-12, 1e-12), limit=60000) * 2)
        self.options = ["a.frac", "--size", "300x300", "--threads", "1"]

    def test_a_terminal_sees_pictures_a_second_and_the_time_left(self):
        written = self.on_terminal(*self.options)
        self.assertRegex(written, rb"\r\[[#.]+\] [0-2]/2 pictures, [0-9.]+ a second, [0-9:?]+ left")
        self.assertTrue(written.endswith(b"\r\x1b[K"))
        self.assertNotIn(b"\n", written)

    def test_quiet_is_silent(self):
        self.assertEqual(self.on_terminal(*self.options, "--quiet"), b"")

    def test_anything_else_than_a_terminal_sees_nothing(self):
        self.assertEqual(self.render(*self.options), b"")


if __name__ == "__main__":
    unittest.main()

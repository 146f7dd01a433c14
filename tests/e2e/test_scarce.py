"""The program where memory, threads, descriptors, /dev/shm or room for its output are missing: a line
says so where something is lost, the status is the one that is meant, nothing hangs."""

import os
import shutil
import signal
import tempfile
import unittest

import catalogues
import harness
from scarcity import Scarcity, each
from test_window import CORES, TessaryTest, shut_down_lines

SMALL_TEXTURES = os.path.join(harness.BUILD, "tests", "e2e", "libtessary_small_textures.so")


class ScarceTest(TessaryTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-scarce-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.screen = harness.Screen()
        self.addCleanup(self.screen.stop)

    def path(self, name):
        return os.path.join(self.folder, name)

    def run_on(self, env, *arguments):
        return self.start(arguments, env=env, screen=self.screen, window=False)

    def run_from_shell(self, before, after="", *arguments):
        """The program started by a shell after it did something, with redirections after it."""
        with open(self.path("tessary"), "w") as file:
            file.write(f'#!/bin/sh\n{before}\nexec "{harness.TESSARY}" "$@" {after}\n')
        os.chmod(self.path("tessary"), 0o755)
        program = harness.Program(self.screen, ["--cpu", *arguments],
                                  program=self.path("tessary"))
        self.addCleanup(program.stop)
        return program

    @staticmethod
    def frames(program):
        return [line for line in program.lines if line.startswith("Rendering to texture took")]

    def wait_for_frames_or_the_end(self, program, count):
        """Whether it still runs."""
        harness.wait_until(lambda: program.process.poll() is not None
                           or len(self.frames(program)) >= count, 60, "frames or the end")
        return program.process.poll() is None

    def assert_ends_by_a_signal(self, program, threads=CORES):
        program.signal(signal.SIGTERM)
        self.assertEqual(program.wait_exit(), -signal.SIGTERM)
        lines = shut_down_lines(threads)
        self.assertEqual(program.lines[-len(lines):], lines)
        self.assertEqual(program.errors, "")

    def assert_ended_without_memory(self, program, line):
        self.assertEqual(program.wait_exit(), 1)
        self.assert_shut_down_in_order(program)
        self.assertEqual(program.lines[-len(shut_down_lines()) - 1], line)
        self.assertEqual(program.errors, "")


@unittest.skipIf(harness.SANITIZE, "sanitizers must be loaded first")
class Memory(ScarceTest):
    """What drivers allocate is theirs: here it is the program's own that is missing."""

    def test_for_the_picture_its_tiles_or_a_catalogue_at_the_start(self):
        with open(self.path("many.frac"), "wb") as file:
            for number in range(1, 20000):
                file.write(catalogues.record("n" * 100, 0, (-2.0 - 0.5 / number, 2.0, -1.5, 1.5),
                                             iterations=50, identity=number))
        unread = []

        def attempt(environment):
            program = self.run_on(environment, f"--bench:{self.path('many.frac')}")
            if not self.wait_for_frames_or_the_end(program, 2):
                self.assert_ended_without_memory(
                    program, "No memory for the picture of 2048 x 2048 pixels")
                return
            unread.append("Could not read from disk" in program.lines)
            self.assert_ends_by_a_signal(program)

        count = each("new", attempt)
        self.assertGreaterEqual(count, 4)
        self.assertEqual(unread, [True] * (count - 2) + [False])

    def test_while_a_frame_is_drawn(self):
        """A picture in pieces needs memory for a piece."""
        scarcity = Scarcity("new", 3)
        scarcity.environment["LD_PRELOAD"] += " " + SMALL_TEXTURES
        program = self.run_on({**scarcity.environment, "TESSARY_LARGEST_TEXTURE": "1500"}, "--cpu")
        self.assert_ended_without_memory(program, "Out of memory")
        self.assertTrue(scarcity.came())


@unittest.skipIf(harness.SANITIZE, "sanitizers must be loaded first")
class ThreadsAndSharedMemory(ScarceTest):
    def test_a_worker_that_cannot_start_is_done_without(self):
        for number in range(1, CORES + 1):
            with self.subTest(worker=number):
                scarcity = Scarcity("thread", number)
                program = self.run_on(scarcity.environment, "--cpu")
                self.assertTrue(self.wait_for_frames_or_the_end(program, 1))
                self.assertTrue(scarcity.came())
                self.assertEqual(
                    [line for line in program.lines if line.startswith("Could not start")],
                    [f"Could not start CPU thread {number}: Resource temporarily unavailable"])
                self.assert_ends_by_a_signal(program, CORES - 1)

    def test_without_dev_shm_it_runs(self):
        program = self.run_on(Scarcity("shm", 0).environment, "--cpu")
        self.assertTrue(self.wait_for_frames_or_the_end(program, 1))
        self.assert_ends_by_a_signal(program)


class Descriptors(ScarceTest):
    @unittest.skipIf(harness.SANITIZE, "a sanitizer wants descriptors of its own")
    def test_too_few_are_a_line_and_status_1_or_127_and_a_few_more_are_enough(self):
        """With fewer still it is the loader that ends it, in words and with a status of its own."""
        ran = []
        for most in (4, 5, 6, 7, 8, 10, 12, 16, 24):
            program = self.run_from_shell(f"ulimit -n {most}")
            ran.append(self.wait_for_frames_or_the_end(program, 1))
            if ran[-1]:
                self.assert_ends_by_a_signal(program)
            else:
                self.assertIn(program.wait_exit(), (1, 127))
                self.assertNotEqual(program.errors, "")
        self.assertTrue(all(ran[-3:]))


class Output(ScarceTest):
    LOST = "Standard output could not be written\n"

    @staticmethod
    def wait_for_the_picture(program):
        """Many colours in the middle of the window: there are no lines to wait for."""
        harness.wait_until(
            lambda: len(set(map(tuple, program.screenshot()[300:600:20, 300:600:20]
                                .reshape(-1, 3)))) > 5, 30, "the picture")

    def test_a_full_disk_is_told_once_at_the_end_and_changes_no_status(self):
        for way, status in (("signal", -signal.SIGTERM), ("close", 0)):
            with self.subTest(way):
                program = self.run_from_shell("", ">/dev/full")
                program.wait_for_window()
                self.wait_for_the_picture(program)
                if way == "close":
                    program.close()
                else:
                    program.signal(signal.SIGTERM)
                self.assertEqual(program.wait_exit(), status)
                self.assertEqual(program.errors, self.LOST)

    def test_a_full_disk_is_told_without_a_window_too(self):
        for option in ("--help", "--list"):
            with open("/dev/full", "wb") as full:
                done = harness.run_program([option], stdout=full)
            self.assertEqual((done.returncode, done.stderr.decode()), (0, self.LOST))

    def test_a_closed_output_is_nobodys_loss(self):
        done = harness.run_program(["--help"], stdout=None, preexec_fn=lambda: os.close(1))
        self.assertEqual((done.returncode, done.stderr), (0, b""))


if __name__ == "__main__":
    unittest.main()

"""tessary-render where memory, threads, descriptors or /dev/shm are missing: one line and status 1,
or the very same picture; the file it was to replace is whole either way."""

import os
import unittest

from render_command import RenderTest, record
from scarcity import descriptors, each


@unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers must be loaded first")
class Scarce(RenderTest):
    ARGUMENTS = ("a.frac", "--entry", "1", "--size", "1500x1200", "-o", "a.png")

    def setUp(self):
        super().setUp()
        self.write("a.frac", record() * 20000)
        self.render(*self.ARGUMENTS)
        self.picture = self.read("a.png")

    def attempt(self, lines, **options):
        """Whether it went well; one of these lines must say why not."""
        self.write("a.png", b"old")
        done = self.run_render(*self.ARGUMENTS, **options)
        self.assertEqual(self.names(), ["a.frac", "a.png"])
        if done.returncode == 0:
            self.assertEqual((done.stderr, self.read("a.png")), (b"", self.picture))
        else:
            self.assertEqual((done.returncode, self.read("a.png")), (1, b"old"), done.stderr)
            self.assertIn(done.stderr.decode(), [f"tessary-render: {line}\n" for line in lines])
        return done.returncode == 0

    def fails_for_each(self, what, *lines):
        """How many there are, and with how many of them missing it fails."""
        went_well = []
        count = each(what, lambda added: went_well.append(
            self.attempt(lines, env={**os.environ, **added})))
        self.assertTrue(went_well.pop(), "nothing was missing the last time")
        return count, went_well.count(False)

    def test_any_large_piece_of_memory(self):
        count, failed = self.fails_for_each("memory", "out of memory")
        self.assertGreaterEqual(count, 4)
        self.assertEqual(failed, count)

    def test_any_thread(self):
        """The others do its work, unless it is the first one."""
        count, failed = self.fails_for_each(
            "thread", "no thread can be started: Resource temporarily unavailable")
        self.assertEqual(count, os.cpu_count())
        self.assertEqual(failed, 1)

    def test_descriptors(self):
        lines = ["a.frac: Too many open files", "a.png cannot be written: Too many open files"]
        ways = [self.attempt(lines, preexec_fn=descriptors(most)) for most in range(6, 14)]
        self.assertTrue(ways[-1])

    def test_shared_memory(self):
        self.assertTrue(self.attempt([], env={**os.environ, "TESSARY_SCARCE": "shm=0"}))


if __name__ == "__main__":
    unittest.main()

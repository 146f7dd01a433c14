"""tessary-frac where memory, descriptors or /dev/shm are missing: one line and status 1, or all that
was asked for; the file it was to replace is whole either way."""

import os
import unittest

from frac_command import FracTest, record
from scarcity import descriptors, each

COMMANDS = {
    "export": ["export", "a.frac", "-o", "b"],
    "set": ["set", "a.frac", "--entry", "1", "--limit", "9", "-o", "b"],
    "merge": ["merge", "a.frac", "a.frac", "-o", "b"],
    "import": ["import", "a.json", "-o", "b"],
    "take": ["take", "a.frac", "2-20000", "-o", "b"],
}


@unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers must be loaded first")
class Scarce(FracTest):
    def setUp(self):
        super().setUp()
        self.write("a.frac", record() * 20000)
        self.frac("export", "a.frac", "-o", "a.json")

    def attempt(self, arguments, lines, expected, **options):
        """Whether it went well; one of these lines must say why not."""
        self.write("b", b"old")
        done = self.run_frac(*arguments, **options)
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.frac", "a.json", "b"])
        if done.returncode == 0:
            self.assertEqual((done.stderr, self.read("b")), (b"", expected))
        else:
            self.assertEqual((done.returncode, self.read("b")), (1, b"old"), done.stderr)
            self.assertIn(done.stderr.decode(), [f"tessary-frac: {line}\n" for line in lines])
        return done.returncode == 0

    def expected(self, arguments):
        self.frac(*arguments)
        return self.read("b")

    def test_any_large_piece_of_memory(self):
        for name, arguments in COMMANDS.items():
            with self.subTest(name):
                expected, went_well = self.expected(arguments), []
                count = each("memory", lambda added: went_well.append(self.attempt(
                    arguments, ["out of memory"], expected, env={**os.environ, **added})))
                self.assertGreaterEqual(count, 2)
                self.assertEqual(went_well.count(False), count)

    def test_descriptors(self):
        lines = [f"{problem}: Too many open files"
                 for problem in ("a.frac", "a.json", "b cannot be written")]
        for name, arguments in COMMANDS.items():
            with self.subTest(name):
                expected = self.expected(arguments)
                ways = [self.attempt(arguments, lines, expected, preexec_fn=descriptors(most))
                        for most in range(5, 12)]
                self.assertTrue(ways[-1])

    def test_shared_memory(self):
        arguments = COMMANDS["export"]
        self.assertTrue(self.attempt(arguments, [], self.expected(arguments),
                                     env={**os.environ, "TESSARY_SCARCE": "shm=0"}))


if __name__ == "__main__":
    unittest.main()

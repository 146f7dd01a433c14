"""What a checker has found nothing in is read again as soon as its answer may be another."""

import os
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import checkers  # noqa: E402
import linted  # noqa: E402
from sources import SOURCE, files  # noqa: E402

ONE = "compute/formulas.cpp"


class Fingerprints(unittest.TestCase):
    def setUp(self):
        self.kept = tempfile.NamedTemporaryFile(suffix=".txt")
        self.addCleanup(self.kept.close)
        self.before = linted.contents

    def tearDown(self):
        linted.contents = self.before

    def change(self, path):
        """As if a line had been added to a file."""
        linted.contents = lambda name: self.before(name) + (b"\n// new" if name == path else b"")

    def known(self, options="one"):
        return linted.Linted("checker", options, self.kept.name).knows(ONE)

    def keep(self):
        lines = linted.Linted("checker", "one", self.kept.name)
        lines.add(ONE)
        lines.save()

    def test_what_is_as_it_was_is_known(self):
        self.assertFalse(self.known())
        self.keep()
        self.assertTrue(self.known())

    def test_a_change_of_the_source_or_of_any_header_below_it_is_noticed(self):
        self.keep()
        below = linted.read_with(ONE)
        self.assertLess({ONE, "compute/formulas.h", "compute/rules.h", "compute/complex.h"}, set(below))
        for path in below:
            with self.subTest(path=path):
                self.change(path)
                self.assertFalse(self.known())
        self.change("render/main.cpp")
        self.assertTrue(self.known())

    def test_other_options_or_another_version_are_noticed(self):
        self.keep()
        self.assertFalse(self.known("two"))

    def test_other_checkers_know_nothing_of_it_and_keep_their_lines(self):
        self.keep()
        other = linted.Linted("other", "one", self.kept.name)
        self.assertFalse(other.knows(ONE))
        other.add(ONE)
        other.save()
        self.assertTrue(self.known())


class Folders(unittest.TestCase):
    def test_every_folder_of_the_programs_is_looked_at(self):
        ours = {path.split("/")[0] for path in files() if path.endswith(".cpp")} - {"tests"}
        self.assertEqual(set(checkers.FOLDERS), ours)

    def test_every_line_of_the_list_is_of_a_source(self):
        if os.path.exists(linted.LIST):
            with open(linted.LIST, encoding="utf-8") as file:
                for line in file:
                    with self.subTest(line=line):
                        checker, source, mark = line.split()
                        self.assertIn(checker, ("clang-tidy", "analyzer"))
                        self.assertTrue(os.path.exists(os.path.join(SOURCE, source)))
                        self.assertRegex(mark, r"^[0-9a-f]{16}$")


if __name__ == "__main__":
    unittest.main()

"""Every C++ file is formatted as .clang-format says, and clang-tidy is told why it must not look."""

import os
import re
import subprocess
import unittest

from sources import SOURCE, files

CODE = (".cpp", ".h", ".mm")


# Each version of clang-format has its own idea of a few lines.
VERSION = "14"


def formatter():
    """What clang-format says of its version; empty where there is none."""
    try:
        return subprocess.run(["clang-format", "--version"], capture_output=True, text=True).stdout
    except FileNotFoundError:
        return ""


class Format(unittest.TestCase):
    @unittest.skipUnless(f"version {VERSION}." in formatter(),
                         f"clang-format {VERSION} is not installed")
    def test_clang_format_would_change_nothing(self):
        paths = [path for path in files()
                 if path.endswith(CODE) and os.path.exists(os.path.join(SOURCE, path))]
        self.assertGreater(len(paths), 100)
        # To start it takes longer than to read a file.
        done = subprocess.run(["clang-format", "--dry-run", "--Werror", *paths],
                              cwd=SOURCE, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))


class Lint(unittest.TestCase):
    def test_every_check_that_is_switched_off_has_its_reason(self):
        with open(os.path.join(SOURCE, ".clang-tidy"), encoding="utf-8") as file:
            text = file.read()
        reasons = "".join(line for line in text.splitlines() if line.startswith("#"))
        for check in re.findall(r"^  -([a-z-]+)", text, flags=re.M):
            with self.subTest(check=check):
                self.assertIn(check, reasons)


if __name__ == "__main__":
    unittest.main()

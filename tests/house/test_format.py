"""Every C++ file is formatted as .clang-format says."""

import os
import shutil
import subprocess
import unittest

from test_texts import SOURCE, files

CODE = (".cpp", ".h", ".mm")


class Format(unittest.TestCase):
    @unittest.skipUnless(shutil.which("clang-format"), "clang-format is not installed")
    def test_clang_format_would_change_nothing(self):
        for path in files():
            if path.endswith(CODE) and os.path.exists(os.path.join(SOURCE, path)):
                with self.subTest(file=path):
                    done = subprocess.run(
                        ["clang-format", "--dry-run", "--Werror", path],
                        cwd=SOURCE, capture_output=True, text=True,
                    )
                    self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()

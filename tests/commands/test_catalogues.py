"""The catalogues that come with the program are what their script writes."""

import filecmp
import os
import subprocess
import sys
import tempfile
import unittest

SHARE = os.path.join(os.environ.get("TESSARY_SOURCE", "."), "share")
NAMES = ["tour.frac", "deep-zoom.frac", "benchmark.frac"]


class Catalogues(unittest.TestCase):
    def test_the_script_writes_the_same_files(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(
                [sys.executable, os.path.join(SHARE, "make_catalogues.py"), folder], check=True)
            self.assertEqual(sorted(os.listdir(folder)), sorted(NAMES))
            same, _different, _failed = filecmp.cmpfiles(SHARE, folder, NAMES, shallow=False)
            self.assertEqual(same, NAMES)


if __name__ == "__main__":
    unittest.main()

"""tidy.py BUILD [--all]: clang-tidy over the sources of the programs that have changed since nothing was
found in them (linted.py), or over all. Ends with 1 where it has something to say; another version than the one that the
sources were cleaned with has another taste, and fails nothing."""

import re
import subprocess
import sys

from checkers import check
from linted import Linted, contents

VERSION = "14"


def version():
    said = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True).stdout
    return re.search(r"version (\d+)", said)[1]


def main(build, everything=False):
    def look(path, _, folder):
        done = subprocess.run(["clang-tidy", "--quiet", "-p", build, path], capture_output=True, text=True)
        return done.stdout if done.returncode else ""

    options = f"clang-tidy {version()}\n{contents('.clang-tidy').decode()}"
    bad = check("clang-tidy", Linted("clang-tidy", options), build, look, everything)
    return 1 if bad and version() == VERSION else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], "--all" in sys.argv[2:]))

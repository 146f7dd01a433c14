"""analyze.py BUILD [--all]: gcc's analyzer over the sources of the programs that have changed since nothing
was found in them (linted.py), or over all, compiled as they are in the build folder, but with nothing
written. Ends with 1 where it has something to say; another version than the one that the sources were
cleaned with has another taste, and fails nothing."""

import os
import resource
import subprocess
import sys

from checkers import check
from linted import Linted

VERSION = "12"

# Seconds of the processor for a file. Through templates of libraries (JSON, command lines, Highway) the
# analyzer finds no end; such files are named and get the other warnings alone.
LIMIT = 20
TOO_LONG = "CPU time limit exceeded"

# gcc 12 takes every short std::string for one that was never written, and does not see what destructors
# free: a vector that goes out of scope leaks for it. Nothing here allocates by hand, and the tests look
# for leaks where they run with the address sanitizer.
ANALYZER = ["-fanalyzer", "-Wno-analyzer-use-of-uninitialized-value", "-Wno-analyzer-malloc-leak"]

# Beside the analyzer, what -Wall and -Wextra leave out and finds mistakes rather than matters of taste.
CHECKS = ["-Wformat=2", "-Wlogical-op", "-Wduplicated-cond", "-Wduplicated-branches",
          "-Wcast-align=strict", "-Wtrampolines", "-Wvla", "-Walloca", "-Werror"]


def checked(command, *checks):
    """The command without its launcher and what it writes, not optimised: the analyzer follows
    functions as they are written."""
    kept = [a for a in command if "ccache" not in a and a != "-Werror" and not a.startswith("-O")
            and "FORTIFY" not in a]
    kept[kept.index("-o") + 1] = os.devnull
    return [*kept, *CHECKS, *checks]


def limit_processor_time():
    # Where both limits are one, the system may kill without the words that tell why.
    resource.setrlimit(resource.RLIMIT_CPU, (LIMIT, LIMIT + 10))


def version():
    return subprocess.run(["g++", "-dumpversion"], capture_output=True, text=True).stdout.strip()


def main(build, everything=False):
    unended = []

    def look(path, command, folder):
        done = subprocess.run(checked(command, *ANALYZER), cwd=folder, capture_output=True, text=True,
                              preexec_fn=limit_processor_time)
        if done.returncode and TOO_LONG in done.stderr:
            unended.append(path)
            done = subprocess.run(checked(command), cwd=folder, capture_output=True, text=True)
        return done.stderr if done.returncode else ""

    options = f"gcc {version()} {LIMIT} {' '.join(ANALYZER + CHECKS)}"
    bad = check("gcc's analyzer", Linted("analyzer", options), build, look, everything)
    if unended:
        print("not followed to the end:", *unended)
    return 1 if bad and version() == VERSION else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], "--all" in sys.argv[2:]))

"""analyze.py BUILD: gcc's analyzer over the sources of the programs, compiled as they are in the build
folder, but with nothing written. Ends with 1 where it has something to say."""

import concurrent.futures
import json
import os
import shlex
import subprocess
import sys

SOURCE = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
FOLDERS = ("app", "backends", "bench", "commands", "compute", "explorer", "frac", "render", "GlutMenu")

# Beside the analyzer, what -Wall and -Wextra leave out and finds mistakes rather than matters of taste.
CHECKS = ["-fanalyzer", "-Wformat=2", "-Wlogical-op", "-Wduplicated-cond", "-Wduplicated-branches",
          "-Wcast-align=strict", "-Wtrampolines", "-Wvla", "-Walloca", "-Werror"]


def commands(build):
    """Path below the sources and command line of each file of the programs."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    for entry in entries:
        path = os.path.relpath(entry["file"], SOURCE)
        if path.split(os.sep)[0] in FOLDERS:
            yield path, shlex.split(entry["command"]), entry["directory"]


def analyzed(command):
    """The command without its launcher and what it writes, not optimised: the analyzer follows
    functions as they are written."""
    kept = [a for a in command if "ccache" not in a and a != "-Werror" and not a.startswith("-O")
            and "FORTIFY" not in a]
    kept[kept.index("-o") + 1] = os.devnull
    return [*kept, *CHECKS]


def complaints(entry):
    path, command, folder = entry
    done = subprocess.run(analyzed(command), cwd=folder, capture_output=True, text=True)
    return (path, done.stderr) if done.returncode else None


def main(build):
    entries = list(dict((path, (path, command, folder))
                        for path, command, folder in commands(build)).values())
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        bad = [found for found in pool.map(complaints, entries) if found]
    for path, text in bad:
        print(f"{path}:\n{text}")
    print(f"gcc's analyzer: {len(entries)} files, {len(bad)} with findings")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))

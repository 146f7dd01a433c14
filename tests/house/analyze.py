"""analyze.py BUILD [FOLDER...]: gcc's analyzer over the sources of the programs, or of these folders of
theirs, compiled as they are in the build folder, but with nothing written. Ends with 1 where it has
something to say."""

import concurrent.futures
import json
import os
import resource
import shlex
import subprocess
import sys

SOURCE = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
FOLDERS = ("app", "backends", "bench", "commands", "compute", "explorer", "frac", "render", "GlutMenu")

# Seconds of the processor for a file. Through templates of libraries (JSON, command lines, Highway) the
# analyzer finds no end; such files are named and get the other warnings alone.
LIMIT = 20
TOO_LONG = "CPU time limit exceeded"

# gcc 12 takes every short std::string for one that was never written.
ANALYZER = ["-fanalyzer", "-Wno-analyzer-use-of-uninitialized-value"]

# Beside the analyzer, what -Wall and -Wextra leave out and finds mistakes rather than matters of taste.
CHECKS = ["-Wformat=2", "-Wlogical-op", "-Wduplicated-cond", "-Wduplicated-branches",
          "-Wcast-align=strict", "-Wtrampolines", "-Wvla", "-Walloca", "-Werror"]


def commands(build):
    """Path below the sources, command line and folder of each file."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    for entry in entries:
        path = os.path.relpath(entry["file"], SOURCE)
        yield path, shlex.split(entry["command"]), entry["directory"]


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


def complaints(entry):
    """Path, complaints (empty where there are none) and whether the analyzer came to an end."""
    path, command, folder = entry
    done = subprocess.run(checked(command, *ANALYZER), cwd=folder, capture_output=True, text=True,
                          preexec_fn=limit_processor_time)
    ended = done.returncode == 0 or TOO_LONG not in done.stderr
    if not ended:
        done = subprocess.run(checked(command), cwd=folder, capture_output=True, text=True)
    return path, done.stderr if done.returncode else "", ended


def main(build, folders=FOLDERS):
    entries = {path: (path, command, folder) for path, command, folder in commands(build)
               if path.split(os.sep)[0] in folders}.values()
    bad, unended = 0, []
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for path, text, ended in pool.map(complaints, entries):
            if text:
                bad += 1
                print(f"{path}:\n{text}", flush=True)
            if not ended:
                unended.append(path)
    if unended:
        print("not followed to the end:", *unended)
    print(f"gcc's analyzer: {len(entries)} files, {bad} with findings")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], *[sys.argv[2:]] if len(sys.argv) > 2 else []))

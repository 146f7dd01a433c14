"""What clang-tidy and gcc's analyzer are run with: over which sources, side by side, and what is kept."""

import concurrent.futures
import json
import os
import shlex

from sources import SOURCE

FOLDERS = ("app", "backends", "bench", "commands", "compute", "deep", "explorer", "frac", "render", "GlutMenu")


def entries(build):
    """Path below the sources, command line and folder of each source of the programs."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        found = json.load(file)
    for entry in found:
        path = os.path.relpath(os.path.realpath(entry["file"]), os.path.realpath(SOURCE))
        if path.split(os.sep)[0] in FOLDERS:
            yield path, shlex.split(entry["command"]), entry["directory"]


def check(name, linted, build, look, everything):
    """Has each source looked at that is not known to be clean, or every one, by look(path, command,
    folder), which gives what is complained of, empty where nothing is. What is clean is kept at once, so
    that a run which is stopped was not in vain. Returns how many sources there is something to say of."""
    sources = {path: (path, command, folder) for path, command, folder in entries(build)}
    waiting = [entry for path, entry in sorted(sources.items()) if everything or not linted.knows(path)]
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for entry, text in zip(waiting, pool.map(lambda entry: look(*entry), waiting)):
            if text:
                bad += 1
                print(f"{entry[0]}:\n{text}", flush=True)
            (linted.remove if text else linted.add)(entry[0])
            linted.save()
    print(f"{name}: {len(waiting)} of {len(sources)} sources read, {bad} with findings; the others are as "
          "they were when nothing was found in them")
    return bad

"""Which sources a checker has found nothing in, as they are now.

tests/house/linted.txt has a line for each: the checker, the source, and a hash of all that its answer
hangs on: the source with every header of ours that it includes, the checker's version and options. What
is as it was then need not be read again, so that a checker that takes minutes for the tree takes seconds
for a change. A line that is out of date, or gone, only costs time.
"""

import hashlib
import os
import re
from functools import lru_cache

from sources import SOURCE

LIST = os.path.join(SOURCE, "tests", "house", "linted.txt")
INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]+"([^"]+)"', re.M)


@lru_cache(maxsize=None)
def contents(path):
    with open(os.path.join(SOURCE, path), "rb") as file:
        return file.read()


@lru_cache(maxsize=None)
def included(path):
    """Our headers that a file names itself; what the build makes is not ours."""
    found = set()
    for name in INCLUDE.findall(contents(path)):
        name = os.fsdecode(name)
        for place in (name, os.path.normpath(os.path.join(os.path.dirname(path), name))):
            if os.path.isfile(os.path.join(SOURCE, place)):
                found.add(place)
                break
    return frozenset(found)


def read_with(path):
    """A source and all of our headers that it is compiled with."""
    seen, waiting = set(), [path]
    while waiting:
        file = waiting.pop()
        if file not in seen:
            seen.add(file)
            waiting.extend(included(file))
    return sorted(seen)


def fingerprint(path, options):
    """A hash of a source, its headers and the checker's options."""
    digest = hashlib.sha256(options.encode())
    for file in read_with(path):
        digest.update(file.encode() + b"\0" + contents(file) + b"\0")
    return digest.hexdigest()[:16]


class Linted:
    """The lines of one checker. Written anew by save(), sorted, those of other checkers kept."""

    def __init__(self, checker, options, path=LIST):
        self.checker, self.options, self.path = checker, options, path
        self.lines = dict(self._read())

    def _read(self):
        if os.path.exists(self.path):
            with open(self.path, encoding="utf-8") as file:
                for line in file:
                    checker, source, mark = line.split()
                    yield (checker, source), mark

    def knows(self, source):
        return self.lines.get((self.checker, source)) == fingerprint(source, self.options)

    def add(self, source):
        self.lines[self.checker, source] = fingerprint(source, self.options)

    def remove(self, source):
        self.lines.pop((self.checker, source), None)

    def save(self):
        with open(self.path, "w", encoding="utf-8") as file:
            for (checker, source), mark in sorted(self.lines.items()):
                if os.path.exists(os.path.join(SOURCE, source)):
                    file.write(f"{checker} {source} {mark}\n")

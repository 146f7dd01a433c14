"""Nothing that the program reads for every tile shares a cache line with what its workers write for
every tile: read from the built program, in whose data the linker may put anything beside anything."""

import os
import re
import subprocess
import unittest

import harness

LINE = 64

# Written for every tile, under the lock that is the first of these words.
WRITTEN = "poolWords"

# Some of what is read for every tile, so that the scan is known to see such things.
READ = {"winX", "winY", "maxSize", "maxIters", "currentFractalType", "bDoublePrecision", "buffer",
        "cpuPalette", "shutdown_threads", "numCPUThreads"}

# One line of `objdump -t`: address, flags, section, size, demangled name.
SYMBOL = re.compile(r"^([0-9a-f]+) .{6}O (\.\S+)\t([0-9a-f]+)\s+(?:\.hidden )?(.+)$")


def objects_of(listing):
    """[(first line, last line, name)] of all variables and constants of `objdump -t -C`."""
    found = []
    for line in listing.splitlines():
        match = SYMBOL.match(line)
        if match and int(match[3], 16) > 0:
            start, size = int(match[1], 16), int(match[3], 16)
            found.append((start // LINE, (start + size - 1) // LINE, match[4]))
    return found


def neighbours(found, name):
    """What shares a line with the variable of this name."""
    (first, last), = [(first, last) for first, last, other in found if other == name]
    return {other for begin, end, other in found if other != name and begin <= last and end >= first}


@unittest.skipIf(harness.SANITIZE, "sanitizers lay variables out in their own way")
class Program(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        listing = subprocess.run(["objdump", "-t", "-C", harness.TESSARY], capture_output=True,
                                 text=True, check=True).stdout
        cls.found = objects_of(listing)

    def test_what_is_read_for_every_tile_is_found(self):
        self.assertLessEqual(READ, {name for _, _, name in self.found})

    def test_what_workers_write_for_every_tile_has_its_lines_to_itself(self):
        self.assertEqual(neighbours(self.found, WRITTEN), set())


class TheScanItself(unittest.TestCase):
    LISTING = (
        "0000000000000040 g     O .bss\t0000000000000028              poolWords\n"
        "0000000000000068 g     O .bss\t0000000000000004              winX\n"
        "0000000000000030 l     O .bss\t0000000000000011              (anonymous namespace)::long\n"
        "0000000000000080 g     O .bss\t0000000000000008              next\n"
        "0000000000000050 g     F .text\t0000000000000008              function\n"
    )

    def test_it_sees_what_begins_or_ends_in_a_line_of_the_words(self):
        self.assertEqual(neighbours(objects_of(self.LISTING), WRITTEN),
                         {"winX", "(anonymous namespace)::long"})


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""by_turns.py ROUNDS PROGRAM OTHER ARGUMENT...: what the other build of a program costs.

Runs both by turns with these arguments and prints the processor time of each, its own and in the
system: the least and the median of the rounds, and the difference. The least is what counts where other
work is on the machine."""

import os
import resource
import statistics
import subprocess
import sys


def processor_time(command):
    """Seconds that the command takes of the processors."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def main(rounds, programs, arguments):
    times = ([], [])
    for turn in range(rounds):
        for which in (0, 1) if turn % 2 else (1, 0):
            times[which].append(processor_time([programs[which], *arguments]))
    for name, value in (("least", min), ("median", statistics.median)):
        one, other = value(times[0]), value(times[1])
        print(f"{name}: {one:.3f} s and {other:.3f} s, {other / one - 1:+.1%}")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(int(sys.argv[1]), [os.path.abspath(path) for path in sys.argv[2:4]], sys.argv[4:])

#!/usr/bin/python3
"""Signals at random moments of the real program, from before its first line to the middle of a run
of frames:

    tests/e2e/signal_moments.py [moments of each signal] [--seed N] [--within SECONDS]

SIGINT, SIGTERM and SIGHUP end it as that signal, with every line of the shutdown once the window is
there; SIGTSTP stops it, SIGCONT lets it go on, and alone changes nothing. The last lines are how
long each took, and how much of that the program worked: on a busy machine it waits for its turn. The
tests take a few moments of each."""

import argparse
import os
import random
import resource
import shutil
import signal
import sys
import tempfile
import time
import unittest

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
os.environ.setdefault("TESSARY_BUILD", os.path.join(SOURCE, "build", "release"))
os.environ.setdefault("TESSARY", os.path.join(os.environ["TESSARY_BUILD"], "tessary"))

import catalogues
import harness
from test_window import shut_down_lines

ENDING = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)

# Moments lie up to so many printed lines, and then so many seconds, after the start.
MOST_LINES, MOST_SECONDS = 24, 0.1

# Moments at which one program is stopped before another one takes its turn.
STOPS = 30

FRAME = ["Enqueuing 65536", "Rendering to texture took"]


class Moments:
    """Programs on one screen, and how long they took to do what a signal asks for."""

    def __init__(self, seed, within):
        self.random = random.Random(seed)
        self.within = within
        self.took = {}
        self.worked = []
        self.folder = tempfile.mkdtemp(prefix="tessary-moments-")
        self.screen = harness.Screen()
        with open(os.path.join(self.folder, "views.frac"), "wb") as file:
            for identity in range(1, 3000):
                file.write(catalogues.record(
                    "", 0, (-2.0 - 0.5 / identity, 2.0, -1.5, 1.5), iterations=200,
                    identity=identity))

    def close(self):
        self.screen.stop()
        shutil.rmtree(self.folder)

    def start(self):
        """The program on its way through a catalogue that lasts for longer than anybody looks."""
        folder = os.path.join(self.folder, "cwd")
        os.makedirs(folder, exist_ok=True)
        return harness.Program(self.screen, ["--bench:../views.frac"], cwd=folder)

    def pause(self):
        time.sleep(self.random.uniform(0.0, MOST_SECONDS))

    def note(self, number, since):
        seconds = time.monotonic() - since
        self.took.setdefault(number, []).append(seconds)
        assert self.within is None or seconds <= self.within, f"{number.name}: {seconds:.2f} s"

    def end(self, program, number):
        """Sends the signal, which must end the program in order."""
        begun = any(line.startswith("Enqueuing") for line in program.lines)
        before = processor_seconds_of_the_ended() + processor_seconds(program)
        since = time.monotonic()
        program.signal(number)
        status = program.wait_exit()
        self.note(number, since)
        self.worked.append(processor_seconds_of_the_ended() - before)
        assert status == -number, f"{number.name} ended it with {status}"
        assert program.errors == "", program.errors
        lines = program.lines
        if begun or "Shutting down threads" in lines:
            assert lines[-len(shut_down_lines()):] == shut_down_lines(), lines[-8:]
        assert os.listdir(os.path.join(self.folder, "cwd")) == [], "it left a file"
        assert not program.leftovers(), "it left a process"

    def ends(self, number):
        program = self.start()
        try:
            wanted = self.random.randrange(MOST_LINES)
            harness.wait_until(lambda: len(program.lines) >= wanted, 60, f"{wanted} lines")
            self.pause()
            self.end(program, number)
        finally:
            program.stop()

    def stops_and_goes_on(self, count):
        program = self.start()
        try:
            program.wait_for_frames(1)
            for _ in range(count):
                self.pause()
                self.stop(program)
                self.pause()
                self.go_on(program)
                self.pause()
                self.go_on(program)
            self.end(program, signal.SIGTERM)
            assert_frames_are_whole(program.lines)
        finally:
            program.stop()

    def stop(self, program):
        since = time.monotonic()
        program.signal(signal.SIGTSTP)
        harness.wait_until(lambda: set(states(program)) == {"T"}, 30, "the program to stop")
        self.note(signal.SIGTSTP, since)

    def go_on(self, program):
        """Asks it to go on, stopped or not: the next frame comes."""
        program.skip_output()
        since = time.monotonic()
        program.signal(signal.SIGCONT)
        harness.wait_until(lambda: "T" not in states(program), 30, "the program to go on")
        self.note(signal.SIGCONT, since)
        program.wait_for_frames(1)


def processor_seconds(program):
    with open(f"/proc/{program.process.pid}/stat") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def processor_seconds_of_the_ended():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def states(program):
    """The letter for the state of each thread."""
    folder = f"/proc/{program.process.pid}/task"
    found = []
    for thread in os.listdir(folder):
        try:
            with open(os.path.join(folder, thread, "stat")) as file:
                found.append(file.read().rsplit(")", 1)[1].split()[0])
        except OSError:
            pass
    return found


def assert_frames_are_whole(lines):
    """Each frame that was begun printed how long it took, but for the one that was broken off."""
    frames = [line for line in lines if line.startswith(tuple(FRAME))]
    for begun, ended in zip(frames[:-2:2], frames[1:-1:2]):
        assert begun == FRAME[0] and ended.startswith(FRAME[1]), (begun, ended)


def hear_all():
    """What a shell has its programs in the background ignore, those started here would ignore too."""
    for number in ENDING:
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, signal.SIG_DFL)


def run(moments, count, say=lambda text: None):
    hear_all()
    for number in ENDING:
        for _ in range(count):
            moments.ends(number)
        say(f"{number.name}: {count} moments")
    for first in range(0, count, STOPS):
        moments.stops_and_goes_on(min(STOPS, count - first))
    say(f"SIGTSTP: {count} moments")
    say(f"SIGCONT: {2 * count} moments, half of them of a program that runs")


class AFewMoments(unittest.TestCase):
    def test_each_signal_does_what_it_is_for(self):
        seed = random.randrange(10**6)
        moments = Moments(seed, None)
        self.addCleanup(moments.close)
        try:
            run(moments, 4)
        except AssertionError as problem:
            raise AssertionError(f"seed {seed}: {problem}") from problem


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("count", type=int, nargs="?", default=300)
    parser.add_argument("--seed", type=int, default=random.randrange(10**6))
    parser.add_argument("--within", type=float)
    options = parser.parse_args()
    print(f"seed {options.seed}", flush=True)
    moments = Moments(options.seed, options.within)
    try:
        run(moments, options.count, lambda text: print(text, flush=True))
    finally:
        moments.close()
        for number, took in moments.took.items():
            took.sort()
            print(f"{number.name}: half within {took[len(took) // 2]:.3f} s, "
                  f"all {len(took)} within {took[-1]:.3f} s")
        print(f"processor time of an end: at most {max(moments.worked, default=0):.2f} s")


if __name__ == "__main__":
    unittest.main() if "AFewMoments" in sys.argv else main()

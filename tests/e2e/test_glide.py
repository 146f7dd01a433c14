"""bench/glide.py finds the frames of a glide in what the window did, and tells where their time went."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

import harness

sys.path.append(os.path.join(harness.SOURCE, "bench"))
import frame_records
from frame_records import CLEAR, LOOK, POLL, SLEEP, SWAP, UPLOAD, Record

GLIDE = os.path.join(harness.SOURCE, "bench", "glide.py")
MS = 1_000_000
WINDOW, WORKER, OTHER = 1, 2, 3


def sleep(begin, length, thread):
    return Record(begin * MS, begin * MS + length, length, thread, SLEEP)


def span(kind, begin, end):
    return Record(begin * MS, end * MS, 0, WINDOW, kind)


def idle(thread, begin, end):
    """A worker that looks at an empty queue every millisecond."""
    return [sleep(at, POLL, thread) for at in range(begin, end)]


def frame_at(start):
    """A frame of 60 ms: two looks, the picture done after 25 ms by one worker and 31 by the other."""
    return [span(CLEAR, start, start), sleep(start + 1, LOOK, WINDOW), sleep(start + 21, LOOK, WINDOW),
            *idle(WORKER, start, start + 1), *idle(WORKER, start + 25, start + 60),
            *idle(OTHER, start, start + 1), *idle(OTHER, start + 31, start + 60),
            span(UPLOAD, start + 42, start + 45), span(SWAP, start + 46, start + 58)]


class Records(unittest.TestCase):
    def setUp(self):
        records = [r for start in (0, 60, 120) for r in frame_at(start)]
        self.frames = frame_records.frames_of(records)

    def test_a_frame_goes_from_one_clear_to_the_next(self):
        self.assertEqual([(f.begin, f.end) for f in self.frames], [(0, 60 * MS), (60 * MS, 120 * MS)])

    def test_every_part_of_a_frame_has_its_time(self):
        times = {name: self.frames[0].time_of((name, colour)) for name, colour in frame_records.PARTS}
        self.assertEqual({name: round(ms, 6) for name, ms in times.items()}, {
            "queue the tiles": 1, "compute": 30, "done, not yet looked": 10, "draw": 2, "upload": 3,
            "swap": 12, "events, idle": 2})

    def test_a_worker_works_between_its_sleeps(self):
        self.assertEqual(self.frames[0].work, [(WORKER, 1 * MS, 25 * MS), (OTHER, 1 * MS, 31 * MS)])

    def test_looks_are_counted(self):
        self.assertEqual(self.frames[0].looks, 2)

    def test_a_frame_that_rendered_nothing_is_none(self):
        clears = [span(CLEAR, at, at) for at in (0, 10)]
        self.assertEqual(frame_records.frames_of(clears), [])


def run(*arguments):
    return subprocess.run([sys.executable, GLIDE, *arguments], capture_output=True, text=True,
                          timeout=120 * harness.PATIENCE)


class Drawn(unittest.TestCase):
    def test_what_was_printed_in_parts_is_one_picture(self):
        with tempfile.TemporaryDirectory() as folder:
            tables = []
            for n, row in enumerate(("Sine | single | 10.0 | 25.0 | 2.50", "Dragon | double | 5.0 | 8.0 | 1.60")):
                tables.append(os.path.join(folder, f"part{n}"))
                with open(tables[-1], "w", encoding="utf-8") as file:
                    file.write(f"a processor\n\n| view | precision | before | after | |\n| {row} |\n")
            picture = os.path.join(folder, "rates.svg")
            done = run("draw", picture, *tables)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            texts = [e.text for e in xml.etree.ElementTree.parse(picture).iter() if e.tag.endswith("text")]
        self.assertEqual(texts[1:], ["Sine single", "10.0", "25.0", "Dragon double", "5.0", "8.0"])

    def test_without_a_command_it_says_how_it_is_called(self):
        for arguments in ((), ("rates",), ("timeline",), ("draw", "rates.svg"), ("fly",)):
            with self.subTest(arguments=arguments):
                done = run(*arguments)
                self.assertEqual(done.returncode, 1)
                self.assertIn("bench/glide.py timeline OUT.svg", done.stderr)


class Timeline(unittest.TestCase):
    def test_a_real_glide_becomes_a_table_and_a_picture(self):
        with tempfile.TemporaryDirectory() as folder:
            picture = os.path.join(folder, "glide.svg")
            done = run("timeline", picture, harness.BUILD, "640x512")
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.draws_the_frames(picture)
        rows = [line.strip("| ").split(" | ") for line in done.stdout.splitlines() if re.match(r"\| \d", line)]
        self.assertEqual([row[:2] for row in rows], [["576x460", "single"], ["576x460", "double"]])
        for _, _, frame, looks, *parts, _ in rows:
            queue, compute, waiting, *others = map(float, parts)
            self.assertGreaterEqual(float(looks), 1)
            self.assertGreaterEqual(min(queue, compute, waiting, *others), 0)
            self.assertGreaterEqual(compute + waiting + 0.02, 20 * float(looks))  # as long each look sleeps
            self.assertGreaterEqual(float(frame), 20 * float(looks))

    def draws_the_frames(self, picture):
        titles = [e.text for e in xml.etree.ElementTree.parse(picture).iter() if e.tag.endswith("title")]
        for part in ("compute", "swap", "upload"):
            self.assertEqual(sum(title.startswith(part + ":") for title in titles), 4)


if __name__ == "__main__":
    unittest.main()

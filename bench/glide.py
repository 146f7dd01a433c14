#!/usr/bin/python3
"""Where the time of a glide goes, and how many frames a second are seen: docs/performance.md.

    bench/glide.py timeline OUT.svg [BUILD [WIDTHxHEIGHT...]]
    bench/glide.py rates BEFORE AFTER [ROUNDS [single|double [VIEW...]]]
    bench/glide.py draw OUT.svg TABLE...

BEFORE and AFTER are builds of the program, BUILD is a build folder (build/release). Windows open on
virtual screens with software OpenGL; build tessary and tessary_frame_trace first.

timeline drags a rectangle with the mouse and moves the mouse on while the view glides there, on
screens of these sizes (of which windows take nine tenths: 1152x921 and 1920x1080); prints the mean
time of each part of a frame and draws some frames. rates glides into the middle of the start view of
each of the fourteen formulas, or of these, with either build, by turns; the best of ROUNDS (2)
counts. draw makes a picture of what rates printed, into one file or more."""

import mmap
import os
import re
import statistics
import struct
import sys
import tempfile
import time

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
sys.path[:0] = [os.path.join(ROOT, "tests", "e2e")]
os.environ.setdefault("TESSARY_SOURCE", ROOT)

import catalogues
import harness
import processor
from drawing import Drawing
from frame_records import EVENT, MOTION, PARTS, RECORD, RENDER, Record, frames_of

ROOM = 1 << 20
SCREENS = ((1280, 1024), (2134, 1200))
GLIDE = 20  # frames
LONGEST_GLIDE = 10  # seconds


class Traced:
    """A run of the program with what the preloaded library wrote down."""

    def __init__(self, screen, program, arguments, library):
        self._file = tempfile.NamedTemporaryFile(prefix="tessary-trace-")
        self._file.truncate(8 + ROOM * RECORD.size)
        self._memory = mmap.mmap(self._file.fileno(), 0)
        self.program = harness.Program(screen, arguments, program=program, env={
            "LD_PRELOAD": os.path.abspath(library), "TESSARY_TRACE": self._file.name})

    def records(self):
        count = min(struct.unpack_from("=q", self._memory)[0], ROOM)
        found = (Record(*RECORD.unpack_from(self._memory, 8 + i * RECORD.size)) for i in range(count))
        return [record for record in found if record.end]

    def stop(self):
        self.program.stop()
        self._file.close()


def drag_and_glide(screen, build, precision):
    """The frames of a glide that a drag began, and how late motions of the mouse were taken."""
    traced = Traced(screen, os.path.join(build, "tessary"), ["--cpu", precision],
                    os.path.join(build, "bench", "libtessary_frame_trace.so"))
    try:
        program = traced.program
        program.wait_for_window()
        program.wait_until_quiet()
        _, _, width, height = program.geometry()
        before = time.monotonic_ns()
        program.drag(width // 20, height // 6, width - width // 20, height - height // 20)  # below the menu
        for step in range(40):
            program.move(width // 2 + step, height // 2)
        program.wait_until_quiet()
        records = [r for r in traced.records() if r.end > before]
        glide = frames_of(records)[-GLIDE:]
        late = [r.end * 1e-6 - (r.value & 0xFFFFFFFF) for r in records
                if r.kind == EVENT and r.value >> 32 == MOTION and glide[0].begin < r.end < glide[-1].end]
        return (width, height), glide, late
    finally:
        traced.stop()


def table(size, precision, glide, late):
    means = [statistics.mean(frame.time_of(part) for frame in glide) for part in PARTS]
    whole = statistics.mean(frame.end - frame.begin for frame in glide[:-1]) * 1e-6
    looks = statistics.mean(frame.looks for frame in glide)
    lateness = f"{statistics.median(late):.0f}" if late else ""
    cells = [f"{size[0]}x{size[1]}", precision, f"{whole:.1f}", f"{looks:.2f}",
             *(f"{mean:.2f}" for mean in means), lateness]
    return "| " + " | ".join(cells) + " |"


def draw_timeline(drawing, size, glide, shown=4):
    """Some frames from the middle of the glide, a lane for each thread."""
    some = glide[len(glide) // 2:len(glide) // 2 + shown]
    start, stop = some[0].begin, some[-1].end
    left, top = 110, drawing.height + 34
    scale = (drawing.width - left - 20) / (stop - start)
    drawing.text(left, top - 8, f"{size[0]} × {size[1]}: {shown} frames in {(stop - start) * 1e-6:.0f} ms", 13)
    workers = sorted({thread for frame in some for thread, _, _ in frame.work})
    for lane, name in enumerate(["window", *(f"worker {n}" for n, _ in enumerate(workers, 1))]):
        drawing.text(left - 8, top + 15 + 26 * lane, name, 12, "end")
    for frame in some:
        for part, a, b in frame.spans:
            drawing.bar(left + (a - start) * scale, top, (b - a) * scale, 20, part[1],
                        f"{part[0]}: {(b - a) * 1e-6:.2f} ms")
        for thread, a, b in frame.work:
            drawing.bar(left + (a - start) * scale, top + 26 * (1 + workers.index(thread)),
                        (b - a) * scale, 20, RENDER[1], f"{(b - a) * 1e-6:.2f} ms of tiles")


def legend(drawing):
    x, y = 110, drawing.height + 24
    for name, colour in PARTS:
        drawing.bar(x, y - 10, 12, 12, colour)
        drawing.text(x + 17, y, name, 12)
        x += 32 + 6.4 * len(name)


def timeline(path, build="build/release", *sizes):
    screens = [tuple(map(int, size.split("x"))) for size in sizes] or SCREENS
    names = " | ".join(name for name, _ in PARTS)
    print(f"{processor.this()}\n\n| window | precision | frame, ms | looks | {names} "
          "| motion taken after |\n|---|---|" + "---:|" * (len(PARTS) + 3))
    drawing = Drawing(980)
    legend(drawing)
    for screen_size in screens:
        for precision in ("--single", "--double"):
            with harness.Screen(size=screen_size) as screen:
                size, glide, late = drag_and_glide(screen, os.path.abspath(build), precision)
            print(table(size, precision[2:], glide, late), flush=True)
            if precision == "--double":
                draw_timeline(drawing, size, glide)
    drawing.write(path)


def start_views():
    """(name, record) of the start view of each formula; of Julia's, that of the built-in entry."""
    with open(os.path.join(ROOT, "bench", "views.h"), encoding="utf-8") as file:
        lines = re.findall(r'\{"(\w+)", ([^}]*)\}', file.read().split("moreViews")[0])
    for name, numbers in lines:
        rule, *rectangle, cx, cy, limit, bound = map(float, numbers.split(","))
        if not name.startswith("Julia") or name == "JuliaDefault":
            yield name, (int(rule), rectangle, (cx, cy), int(limit), bound)


def glide_into(view):
    """A catalogue of a view and the middle nine tenths of it: relatives, between which is a glide."""
    rule, (left, right, low, high), c, limit, bound = view
    dx, dy = (right - left) / 20, (high - low) / 20
    return b"".join(
        catalogues.record("", rule, rectangle, c, limit, bound, identity=7)
        for rectangle in ((left, right, low, high), (left + dx, right - dx, low + dy, high - dy)))


def rate(screen, program, library, view, precision):
    """Frames a second of a glide and of the frames after it, or of what is seen of them in ten
    seconds."""
    with tempfile.NamedTemporaryFile(suffix=".frac") as file:
        file.write(glide_into(view))
        file.flush()
        traced = Traced(screen, program, ["--cpu", precision, f"--bench:{file.name}"], library)
        try:
            traced.program.wait_for_frames(3, 120)
            end = time.monotonic() + LONGEST_GLIDE
            while len(traced.program.lines) < 4 * GLIDE and time.monotonic() < end:
                time.sleep(0.1)
            starts = [frame.begin for frame in frames_of(traced.records())][1:]
            return 1e9 * (len(starts) - 1) / (starts[-1] - starts[0])
        finally:
            traced.stop()


def rates(before, after, rounds=2, precision="single", *names):
    before, after = os.path.abspath(before), os.path.abspath(after)
    library = os.path.join(after, "bench", "libtessary_frame_trace.so")
    programs = [os.path.join(build, "tessary") for build in (before, after)]
    print(f"{processor.this()}\n\n| view | precision | before | after | |\n|---|---|---:|---:|---:|")
    for name, view in start_views():
        if names and name not in names:
            continue
        best = [0.0, 0.0]
        for turn in range(int(rounds)):
            for which in (0, 1) if turn % 2 else (1, 0):
                with harness.Screen() as screen:
                    seen = rate(screen, programs[which], library, view, "--" + precision)
                best[which] = max(best[which], seen)
        print(f"| {name} | {precision} | {best[0]:.1f} | {best[1]:.1f} | {best[1] / best[0]:.2f} |",
              flush=True)


def rates_in(tables):
    """{(view, precision): (before, after)} of what rates printed."""
    row = re.compile(r"\| (\w+) \| (single|double) \| ([\d.]+) \| ([\d.]+) \|")
    found = {}
    for path in tables:
        with open(path, encoding="utf-8") as file:
            found.update({(m[1], m[2]): (float(m[3]), float(m[4])) for m in row.finditer(file.read())})
    return found


def draw_rates(path, *tables):
    found = rates_in(tables)
    drawing = Drawing(760)
    drawing.text(150, 24, "Frames a second of a glide, 1152 × 921, software OpenGL: before and after", 13)
    largest = max(max(pair) for pair in found.values())
    for row, ((name, precision), pair) in enumerate(found.items()):
        y = 40 + 26 * row
        drawing.text(142, y + 15, f"{name} {precision}", 11, "end")
        for line, (value, colour) in enumerate(zip(pair, ("#b0b7c3", "#1f77b4"))):
            drawing.bar(150, y + 10 * line, 520 * value / largest, 9, colour)
            drawing.text(156 + 520 * value / largest, y + 8 + 10 * line, f"{value:.1f}", 9)
    drawing.write(path)


COMMANDS = {"timeline": (timeline, 1), "rates": (rates, 2), "draw": (draw_rates, 2)}

if __name__ == "__main__":
    command, least = COMMANDS.get(sys.argv[1] if len(sys.argv) > 1 else "", (None, 0))
    if command is None or len(sys.argv) < 2 + least:
        sys.exit(__doc__)
    command(*sys.argv[2:])

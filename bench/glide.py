#!/usr/bin/python3
"""Where the time of a glide goes, and how many frames a second are seen: docs/performance.md.

    bench/glide.py timeline OUT.svg [BUILD]
    bench/glide.py rates OUT.svg BEFORE AFTER [ROUNDS [single|double]]

BEFORE and AFTER are builds of the program, BUILD is a build folder (build/release). Windows open on
virtual screens with software OpenGL; build tessary and tessary_frame_trace first.

timeline drags a rectangle with the mouse and moves the mouse on while the view glides there, at
1152x921 and 1920x1080; prints the mean time of each part of a frame and draws some frames. rates
glides into the middle of the start view of each of the fourteen formulas with either build, by
turns; the best of ROUNDS (2) counts."""

import collections
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

Record = collections.namedtuple("Record", "begin end value thread kind")
RECORD = struct.Struct("=qqqii")
CLEAR, UPLOAD, SWAP, SLEEP, EVENT = range(5)
LOOK, POLL = 20_000_000, 1_000_000  # nanoseconds: between looks at a frame, at an empty queue
MOTION = 6
ROOM = 1 << 20

# Parts of a frame: name, colour.
QUEUE, RENDER, WAIT, UPLOADING, DRAW, SWAPPING, REST = PARTS = (
    ("queue the tiles", "#8c6bb1"), ("compute", "#1f77b4"), ("done, not yet looked", "#d62728"),
    ("upload", "#ff9f1c"), ("draw", "#bcbd22"), ("swap", "#2ca02c"), ("events, idle", "#7f7f7f"))


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


class Frame:
    """What the window's thread did from one glClear to the next, in nanoseconds."""

    def __init__(self, records, main, begin, end):
        mine = [r for r in records if r.thread == main and begin <= r.begin < end]
        looks = [r for r in mine if r.kind == SLEEP and r.value == LOOK]
        self.rendered = bool(looks)
        if not looks:
            return
        upload = next(r for r in mine if r.kind == UPLOAD)
        swap = next(r for r in mine if r.kind == SWAP)
        self.begin, self.end = begin, end
        self.queued, self.found, self.looks = looks[0].begin, looks[-1].end, len(looks)
        self.work = work_of(records, main, self.queued, self.found)
        done = min(max((span[2] for span in self.work), default=self.found), self.found)
        edges = (begin, self.queued, done, self.found, upload.begin, upload.end, swap.begin, swap.end, end)
        # Between the last look and the upload the frame's line is printed: drawing, too.
        spans = dict(zip((QUEUE, RENDER, WAIT, DRAW, UPLOADING, "draw2", SWAPPING, REST),
                         zip(edges, edges[1:])))
        self.spans = [(part, *span) for part, span in spans.items()]
        self.spans = [(DRAW if part == "draw2" else part, a, b) for part, a, b in self.spans]

    def time_of(self, part):
        return sum(b - a for what, a, b in self.spans if what == part) * 1e-6


def work_of(records, main, begin, end):
    """[(thread, from, to)]: when workers had tiles, between the sleeps of an empty queue."""
    work = []
    threads = {r.thread for r in records if r.kind == SLEEP and r.value == POLL and r.thread != main}
    for thread in threads:
        polls = sorted((r for r in records if r.thread == thread and r.kind == SLEEP
                        and r.value == POLL and r.end > begin - LOOK and r.begin < end + 5 * LOOK),
                       key=lambda r: r.begin)
        for one, other in zip(polls, polls[1:]):
            start, stop = max(one.end, begin), other.begin
            if stop - start > 200_000 and start < end:
                work.append((thread, start, stop))
    return work


def frames_of(records):
    main = next(r.thread for r in records if r.kind == CLEAR)
    starts = [r.begin for r in records if r.kind == CLEAR and r.thread == main]
    frames = [Frame(records, main, a, b) for a, b in zip(starts, starts[1:])]
    return [frame for frame in frames if frame.rendered]


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
        glide = frames_of(records)[-20:]
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


class Drawing:
    """An SVG that grows downwards."""

    def __init__(self, width):
        self.width, self.height, self._body = width, 0, []

    def text(self, x, y, text, size=12, anchor="start"):
        self._body.append(f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{text}</text>')
        self.height = max(self.height, y + 10)

    def bar(self, x, y, width, height, colour, title=""):
        inner = f"<title>{title}</title>" if title else ""
        self._body.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{max(width, 0.3):.1f}" '
                          f'height="{height}" fill="{colour}">{inner}</rect>')
        self.height = max(self.height, y + height + 6)

    def write(self, path):
        with open(path, "w", encoding="utf-8") as file:
            file.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.width} {self.height:.0f}" '
                       'font-family="sans-serif">\n<rect width="100%" height="100%" fill="white"/>\n'
                       + "\n".join(self._body) + "\n</svg>\n")


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


def timeline(path, build):
    names = " | ".join(name for name, _ in PARTS)
    print(f"| window | precision | frame, ms | looks | {names} | motion taken after |\n|---|---|"
          + "---:|" * (len(PARTS) + 3))
    drawing = Drawing(980)
    legend(drawing)
    for screen_size in ((1280, 1024), (2134, 1200)):  # windows are nine tenths as wide and high
        for precision in ("--single", "--double"):
            with harness.Screen(size=screen_size) as screen:
                size, glide, late = drag_and_glide(screen, build, precision)
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
    """Frames a second, from the first to the last swap of a glide and of the 20 frames after it."""
    with tempfile.NamedTemporaryFile(suffix=".frac") as file:
        file.write(glide_into(view))
        file.flush()
        traced = Traced(screen, program, ["--cpu", precision, f"--bench:{file.name}"], library)
        try:
            traced.program.wait_for_line("Total rendering time", 120)
            traced.program.wait_for_frames(19, 120)
            traced.program.wait_until_quiet(0.5)
            swaps = [r.end for r in traced.records() if r.kind == SWAP][-40:]
            return (len(swaps) - 1) / ((swaps[-1] - swaps[0]) * 1e-9)
        finally:
            traced.stop()


def draw_rates(path, found):
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


def rates(path, before, after, rounds=2, *precisions):
    library = os.path.join(after, "bench", "libtessary_frame_trace.so")
    programs = [os.path.join(build, "tessary") for build in (before, after)]
    found = {}
    print("| view | precision | before | after | |\n|---|---|---:|---:|---:|")
    for name, view in start_views():
        for precision in precisions or ("single", "double"):
            best = [0.0, 0.0]
            for turn in range(rounds):
                for which in (0, 1) if turn % 2 else (1, 0):
                    with harness.Screen() as screen:
                        best[which] = max(best[which],
                                          rate(screen, programs[which], library, view,
                                               "--" + precision))
            found[name, precision] = best
            print(f"| {name} | {precision} | {best[0]:.1f} | {best[1]:.1f} | {best[1] / best[0]:.2f} |",
                  flush=True)
            draw_rates(path, found)


if __name__ == "__main__":
    if len(sys.argv) >= 3 and sys.argv[1] == "timeline":
        timeline(sys.argv[2], os.path.abspath(sys.argv[3] if len(sys.argv) > 3 else "build/release"))
    elif len(sys.argv) >= 5 and sys.argv[1] == "rates":
        rates(sys.argv[2], *map(os.path.abspath, sys.argv[3:5]),
              *map(int, sys.argv[5:6]), *sys.argv[6:])
    else:
        sys.exit(__doc__)

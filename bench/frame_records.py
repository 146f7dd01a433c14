"""What bench/frame_trace.cpp wrote down, as frames: what the window's thread and the workers did."""
import collections
import struct

Record = collections.namedtuple("Record", "begin end value thread kind")
RECORD = struct.Struct("=qqqii")
CLEAR, UPLOAD, SWAP, SLEEP, EVENT = range(5)
LOOK, POLL = 20_000_000, 1_000_000  # nanoseconds: between looks at a frame, at an empty queue
MOTION = 6

# Parts of a frame: name, colour.
QUEUE, RENDER, WAIT, UPLOADING, DRAW, SWAPPING, REST = PARTS = (
    ("queue the tiles", "#8c6bb1"), ("compute", "#1f77b4"), ("done, not yet looked", "#d62728"),
    ("upload", "#ff9f1c"), ("draw", "#bcbd22"), ("swap", "#2ca02c"), ("events, idle", "#7f7f7f"))


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

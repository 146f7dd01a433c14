#!/usr/bin/python3
"""Turns a run of tessary_bench into the table, the plot and the rows of docs/performance.md, and one
of opencl_bench into the table of docs/opencl.md.

    build/release/bench/tessary_bench --benchmark_out=run.json --benchmark_out_format=json
    bench/report.py run.json docs/frame-time.svg docs/performance.tsv
    build/release/bench/opencl_bench --benchmark_out=device.json --benchmark_out_format=json
    bench/report.py device.json

Prints a Markdown table (each view at its own limit: the ratios, and what the search for repeats
adds), writes the plot (frame time of the Mandelbrot start view against the iteration limit and
against the number of threads) and every row of the run as tab-separated columns. Of a device, the
pool's time beside it. A run that was cut short, or that measured some rows only, gives what it has.
"""
import csv
import json
import math
import sys

SERIES = [  # label, precision, whose time, colour
    ("scalar, float", "single", "scalar", "#b8860b"),
    ("scalar, double", "double", "scalar", "#8b1a1a"),
    ("vectors, float", "single", "vectors", "#1f77b4"),
    ("vectors, double", "double", "vectors", "#104e8b"),
]


SETS = {"AVX3": "AVX-512"}  # what the vector library calls otherwise than the world does


class Row:
    """One benchmark: where it stands in the name, and its figures; None for what it lacks."""

    def __init__(self, entry):
        parts = entry["name"].split("/iterations:")[0].split("/")
        self.view, self.limit, self.precision = parts[0], int(parts[1]), parts[2]
        self.set = SETS.get(parts[3], parts[3])
        self.options = [option for option in parts[4:] if option != "search"]
        self.search = entry.get("search")
        self.scalar = entry.get("scalar_ms")
        self.vectors = entry.get("vectors_ms", entry.get("real_time"))
        self.ratio = entry.get("ratio")
        self.rate = entry.get("Gsteps/s")
        self.peak = entry.get("peak")
        self.queue = entry.get("queue")

    def place(self):
        precision = "float" if self.precision == "single" else "double"
        return self.set, self.view, self.limit, " ".join(self.options), precision

    def threads(self, most):
        for option in self.options:
            if option.startswith("threads"):
                return int(option[len("threads"):])
        return most


def rows_of(run):
    """The rows that were measured, the search of a view beside its frame."""
    rows = {}
    for entry in run.get("benchmarks", []):
        if entry.get("error_occurred") or entry.get("run_type") == "aggregate":
            continue
        row = Row(entry)
        if row.search is None:
            row.search = rows[row.place()].search if row.place() in rows else None
            rows[row.place()] = row
        elif row.place() in rows:
            rows[row.place()].search = row.search
        else:
            row.vectors = None
            rows[row.place()] = row
    return list(rows.values())


def milliseconds(value):
    return f"{value:.1f}" if value < 100 else f"{value:.0f}"


def number(value, style, factor=1):
    return "" if value is None else format(factor * value, style)


def write_rows(rows, path):
    with open(path, "w", encoding="utf-8", newline="") as file:
        table = csv.writer(file, delimiter="\t", lineterminator="\n")
        table.writerow(["set", "view", "limit", "options", "precision", "scalar_ms", "vectors_ms",
                        "ratio", "Gsteps_per_s", "peak_percent", "queue_percent",
                        "search_percent"])
        for row in rows:
            times = ["" if ms is None else milliseconds(ms) for ms in (row.scalar, row.vectors)]
            table.writerow([*row.place(), *times, number(row.ratio, ".1f"),
                            number(row.rate, ".2f"), number(row.peak, ".0f", 100),
                            number(row.queue, ".0f", 100), number(row.search, "+.1f", 100)])


def print_table(rows):
    """One line for each view at its own limit, one column for each instruction set and precision."""
    plain = [row for row in rows if not row.options]
    columns = list(dict.fromkeys((row.set, row.place()[4]) for row in plain))
    own = {}
    for row in plain:  # a view's own limit is measured first
        own.setdefault(row.view, row.limit)
    print("| view, limit |" + "".join(f" {' '.join(column)} |" for column in columns) + " search |")
    print("| --- |" + " ---: |" * (len(columns) + 1))
    for view, limit in own.items():
        found = {(row.set, row.place()[4]): row for row in plain
                 if (row.view, row.limit) == (view, limit)}
        cells = [number(found[c].ratio, ".1f") if c in found else "" for c in columns]
        searches = [row.search for row in found.values() if row.search is not None]
        search = number(searches[0], "+.1f", 100) + " %" if searches else ""
        print(f"| {view} {limit:,} | " + " | ".join([*cells, search]) + " |")


def print_device_table(entries):
    """One line for each view of a run of opencl_bench."""
    found = {}
    for entry in entries:
        if "pool_ms" not in entry:
            continue
        view, precision = entry["name"].split("/")[:2]
        figures = (entry["pool_ms"], entry["real_time"], entry["ratio"])
        found.setdefault(view, {})[precision] = figures
    print("| view | CPU pool ms, single | device ms | ratio | CPU pool ms, double | device ms | ratio |")
    print("| --- |" + " ---: |" * 6)
    for view, by_precision in found.items():
        line = [view]
        for precision in ("single", "double"):
            if precision in by_precision:
                pool, device, ratio = by_precision[precision]
                line += [milliseconds(pool), milliseconds(device), f"{ratio:.1f}"]
            else:
                line += [""] * 3
        print("| " + " | ".join(line) + " |")


class Panel:
    """One diagram with logarithmic times; x values are spread evenly in their order."""

    WIDTH, HEIGHT, LEFT, TOP = 290, 260, 76, 40

    def __init__(self, offset, title, ticks, low, high):
        self.offset, self.title, self.ticks = offset, title, ticks
        self.low, self.high = math.log10(low), math.log10(high)

    def x(self, tick):
        step = self.WIDTH / max(len(self.ticks) - 1, 1)
        return self.offset + self.LEFT + step * self.ticks.index(tick)

    def y(self, ms):
        share = (math.log10(ms) - self.low) / (self.high - self.low)
        return self.TOP + self.HEIGHT * (1 - share)

    def frame(self):
        left, bottom = self.offset + self.LEFT, self.TOP + self.HEIGHT
        yield (f'<rect x="{left}" y="{self.TOP}" width="{self.WIDTH}" height="{self.HEIGHT}" '
               'fill="none" stroke="#888"/>')
        yield f'<text x="{left}" y="{self.TOP - 12}">{self.title}</text>'
        for tick in self.ticks:
            yield (f'<text x="{self.x(tick):.0f}" y="{bottom + 16}" '
                   f'text-anchor="middle">{tick:,}</text>')
        for power in range(math.ceil(self.low), math.floor(self.high) + 1):
            y = self.y(10 ** power)
            yield (f'<line x1="{left}" x2="{left + self.WIDTH}" y1="{y:.0f}" y2="{y:.0f}" '
                   'stroke="#ddd"/>')
            yield f'<text x="{left - 6}" y="{y + 4:.0f}" text-anchor="end">{10 ** power:,} ms</text>'

    def line(self, points, colour):
        path = " ".join(f"{self.x(tick):.1f},{self.y(ms):.1f}" for tick, ms in points)
        yield f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>'
        for tick, ms in points:
            yield (f'<circle cx="{self.x(tick):.1f}" cy="{self.y(ms):.1f}" r="3" '
                   f'fill="{colour}"/>')


def points_of(rows, precision, whose, key):
    found = {key(row): getattr(row, whose) for row in rows if row.precision == precision}
    return sorted((at, ms) for at, ms in found.items() if ms)


def write_plot(rows, path, most_threads):
    best = [row for row in rows if row.set == rows[0].set and row.view == "Mandelbrot" and
            row.vectors and row.scalar]
    if not best:
        sys.exit("report.py: the run has no row of the Mandelbrot start view, so there is no plot")
    limits = [row for row in best if not row.options]
    threads = [row for row in best if row.limit == 768]
    times = [time for row in best for time in (row.vectors, row.scalar)]
    low, high = min(times) / 2, max(times) * 2
    panels = [
        (Panel(0, "Frame time against iteration limit",
               sorted({row.limit for row in limits}), low, high), limits, lambda row: row.limit),
        (Panel(400, "Frame time against threads (limit 768)",
               sorted({row.threads(most_threads) for row in threads}), low, high), threads,
         lambda row: row.threads(most_threads)),
    ]
    parts = []
    for panel, chosen, key in panels:
        parts += panel.frame()
        for _, precision, whose, colour in SERIES:
            parts += panel.line(points_of(chosen, precision, whose, key), colour)
    for n, (label, _, _, colour) in enumerate(SERIES):
        parts.append(f'<rect x="{76 + 180 * n}" y="336" width="12" height="12" fill="{colour}"/>')
        parts.append(f'<text x="{94 + 180 * n}" y="347">{label}</text>')
    with open(path, "w", encoding="utf-8") as file:
        file.write('<svg xmlns="http://www.w3.org/2000/svg" width="780" height="360" '
                   'font-family="sans-serif" font-size="12">\n'
                   '<rect width="780" height="360" fill="white"/>\n')
        file.write("\n".join(parts))
        file.write("\n</svg>\n")


def read_run(path):
    """The run as the benchmark wrote it; of a file that breaks off, the whole entries."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    try:
        return json.loads(text)
    except json.JSONDecodeError:
        pass
    end = text.rfind("}")
    while end > 0:
        try:
            return json.loads(text[:end + 1] + "]}")
        except json.JSONDecodeError:
            end = text.rfind("}", 0, end)
    sys.exit(f"report.py: {path} holds no run of a benchmark")


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: report.py RUN.json [PLOT.svg [ROWS.tsv]]")
    run = read_run(sys.argv[1])
    entries = run.get("benchmarks", [])
    if any("pool_ms" in entry for entry in entries):
        print_device_table(entries)
        return
    rows = rows_of(run)
    if not rows:
        sys.exit(f"report.py: {sys.argv[1]} holds no measured row")
    print_table(rows)
    if len(sys.argv) > 3:
        write_rows(rows, sys.argv[3])
    if len(sys.argv) > 2:
        write_plot(rows, sys.argv[2], run.get("context", {}).get("num_cpus", 1))


if __name__ == "__main__":
    main()

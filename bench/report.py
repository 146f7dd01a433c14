#!/usr/bin/python3
"""Turns a run of tessary_bench into the tables and the plot of docs/performance.md, and one of
opencl_bench into the table of docs/opencl.md.

    build/release/bench/tessary_bench --benchmark_out=run.json --benchmark_out_format=json
    bench/report.py run.json docs/frame-time.svg
    build/release/bench/opencl_bench --benchmark_out=device.json --benchmark_out_format=json
    bench/report.py device.json

Prints Markdown tables (the ratios, the cost of the search for repeats, and every figure of each
instruction set in the run) and writes the plot: frame time of the Mandelbrot start view against the
iteration limit and against the number of threads. Of a device, the pool's time beside it.
"""
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
    """One benchmark: where it stands in the name, and its figures."""

    def __init__(self, entry):
        parts = entry["name"].split("/iterations:")[0].split("/")
        self.view, self.limit, self.precision = parts[0], int(parts[1]), parts[2]
        self.set = SETS.get(parts[3], parts[3])
        self.options = parts[4:]
        self.search = entry.get("search")
        self.vectors = entry["real_time"]
        if self.search is not None:
            return
        self.scalar = entry["scalar_ms"]
        self.ratio = entry["ratio"]
        self.rate = entry["Gsteps/s"]
        self.peak = entry.get("peak")
        self.queue = entry["queue"]

    def name(self):
        shown = [option for option in self.options if option != "search"]
        return " ".join([self.view, f"{self.limit:,}", *shown])

    def threads(self, most):
        for option in self.options:
            if option.startswith("threads"):
                return int(option[len("threads"):])
        return most


def milliseconds(value):
    return f"{value:.1f}" if value < 100 else f"{value:.0f}"


def cells(row):
    peak = f"{100 * row.peak:.0f} %" if row.peak is not None else ""
    return (f"{milliseconds(row.scalar)} | {milliseconds(row.vectors)} | {row.ratio:.1f} | "
            f"{row.rate:.2f} | {peak} | {100 * row.queue:.0f} %")


def print_tables(rows):
    for instructions in dict.fromkeys(row.set for row in rows):
        print(f"\n### {instructions}\n")
        print("| view, limit | precision | scalar ms | vectors ms | ratio | Gsteps/s | of peak | queue |")
        print("| --- | --- | ---: | ---: | ---: | ---: | ---: | ---: |")
        for row in rows:
            if row.set != instructions:
                continue
            precision = "float" if row.precision == "single" else "double"
            print(f"| {row.name()} | {precision} | {cells(row)} |")


def print_by_view(title, rows, cell):
    """One line for each view and limit, one column for each instruction set and precision."""
    columns = list(dict.fromkeys((row.set, row.precision) for row in rows))
    print(f"\n### {title}\n")
    print("| view, limit |" + "".join(
        f" {instructions} {'float' if precision == 'single' else 'double'} |"
        for instructions, precision in columns))
    print("| --- |" + " ---: |" * len(columns))
    for name in dict.fromkeys(row.name() for row in rows):
        found = {(row.set, row.precision): cell(row) for row in rows if row.name() == name}
        print(f"| {name} |" + "".join(f" {found.get(column, '')} |" for column in columns))


def print_device_table(entries):
    """One line for each view of a run of opencl_bench."""
    found = {}
    for entry in entries:
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
    return sorted(found.items())


def write_plot(rows, path, most_threads):
    best = [row for row in rows if row.set == rows[0].set and row.view == "Mandelbrot"]
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


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        run = json.load(file)
    if "pool_ms" in run["benchmarks"][0]:
        print_device_table(run["benchmarks"])
        return
    every = [Row(entry) for entry in run["benchmarks"]]
    rows = [row for row in every if row.search is None]
    searches = [row for row in every if row.search is not None]
    print_by_view("Scalar time over vector time", rows, lambda row: f"{row.ratio:.1f}")
    print_by_view("What the search for orbits that repeat adds", searches,
                  lambda row: f"{100 * row.search:+.1f} %")
    print_tables(rows)
    if len(sys.argv) > 2:
        write_plot(rows, sys.argv[2], run["context"]["num_cpus"])


if __name__ == "__main__":
    main()

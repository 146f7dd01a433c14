#!/usr/bin/python3
"""Turns what the benchmarks measured into the table, the plot and the rows of docs/performance.md,
and a run of opencl_bench into the table of docs/opencl.md.

    bench/report.py RUN... [ROWS.tsv] [PLOT.svg]

RUN is a run of tessary_bench or opencl_bench (--benchmark_out_format=json), or what value_bench or
`render_speed.py --smooth` printed. Its rows go into ROWS.tsv: a row of the same processor that
measured the same is replaced, every other one stays, so that a run may be made in parts. What a run
does not say of the processor and the day is taken to be here and today.

Prints a Markdown table (each view at its own limit: the frame with the processor's best instruction
set, the ratios, and what the search for repeats adds) and writes the plot (frame time of the
Mandelbrot start view against the iteration limit and against the number of threads), both of all
rows of ROWS.tsv with this processor, else of the runs alone. A run that was cut short, or that
measured some rows only, gives what it has.
"""
import csv
import datetime
import json
import os
import re
import sys

import processor
import report_plot

KEY = ["processor", "what", "set", "view", "limit", "threads", "options", "precision"]
FIGURES = ["scalar_ms", "vectors_ms", "ratio", "Gsteps_per_s", "peak_percent", "queue_percent",
           "search_percent", "bands_ms", "of_bands", "of_bands_cpu"]
COLUMNS = [*KEY, "date", *FIGURES]

SETS = {"AVX3": "AVX-512"}  # what the vector library calls otherwise than the world does
PRECISIONS = {"single": "float", "double": "double"}
PLOTTED = "Mandelbrot"


def milliseconds(value):
    return "" if value is None else f"{value:.1f}" if value < 100 else f"{value:.0f}"


def number(value, style, factor=1):
    return "" if value is None else format(factor * value, style)


def row_of(entry, context):
    """The row of one benchmark, whose name is VIEW/LIMIT/PRECISION/SET and options."""
    view, limit, precision, target, *options = entry["name"].split("/iterations:")[0].split("/")
    search = entry.get("search")
    threads = [o.removeprefix("threads") for o in options if o.startswith("threads")]
    vectors = None if search is not None else entry.get("vectors_ms", entry.get("real_time"))
    return {
        "what": "frame", "set": SETS.get(target, target), "view": view, "limit": limit,
        "threads": threads[0] if threads else str(context.get("num_cpus", 1)),
        "options": " ".join(o for o in options if o != "search" and not o.startswith("threads")),
        "precision": PRECISIONS[precision],
        "scalar_ms": milliseconds(entry.get("scalar_ms")), "vectors_ms": milliseconds(vectors),
        "ratio": number(entry.get("ratio"), ".1f"),
        "Gsteps_per_s": number(entry.get("Gsteps/s"), ".2f"),
        "peak_percent": number(entry.get("peak"), ".0f", 100),
        "queue_percent": number(entry.get("queue"), ".0f", 100),
        "search_percent": number(search, "+.1f", 100)}


def rows_of_run(run):
    """The rows of a run of tessary_bench."""
    context = run.get("context", {})
    told = {"processor": context.get("processor"), "date": context.get("date", "")[:10]}
    return [{**row_of(entry, context), **{name: text for name, text in told.items() if text}}
            for entry in run.get("benchmarks", [])
            if not entry.get("error_occurred") and entry.get("run_type") != "aggregate"]


def rows_of_values(text):
    """The rows that value_bench printed: VIEW, then milliseconds and two ratios of each precision."""
    for line in text.splitlines():
        view, *figures = line.split() or [""]
        if len(figures) != 6 or not all(re.fullmatch(r"\d+\.\d+", f) for f in figures):
            continue
        for precision, (bands, same, raised) in zip(("float", "double"), (figures[:3], figures[3:])):
            for what, ratio in (("values", same), ("smooth values", raised)):
                yield {"what": what, "view": view, "threads": "1", "precision": precision,
                       "bands_ms": bands, "of_bands": ratio}


def rows_of_pictures(text):
    """The rows that render_speed.py --smooth printed: pairs of columns, by the clock and of the
    processors, headed PRECISION HOW and CPU."""
    threads, heads = "", []
    for line in text.splitlines():
        if match := re.match(r"(\d+) threads", line):
            threads = match[1]
        view, *cells = [cell.strip() for cell in line.strip("| ").split("|")]
        if view == "view":
            heads = [head.split() for head in cells[::2]]
        elif heads and not view.startswith("-"):
            for (precision, how), clock, cpu in zip(heads, cells[::2], cells[1::2]):
                yield {"what": f"smooth {how}", "view": view, "threads": threads,
                       "precision": PRECISIONS[precision], "of_bands": clock, "of_bands_cpu": cpu}


def merged(rows):
    """One row for each place; of two with the same the later one's figures, where it has some."""
    found = {}
    for row in rows:
        place = found.setdefault(tuple(row[name] for name in KEY), dict.fromkeys(COLUMNS, ""))
        place.update({name: text for name, text in row.items() if text})
    return list(found.values())


def read_rows(path):
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8", newline="") as file:
        table = csv.DictReader(file, delimiter="\t")
        if table.fieldnames != COLUMNS:
            sys.exit(f"report.py: {path} has other columns; nothing was written")
        return list(table)


def write_rows(rows, path):
    with open(path, "w", encoding="utf-8", newline="") as file:
        table = csv.DictWriter(file, COLUMNS, delimiter="\t", lineterminator="\n")
        table.writeheader()
        table.writerows(rows)


def print_table(rows):
    """One line for each view at its own limit, which is measured first; one column for each
    instruction set and precision."""
    plain = [row for row in rows if row["what"] == "frame" and not row["options"]]
    plain = [row for row in plain if row["threads"] == max((r["threads"] for r in plain), key=int)]
    columns = list(dict.fromkeys((row["set"], row["precision"]) for row in plain))
    times = [column for column in columns if column[0] == columns[0][0]]
    own = {}
    for row in plain:
        own.setdefault(row["view"], row["limit"])
    heads = [f"{column[1]} ms" for column in times] + [" ".join(column) for column in columns]
    print("| view, limit |" + "".join(f" {head} |" for head in heads) + " search |")
    print("| --- |" + " ---: |" * (len(heads) + 1))
    for view, limit in own.items():
        found = {(row["set"], row["precision"]): row for row in plain
                 if (row["view"], row["limit"]) == (view, limit)}
        cells = [found[c]["vectors_ms"] if c in found else "" for c in times]
        cells += [found[c]["ratio"] if c in found else "" for c in columns]
        searches = [row["search_percent"] for row in found.values() if row["search_percent"]]
        cells.append(searches[0] + " %" if searches else "")
        print(f"| {view} {int(limit):,} | " + " | ".join(cells) + " |")


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


def plot(rows, path):
    """Of the first instruction set that there is."""
    frames = [row for row in rows if row["view"] == PLOTTED and not row["options"]
              and row["scalar_ms"] and row["vectors_ms"]]
    if not frames:
        sys.exit(f"report.py: there is no row of the {PLOTTED} start view, so there is no plot")
    best = [row for row in frames if row["set"] == frames[0]["set"]]
    report_plot.write_plot(best, path, int(best[0]["limit"]))


def whole_entries(text):
    """The run as the benchmark wrote it; of a file that breaks off, the whole entries. Else None."""
    end = len(text)
    for ending in ("", "]}"):
        while end > 0:
            try:
                return json.loads(text[:end] + ending)
            except json.JSONDecodeError:
                if not ending:
                    break
                end = text.rfind("}", 0, end - 1) + 1
    return None


def rows_in(path):
    """The rows of a file of any kind; none of a device's, which are printed at once."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    run = whole_entries(text) if text.startswith("{") else None
    if run and any("pool_ms" in entry for entry in run.get("benchmarks", [])):
        print_device_table(run["benchmarks"])
        return []
    rows = rows_of_run(run) if run else [*rows_of_values(text), *rows_of_pictures(text)]
    if not rows:
        sys.exit(f"report.py: {path} holds no measured row")
    here = {"processor": processor.this(), "date": datetime.date.today().isoformat()}
    return [{**dict.fromkeys(COLUMNS, ""), **here, **row} for row in rows]


def named(arguments, ending):
    return next((name for name in arguments if name.endswith(ending)), None)


def main(arguments):
    table, drawing = named(arguments, ".tsv"), named(arguments, ".svg")
    runs = [name for name in arguments if name not in (table, drawing)]
    if not runs:
        sys.exit(__doc__)
    measured = [row for path in runs for row in rows_in(path)]
    if not measured:
        return
    rows = merged([*(read_rows(table) if table else []), *measured])
    if table:
        write_rows(rows, table)
    ours = [row for row in rows if row["processor"] == measured[-1]["processor"]]
    if any(row["what"] == "frame" for row in measured):
        print_table(ours)
    if drawing:
        plot(ours, drawing)


if __name__ == "__main__":
    main(sys.argv[1:])

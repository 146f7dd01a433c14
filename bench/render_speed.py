#!/usr/bin/python3
"""What tessary-render costs beside the bare tile renderer: the figures of docs/performance.md.

    bench/render_speed.py [BUILD] [--poster | --smooth]

BUILD is the build folder (build/release). Every figure is the best of some runs, taken by turns in
one row, because whatever else the machine does can only slow a run down. Beside pictures a second
stand those a second of processor time, which hardly depend on what else the machine does. With
--poster it also makes the large posters, which takes minutes; with --smooth it only compares smooth
colours with bands, for every built-in view.
"""
import os
import re
import struct
import subprocess
import sys
import tempfile
import time

ARGUMENTS = [a for a in sys.argv[1:] if not a.startswith("--")]
BUILD = os.path.abspath(ARGUMENTS[0] if ARGUMENTS else "build/release")
RENDER = os.path.join(BUILD, "tessary-render")
BARE = os.path.join(BUILD, "bench", "bare_tiles")
VIEWS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "views.h")
WIDTH, HEIGHT, TURNS = 1920, 1080, 5
SMOOTH_COUNT, SMOOTH_TURNS = 4, 3  # trigonometric pictures take long
THREADS = len(os.sched_getaffinity(0))


def record(x, y, limit, c=(0, 0), bound=4.0, rule=0):
    """An entry without a name, but for its identity."""
    return (struct.pack("=6d", x[1], x[0], y[1], y[0], *c)
            + struct.pack("=id3ix", limit, bound, 0, rule, 1))


def catalogue(entry, count=1):
    """The entry so many times, each time a stranger: a film cuts from one to the next."""
    return b"".join(entry + struct.pack("=i", n) for n in range(count))


def around(x, y, width):
    half = width / 2
    return (x - half, x + half), (y - half * 9 / 16, y + half * 9 / 16)


START = record((-8 / 3, 8 / 3), (-1.5, 1.5), 768)
BUSY = record(*around(-0.743643887037151, 0.131825904205330, 1e-4), 4096)


def run(*command):
    """(seconds, seconds of processor time) of a command."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]} ended with {process.returncode}")
    return time.perf_counter() - start, usage.ru_utime + usage.ru_stime


def seconds(*command):
    return run(*command)[0]


def beside_the_bare_renderer(name, entry, count):
    """Pictures a second, and a second of processor time: bare, as files, and as PPM into a pipe."""
    with open("many.frac", "wb") as file:
        file.write(catalogue(entry, count))
    size = f"{WIDTH}x{HEIGHT}"
    commands = ((BARE, "many.frac", str(WIDTH), str(HEIGHT), str(THREADS)),
                (RENDER, "many.frac", "--size", size, "-o", "out/", "--quiet"),
                ("bash", "-c", f"'{RENDER}' many.frac --film --glide linear --size {size} -o - "
                 "--quiet | cat >/dev/null"))
    turns = [[run(*command) for command in commands] for _ in range(TURNS)]
    wall, cpu = ([count / min(turn[which][clock] for turn in turns) for which in range(3)]
                 for clock in (0, 1))
    cells = [f"{rate[0]:.1f} | {rate[1]:.1f} | {rate[1] / rate[0]:.0%} | {rate[2]:.1f} "
             f"| {rate[2] / rate[0]:.0%}" for rate in (wall, cpu)]
    print(f"| {name} | {' | '.join(cells)} |", flush=True)


def growth():
    """Seconds from 1 to 256 megapixels."""
    with open("one.frac", "wb") as file:
        file.write(catalogue(START))
    for side in (1024, 2048, 4096, 8192, 16384):
        best = min(seconds(RENDER, "one.frac", "--size", f"{side}x{side}", "-o", "out/p.png")
                   for _ in range(3 if side < 8192 else 2))
        print(f"| {side}x{side} | {best:.3f} | {side * side / best / 1e6:.0f} |", flush=True)


def thumbnail():
    best = sorted(seconds(RENDER, "one.frac", "--size", "256x256", "-o", "out/t.png") for _ in range(21))
    print(f"\n256x256 from start to end: best {best[0] * 1e3:.1f} ms, median {best[10] * 1e3:.1f} ms")


def poster(*options):
    """Time and most memory of one large poster."""
    process = subprocess.Popen([RENDER, "one.frac", "--size", "32768x32768", "-o", "out/p.png", *options])
    start = time.perf_counter()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    size = os.path.getsize("out/p.png") / 1e6
    print(f"| 32768x32768 {' '.join(options)} | {time.perf_counter() - start:.0f} s "
          f"| {usage.ru_maxrss / 1024:.0f} MiB | {size:.0f} MB |", flush=True)


def built_in_views():
    """(name, entry) of each view of bench/views.h that a menu offers."""
    with open(VIEWS, encoding="utf-8") as file:
        lines = re.findall(r'\{"(\w+)", ([^}]*)\}', file.read().split("moreViews")[0])
    for name, numbers in lines:
        rule, left, right, low, high, *c, limit, bound = map(float, numbers.split(","))
        yield name, record((left, right), (low, high), int(limit), c, bound, int(rule))


def pictures(precision, colour, how):
    """The command that makes the pictures of many.frac as PNG files or as PPM into a pipe."""
    options = ["many.frac", "--size", f"{WIDTH}x{HEIGHT}", "--quiet", "--" + precision, "--colour",
               colour]
    if how == "PNG":
        return [RENDER, *options, "-o", "out/"]
    return ["bash", "-c", '"$@" | cat >/dev/null', "pipe", RENDER, *options, "--film", "--glide",
            "linear", "-o", "-"]


def smooth_beside_bands():
    """Time, and processor time, of smooth pictures over that of pictures in bands."""
    kinds = [(precision, how) for precision in ("single", "double") for how in ("PNG", "PPM")]
    head = [f"{precision} {how} | CPU" for precision, how in kinds]
    print(f"{THREADS} threads, {WIDTH}x{HEIGHT}\n\n| view | {' | '.join(head)} |\n|---|" + "---:|" * 8)
    for name, entry in built_in_views():
        with open("many.frac", "wb") as file:
            file.write(catalogue(entry, SMOOTH_COUNT))
        cells = []
        for kind in kinds:
            turns = [[run(*pictures(kind[0], colour, kind[1])) for colour in ("bands", "smooth")]
                     for _ in range(SMOOTH_TURNS)]
            bands, smooth = ([min(turn[which][clock] for turn in turns) for clock in (0, 1)]
                             for which in (0, 1))
            cells += [f"{smooth[clock] / bands[clock]:.2f}" for clock in (0, 1)]
        print(f"| {name} | {' | '.join(cells)} |", flush=True)


def main():
    # Where pictures cost memory and no disk.
    folder = tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
    os.chdir(folder.name)
    os.mkdir("out")
    if "--smooth" in sys.argv:
        smooth_beside_bands()
        os.chdir("/")
        return folder.cleanup()
    print(f"{THREADS} threads\n\n| {WIDTH}x{HEIGHT} | bare | PNG | share | PPM | share "
          "| bare, CPU | PNG, CPU | share | PPM, CPU | share |\n|---|" + "---:|" * 10)
    beside_the_bare_renderer("start view, limit 768", START, 60)
    beside_the_bare_renderer("busy deep view, limit 4,096", BUSY, 20)
    print("\n| size | seconds | million pixels a second |\n|---|---:|---:|")
    growth()
    thumbnail()
    if "--poster" in sys.argv:
        print("\n| poster | time | memory | file |\n|---|---:|---:|---:|")
        poster()
        poster("--supersample", "2")
    os.chdir("/")
    folder.cleanup()


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Makes every picture of the guide with the real programs.

    docs/guide/make_pictures.py [--build FOLDER] [--into FOLDER] [NAME...]

The window is driven by mouse and keys on a virtual screen, stills and films come from
tessary-render. With names only those pictures are made. The pictures of gallery/ have 256 colours
to be small and carry the entry they show, so tessary-render makes them again, of any size and in
full colours. Needs what tests/e2e/harness.py needs.
"""

import argparse
import io
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
SHARE = os.path.join(ROOT, "share")
VIEWS = os.path.join(ROOT, "docs", "gallery", "views.json")
GRADIENTS = ["tide", "ember", "meadow", "dusk", "glacier", "grey", "beacon", "harbour"]

AUTO = ["--range", "auto", "--scale", "log"]
# The formulas in the order of views.json, each with the colours that suit it.
FORMULAS = {
    "mandelbrot": [*AUTO, "--gradient", "tide"],
    "julia": [*AUTO, "--gradient", "dusk"],
    "sine": ["--scale", "log", "--period", "60", "--gradient", "tide"],
    "cosine": [*AUTO, "--gradient", "glacier"],
    "hyperbolic-sine": [*AUTO, "--gradient", "meadow"],
    "hyperbolic-cosine": ["--scale", "log", "--period", "80", "--gradient", "ember"],
    "barnsley-1": [*AUTO, "--gradient", "meadow"],
    "barnsley-2": [*AUTO, "--gradient", "harbour"],
    "barnsley-3": [*AUTO, "--gradient", "ember"],
    "barnsley-sierpinski": [*AUTO, "--gradient", "dusk"],
    "dragon": [*AUTO, "--gradient", "ember"],
    "chebyshev-t5": ["--period", "8", "--gradient", "ember"],
    "hermite-h4": ["--period", "1.5", "--gradient", "dusk"],
    "legendre-p3": ["--scale", "sqrt", "--period", "10", "--gradient", "harbour"],
}
# The entries of tour.frac, in its order.
PRESETS = ["mandelbrot", "julia", "dendrite", "douadys-rabbit", "san-marco", "siegel-disk", "sine",
           "cosine", "hyperbolic-sine", "hyperbolic-cosine", "barnsley-1", "barnsley-2",
           "barnsley-3", "barnsley-sierpinski", "dragon", "chebyshev-t5", "hermite-h4",
           "legendre-p3"]

build = ""


# ---- pictures without a window

def render(*arguments, source=VIEWS):
    """What tessary-render writes to standard output."""
    command = [os.path.join(build, "tessary-render"), source, "--quiet", "-o", "-", *arguments]
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout


def image(data):
    from PIL import Image
    return Image.open(io.BytesIO(data)).convert("RGB")


def chunks(png):
    """(name, all its bytes) of each chunk of a PNG."""
    place = 8
    while place < len(png):
        length, name = struct.unpack_from(">I4s", png, place)
        yield name, png[place:place + 12 + length]
        place += 12 + length


def packed(picture):
    """The bytes of a PNG with 256 colours."""
    data = io.BytesIO()
    picture.quantize(256, dither=0).save(data, "PNG", optimize=True)
    return data.getvalue()


def with_texts_of(png, original):
    """The PNG with the text chunks of the original, which say what it shows."""
    texts = b"".join(whole for name, whole in chunks(original) if name in (b"tEXt", b"iTXt", b"zTXt"))
    head = 8 + len(next(chunks(png))[1])
    return png[:head] + texts + png[head:]


def entry(number, size, *options, source=VIEWS):
    """A small PNG of an entry that carries it."""
    original = render("--entry", str(number), "--size", size, "--supersample", "3", "--colour",
                      "smooth", "--dither", "none", *options, source=source)
    return with_texts_of(packed(image(original)), original)


def beside(pictures, gap=8, columns=None):
    """Pictures of one size in rows, on white."""
    from PIL import Image
    columns = columns or len(pictures)
    width, height = pictures[0].size
    rows = -(-len(pictures) // columns)
    whole = Image.new("RGB", (columns * (width + gap) - gap, rows * (height + gap) - gap), "white")
    for place, one in enumerate(pictures):
        whole.paste(one, (place % columns * (width + gap), place // columns * (height + gap)))
    return whole


def jpeg(picture, quality=82):
    data = io.BytesIO()
    picture.save(data, "JPEG", quality=quality, optimize=True, progressive=True)
    return data.getvalue()


def swatch(name):
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "swatch.png")
        subprocess.run([os.path.join(build, "tessary-render"), "--swatch", path, "--gradient", name,
                        "--size", "480x32", "--quiet"], check=True)
        return image(open(path, "rb").read())


def gallery():
    """{path: function that makes it} of the pictures that carry an entry."""
    made = {}
    for number, (formula, colours) in enumerate(FORMULAS.items(), 1):
        made[f"gallery/{formula}.png"] = lambda n=number, c=colours: entry(
            n, "480x360", "--fit", "cover", *c)
    for number, name in enumerate(PRESETS, 1):
        made[f"gallery/preset-{name}.png"] = lambda n=number: entry(
            n, "240x180", *AUTO, "--gradient", "tide", source=os.path.join(SHARE, "tour.json"))
    for name in GRADIENTS:
        made[f"gallery/gradient-{name}.png"] = lambda g=name: entry(
            1, "240x180", "--fit", "cover", *AUTO, "--gradient", g)
    return made


def precision():
    """The same deep view in single and in double precision."""
    deep = os.path.join(SHARE, "deep-zoom.json")
    return jpeg(beside([image(render("--entry", "8", "--size", "400x300", which, source=deep))
                        for which in ("--single", "--double")]))


def deep():
    """The flight of the page about deep views, where it ends."""
    with open(os.path.join(HERE, "deep.md"), encoding="utf-8") as file:
        flight = file.read().split("```json\n")[1].split("```")[0]
    with tempfile.TemporaryDirectory() as folder:
        source = os.path.join(folder, "flight.json")
        with open(source, "w", encoding="utf-8") as file:
            file.write(flight)
        return jpeg(image(render("--entry", "2", "--size", "640x400", "--supersample", "2", "--colour",
                                 "smooth", "--period", "400", source=source)))


def colours():
    """The same view in the random colours, the RGB cycle and a gradient."""
    ways = (["--palette", "random"], ["--palette", "rgb"],
            ["--colour", "smooth", *AUTO, "--gradient", "dusk"])
    return jpeg(beside([image(render("--entry", "1", "--size", "320x240", "--fit", "cover", *way))
                        for way in ways]))


def samples():
    """A piece of a picture, three times as large, with 1 and with 16 samples a pixel."""
    pieces = [image(render("--entry", "2", "--size", "480x360", "--fit", "cover", "--supersample",
                           count, "--colour", "smooth", *AUTO)).crop((60, 30, 193, 130))
              for count in ("1", "4")]
    return jpeg(beside([piece.resize((399, 300), 0) for piece in pieces]))


def fits():
    """A square view in a wide picture, in the three ways."""
    return jpeg(beside([image(render("--entry", "11", "--size", "320x180", "--fit", way, "--colour",
                                     "smooth", *AUTO, "--gradient", "ember"))
                        for way in ("contain", "cover", "stretch")]))


def film():
    """Frames of a flight, evenly apart."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([os.path.join(build, "tessary-render"), os.path.join(SHARE, "deep-zoom.json"),
                        "--entry", "2-6", "--film", "--size", "240x180", "--seconds", "4", "--fps",
                        "2", "--hold", "0", "--fit", "cover", "--supersample", "3", "--colour",
                        "smooth", *AUTO, "--gradient", "tide", "--quiet", "-o", folder + "/"],
                       check=True)
        frames = sorted(os.listdir(folder))
        shown = [frames[round(n * (len(frames) - 1) / 7)] for n in range(8)]
        return jpeg(beside([image(open(os.path.join(folder, name), "rb").read()) for name in shown],
                           gap=4, columns=4))


def poster():
    """Three bands of one picture, apart."""
    bands = [image(render("--entry", "2", "--size", "640x360", "--fit", "cover", "--shard", f"{k}/3",
                          "--supersample", "2", "--colour", "smooth", *AUTO, "--gradient", "dusk"))
             for k in (1, 2, 3)]
    return jpeg(beside(bands, gap=14, columns=1))


STILLS = {
    "pictures/precision.jpg": precision,
    "pictures/deep.jpg": deep,
    "pictures/colours.jpg": colours,
    "pictures/samples.jpg": samples,
    "pictures/fits.jpg": fits,
    "pictures/film.jpg": film,
    "pictures/poster.jpg": poster,
}


# ---- pictures of the window

def shot(program, whole_screen=False, width=880):
    """What the window shows, or the screen with a file panel over it."""
    from PIL import Image
    pixels = program.screen.screenshot() if whole_screen else program.screenshot()
    picture = Image.fromarray(pixels)
    return jpeg(picture.resize((width, round(picture.height * width / picture.width)),
                               Image.LANCZOS), 80)


BAR = ["Escape"] * 4  # closes what is open and puts the highlight on the first item of the bar
SEAHORSES = (325, 470, 405, 534)  # a drag over the valley in the first view


def settle(program):
    program.wait_until_quiet(1.5)


def zoomed(program):
    program.wait_for_frames(1)
    settle(program)
    program.drag(*SEAHORSES)
    program.wait_for_frames(20)
    settle(program)


def window_menus(program):
    zoomed(program)
    program.key(*BAR, "Return", "Return", "Down", "Return")
    settle(program)
    return shot(program)


def window_start(program):
    program.wait_for_frames(1)
    settle(program)
    return shot(program)


def window_drag(program):
    program.wait_for_frames(1)
    settle(program)
    left, top, right, bottom = SEAHORSES
    program.press(left, top)
    for share in (0.3, 0.7, 1.0):
        program.move(left + (right - left) * share, top + (bottom - top) * share)
    settle(program)
    return shot(program)


def window_zoomed(program):
    zoomed(program)
    return shot(program)


def window_information(program):
    zoomed(program)
    program.key(*BAR, "Return", *["Down"] * 5, "Return")
    settle(program)
    return shot(program)


def window_palette(program):
    program.wait_for_frames(1)
    settle(program)
    program.key(*BAR, "Return", "Return", "Down", "Return", "Return")  # the default Julia set
    settle(program)
    program.key(*BAR, "Right", "Return", "Down", "Return")
    settle(program)
    program.key(*BAR, "Right", "Return")
    settle(program)
    return shot(program)


def window_devices(program):
    program.wait_for_frames(1)
    settle(program)
    program.key(*BAR, "Right", "Right", "Right", "Return", "Down", "Down", "Return")
    settle(program)
    return shot(program)


def window_load(program):
    program.wait_for_frames(1)
    settle(program)
    program.key(*BAR, "Return", *["Down"] * 6, "Return")
    program.screen.tool("xdotool", "search", "--sync", "--onlyvisible", "--name", "^Load fractals$")
    time.sleep(3)  # it fills its list after it is shown, and is never quiet
    return shot(program, whole_screen=True)


WINDOWS = {
    "pictures/window.jpg": window_start,
    "pictures/menus.jpg": window_menus,
    "pictures/drag.jpg": window_drag,
    "pictures/zoomed.jpg": window_zoomed,
    "pictures/information.jpg": window_information,
    "pictures/palette.jpg": window_palette,
    "pictures/devices.jpg": window_devices,
    "pictures/load.jpg": window_load,
}


def in_a_window(hands):
    """What `hands` sees of a program of its own on a screen of its own."""
    import harness
    with harness.Screen() as screen:
        folder = os.path.join(screen.home, "Fractals")
        shutil.copytree(SHARE, folder)
        program = harness.Program(screen, ["--cpu2", "--double"], cwd=folder)
        try:
            program.wait_for_window()
            return hands(program)
        finally:
            program.stop()


def all_pictures():
    """{path below this folder: function that answers its bytes}"""
    windows = {path: lambda hands=hands: in_a_window(hands) for path, hands in WINDOWS.items()}
    return {**gallery(), **STILLS, **windows}


def main():
    global build
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", default=os.path.join(ROOT, "build", "release"), metavar="FOLDER")
    parser.add_argument("--into", default=HERE, metavar="FOLDER")
    parser.add_argument("names", nargs="*", metavar="NAME")
    options = parser.parse_args()
    build = os.path.abspath(options.build)
    os.environ.update(TESSARY=os.path.join(build, "tessary"), TESSARY_BUILD=build,
                      TESSARY_SOURCE=ROOT)
    sys.path.insert(0, os.path.join(ROOT, "tests", "e2e"))
    sys.dont_write_bytecode = True
    for path, make in all_pictures().items():
        if options.names and os.path.splitext(os.path.basename(path))[0] not in options.names:
            continue
        data = make()
        target = os.path.join(options.into, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "wb") as file:
            file.write(data)
        print(f"{path}: {len(data) // 1024} KiB")


if __name__ == "__main__":
    main()

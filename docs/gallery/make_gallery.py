#!/usr/bin/env python3
"""Makes the gallery: every formula in every built-in gradient.

    docs/gallery/make_gallery.py [--render PROGRAM] [--size PIXELS] FOLDER

renders each view of views.json, one for each formula, with each gradient into FOLDER and writes
index.html beside the pictures, which shows them all, and sheet.jpg, all of them small in one.
Needs Pillow for the sheet. The functions serve other pages, too.
"""

import argparse
import html
import io
import json
import os
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
VIEWS = os.path.join(HERE, "views.json")
GRADIENTS = ["tide", "ember", "meadow", "dusk", "glacier", "grey", "beacon", "harbour"]
COLOURS = ["--colour", "smooth", "--range", "auto", "--scale", "log"]


def views(catalogue=VIEWS):
    """[(name, formula)] of a catalogue as a JSON document."""
    with open(catalogue, encoding="utf-8") as file:
        return [(entry["name"], entry["formula"]) for entry in json.load(file)["entries"]]


def picture(program, entry, options, size, catalogue=VIEWS):
    """The bytes of a PNG: entry (from 1) of a catalogue, `size` pixels square."""
    command = [program, catalogue, "--entry", str(entry), "--size", f"{size}x{size}", "--fit", "cover",
               "--supersample", "2", "--quiet", "-o", "-", *options]
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout


def picture_name(formula, gradient):
    return f"{formula}-{gradient}.png"


def make_pictures(program, folder, size, names=GRADIENTS, catalogue=VIEWS):
    """Every view in every gradient, each a file of its own in the folder."""
    for number, (_, formula) in enumerate(views(catalogue), 1):
        for gradient in names:
            data = picture(program, number, [*COLOURS, "--gradient", gradient], size, catalogue)
            with open(os.path.join(folder, picture_name(formula, gradient)), "wb") as file:
                file.write(data)


def page(size, names=GRADIENTS, catalogue=VIEWS):
    """The text of a page that shows such pictures: a row for each view, a column for each gradient."""
    rows = []
    for name, formula in views(catalogue):
        cells = "".join(f'<td><a href="{picture_name(formula, g)}"><img loading="lazy" width="{size}" '
                        f'height="{size}" src="{picture_name(formula, g)}" '
                        f'alt="{html.escape(name)}, {g}"></a></td>' for g in names)
        rows.append(f"<tr><th>{html.escape(name)}<br><small>{formula}</small></th>{cells}</tr>")
    head = "".join(f"<th>{g}</th>" for g in names)
    return ("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
            "<title>Every formula in every gradient</title><style>body{background:#16181c;color:#ddd;"
            "font-family:sans-serif}td{padding:2px}img{display:block}</style></head>\n"
            f"<body><h1>Every formula in every gradient</h1>\n<table><tr><th></th>{head}</tr>\n"
            + "\n".join(rows) + "\n</table></body></html>\n")


def sheet(folder, side, names=GRADIENTS, catalogue=VIEWS):
    """The bytes of a JPEG: those pictures `side` pixels square, laid out as on the page."""
    from PIL import Image
    found = views(catalogue)
    whole = Image.new("RGB", (side * len(names), side * len(found)))
    for y, (_, formula) in enumerate(found):
        for x, gradient in enumerate(names):
            with Image.open(os.path.join(folder, picture_name(formula, gradient))) as one:
                small = one.convert("RGB").resize((side, side), Image.LANCZOS)
            whole.paste(small, (x * side, y * side))
    data = io.BytesIO()
    whole.save(data, "JPEG", quality=85, optimize=True)
    return data.getvalue()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--render", default="tessary-render", metavar="PROGRAM")
    parser.add_argument("--size", type=int, default=400, metavar="PIXELS")
    parser.add_argument("--thumbnails", type=int, default=128, metavar="PIXELS")
    parser.add_argument("folder", metavar="FOLDER")
    options = parser.parse_args()
    os.makedirs(options.folder, exist_ok=True)
    make_pictures(options.render, options.folder, options.size)
    with open(os.path.join(options.folder, "index.html"), "w", encoding="utf-8") as file:
        file.write(page(options.size))
    with open(os.path.join(options.folder, "sheet.jpg"), "wb") as file:
        file.write(sheet(options.folder, options.thumbnails))


if __name__ == "__main__":
    main()

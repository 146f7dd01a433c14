#!/usr/bin/python3
"""Makes the pictures of docs/glutmenu.md: drives the toolkit's demo on a virtual screen.

    docs/glutmenu/make_pictures.py DEMO [FOLDER]

DEMO is the built program glutmenu_demo. Needs what the tests need: Xvfb, openbox, xdotool, ImageMagick,
NumPy and Pillow.
"""

import os
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, "..", "..", "tests", folder) for folder in ("e2e", "glutmenu")]

from PIL import Image  # noqa: E402

import harness  # noqa: E402
from test_demo import Demo  # noqa: E402

SIZE = "640x480+60+60"

# How each part is reached from the bar, and the piece of the window that shows it: right, bottom.
PARTS = {
    "bar": ([], (320, 160)),
    "drop-down": (["Return", "Down"], (320, 160)),
    "submenu": (["Return", "Down", "Down", "Right", "Down", "Down", "Right"], (320, 230)),
    "single-field": (["Right", "Right", "Return", "Return"], None),
    "message": (["Right", "Right", "Return", "Down", "Return"], (400, 280)),
    "form": (["Right", "Right", "Return", "Up", "Return", "Down", "Down"], (320, 260)),
}
# The single field stands in the middle of the window.
MIDDLE = (180, 190, 500, 350)


def picture(program, keys, corner):
    """The piece of the window after these keys."""
    with harness.Screen() as screen:
        demo = Demo(screen, ["-geometry", SIZE], program=program)
        try:
            demo.wait_for_window()
            for key in keys:
                demo.key(key)
            time.sleep(2.0)  # a blinking cursor never comes to rest
            box = (0, 0, *corner) if corner else MIDDLE
            return Image.fromarray(demo.screenshot()).crop(box)
        finally:
            demo.stop()


def main():
    program = os.path.abspath(sys.argv[1])
    folder = sys.argv[2] if len(sys.argv) > 2 else HERE
    for name, (keys, corner) in PARTS.items():
        path = os.path.join(folder, name + ".png")
        picture(program, keys, corner).quantize(64).save(path, optimize=True)
        print(path, os.path.getsize(path))


if __name__ == "__main__":
    main()

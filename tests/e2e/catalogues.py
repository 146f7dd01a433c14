"""Catalogues for the program to load, packed by themselves."""

import struct

JULIA, DRAGON = 1, 10
START = (-2.0, 2.0, -1.5, 1.5)
SQUARE = (-1.5, 1.5, -1.5, 1.5)


def record(name, formula, view, c=(0.0, 0.0), iterations=768, bound=4.0, palette=0, identity=0):
    """The bytes of one entry; view = (x_min, x_max, y_min, y_max)."""
    x_min, x_max, y_min, y_max = view
    text = name.encode() + b"\0"
    return (
        struct.pack("=6d", x_max, x_min, y_max, y_min, *c)
        + struct.pack("=id3i", iterations, bound, palette, formula, len(text))
        + text
        + struct.pack("=i", identity)
    )

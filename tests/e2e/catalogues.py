"""Catalogues for the program to load, packed by themselves."""

import struct

JULIA, HYPERBOLIC_COSINE, DRAGON = 1, 5, 10
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


def endless():
    """The bytes of an entry without an end: the orbits of the hyperbolic cosine on this piece of the
    real axis stay and do not come to rest."""
    return record("", HYPERBOLIC_COSINE, (-3.3, -3.2, 0.0, 0.0), iterations=2000000000, bound=128.0,
                  identity=1)

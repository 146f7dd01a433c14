#!/usr/bin/env python3
"""Writes the three catalogues that come with Tessary into the folder given (default: beside this
file): tour.frac, deep-zoom.frac and benchmark.frac."""

import struct
import sys
from pathlib import Path

MANDELBROT, JULIA, SINE, COSINE, SINH, COSH = range(6)
BARNSLEY_1, BARNSLEY_2, BARNSLEY_3, SIERPINSKI, DRAGON, CHEBYSHEV, HERMITE, LEGENDRE = range(6, 14)
RANDOM, RGB_CYCLE = 0, 1


def record(name, formula, view, c=(0.0, 0.0), iterations=768, bound=4.0, palette=RANDOM, identity=0):
    """The bytes of one entry; view = (x_min, x_max, y_min, y_max)."""
    x_min, x_max, y_min, y_max = view
    text = name.encode() + b"\0"
    return (
        struct.pack("=6d", x_max, x_min, y_max, y_min, *c)
        + struct.pack("=id3i", iterations, bound, palette, formula, len(text))
        + text
        + struct.pack("=i", identity)
    )


def around(x, y, width):
    """A view of 5:4 around a point, as the window shows it without stretching on most screens."""
    return (x - width / 2, x + width / 2, y - width * 0.4, y + width * 0.4)


START = (-2.0, 2.0, -1.5, 1.5)
SQUARE = (-1.5, 1.5, -1.5, 1.5)

BUILT_IN = [
    dict(name="Mandelbrot", formula=MANDELBROT, view=START),
    dict(name="Julia", formula=JULIA, view=SQUARE, c=(-0.8, 0.156), palette=RGB_CYCLE),
    dict(name="Julia", formula=JULIA, view=SQUARE, c=(0.0, -1.0)),
    dict(name="Julia", formula=JULIA, view=SQUARE, c=(-0.123, 0.745)),
    dict(name="Julia", formula=JULIA, view=SQUARE, c=(0.0, -0.75), palette=RGB_CYCLE),
    dict(name="Julia", formula=JULIA, view=SQUARE, c=(-0.391, -0.587)),
    dict(name="Sine", formula=SINE, view=(-8.0, 8.0, -4.0, 4.0), iterations=256, bound=128.0),
    dict(name="Cosine", formula=COSINE, view=(-8.0, 8.0, -7.0, 7.0), iterations=256, bound=128.0),
    dict(name="Hyperbolic Sine", formula=SINH, view=(-5.0, 5.0, -4.5, 4.5), iterations=256,
         bound=128.0),
    dict(name="Hyperbolic Cosine", formula=COSH, view=(-8.0, 8.0, -5.5, 5.5), iterations=256,
         bound=128.0),
    dict(name=" First Barnsley Fractal", formula=BARNSLEY_1, view=(-4.0, 4.0, -3.0, 3.0),
         c=(0.6, 1.1), iterations=128),
    dict(name=" Second Barnsley Fractal", formula=BARNSLEY_2, view=(-4.0, 4.0, -3.0, 3.0),
         c=(0.6, 1.1), iterations=128),
    dict(name=" Third Barnsley Fractal", formula=BARNSLEY_3, view=(-2.2, 1.7, -1.1, 1.1),
         c=(1.0, 0.0), iterations=128),
    dict(name=" Barnsley-Sierpinski Fractal", formula=SIERPINSKI, view=(-2.0, 2.0, -1.2, 1.2),
         iterations=128),
    dict(name=" Dragon Fractal", formula=DRAGON, view=(-0.4, 1.4, -0.8, 0.8), c=(1.6493, 0.961),
         iterations=4096, palette=RGB_CYCLE),
    dict(name="Chebyshev T5", formula=CHEBYSHEV, view=START, bound=16.0),
    dict(name="Hermite H4", formula=HERMITE, view=START, bound=16.0),
    dict(name="Legendre P3", formula=LEGENDRE, view=START, bound=16.0),
]


def tour():
    """What the menu offers, in its order; every entry has an identity of its own, so that cycling
    jumps from one to the next."""
    return [record(**entry, identity=number) for number, entry in enumerate(BUILT_IN)]


def journey(name, formula, start, target, depth, factor, iterations, identity, **more):
    """Views from `start` down to `depth` around the target, each `factor` times narrower; they share
    an identity, so that cycling glides from one to the next. The iteration limit rises from the
    first to the second number of `iterations`."""
    widths = [start[1] - start[0]]
    while widths[-1] / factor > depth:
        widths.append(widths[-1] / factor)
    low, high = iterations
    for number, width in enumerate(widths):
        view = start if number == 0 else around(*target, width)
        limit = low + (high - low) * number // (len(widths) - 1)
        yield record(name, formula, view, iterations=limit, identity=identity, **more)


def deep_zoom():
    """Two journeys, past what single precision can tell apart."""
    seahorses = (-0.743643887037151, 0.131825904205330)
    # The fixed point of z*z + c around which the Julia set winds.
    spiral = (-0.5275031186435346, 0.07591217835228786)
    return [
        *journey("Seahorse valley", MANDELBROT, START, seahorses, 1e-11, 8.0, (768, 3000), 0),
        *journey("Spiral of Julia", JULIA, SQUARE, spiral, 1e-6, 4.0, (768, 768), 1,
                 c=(-0.8, 0.156), palette=RGB_CYCLE),
    ]


def benchmark():
    """Every formula once, the first two also where they cost most; the entry that the run stays on
    at its end is a cheap one."""
    heavy = [
        dict(name="Mandelbrot, mostly inside", formula=MANDELBROT, view=(-1.0, 0.2, -0.5, 0.5),
             iterations=1000),
        dict(name="Seahorse valley", formula=MANDELBROT, view=around(-0.7436, 0.1318, 0.01),
             iterations=2000),
    ]
    once = {}
    for entry in BUILT_IN:
        once.setdefault(entry["formula"], entry)
    cheap = once.pop(SIERPINSKI)
    entries = heavy + list(once.values()) + [cheap]
    return [record(**entry, identity=number) for number, entry in enumerate(entries)]


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    for name, entries in (("tour", tour()), ("deep-zoom", deep_zoom()), ("benchmark", benchmark())):
        (folder / f"{name}.frac").write_bytes(b"".join(entries))


if __name__ == "__main__":
    main()

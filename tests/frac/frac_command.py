"""Runs tessary-frac, and makes the files that its tests give to it."""

import json
import os
import struct
import sys

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from companion import BUILD, SOURCE, CompanionTest, record  # noqa: E402, F401

FRAC = os.path.join(BUILD, "tessary-frac")
SHARE = os.path.join(SOURCE, "share")

FORMULAS = ["mandelbrot", "julia", "sine", "cosine", "hyperbolic-sine", "hyperbolic-cosine",
            "barnsley-1", "barnsley-2", "barnsley-3", "barnsley-sierpinski", "dragon",
            "chebyshev-t5", "hermite-h4", "legendre-p3"]


def unpack(data):
    """The entries of a sound catalogue, as the arguments of record()."""
    entries = []
    while data:
        x_max, x_min, y_max, y_min, *c = struct.unpack_from("=6d", data)
        limit, bound, palette, formula, length = struct.unpack_from("=id3i", data, 48)
        name = data[72:72 + length - 1]
        identity, = struct.unpack_from("=i", data, 72 + length)
        entries.append(dict(name=name, x=(x_min, x_max), y=(y_min, y_max), c=tuple(c), limit=limit,
                            bound=bound, palette=palette, formula=formula, identity=identity))
        data = data[76 + length:]
    return entries


class FracTest(CompanionTest):
    PROGRAM = FRAC
    SECONDS = 60

    def run_frac(self, *arguments, **options):
        return self.run_command(*arguments, **options)

    def frac(self, *arguments, **options):
        return self.succeeds(*arguments, **options)

    def document(self, name):
        """The JSON document of a catalogue."""
        return json.loads(self.frac("export", name))

    def entries(self, name):
        return unpack(self.read(name))

"""Runs tessary-frac, and makes the files that its tests give to it."""

import json
import os
import shutil
import struct
import subprocess
import tempfile
import unittest

BUILD = os.environ.get("TESSARY_BUILD", os.path.join("build", "release"))
SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
FRAC = os.path.join(BUILD, "tessary-frac")
SHARE = os.path.join(SOURCE, "share")

FORMULAS = ["mandelbrot", "julia", "sine", "cosine", "hyperbolic-sine", "hyperbolic-cosine",
            "barnsley-1", "barnsley-2", "barnsley-3", "barnsley-sierpinski", "dragon",
            "chebyshev-t5", "hermite-h4", "legendre-p3"]


def record(name=b"name", x=(-2.0, 2.0), y=(-1.5, 1.5), c=(0.0, 0.0), limit=768, bound=4.0,
           palette=0, formula=0, identity=0, length=None):
    """The bytes of one entry, packed by themselves."""
    text = name + b"\0"
    return (struct.pack("=6d", x[1], x[0], y[1], y[0], *c)
            + struct.pack("=id3i", limit, bound, palette, formula,
                          len(text) if length is None else length)
            + text + struct.pack("=i", identity))


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


class FracTest(unittest.TestCase):
    """Each test has a folder of its own, in which tessary-frac runs."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-frac-")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def run_frac(self, *arguments, data=b"", **options):
        """The finished process; its standard streams are bytes."""
        options.setdefault("stdout", subprocess.PIPE)
        return subprocess.run([FRAC, *arguments], cwd=self.folder, input=data,
                              stderr=subprocess.PIPE, timeout=60, **options)

    def frac(self, *arguments, data=b""):
        """What a run prints that must go well and say nothing else."""
        done = self.run_frac(*arguments, data=data)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def fails(self, status, *arguments, data=b"", **options):
        """The one line that a run says which must fail with this status and print nothing."""
        done = self.run_frac(*arguments, data=data, **options)
        self.assertEqual((done.returncode, done.stdout or b""), (status, b""), arguments)
        return self.one_line(done)

    def one_line(self, done):
        self.assertRegex(done.stderr, rb"\Atessary-frac: [^\n]+\n\Z")
        return done.stderr.decode()[len("tessary-frac: "):-1]

    def document(self, name):
        """The JSON document of a catalogue."""
        return json.loads(self.frac("export", name))

    def entries(self, name):
        return unpack(self.read(name))

"""Runs tessary-render, makes what it reads, and looks at what it writes."""

import io
import json
import os
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib

import numpy as np
from PIL import Image

Image.MAX_IMAGE_PIXELS = None
BUILD = os.environ.get("TESSARY_BUILD", os.path.join("build", "release"))
SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
RENDER = os.path.join(BUILD, "tessary-render")


def record(name=b"name", x=(-2.0, 2.0), y=(-1.5, 1.5), c=(0.0, 0.0), limit=64, bound=4.0,
           palette=0, formula=0, identity=0):
    """The bytes of one entry, packed by themselves."""
    return (struct.pack("=6d", x[1], x[0], y[1], y[0], *c)
            + struct.pack("=id3i", limit, bound, palette, formula, len(name) + 1)
            + name + b"\0" + struct.pack("=i", identity))


# Orbits on the axis jump about for ever in no order: no renderer cuts them short.
ENDLESS = record(x=(-2.0, -1.6), y=(0.0, 0.0), limit=2**31 - 1)


def chunks(data):
    """[(type, content)] of a PNG, each with a sound checksum."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    found, at = [], 8
    while at < len(data):
        length, kind = struct.unpack_from(">I4s", data, at)
        content = data[at + 8:at + 8 + length]
        assert struct.unpack_from(">I", data, at + 8 + length)[0] == zlib.crc32(kind + content)
        found.append((kind, content))
        at += 12 + length
    return found


def texts(data):
    """{keyword: text} of a PNG's text chunks."""
    found = {}
    for kind, content in chunks(data):
        if kind == b"tEXt":
            keyword, text = content.split(b"\0", 1)
            found[keyword.decode()] = text.decode("latin-1")
        elif kind == b"iTXt":
            keyword, rest = content.split(b"\0", 1)
            found[keyword.decode()] = rest[2:].split(b"\0", 2)[2].decode()
    return found


def document(data):
    return json.loads(texts(data)["tessary"])


def pixels(data):
    """Height x width x 3 levels."""
    return np.asarray(Image.open(io.BytesIO(data)).convert("RGB"))


class RenderTest(unittest.TestCase):
    """Each test has a folder of its own, in which tessary-render runs."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tessary-render-test-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self):
        return sorted(os.listdir(self.folder))

    def run_render(self, *arguments, data=b"", prefix=(), **options):
        """The finished process; its standard streams are bytes."""
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        return subprocess.run([*prefix, RENDER, *map(str, arguments)], cwd=self.folder, input=data,
                              timeout=300, **options)

    def render(self, *arguments, data=b"", **options):
        """What a run prints that must go well and say nothing else."""
        done = self.run_render(*arguments, data=data, **options)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def still(self, *arguments, data=b""):
        """The one picture of a run, from standard output."""
        return self.render(*arguments, "-o", "-", data=data)

    def fails(self, status, *arguments, data=b"", **options):
        """The one line that a run says which must fail with this status and print nothing."""
        done = self.run_render(*arguments, data=data, **options)
        self.assertEqual((done.returncode, done.stdout or b""), (status, b""), arguments)
        self.assertRegex(done.stderr, rb"\Atessary-render: [^\n]+\n\Z")
        return done.stderr.decode()[len("tessary-render: "):-1]

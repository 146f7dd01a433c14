"""Runs tessary-render, makes what it reads, and looks at what it writes."""

import functools
import io
import json
import os
import shutil
import struct
import sys
import unittest
import zlib

import numpy as np
from PIL import Image

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import companion  # noqa: E402
from companion import BUILD, SOURCE, CompanionTest  # noqa: E402, F401

Image.MAX_IMAGE_PIXELS = None
RENDER = os.path.join(BUILD, "tessary-render")

# A sanitizer does not find its part of the memory on a processor that is stood in for.
with_other_processors = unittest.skipUnless(
    shutil.which("qemu-x86_64") and not os.environ.get("TESSARY_SANITIZE"),
    "needs qemu-user to stand in for processors, and no sanitizer")

# Of few iterations where none are named.
record = functools.partial(companion.record, limit=64)

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


class RenderTest(CompanionTest):
    PROGRAM = RENDER

    def names(self):
        return sorted(os.listdir(self.folder))

    def run_render(self, *arguments, **options):
        return self.run_command(*arguments, **options)

    def render(self, *arguments, **options):
        return self.succeeds(*arguments, **options)

    def still(self, *arguments, data=b""):
        """The one picture of a run, from standard output."""
        return self.render(*arguments, "-o", "-", data=data)

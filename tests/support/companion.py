"""What tests of the commands without a window share: the entries that they are given, and a folder in
which they run."""

import os
import shutil
import struct
import subprocess
import tempfile
import unittest

BUILD = os.environ.get("TESSARY_BUILD", os.path.join("build", "release"))
SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))


def record(name=b"name", x=(-2.0, 2.0), y=(-1.5, 1.5), c=(0.0, 0.0), limit=768, bound=4.0,
           palette=0, formula=0, identity=0, length=None):
    """The bytes of one entry, packed by themselves; `length` is what it says of its name instead of
    the truth."""
    text = name + b"\0"
    return (struct.pack("=6d", x[1], x[0], y[1], y[0], *c)
            + struct.pack("=id3i", limit, bound, palette, formula,
                          len(text) if length is None else length)
            + text + struct.pack("=i", identity))


class CompanionTest(unittest.TestCase):
    """Each test has a folder of its own, in which PROGRAM runs for SECONDS at the most."""

    PROGRAM = ""
    SECONDS = 300

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix=os.path.basename(self.PROGRAM) + "-test-")
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

    def run_command(self, *arguments, data=b"", prefix=(), **options):
        """The finished process; its standard streams are bytes, and arguments may be."""
        words = [word if isinstance(word, bytes) else str(word) for word in arguments]
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        return subprocess.run([*prefix, self.PROGRAM, *words], cwd=self.folder, input=data,
                              timeout=self.SECONDS, **options)

    def begins(self, *arguments, **options):
        """A run that goes on beside the test, and not beyond it, however the test ends."""
        process = subprocess.Popen([self.PROGRAM, *map(str, arguments)], cwd=self.folder, **options)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        with process:  # closes its streams and waits
            process.kill()

    def succeeds(self, *arguments, **options):
        """What a run prints that must go well and say nothing else."""
        done = self.run_command(*arguments, **options)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def fails(self, status, *arguments, **options):
        """The one line that a run says which must fail with this status and print nothing."""
        done = self.run_command(*arguments, **options)
        self.assertEqual((done.returncode, done.stdout or b""), (status, b""), arguments)
        return self.one_line(done)

    def one_line(self, done):
        name = os.path.basename(self.PROGRAM)
        self.assertRegex(done.stderr, rb"\A%s: [^\n]+\n\Z" % name.encode())
        return done.stderr.decode()[len(name) + 2:-1]

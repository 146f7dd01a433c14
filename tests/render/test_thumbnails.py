"""Thumbnails: small pictures of any file, in little time and memory, and nothing left on failure."""

import os
import resource
import unittest

from render_command import ENDLESS, RenderTest, chunks, pixels, record

MEMORY = 256 << 20
SANITIZED = os.environ.get("TESSARY_SANITIZE")


class Thumbnail(RenderTest):
    def thumbnail(self, side, data, **options):
        self.write("in.frac", data)
        self.render("--thumbnail", side, "-o", "out.png", "--", "in.frac", **options)
        self.assertEqual(self.names(), ["in.frac", "out.png"])
        return self.read("out.png")

    def refused(self, name):
        """The line that says why this file has no thumbnail, of which nothing is left."""
        before = self.names()
        line = self.fails(1, "--thumbnail", 64, "-o", "out.png", "--", name)
        self.assertEqual(self.names(), before)
        return line

    def test_it_is_the_first_entry_with_four_samples_a_pixel(self):
        first = record(x=(-2, 1), y=(-1.5, 1.5), limit=300)
        self.write("first.frac", first)
        self.render("first.frac", "--size", "96x96", "--supersample", 2, "-o", "whole.png")
        whole = pixels(self.read("whole.png"))
        os.remove(self.path("first.frac")), os.remove(self.path("whole.png"))
        picture = self.thumbnail(96, first + record(formula=5))
        self.assertTrue((pixels(picture) == whole).all())

    def test_its_longer_side_is_as_asked(self):
        for x, y, shape in (((-2, 2), (-1, 1), (32, 64, 3)), ((-1, 1), (-2, 2), (64, 32, 3)),
                            ((0, 1e9), (0, 1), (1, 64, 3)), ((0, 0), (0, 1), (64, 64, 3)),
                            ((0, float("nan")), (0, 1), (64, 64, 3)),
                            ((-1e308, 1e308), (0, 1), (64, 64, 3))):
            with self.subTest(x=x, y=y):
                self.assertEqual(pixels(self.thumbnail(64, record(x=x, y=y))).shape, shape)

    def test_it_carries_no_text(self):
        kinds = {kind for kind, _ in chunks(self.thumbnail(64, record()))}
        self.assertEqual(kinds & {b"tEXt", b"iTXt", b"zTXt"}, set())

    def test_a_view_without_an_end_is_drawn_at_a_smaller_limit(self):
        """Points that never escape look the same at every limit, so the picture is that of a small one.
        The processor's time is counted: a busy machine adds none."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        for formula in (0, 2, 8):
            view = record(x=(-2.0, -1.6), y=(-1e-9, 1e-9), c=(-0.1, 0.2), formula=formula,
                          limit=2**31 - 1, bound=1e30)
            pixels(self.thumbnail(256, view))
        self.thumbnail(256, ENDLESS)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not SANITIZED:
            self.assertLess(after.ru_utime - before.ru_utime, 4 * 5)

    @unittest.skipIf(SANITIZED, "sanitizers take address space of their own")
    def test_two_gigabytes_of_records_take_no_more_memory_than_one(self):
        self.write("in.frac", record())
        os.truncate(self.path("in.frac"), 2 << 30)
        self.render("--thumbnail", 512, "-o", "out.png", "in.frac", preexec_fn=self.little_memory)

    @unittest.skipIf(SANITIZED, "sanitizers take address space of their own")
    def test_a_name_of_two_gigabytes_is_not_read(self):
        long = bytearray(record())
        long[68:72] = (2**31 - 1).to_bytes(4, "little")
        self.write("in.frac", bytes(long) + b"x" * 100000)
        with open(self.path("in.frac"), "r+b") as file:
            file.truncate(2 << 30)
        self.render("--thumbnail", 512, "-o", "out.png", "in.frac", preexec_fn=self.little_memory)

    @staticmethod
    def little_memory():
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))

    def test_what_is_no_catalogue_has_none(self):
        self.write("empty.frac", b"")
        self.write("short.frac", b"1234567")
        self.write("text.frac", b'{"tessary": 1}')
        self.write("picture.frac", b"\x89PNG\r\n\x1a\n" + bytes(100))
        os.mkfifo(self.path("pipe.frac"))
        os.mkdir(self.path("folder.frac"))
        for name in ("empty.frac", "short.frac", "text.frac", "picture.frac", "pipe.frac",
                     "folder.frac", "missing.frac", "/dev/zero"):
            with self.subTest(name=name):
                self.assertIn(name, self.refused(name))

    def test_a_full_disk_leaves_nothing(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        self.write("in.frac", record())
        self.fails(1, "--thumbnail", 256, "-o", "out.png", "in.frac", preexec_fn=limit)
        self.assertEqual(self.names(), ["in.frac"])

        self.write("out.png", b"")
        self.fails(1, "--thumbnail", 256, "-o", "out.png", "in.frac", preexec_fn=limit)
        self.assertEqual(self.read("out.png"), b"")

    def test_a_file_that_is_open_already_is_filled(self):
        """As file managers read it, who made it empty and hold it."""
        self.write("in.frac", record())
        with open(self.path("out.png"), "w+b") as held:
            self.render("--thumbnail", 64, "-o", "out.png", "in.frac")
            held.seek(0)
            self.assertEqual(pixels(held.read()).shape, (48, 64, 3))

    def test_it_stands_nearly_alone(self):
        for option in (["--size", "5"], ["--limit", "5"], ["--film"], ["--join"], ["--entry", "2"]):
            with self.subTest(option=option):
                self.fails(2, "--thumbnail", 64, "-o", "out.png", *option, "-", data=record())
        self.assertIn("-o FILE", self.fails(2, "--thumbnail", 64, "a.frac"))


if __name__ == "__main__":
    unittest.main()

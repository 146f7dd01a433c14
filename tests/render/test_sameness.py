"""The same input gives the same file: with any number of threads, on any processor."""

import os
import resource
import subprocess
import unittest

from render_command import SOURCE, RenderTest, pixels, record, with_other_processors

TOUR = os.path.join(SOURCE, "share", "tour.frac")
TRIGONOMETRIC = range(7, 11)
POLYNOMIALS = [1, 2, *range(11, 19)]


class Threads(RenderTest):
    def test_their_number_does_not_matter(self):
        for options in (["--size", "301x203"], ["--size", "97", "--supersample", "2"],
                        ["--size", "300x200", "--compress", "small"]):
            first = self.still(TOUR, "--entry", 15, "--threads", 1, *options)
            for threads in (2, 3, 4, 5, 64):
                with self.subTest(options=options, threads=threads):
                    self.assertEqual(self.still(TOUR, "--entry", 15, "--threads", threads,
                                                *options), first)

    def test_nor_does_what_else_is_rendered(self):
        self.render(TOUR, "--size", "64x64", "--threads", 3)
        for entry in (1, 9, 18):
            self.assertEqual(self.still(TOUR, "--entry", entry, "--size", "64x64"),
                             self.read(f"tour-{entry:03}.png"))


class Compression(RenderTest):
    def test_both_ways_show_the_same_and_small_is_smaller(self):
        for entry in (1, 15):
            fast, small = (self.still(TOUR, "--entry", entry, "--size", 300, "--compress", how)
                           for how in ("fast", "small"))
            self.assertTrue((pixels(fast) == pixels(small)).all())
            self.assertLess(len(small), len(fast))


@with_other_processors
class Processors(RenderTest):
    def on(self, processor, *arguments):
        done = self.run_render(*arguments, "-o", "-", prefix=["qemu-x86_64", "-cpu", processor],
                               stderr=subprocess.DEVNULL)  # it speaks of what it cannot stand in for
        self.assertEqual(done.returncode, 0)
        return done.stdout

    def same_everywhere(self, *arguments):
        here = self.still(*arguments)
        for processor in ("Nehalem", "Haswell", "max"):
            with self.subTest(processor=processor, arguments=arguments):
                self.assertEqual(self.on(processor, *arguments), here)
        with self.subTest(processor="qemu64", arguments=arguments):
            self.assertTrue((pixels(self.on("qemu64", *arguments)) == pixels(here)).all())

    def numbers(self, *arguments, prefix=()):
        done = self.run_render(*arguments, "-", prefix=[*prefix], stderr=subprocess.DEVNULL)
        self.assertEqual(done.returncode, 0)
        return done.stdout

    def same_numbers(self, *arguments):
        here = self.numbers(*arguments)
        for processor in ("qemu64", "Nehalem", "Haswell", "max"):
            with self.subTest(processor=processor, arguments=arguments):
                self.assertEqual(self.numbers(*arguments,
                                              prefix=["qemu-x86_64", "-cpu", processor]), here)

    def test_every_polynomial_is_the_same_file_in_double_precision(self):
        for entry in POLYNOMIALS:
            self.same_everywhere(TOUR, "--entry", entry, "--size", "64x48")

    def test_trigonometric_formulas_are_the_same_file_in_double_precision(self):
        for entry in TRIGONOMETRIC:
            self.same_everywhere(TOUR, "--entry", entry, "--size", "64x48")

    def test_so_are_their_values(self):
        for entry in TRIGONOMETRIC:
            for number in ("--counts", "--values"):
                self.same_numbers(TOUR, "--entry", entry, "--size", "32x24", number)

    def test_every_formula_is_the_same_file_in_single_precision(self):
        for entry in range(1, 19):
            self.same_everywhere(TOUR, "--entry", entry, "--size", "32x24", "--single")

    def test_averages_and_small_files_are_the_same(self):
        self.same_everywhere(TOUR, "--entry", 15, "--size", "64x48", "--supersample", 3)
        self.same_everywhere(TOUR, "--entry", 1, "--size", "64x48", "--compress", "small")


class Memory(RenderTest):
    def peak(self, *arguments):
        """Most memory that a run held, in MiB."""
        process = self.begins("-", "-o", "/dev/null", "--threads", 4, *arguments,
                              stdin=subprocess.PIPE)
        process.stdin.write(record(x=(3.0, 4.0), y=(3.0, 4.0), limit=2))
        process.stdin.close()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        return usage.ru_maxrss / 1024

    @unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers keep memory of their own")
    def test_a_poster_needs_no_more_for_being_high(self):
        for options in ([], ["--supersample", "2"]):
            low = self.peak("--size", "16384x128", *options)
            high = self.peak("--size", "16384x4096", *options)
            self.assertLess(high - low, 40, (low, high))  # the picture itself has 192 MiB


if __name__ == "__main__":
    unittest.main()

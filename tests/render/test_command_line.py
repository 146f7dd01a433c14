"""The command line of tessary-render: help, and each mistake in one line with status 2."""

import subprocess
import unittest

from render_command import RENDER, RenderTest, record

OPTIONS = ["--entry", "--size", "--fit", "--supersample", "--single", "--double", "--palette",
           "--limit", "--colour", "--escape", "--gradient", "--blend", "--scale", "--period",
           "--range", "--offset", "--inside", "--depth", "--dither", "--counts", "--values", "--swatch",
           "--output", "--thumbnail", "--compress", "--metadata", "--threads", "--quiet", "--help", "--version"]


class Help(RenderTest):
    def test_it_names_every_option(self):
        page = self.render("--help").decode()
        self.assertRegex(page, r"Usage: tessary-render \[OPTION\.\.\.\] FILE\|-")
        for option in OPTIONS:
            self.assertRegex(page, rf"(?m)^  (-\w,)?{option}\b")

    def test_the_version_is_one_line(self):
        self.assertRegex(self.render("--version"),
                         rb"\Atessary-render \(Tessary\) \d+\.\d+\.\d+\n\Z")

    def test_help_that_cannot_be_printed_is_a_failure(self):
        for option in ("--help", "--version"):
            with open("/dev/full", "wb") as full:
                self.fails(1, option, stdout=full)


class Mistakes(RenderTest):
    def test_no_file_or_too_many(self):
        for arguments in ([], ["a.frac", "b.frac"], ["-", "-"], [""]):
            with self.subTest(arguments=arguments):
                self.fails(2, *arguments)

    def test_unknown_options(self):
        for option in ("--unknown", "-x", "--siz", "--SIZE"):
            with self.subTest(option=option):
                self.assertIn(option.split("=")[0], self.fails(2, option, "-"))

    def test_bad_values(self):
        bad = {
            "--size": ["0", "-1", "65536", "x", "5x", "x5", "5x0", "5x65536", "1.5", "5x5x5", "",
                       "5X5", " 5", "0x10", "+5", "99999999999999999999"],
            "--entry": ["0", "-1", "1-", "-", "3-2", "1-2-3", "a", "", "1.5", "0-4",
                        "99999999999999999999"],
            "--supersample": ["0", "9", "-1", "2.5", "two", ""],
            "--limit": ["0", "-1", "2147483648", "1e3", ""],
            "--threads": ["0", "-1", "5000", "x", ""],
            "--fit": ["fill", "", "Contain"],
            "--palette": ["rainbow", "", ".map", "file.txt"],
            "--compress": ["best", "9", ""],
            "--metadata": ["some", ""],
            "--colour": ["banded", "", "Smooth"],
            "--escape": ["0", "-1", "x", "1e31", "nan", ""],
            "--gradient": ["rainbow", "", "Tide"],
            "--blend": ["lab", ""],
            "--scale": ["cube", ""],
            "--period": ["0", "-1", "x", "1e16", ""],
            "--range": ["full", ""],
            "--offset": ["x", "1e16", "nan", ""],
            "--inside": ["black", "#12345", "#1234567", "#12345g", "123456", ""],
            "--depth": ["0", "12", "16.0", ""],
            "--dither": ["noise", ""],
            "--thumbnail": ["0", "-1", "1025", "x", "64x64", ""],
            "--counts": [""],
            "--values": [""],
        }
        for option, values in bad.items():
            for value in values:
                with self.subTest(option=option, value=value):
                    self.assertIn(option, self.fails(2, "-", option, value, data=record()))

    def test_missing_values(self):
        for option in ("--size", "--entry", "--supersample", "--limit", "--threads", "--fit",
                       "--palette", "--compress", "--metadata", "-o"):
            with self.subTest(option=option):
                self.assertIn(option, self.fails(2, "-", option))

    def test_what_excludes_each_other(self):
        self.fails(2, "-", "--single", "--double")
        self.fails(2, "-", "--size", "5", "--size", "6")
        self.fails(2, "-", "--entry", "1-2", "-o", "-")

    def test_what_makes_no_sense_with_colours_and_numbers(self):
        for options in (["--palette", "rgb", "--colour", "smooth"],
                        ["--palette", "rgb", "--gradient", "grey"], ["--period", 5],
                        ["--scale", "log"], ["--blend", "srgb"], ["--offset", 1],
                        ["--inside", "#ffffff"],
                        ["--range", "auto"],
                        ["--range", "auto", "--period", 5, "--colour", "smooth"], ["--dither", "none"],
                        ["--counts", "a.npy", "--values", "b.npy"],
                        ["--counts", "a.npy", "-o", "b.npy"], ["--values", "a.npy", "--film"],
                        ["--values", "a.npy", "--supersample", 2],
                        ["--counts", "a.npy", "--join"], ["--swatch", "a.png"]):
            with self.subTest(options=options):
                self.assertIn(options[0], self.fails(2, "-", *options, data=record()))
        self.fails(2, "--swatch", "a.png", "--film")
        self.assertEqual(self.names(), [])

    def test_a_message_stays_one_line_whatever_the_value_is(self):
        self.assertIn("a?b?[m", self.fails(2, "-", "--size", "a\nb\x1b[m"))
        self.assertIn("a?b", self.fails(1, "a\nb"))

    def test_nothing_is_made(self):
        self.fails(2, "-", "--size", "0", data=record())
        self.assertEqual(self.names(), [])


class Links(unittest.TestCase):
    def test_no_window_system_and_no_device_are_linked(self):
        linked = subprocess.run(["ldd", RENDER], capture_output=True, text=True, check=True).stdout
        self.assertIn("libpng", linked)
        self.assertNotRegex(linked, r"(?i)glut|libGL|libEGL|OpenCL|gtk|gdk|libX|libxcb|wayland")


if __name__ == "__main__":
    unittest.main()

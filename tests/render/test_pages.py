"""The pages about tessary-render are true: every command runs, every option is told everywhere."""

import io
import os
import re
import shutil
import subprocess
import types
import unittest

import numpy as np
from PIL import Image

from render_command import BUILD, RENDER, SOURCE, RenderTest, pixels


def page(*path):
    with open(os.path.join(SOURCE, *path), encoding="utf-8") as file:
        return file.read()


def commands(text):
    """The commands shown in a page, those that only name the options left out."""
    lines = re.findall(r"(?m)^\t?(tessary-(?:render|frac) (?!- make).*)$", text)
    return [line for line in lines if "[OPTION" not in line]


class Examples(RenderTest):
    def run_all(self, text):
        shutil.copy(os.path.join(SOURCE, "share", "tour.frac"), self.folder)
        self.write("fire.map", "0 0 0\n255 128 0\n")
        os.mkdir(self.path("out"))
        for command in commands(text):
            # Small enough for a test.
            small = re.sub(r"--size (\d+)(x\d+)?", lambda m: "--size 64" + ("x48" if m[2] else ""), command)
            if not re.search("--(size|swatch|join|thumbnail)", small):
                small += " --size 64"
            with self.subTest(command=command):
                done = subprocess.run(["bash", "-o", "pipefail", "-c", small], cwd=self.folder,
                                      env={**os.environ, "PATH": f"{BUILD}:{os.environ['PATH']}"},
                                      capture_output=True, timeout=60)
                self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_those_of_the_page_run(self):
        self.assertGreater(len(commands(page("docs", "render.md"))), 8)
        self.run_all(page("docs", "render.md"))
        self.assertEqual(pixels(self.read("thumbnail.png")).shape, (64, 64, 3))

    def test_those_of_the_manual_run(self):
        self.run_all(page("docs", "man", "tessary-render.1.scd"))


class Gallery(RenderTest):
    """The page of every formula in every gradient."""

    def setUp(self):
        super().setUp()
        self.gallery = types.ModuleType("make_gallery")  # not imported, which would leave a file
        self.gallery.__file__ = os.path.join(SOURCE, "docs", "gallery", "make_gallery.py")
        exec(page("docs", "gallery", "make_gallery.py"), vars(self.gallery))

    def test_it_has_a_view_of_every_formula(self):
        told = re.search(r"(?m)^\| `formula` \| (.*); any other", page("docs", "json-format.md"))[1]
        self.assertEqual([formula for _, formula in self.gallery.views()],
                         re.findall(r"`([\w-]+)`", told))
        self.assertEqual(len(self.gallery.views()), 14)

    def test_it_has_every_gradient(self):
        told = self.fails(2, "--swatch", "s.png", "--gradient", "none")
        self.assertIn("expected " + ", ".join(self.gallery.GRADIENTS) + ", a .map", told)

    def test_it_shows_each_in_each_and_in_the_sheet(self):
        self.gallery.make_pictures(RENDER, self.folder, 16, ["tide", "grey"])
        self.assertEqual(len(self.names()), 28)
        shown = re.findall(r'src="([^"]+)"', self.gallery.page(16, ["tide", "grey"]))
        self.assertEqual(sorted(shown), self.names())
        whole = np.asarray(Image.open(io.BytesIO(self.gallery.sheet(self.folder, 16,
                                                                    ["tide", "grey"]))))
        self.assertEqual(whole.shape, (14 * 16, 2 * 16, 3))
        colourful = np.ptp(whole.astype(int), axis=2)
        self.assertGreater(colourful[:, :16].mean(), 10 * colourful[:, 16:].mean())


class Options(RenderTest):
    def setUp(self):
        super().setUp()
        self.options = set(re.findall(r"(?m)^  (?:-\w,)?(--[\w-]+)", self.render("--help").decode()))

    def test_the_page_tells_every_one(self):
        self.assertGreater(len(self.options), 10)
        for option in self.options:
            self.assertRegex(page("docs", "render.md"), rf"(?m)^\| .*`{option}[ `]")

    def test_the_manual_tells_every_one(self):
        for option in self.options:
            self.assertRegex(page("docs", "man", "tessary-render.1.scd"), rf"(?m)^\*.*\*?{option}\*")

    def test_the_examples_show_every_one_that_makes_pictures(self):
        shown = " ".join(commands(page("docs", "render.md"))).replace(" -o ", " --output ")
        for option in self.options - {"--help", "--version", "--double"}:
            self.assertIn(option + " ", shown)


class Completion(RenderTest):
    def offered(self, *words):
        script = os.path.join(SOURCE, "packaging", "completions", "tessary-render")
        code = ('source "$0"; COMP_WORDS=(tessary-render "$@"); COMP_CWORD=$#; '
                '_tessary_render; printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(["bash", "-c", code, script, *words], cwd=self.folder, text=True,
                              capture_output=True, check=True)
        return [line for line in done.stdout.splitlines() if line]

    def test_every_option_is_offered(self):
        told = set(re.findall(r"(?m)^  (?:-\w,)?(--[\w-]+)", self.render("--help").decode()))
        self.assertEqual(set(self.offered("-")), told)

    def test_words_are_offered_where_words_are_wanted(self):
        self.write("a.map", "")
        self.write("b.frac", "")
        self.assertEqual(self.offered("--fit", "c"), ["contain", "cover"])
        self.assertEqual(self.offered("--palette", ""), ["random", "rgb", "a.map"])
        self.assertEqual(self.offered("--gradient", "g"), ["glacier", "grey"])
        self.assertIn("a.map", self.offered("--gradient", ""))
        self.assertEqual(self.offered("--size", ""), [])
        self.assertEqual(sorted(self.offered("")), ["a.map", "b.frac"])


if __name__ == "__main__":
    unittest.main()

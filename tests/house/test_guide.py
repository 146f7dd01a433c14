"""The guide is true to the programs: its commands run, its pictures are there and show what they say."""

import io
import json
import os
import re
import shutil
import subprocess
import tempfile
import types
import unittest

import numpy as np
from PIL import Image

import guide
import harness
from guide import GUIDE, PAGES
from sources import SOURCE

PROGRAMS = {name: os.path.join(harness.BUILD, name) for name in ("tessary", "tessary-render", "tessary-frac")}
PROGRAMS["tessary"] = harness.TESSARY


def run(command, folder):
    return subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=folder, capture_output=True,
                          env={**os.environ, "PATH": f"{harness.BUILD}:{os.environ['PATH']}"}, timeout=600)


def help_of(program, *command):
    if program == "tessary":
        return harness.run_program(["--help"]).stdout.decode()
    return subprocess.run([PROGRAMS[program], *command, "--help"], capture_output=True, text=True,
                          check=True).stdout


def told_in_its_help(command):
    """Whether the help of the program that a line begins with tells all of the line's options."""
    words = command.split(" | ")[0].split()
    verb = words[1:2] if words[0] == "tessary-frac" else []
    text = help_of(words[0], *verb)
    return [option for option in re.findall(r"(?<=\s)--[a-z]+", command.split(" | ")[0])
            if not re.search(rf"{option}(?![a-z])", text)]


class Pages(unittest.TestCase):
    def test_each_begins_with_what_one_wants(self):
        for page in PAGES:
            if page != "troubleshooting.md":
                with self.subTest(page=page):
                    self.assertRegex(guide.read(page), r"\A# .+\n\nYou want ")

    def test_the_first_one_leads_to_every_other(self):
        self.assertLessEqual(set(PAGES) - {"README.md"}, set(guide.links("README.md")))

    def test_every_link_leads_to_a_place_in_the_guide(self):
        for page in PAGES:
            for link in guide.links(page):
                with self.subTest(page=page, link=link):
                    target, _, anchor = link.partition("#")
                    self.assertIn(target or page, PAGES)
                    if anchor:
                        self.assertIn(anchor, guide.anchors(target or page))

    def test_every_picture_is_there_and_says_what_it_shows(self):
        for page in PAGES:
            for text, path in guide.images(page):
                with self.subTest(page=page, picture=path):
                    self.assertTrue(os.path.exists(os.path.join(GUIDE, path)))
                    self.assertTrue(text.strip())

    def test_every_spelling_is_known(self):
        if not shutil.which("hunspell") or not run("hunspell -D </dev/null 2>&1 | grep en_GB", "/").stdout:
            self.skipTest("hunspell and its British dictionary are not installed")
        # Another release knows other words, and guide_words.txt has what this one lacks.
        if not run("dpkg-query -W -f '${Version}' hunspell-en-gb", "/").stdout.startswith(b"1:7.5"):
            self.skipTest("the dictionary is not that of Debian 12")
        for page in PAGES:
            text = re.sub(r"`[^`]*`|\]\([^)]*\)", " ", guide.without_blocks(guide.read(page)))
            done = subprocess.run(["hunspell", "-d", "en_GB", "-i", "utf-8", "-p",
                                   os.path.join(SOURCE, "tests", "house", "guide_words.txt"), "-l"],
                                  input=text, capture_output=True, text=True, check=True)
            with self.subTest(page=page):
                self.assertEqual(sorted(set(done.stdout.split())), [])


class Commands(unittest.TestCase):
    """What a reader would type."""

    def test_every_option_is_told_by_the_program(self):
        for page in PAGES:
            for command in guide.commands(page):
                if command.split()[0] in PROGRAMS:
                    with self.subTest(page=page, command=command):
                        self.assertEqual(told_in_its_help(command), [])

    def test_an_option_named_in_a_sentence_is_one_of_a_program(self):
        known = "".join(help_of(program) for program in PROGRAMS)
        for page in PAGES:
            for option in re.findall(r"`(--[a-z]+)", guide.without_blocks(guide.read(page))):
                with self.subTest(page=page, option=option):
                    self.assertRegex(known, rf"{option}(?![a-z])")

    def test_those_without_a_window_run(self):
        for page in PAGES:
            with tempfile.TemporaryDirectory(prefix="tessary-guide-") as folder:
                for name in ("tour", "deep-zoom", "benchmark"):
                    shutil.copy(os.path.join(SOURCE, "share", f"{name}.frac"), folder)
                shutil.copy(os.path.join(GUIDE, "gallery", "mandelbrot.png"), folder)
                for document in guide.documents(page):
                    with open(os.path.join(folder, "flight.json"), "w", encoding="utf-8") as file:
                        file.write(document)
                for command in guide.commands(page):
                    self.run_one(page, command, folder)

    def run_one(self, page, command, folder):
        first = command.split()[0]
        if first in ("tessary", "sbatch", "ffmpeg") or command.startswith("TESSARY_SHARES="):
            return
        if "ffmpeg" in command and not shutil.which("ffmpeg"):
            return
        # Small enough for a test.
        small = re.sub(r"--size \d+(x\d+)?", lambda m: "--size 64" + ("x48" if m[1] else ""), command)
        if first == "tessary-render" and not re.search("--(size|swatch|join|dry-run)", small):
            small = small.replace("tessary-render ", "tessary-render --size 64 ")
        if "--film" in small and "--dry-run" not in small:
            small = small.replace("--film", "--film --fps 1 --hold 0").replace("framerate 30", "framerate 1")
        small = small.replace("ffmpeg ", "ffmpeg -v error -y ")
        with self.subTest(page=page, command=small):
            done = run(small, folder)
            self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_the_benchmark_prints_the_line_shown(self):
        shown = [line for line in guide.read("benchmark.md").splitlines() if line.startswith("Total")]
        self.assertEqual(len(shown), 1)
        self.assertRegex(shown[0], r"^Total rendering time [\d.]+ s$")


class Pictures(unittest.TestCase):
    def test_one_script_makes_them_all(self):
        script = types.ModuleType("make_pictures")  # not imported, which would leave a file
        script.__file__ = os.path.join(GUIDE, "make_pictures.py")
        with open(script.__file__, encoding="utf-8") as file:
            exec(file.read(), vars(script))
        made = set(script.all_pictures())
        self.assertLessEqual(made, set(guide.committed_pictures()))
        self.assertLessEqual(set(guide.committed_pictures()) - made, {"pictures/thumbnails.png"})

    def test_each_is_shown(self):
        shown = {path for page in PAGES for _, path in guide.images(page)}
        self.assertEqual(set(guide.committed_pictures()) - shown, set())

    def test_they_are_small(self):
        sizes = [os.path.getsize(os.path.join(GUIDE, path)) for path in guide.committed_pictures()]
        self.assertLess(max(sizes), 125_000)
        self.assertLess(sum(sizes), 2_600_000)

    def test_those_of_the_gallery_are_what_the_program_makes_of_them(self):
        names = os.listdir(os.path.join(GUIDE, "gallery"))
        self.assertEqual(len(names), 14 + 18 + 8)
        for name in names:
            with self.subTest(picture=name):
                path = os.path.join(GUIDE, "gallery", name)
                again = subprocess.run([PROGRAMS["tessary-render"], path, "--quiet", "-o", "-"],
                                       capture_output=True, check=True).stdout
                shown, made = (np.asarray(Image.open(file).convert("RGB")).astype(int)
                               for file in (path, io.BytesIO(again)))
                # 256 colours stand for all of them.
                self.assertLess(abs(shown - made).mean(), 6)

    def test_the_gallery_has_a_view_of_every_formula(self):
        with open(os.path.join(SOURCE, "docs", "gallery", "views.json"), encoding="utf-8") as file:
            formulas = [entry["formula"] for entry in json.load(file)["entries"]]
        for formula in formulas:
            self.assertIn(f"gallery/{formula}.png", guide.read("gallery.md"))


class Index(unittest.TestCase):
    def test_it_names_every_page_of_the_docs(self):
        docs = os.path.join(SOURCE, "docs")
        with open(os.path.join(docs, "README.md"), encoding="utf-8") as file:
            named = set(re.findall(r"\]\(([^)#:]+)\)", file.read()))
        pages = {name for name in os.listdir(docs) if name.endswith(".md") and name != "README.md"}
        pages |= {f"man/{name}" for name in os.listdir(os.path.join(docs, "man")) if name.endswith(".scd")}
        pages |= {f"guide/{name}" for name in PAGES}
        self.assertEqual(pages - named, set())


if __name__ == "__main__":
    unittest.main()

"""The pages about tessary-render are true: every command runs, every option is told everywhere."""

import os
import re
import shutil
import subprocess
import unittest

from render_command import BUILD, SOURCE, RenderTest, pixels


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
            if "--size" not in small and "--swatch" not in small and "--join" not in small:
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

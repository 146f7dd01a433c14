"""The three programs for users who write a decimal comma, group digits otherwise or have two letters
i: the same lines, numbers and files as in plain C."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

import harness
import menus
from menus import MenuTest

FRAC = os.path.join(harness.BUILD, "tessary-frac")
RENDER = os.path.join(harness.BUILD, "tessary-render")
COMPILED = ("de_DE", "fr_FR", "tr_TR")
LOCALES = ("C.UTF-8", *(f"{name}.UTF-8" for name in COMPILED))
DOCUMENT = """{"tessary": 1, "entries": [{"name": "fiş I i ı İ", "formula": "julia",
  "view": {"xMin": -1.5, "xMax": 1.25, "yMin": -1e-3, "yMax": 1234567.875}, "c": [0.1, -0.65],
  "maxIters": 1000, "maxSize": 4.5, "palette": "random", "fractalID": 3}]}"""

# How long something took, and what is printed once for each time the window is drawn. Their numbers
# have a point: a line with a comma is none of these.
UNSTEADY = re.compile(r"^(Enqueuing|Resh|Resizing|old |new |scale |font )|"
                      r"^x_offset \d+(\.\d+)?(e-\d+)?, index \d+$|"
                      r" took \d+(\.\d+)?(e-\d+)? s$")


class LocaleTest(unittest.TestCase):
    """Each test runs something in plain C and then in each locale that the system has or can make."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.made = tempfile.mkdtemp(prefix="tessary-locales-")
        cls.addClassCleanup(shutil.rmtree, cls.made)
        for name in COMPILED:
            target = os.path.join(cls.made, f"{name}.UTF-8")
            done = subprocess.run(["localedef", "-f", "UTF-8", "-i", name, target],
                                  capture_output=True)
            if done.returncode != 0:
                raise unittest.SkipTest(f"the locale {name} cannot be made")

    def environment(self, locale):
        """What a user of that locale has set; it is checked to be in force."""
        wanted = {"LC_ALL": locale, "LANG": locale, "LANGUAGE": None}
        if locale.removesuffix(".UTF-8") in COMPILED:
            wanted["LOCPATH"] = self.made
            said = subprocess.run(["locale", "-k", "decimal_point"], capture_output=True, text=True,
                                  env={**os.environ, "LC_ALL": locale, "LOCPATH": self.made})
            self.assertIn('decimal_point=","', said.stdout)
        return wanted

    def assert_same_everywhere(self, outcome):
        """outcome(environment) answers what must be the same."""
        plain = outcome(self.environment("C"))
        for locale in LOCALES:
            with self.subTest(locale=locale):
                self.assertEqual(outcome(self.environment(locale)), plain)


class Commands(LocaleTest):
    def run_in_folder(self, environment, *commands):
        """What each command answered and printed, and the files they left behind."""
        env = {**os.environ, **environment}
        env = {name: value for name, value in env.items() if value is not None}
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "in.json"), "w", encoding="utf-8") as file:
                file.write(DOCUMENT)
            said = []
            for command in commands:
                done = subprocess.run(command, cwd=folder, env=env, capture_output=True,
                                      timeout=60 * harness.PATIENCE)
                said.append((done.returncode, done.stdout, done.stderr))
            files = {}
            for name in os.listdir(folder):
                with open(os.path.join(folder, name), "rb") as file:
                    files[name] = file.read()
        return said, files

    def test_catalogues_are_read_and_written_the_same(self):
        def outcome(environment):
            said, files = self.run_in_folder(
                environment,
                [FRAC, "import", "in.json", "-o", "made.frac"],
                [FRAC, "list", "made.frac"],
                [FRAC, "check", "made.frac"],
                [FRAC, "export", "made.frac", "-o", "out.json"],
                [FRAC, "take", "made.frac", "1", "-o", "MI.FRAC"],
                [FRAC, "import", "nowhere.json", "-o", "no.frac"])
            self.assertEqual([status for status, _, _ in said[:4]], [0, 0, 0, 0], said)
            self.assertIn("out.json", files)
            return said, files

        self.assert_same_everywhere(outcome)

    def test_typed_numbers_have_a_point(self):
        def outcome(environment):
            said, files = self.run_in_folder(
                environment,
                [FRAC, "import", "in.json", "-o", "made.frac"],
                [FRAC, "set", "made.frac", "--entry", "1", "--view=-0.5,0.25,-1e-3,0.125"],
                [FRAC, "export", "made.frac"],
                [FRAC, "set", "made.frac", "--entry", "1", "--size-limit", "4,5"],
                [FRAC, "set", "made.frac", "--entry", "1", "--width", "1,5"])
            self.assertEqual([status for status, _, _ in said], [0, 0, 0, 2, 2], said)
            self.assertIn(b"0.125", said[2][1])
            return said, files

        self.assert_same_everywhere(outcome)

    def test_pictures_and_their_texts_are_the_same(self):
        tour = os.path.join(menus.SHARE, "tour.frac")

        def outcome(environment):
            said, files = self.run_in_folder(
                environment,
                [RENDER, "-q", tour, "--entry", "1", "--size", "96x64", "-o", "plain.png"],
                [RENDER, "-q", tour, "--entry", "3", "--size", "96x64", "--colour", "smooth",
                 "--gradient", "#000764 0, #206bcb 0.5", "--period", "20.5", "-o", "smooth.png"],
                [RENDER, "-q", tour, "--entry", "3", "--size", "96x64", "--colour", "smooth",
                 "--period", "20,5", "-o", "refused.png"],
                [RENDER, tour, "--film", "--seconds", "0.25", "--dry-run"])
            self.assertEqual([status for status, _, _ in said], [0, 0, 2, 0], said)
            self.assertEqual(sorted(set(files) - {"in.json"}), ["plain.png", "smooth.png"])
            return said, files

        self.assert_same_everywhere(outcome)


class Window(LocaleTest, MenuTest):
    def test_lines_typed_numbers_and_saved_files_are_the_same(self):
        def outcome(environment):
            folder = tempfile.mkdtemp(prefix="tessary-locale-")
            self.addCleanup(shutil.rmtree, folder)
            program = self.start_and_settle("--cpu", env=environment, cwd=folder)
            self.choose(program, "Fractals", "Information")
            program.key("Tab", "Tab", "Tab", *["BackSpace"] * 9)
            self.type(program, "-1.75")
            program.key("Return")
            program.wait_for_line(r"^Mandelbrot Z-range:\(-1.750000, ")
            self.settle(program)
            self.save_as(program, "saved")
            program.wait_for_line("^Saved fractal 0$")
            self.wait_without_panels(program)
            self.settle(program)
            title = program.window_title().replace(folder, "")
            self.quit(program)
            with open(os.path.join(folder, "saved.frac"), "rb") as file:
                saved = file.read()
            lines = [line for line in program.lines if not UNSTEADY.search(line)]
            return lines, program.errors, title, saved

        self.assert_same_everywhere(outcome)


if __name__ == "__main__":
    menus.main()

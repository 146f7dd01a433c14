"""The pages keep up with the program: links lead somewhere, options and statuses are all told."""

import os
import re
import unittest

import harness
from sources import SOURCE, files

PAGE_LINES, PAGE_LETTERS = 60, 4500


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


class Docs(unittest.TestCase):
    def test_every_link_leads_to_a_file(self):
        for page in (path for path in files() if path.endswith(".md")):
            for target in re.findall(r"\]\(([^)#:]+)\)", read(page)):
                with self.subTest(page=page, link=target):
                    place = os.path.join(SOURCE, os.path.dirname(page), target)
                    self.assertTrue(os.path.exists(place))

    def test_every_path_that_the_architecture_names_exists(self):
        for path in re.findall(r"`((?:\w+/)+[\w.*]*)`", read("docs/architecture.md")):
            with self.subTest(path=path):
                folder, name = os.path.split(os.path.join(SOURCE, path))
                stem = name.split(".")[0]
                self.assertTrue(any(entry.startswith(stem) for entry in os.listdir(folder)))

    def test_every_option_of_the_help_is_in_the_readme_with_an_example(self):
        help_text = harness.run_program(["--help"]).stdout.decode()
        readme = read("README.md")
        options = re.findall(r"^(--[a-z]+:?)", help_text, flags=re.M)
        self.assertEqual(len(options), 7)
        for option in options:
            with self.subTest(option=option):
                self.assertRegex(readme, rf"(?m)^\| `{option}.*\| `\./run .*{option}")

    def test_every_exit_status_is_on_the_page_of_the_window(self):
        page = read("docs/window.md")
        for status in range(8):
            with self.subTest(status=status):
                self.assertRegex(page, rf"(?m)^\| {status} \|")

    def test_every_command_of_the_menus_is_on_the_page_of_the_window(self):
        page = read("docs/window.md").lower()
        texts = dict(re.findall(r'(\w+) = "(.*)";', read("commands/menu_texts.cpp")))
        commands = ("toggle_timing_logs", "previous_fractal", "next_fractal", "cycle_fractals",
                    "fractal_info", "load_from_disk", "save_to_disk", "quit_option", "random_colours",
                    "rgb_cycle", "zoom_string", "double_precision", "cpu_threads", "system_information")
        for text in (texts[name] for name in commands):
            with self.subTest(text=text):
                self.assertIn(text.lower(), page)

    def test_the_readme_is_one_page(self):
        readme = read("README.md")
        self.assertLessEqual(len(readme.splitlines()), PAGE_LINES)
        self.assertLessEqual(len(readme), PAGE_LETTERS)

    def test_every_catalogue_is_in_the_readme(self):
        for name in os.listdir(os.path.join(SOURCE, "share")):
            if name.endswith(".frac"):
                with self.subTest(catalogue=name):
                    self.assertIn(f"`{name}`", read("README.md"))


if __name__ == "__main__":
    unittest.main()

"""What the Tab key offers after tessary-frac and tessary, and that the manual knows every option."""

import os
import re
import subprocess
import unittest

from frac_command import FRAC, SOURCE, FracTest

COMMANDS = ["list", "check", "export", "import", "set", "new", "merge", "take"]


def offered(program, *words, folder=None):
    """What is offered for the last of the words."""
    script = os.path.join(SOURCE, "packaging", "completions", program)
    code = ('source "$0"; program=$1; COMP_WORDS=("$@"); COMP_WORDS=("${COMP_WORDS[@]}"); '
            'COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}; '
            '_${program//-/_}; printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "-c", code, script, program, *words], cwd=folder, text=True,
                          capture_output=True, check=True)
    return [line for line in done.stdout.splitlines() if line]


def options_of(command):
    page = subprocess.run([FRAC, command, "--help"], capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"(?m)^  (?:-\w,)?(--[\w-]+)", page))


class Completion(FracTest):
    def test_commands_come_first(self):
        self.assertEqual(offered("tessary-frac", ""), COMMANDS + ["--help", "--version"])
        self.assertEqual(offered("tessary-frac", "m"), ["merge"])

    def test_each_command_has_its_own_options(self):
        for command in COMMANDS:
            self.assertEqual(set(offered("tessary-frac", command, "-")), options_of(command))

    def test_names_are_offered_where_names_are_wanted(self):
        self.assertEqual(offered("tessary-frac", "set", "a", "--palette", "r"), ["random", "rgb"])
        self.assertEqual(offered("tessary-frac", "new", "--formula", "mand"), ["mandelbrot"])
        self.assertEqual(offered("tessary-frac", "set", "a", "--width", ""), [])

    def test_files_are_offered_elsewhere(self):
        self.write("with blank.frac", b"")
        for words in (["list", ""], ["export", "a", "-o", "w"]):
            self.assertEqual(offered("tessary-frac", *words, folder=self.folder), ["with blank.frac"])

    def test_the_program_offers_its_options_and_files_after_bench(self):
        self.assertEqual(offered("tessary", "--d"), ["--device", "--double"])
        self.write("some.frac", b"")
        self.assertEqual(offered("tessary", "--bench:", "so", folder=self.folder), [])
        self.assertEqual(offered("tessary", "--bench:so", folder=self.folder), ["some.frac"])


class Manual(unittest.TestCase):
    def page(self, name):
        with open(os.path.join(SOURCE, "docs", "man", name + ".1.scd"), encoding="utf-8") as file:
            return file.read()

    def test_it_has_every_command_and_option(self):
        page = self.page("tessary-frac")
        for command in COMMANDS:
            self.assertRegex(page, rf"(?m)^\*{command}\*$")
            for option in options_of(command):
                self.assertRegex(page, rf"(?m)^(\*-\w\*, )?\*{option}\*( |$)")

    def test_that_of_the_program_has_every_option_and_status(self):
        page = self.page("tessary")
        listed = subprocess.run([os.environ["TESSARY"], "--help"], capture_output=True, text=True).stdout
        options = re.findall(r"(?m)^(--[a-z]+:?)", listed)
        self.assertEqual(len(options), 7)
        for option in options:
            self.assertRegex(page, rf"(?m)^\*{option}\*")
        for status in range(8):
            self.assertRegex(page, rf"(?m)^\*{status}\*$")


if __name__ == "__main__":
    unittest.main()

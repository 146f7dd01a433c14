"""docs/reliability.md names tests, files and commands that exist."""

import json
import os
import re
import shlex
import subprocess
import unittest

import harness
from sources import SOURCE, files

ROW = 4  # cells: promise, tests, figure, command
# Among other things in backquotes, what is a test: Suite.Case, area.group, or a file below tests/.
TEST = r"([\w*]+/)*[A-Za-z]\w*\.[\w*/]+|tests/.+"


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


def rows():
    """The cells of every row of the page's tables of promises, but for their heads."""
    for table in read("docs/reliability.md").split("\n\n"):
        head, _, *lines = table.splitlines() + ["", ""]
        if head.startswith("| Promise "):
            for line in filter(None, lines):
                cells = re.split(r"(?<!\\)\|", line)[1:-1]
                yield [cell.strip().replace(r"\|", "|") for cell in cells]


def quoted(text):
    return re.findall(r"`([^`]+)`", text)


def without_parameters(name):
    """Suite.Case of Prefix/Suite.Case/0."""
    prefix, _, rest = name.rpartition(".")
    return f"{prefix.split('/')[-1]}.{rest.split('/')[0]}"


def test_sources(ending):
    return [read(path) for path in files() if path.startswith("tests/") and path.endswith(ending)]


def unit_tests():
    """Names of GoogleTest's suites and of their cases."""
    names = set()
    for code in test_sources(".cpp"):
        for suite, case in re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", code, re.M):
            names |= {suite, f"{suite}.{case}"}
    return names


def registered_tests():
    """Names and labels that ctest knows before anything is built."""
    done = subprocess.run(["ctest", "--test-dir", harness.BUILD, "--show-only=json-v1"],
                          check=True, capture_output=True, text=True)
    labels = set(re.findall(r"LABELS ([\w ]+)\)", "\n".join(test_sources("CMakeLists.txt"))))
    return ({test["name"] for test in json.loads(done.stdout)["tests"]},
            {label for several in labels for label in several.split()})


class Reliability(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.unit = unit_tests()
        cls.registered, cls.labels = registered_tests()
        cls.python = test_sources(".py")

    def test_every_promise_has_its_tests_its_figure_and_its_command(self):
        self.assertGreater(len(list(rows())), 10)
        for row in rows():
            with self.subTest(promise=row[0]):
                self.assertEqual(len(row), ROW)
                self.assertTrue(row[0] and row[1])
                self.assertTrue(row[3])

    def test_no_figure_was_forgotten(self):
        self.assertNotRegex(read("docs/reliability.md"), r"FIGURE|TODO|\?\?|@[A-Z]")

    def test_every_test_that_is_named_exists(self):
        for row in rows():
            for name in (name for name in quoted(row[1]) if re.fullmatch(TEST, name)):
                with self.subTest(promise=row[0], name=name):
                    self.assertTrue(self.is_test(name), name)

    def is_test(self, name):
        """Whether a unit test, an entry of ctest or a file is called so."""
        if os.path.exists(os.path.join(SOURCE, name)):
            return True
        group, _, method = name.partition(".")
        if any(f"class {group}(" in text and f"def {method}(" in text for text in self.python):
            return True
        # Parameters stand before and behind a name; a star is any rest.
        expression = "".join(r"\w*" if c == "*" else re.escape(c) for c in without_parameters(name))
        return any(re.fullmatch(expression, known) for known in self.unit | self.registered)

    def test_every_command_can_be_given(self):
        for row in rows():
            for command in quoted(row[3]):
                with self.subTest(command=command):
                    self.assert_can_be_given(command)

    def assert_can_be_given(self, command):
        words = shlex.split(command)
        while words and re.match(r"[A-Z_]+(=|$)", words[0]):
            self.assertTrue(self.is_read(words.pop(0).split("=")[0]), command)
        if not words:
            return
        script = os.path.join(SOURCE, words[0])
        if "-R" in words:
            for alternative in words[words.index("-R") + 1].split("|"):
                expression = alternative.split("/")[-1]
                self.assertTrue(any(re.search(expression, name) for name in
                                    self.unit | self.registered), alternative)
        if words[0] == "ctest":
            pass
        elif words[0].startswith("build/") or "/" not in words[0]:
            self.assert_is_target(os.path.basename(words[0]))
        else:
            self.assertTrue(os.access(script, os.X_OK), f"{words[0]} is no program")
            # What stands behind -R goes to ctest.
            own = words[:words.index("-R")] if "-R" in words else words
            for option in (word for word in own if word.startswith("--")):
                self.assertIn(option.split("=")[0], read(words[0]))
        if "--only" in words:
            self.assertIn(words[words.index("--only") + 1], self.labels)

    def is_read(self, variable):
        return any(variable in text for text in test_sources((".cpp", ".py", ".h")))

    def assert_is_target(self, name):
        cmake = [read(path) for path in files() if path.endswith("CMakeLists.txt")]
        self.assertTrue(any(re.search(rf"\b{re.escape(name)}\b", text) for text in cmake), name)


if __name__ == "__main__":
    unittest.main()

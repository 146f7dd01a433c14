"""The fuzzers and their corpora: every target is listed, built, replayed, and begins with something."""

import os
import re
import subprocess
import unittest

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
BUILD = os.environ.get("TESSARY_BUILD", "")
FUZZ = os.path.join(SOURCE, "tests", "fuzz")
CORPUS = os.path.join(FUZZ, "corpus")
SOURCE_NAME = "_fuzz.cpp"


def listed():
    done = subprocess.run([os.path.join(SOURCE, "fuzz"), "--list"], capture_output=True, text=True,
                          check=True)
    return done.stdout.splitlines()


def inputs():
    for folder, _, names in os.walk(CORPUS):
        for name in names:
            yield os.path.join(folder, name)


class Targets(unittest.TestCase):
    def test_the_list_is_what_the_folder_holds(self):
        sources = [name for name in os.listdir(FUZZ) if name.endswith(SOURCE_NAME)]
        self.assertEqual(listed(), sorted(name.removesuffix(SOURCE_NAME) for name in sources))
        self.assertGreaterEqual(len(sources), 12)

    def test_every_target_has_a_corpus_and_every_corpus_a_target(self):
        self.assertEqual(listed(), sorted(os.listdir(CORPUS)))
        for name in listed():
            with self.subTest(target=name):
                self.assertGreaterEqual(len(os.listdir(os.path.join(CORPUS, name))), 5)

    def test_every_target_is_told_of_where_contributors_look(self):
        with open(os.path.join(SOURCE, "CONTRIBUTING.md"), encoding="utf-8") as file:
            section = file.read().split("## Fuzzing")[1].split("\n## ")[0]
        rows = re.findall(r"(?m)^\| (`.*?) \|", section)
        self.assertEqual(sorted(re.findall(r"`(\w+)`", " ".join(rows))), listed())

    @unittest.skipUnless(BUILD, "needs a build folder")
    def test_every_target_is_replayed_by_a_test(self):
        done = subprocess.run(["ctest", "--test-dir", BUILD, "-N", "-L", "fuzz"],
                              capture_output=True, text=True, check=True)
        tests = re.findall(r"Test +#\d+: fuzz\.(\S+)", done.stdout)
        self.assertEqual(sorted(tests), listed())

    def test_every_dictionary_is_one_of_a_target(self):
        for name in os.listdir(FUZZ):
            if name.endswith(".dict"):
                self.assertIn(name.removesuffix(".dict"), listed())


class Corpora(unittest.TestCase):
    def test_inputs_are_small(self):
        self.assertLess(sum(os.path.getsize(path) for path in inputs()), 500_000)
        for path in inputs():
            with self.subTest(input=path):
                self.assertLessEqual(os.path.getsize(path), 8192)

    def test_no_two_inputs_of_a_target_are_the_same(self):
        for target in listed():
            contents = []
            for name in os.listdir(os.path.join(CORPUS, target)):
                with open(os.path.join(CORPUS, target, name), "rb") as file:
                    contents.append(file.read())
            with self.subTest(target=target):
                self.assertEqual(len(contents), len(set(contents)))


if __name__ == "__main__":
    unittest.main()

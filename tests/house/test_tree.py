"""What the tree holds, and where: CONTRIBUTING.md names every folder and every file at the top."""

import os
import re
import unittest

from sources import SOURCE, files

MOST_BYTES = 8_000_000  # of all files together
MOST_BYTES_OF_ONE = 600_000

# Places of what is no text: pictures that pages or tests show, inputs of fuzzers, catalogues.
BINARY = ("docs/screenshot.png", "docs/gallery/", "docs/glutmenu/", "docs/guide/gallery/",
          "docs/guide/pictures/", "packaging/icons/", "tests/glutmenu/gold/", "tests/fuzz/corpus/",
          "share/")


def read(path):
    with open(os.path.join(SOURCE, path), "rb") as file:
        return file.read()


def section():
    """What CONTRIBUTING.md says of places."""
    text = read("CONTRIBUTING.md").decode()
    return text.split("\n## Where what goes\n")[1].split("\n## ")[0]


def named_folders():
    """Those of the table; one that ends in a star stands for all below it."""
    rows = re.findall(r"(?m)^\| `.*$", section())
    return set(re.findall(r"`([\w./*-]+)/`", " ".join(rows)))


def named_files():
    """Those of the sentence on the top folder."""
    sentence = re.search(r"(?m)^At the top stand (.*?)\. ", section())[1]
    return set(re.findall(r"`([^`]+)`", sentence))


def folder_is_named(folder, named):
    return folder in named or any(folder.startswith(name[:-1]) for name in named if name.endswith("/*"))


class Tree(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.files = [path for path in files() if os.path.exists(os.path.join(SOURCE, path))]
        cls.folders = {os.path.dirname(path) for path in cls.files} - {""}

    def test_every_folder_is_told_of_where_contributors_look(self):
        named = named_folders()
        self.assertEqual([f for f in sorted(self.folders) if not folder_is_named(f, named)], [])

    def test_every_folder_that_is_told_of_is_there(self):
        for name in named_folders():
            with self.subTest(folder=name):
                self.assertTrue(any(folder_is_named(folder, {name}) for folder in self.folders))

    def test_at_the_top_stands_what_is_told_of(self):
        self.assertEqual({path for path in self.files if "/" not in path}, named_files())

    def test_what_is_no_text_has_its_places(self):
        self.assertEqual([path for path in self.files
                          if b"\0" in read(path) and not path.startswith(BINARY)], [])

    def test_the_tree_stays_small(self):
        sizes = {path: os.path.getsize(os.path.join(SOURCE, path)) for path in self.files}
        self.assertLess(sum(sizes.values()), MOST_BYTES)
        self.assertEqual([path for path, size in sizes.items() if size > MOST_BYTES_OF_ONE], [])


if __name__ == "__main__":
    unittest.main()

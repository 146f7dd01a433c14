"""The sources and the history speak of Tessary itself, not of how they came about."""

import os
import re
import subprocess
import unittest

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))

# Written in pieces, so that this file passes its own test.
FORBIDDEN = [
    r"\bPart" + r" [1-4]\.[1-5]\b",
    r"\bspec" + r"\.md\b",
    r"\bthe " + r"spec(ification)?\b",
    r"\bissue" + r" #?[0-9]",
    r"/wo" + r"rk/",
]
EXPRESSION = re.compile("|".join(FORBIDDEN), flags=re.I)


def git(*arguments):
    """What git prints, or None outside a repository."""
    command = ["git", "-c", "safe.directory=*", "-C", SOURCE, *arguments]
    try:
        done = subprocess.run(command, capture_output=True)
    except FileNotFoundError:
        return None
    return done.stdout.decode("utf-8", "replace") if done.returncode == 0 else None


def files():
    """Tracked files; without a repository, everything that is not built."""
    listing = git("ls-files", "-z")
    if listing is not None:
        yield from filter(None, listing.split("\0"))
        return
    for path, folders, names in os.walk(SOURCE):
        folders[:] = [f for f in folders if f not in ("build", "out", ".git", "__pycache__")]
        for name in names:
            yield os.path.relpath(os.path.join(path, name), SOURCE)


def offending_lines(text):
    return [line for line in text.splitlines() if EXPRESSION.search(line)]


class Texts(unittest.TestCase):
    def test_no_file_tells_how_it_came_about(self):
        for path in files():
            try:
                with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
                    text = file.read()
            except (FileNotFoundError, IsADirectoryError, UnicodeDecodeError):
                continue  # removed but not yet committed, a link to a folder, a picture
            with self.subTest(file=path):
                self.assertEqual(offending_lines(path + "\n" + text), [])

    def test_no_commit_message_does_either(self):
        messages = git("log", "--format=%B")
        if messages is None:
            self.skipTest("not a git repository")
        self.assertEqual(offending_lines(messages), [])


class TheScanItself(unittest.TestCase):
    def test_it_finds_what_it_looks_for(self):
        for text in ("as Part" + " 2.3 says", "see the " + "specification", "fixes issue" + " #4"):
            with self.subTest(text=text):
                self.assertEqual(offending_lines(text), [text])

    def test_it_lets_ordinary_words_pass(self):
        for text in ("part 2 of the list", "a special case", "an issue tracker", "network/"):
            with self.subTest(text=text):
                self.assertEqual(offending_lines(text), [])


if __name__ == "__main__":
    unittest.main()

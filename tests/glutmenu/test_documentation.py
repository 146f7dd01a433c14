"""docs/glutmenu.md is true: its pieces make a program that is built by the commands beside them and
runs, each data member is told of, and each part is shown."""

import os
import re
import subprocess
import tempfile
import unittest

import numpy as np

from toolkit_package import HANG, TOOLKIT, Window, environment, harness

DOCS = os.path.join(harness.SOURCE, "docs")
PARTS = ("bar", "drop-down", "submenu", "single-field", "message", "form")

# A declaration of data, without parentheses: its type, then its names.
DATA = re.compile(r"^(?:extern |static )?[\w:]+(?:<.*>)?[*& ]+(\w[\w, \[\]]*);$")


def page():
    with open(os.path.join(DOCS, "glutmenu.md"), encoding="utf-8") as file:
        return file.read()


def snippets(text, language):
    """The fenced pieces of a language, from top to bottom."""
    return re.findall(rf"^```{language}\n(.*?)^```$", text, flags=re.M | re.S)


def data_members(header):
    """{scope: names} of what a program sees of the data; the scope of the namespace's is empty."""
    found = {"": set()}
    scope, is_public = "", True
    for line in header.splitlines():
        text = line.split("//")[0].strip()
        if text.startswith("class ") and text.endswith("{"):
            scope, is_public = text.split()[1], False
            found[scope] = set()
        elif text in ("public:", "private:"):
            is_public = text == "public:"
        elif line == "};":
            scope, is_public = "", True
        match = DATA.match(text)
        if match and is_public and not text.startswith(("class ", "using ", "friend ")):
            found[scope] |= set(re.findall(r"\b[a-z]\w*", match[1]))
    return found


def told_of(text):
    """{scope: names} of the first columns of the page's tables of members."""
    found = {"": set()}
    scope = None
    for line in text.split("## Data members")[1].splitlines():
        if line.startswith("Of "):
            scope = (re.findall(r"^Of `(\w+)`", line) or [""])[0]
        elif line.startswith("| `"):
            names, writer, meaning = [cell.strip() for cell in line.strip("|").split(" | ")]
            assert writer and meaning, line
            found.setdefault(scope, set()).update(re.findall(r"`(\w+)`", names))
    return found


class Snippets(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-snippets-"))
        os.symlink(TOOLKIT, os.path.join(cls.home, "GlutMenu"))
        text = page()
        cls.write("hello.cpp", snippets(text, "cpp"))
        cls.write("CMakeLists.txt", snippets(text, "cmake"))
        cls.write("commands", ["set -e\n", *snippets(text, "sh")])
        done = subprocess.run(["bash", "commands"], cwd=cls.home, env=environment(HOME=cls.home),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              timeout=HANG)
        if done.returncode != 0:
            raise AssertionError(done.stdout)

    @classmethod
    def write(cls, name, pieces):
        with open(os.path.join(cls.home, name), "w", encoding="utf-8") as file:
            file.write("\n".join(pieces))

    def assert_works(self, program):
        """The message it begins with goes by Return; the form answers with its values."""
        with harness.Screen() as screen:
            window = Window(screen, os.path.join(self.home, program), "Hello")
            self.addCleanup(window.stop)
            title = (slice(84, 90), slice(150, 270))
            harness.wait_until(lambda: np.all(window.screenshot()[title] == 255), 10, "the message")
            window.key("Return")
            window.wait_for_line("^Key code is 13 ")
            window.key("Right", "Return")
            window.key("shift+Tab")
            window.wait_for_line("^Key code is 9 and shift state is 1$")
            window.key("Left", "Return")
            window.wait_for_line("^Title: Tiles$")
            window.wait_for_line("^Shape: Round$")

    def test_the_program_that_cmake_built_works(self):
        self.assert_works("build/hello/hello")

    def test_the_program_that_pkg_config_helped_to_build_works(self):
        self.assert_works("hello")

    def test_no_piece_is_left_out(self):
        fences = re.findall(r"^```(\w*)$", page(), flags=re.M)
        self.assertEqual(set(fences[0::2]), {"cpp", "cmake", "sh"})
        self.assertEqual(set(fences[1::2]), {""})


class Page(unittest.TestCase):
    def test_each_data_member_has_its_writer_and_unit(self):
        with open(os.path.join(TOOLKIT, "CGlutMenu.h")) as file:
            members = data_members(file.read())
        self.assertGreater(min(len(names) for names in members.values()), 5)
        self.assertEqual(told_of(page()), members)

    def test_each_part_is_shown_in_a_small_picture(self):
        for part in PARTS:
            with self.subTest(part=part):
                self.assertIn(f"](glutmenu/{part}.png)", page())
                path = os.path.join(DOCS, "glutmenu", part + ".png")
                self.assertLess(os.path.getsize(path), 40_000)


class TheScanItself(unittest.TestCase):
    HEADER = """
extern float width;
void timer_func(int value);
class A;
using B = void (*)(int& item, A* menu);
class A {
  public:
    A(const A&) = delete;
    void Render();
    static bool lit;  // a comment
    float x, y;
    float colour[4];
    std::map<int, A*> children;
    A* parent;

  private:
    int hidden;
};
extern A* top;
"""

    def test_it_finds_the_data_a_program_sees(self):
        self.assertEqual(data_members(self.HEADER), {
            "": {"width", "top"}, "A": {"lit", "x", "y", "colour", "children", "parent"}})


if __name__ == "__main__":
    unittest.main()

"""The table in docs/architecture.md is true: no file includes or calls what its row does not allow."""

import os
import re
import unittest

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))

# What the use of a library looks like: headers it is included by, and calls.
LIBRARIES = {
    "GLUT": (r"GL/(free)?glut\w*\.h", r"\bglut[A-Z]\w*\s*\("),
    "OpenGL": (r"GL/glu?\.h", r"\b(gl|glu)[A-WYZ][A-Za-z0-9]*\s*\("),
    "X11": (r"X11/.*|GL/glx\.h|gdk/gdkx\.h", r"\b(glX|Xkb|XChange|XIntern|XRebind|XSet)[A-Z]\w*\s*\("),
    "GTK": (r"(gtk|gdk|glib|gio)/.*|glib\.h", r"\b(gtk|gdk|g)_[a-z]\w*\s*\("),
    "AppKit": (r"(AppKit|Cocoa|Foundation)/.*", r"\bNS(Open|Save)Panel\b"),
    "OpenCL": (r"CL/.*|OpenCL/.*", r"\bcl[A-Z][A-Za-z0-9]*\s*\("),
    "Highway": (r"hwy/.*", r"\bhwy::"),
    "Benchmark": (r"benchmark/.*", r"\bbenchmark::"),
}
CODE = (".cpp", ".h", ".mm", ".inc")


def read_table(text):
    """Rows of the page's table: {path prefix: (allowed includes, allowed libraries)}."""
    rows = {}
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if line.startswith("| `") and len(cells) == 3:
            libraries = [] if cells[2] == "none" else re.split(r",\s*", cells[2])
            rows[cells[0].strip("`")] = (re.findall(r"`([^`]+)`", cells[1]), libraries)
    return rows


def without_comments_and_texts(code):
    """The code with comments, strings and raw strings blanked, include lines kept."""
    code = re.sub(r'R"(\w*)\((.*?)\)\1"', '""', code, flags=re.S)
    code = re.sub(r"//[^\n]*|/\*.*?\*/", "", code, flags=re.S)
    return re.sub(r'(?<!#include )"(\\.|[^"\\\n])*"', '""', code)


def sources():
    for folder in ("app", "backends", "commands", "compute", "explorer", "frac", "GlutMenu", "bench"):
        for path, _folders, files in os.walk(os.path.join(SOURCE, folder)):
            for name in files:
                if name.endswith(CODE):
                    yield os.path.relpath(os.path.join(path, name), SOURCE)


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


class Architecture(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.rows = read_table(read("docs/architecture.md"))

    def row_for(self, path):
        matching = [prefix for prefix in self.rows if path.startswith(prefix)]
        self.assertTrue(matching, f"{path} has no row in docs/architecture.md")
        return self.rows[max(matching, key=len)]

    def test_the_table_names_only_known_libraries(self):
        named = {library for _, libraries in self.rows.values() for library in libraries}
        self.assertEqual(named - set(LIBRARIES), set())

    def test_every_row_is_about_something_that_exists(self):
        paths = list(sources())
        for prefix in self.rows:
            with self.subTest(row=prefix):
                self.assertTrue(any(path.startswith(prefix) for path in paths))

    def test_files_include_only_what_their_row_allows(self):
        for path in sources():
            allowed, _ = self.row_for(path)
            own = os.path.splitext(path)[0]
            for include in re.findall(r'^\s*#\s*include "([^"]+)"', read(path), flags=re.M):
                with self.subTest(file=path, include=include):
                    self.assertTrue(
                        any(include.startswith(prefix) for prefix in allowed + [own]),
                        f"{path} may include from {allowed} only",
                    )

    def test_includes_are_written_from_the_root(self):
        for path in sources():
            for include in re.findall(r'^\s*#\s*include "([^"]+)"', read(path), flags=re.M):
                with self.subTest(file=path, include=include):
                    self.assertIn("/", include)

    def test_files_use_only_the_libraries_of_their_row(self):
        for path in sources():
            _, allowed = self.row_for(path)
            code = read(path)
            included = re.findall(r"^\s*#\s*(?:include|import) <([^>]+)>", code, flags=re.M)
            stripped = without_comments_and_texts(code)
            for library, (header, call) in LIBRARIES.items():
                if library in allowed:
                    continue
                with self.subTest(file=path, library=library):
                    self.assertEqual([h for h in included if re.fullmatch(header, h)], [])
                    self.assertIsNone(re.search(call, stripped))


class TheScanItself(unittest.TestCase):
    def test_a_row_is_read(self):
        rows = read_table("| Where | x |\n| `a/` | `a/` `b/c.h` | GLUT, OpenGL |\n")
        self.assertEqual(rows, {"a/": (["a/", "b/c.h"], ["GLUT", "OpenGL"])})

    def test_comments_and_strings_are_not_calls(self):
        code = 'int x; // glutInit(\nchar* s = "glutInit(";\n/* glutInit( */'
        self.assertNotIn("glutInit", without_comments_and_texts(code))

    def test_calls_are_told_apart(self):
        self.assertRegex("glutInit (a)", LIBRARIES["GLUT"][1])
        self.assertRegex("glBegin(GL_QUADS)", LIBRARIES["OpenGL"][1])
        self.assertNotRegex("glutInit(a)", LIBRARIES["OpenGL"][1])
        self.assertNotRegex("glXGetCurrentDisplay()", LIBRARIES["OpenGL"][1])


if __name__ == "__main__":
    unittest.main()

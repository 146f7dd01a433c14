"""The table in docs/architecture.md is true: no file includes or calls what its row does not
allow, every include points down, and neither folders nor files stand in a circle."""

import collections
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
    "CLI11": (r"CLI/.*", r"\bCLI::"),
    "JSON": (r"nlohmann/.*", r"\bnlohmann::"),
    "zlib": (r"zlib\.h", r"\b(in|de)flate[A-Z]\w*\s*\("),
    "ISA-L": (r"isa-l/.*", r"\bisal_\w+\s*\("),
    "MPFR": (r"mpfr\.h", r"\bmpfr_\w+\s*\("),
    "GMP": (r"gmp\.h", r"\bmpz_\w+\s*\("),
    "PNG": (r"png\.h", r"\bpng_\w+\s*\("),
}
CODE = (".cpp", ".h", ".mm", ".inc")
NOT_THE_PROGRAM = ("tests", "build", "out")

# floor: what a row may include lies on lower ones; includes and libraries: beside its own folder.
Row = collections.namedtuple("Row", "floor includes libraries")


def read_table(text):
    """Rows of the page's table: {path prefix: Row}."""
    rows = {}
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if len(cells) == 5 and cells[0].isdigit():
            libraries = [] if cells[4] == "none" else re.split(r",\s*", cells[4])
            rows[cells[1].strip("`")] = Row(int(cells[0]), re.findall(r"`([^`]+)`", cells[3]), libraries)
    return rows


def row_for(rows, path):
    """(prefix, row) that holds for a path: the most specific one; None where there is none."""
    matching = [prefix for prefix in rows if path.startswith(prefix)]
    return max(((prefix, rows[prefix]) for prefix in matching), key=lambda r: len(r[0]), default=None)


def includes_of(code):
    return re.findall(r'^\s*#\s*include "([^"]+)"', code, flags=re.M)


def unit(path):
    """A header and its source are one unit: they can only be understood together."""
    return os.path.splitext(path)[0]


def folder(path):
    """The folder that a path lies in, a folder's own subfolders included."""
    return path.split("/")[0]


def graph_of(tree, node):
    """{node: the other nodes it includes} of a tree {path: code}, where node(path) names a path's."""
    graph = {}
    for path, code in tree.items():
        reached = graph.setdefault(node(path), set())
        reached |= {node(include) for include in includes_of(code)} - {node(path)}
    return graph


def circle_in(graph):
    """The nodes of some circle, the first one repeated at the end; an empty list when there is none."""
    done = set()

    def walk(node, trail):
        if node in trail:
            return trail[trail.index(node) :] + [node]
        if node in done:
            return []
        for following in sorted(graph.get(node, ())):
            found = walk(following, trail + [node])
            if found:
                return found
        done.add(node)
        return []

    return next(filter(None, (walk(node, []) for node in sorted(graph))), [])


def offences(rows, tree):
    """What is wrong with a table's floors and with the includes of a tree {path: code}, in words."""
    found = []
    for prefix, row in rows.items():
        for allowed in row.includes:
            below = row_for(rows, allowed)
            if below is None or below[1].floor >= row.floor:
                found.append(f"the row of {prefix} points at {allowed}, which is not below it")
    for path, code in tree.items():
        own = row_for(rows, path)
        if own is None:
            found.append(f"{path} has no row")
            continue
        for include in includes_of(code):
            there = row_for(rows, include)
            allowed = include.startswith((*own[1].includes, folder(path) + "/"))
            if not allowed or there is None or there[1].floor > own[1].floor:
                found.append(f"{path} may not include {include}")
    for what, node in (("folders", folder), ("files", unit)):
        circle = circle_in(graph_of(tree, node))
        if circle:
            found.append(f"{what} in a circle: {' -> '.join(circle)}")
    return found


def without_comments_and_texts(code):
    """The code with comments, strings and raw strings blanked, include lines kept."""
    code = re.sub(r'R"(\w*)\((.*?)\)\1"', '""', code, flags=re.S)
    code = re.sub(r"//[^\n]*|/\*.*?\*/", "", code, flags=re.S)
    return re.sub(r'(?<!#include )"(\\.|[^"\\\n])*"', '""', code)


def sources():
    for path, folders, files in os.walk(SOURCE):
        if path == SOURCE:
            folders[:] = [f for f in folders if not f.startswith((".", *NOT_THE_PROGRAM))]
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

    def test_every_include_points_down_and_none_in_a_circle(self):
        self.assertEqual(offences(self.rows, {path: read(path) for path in sources()}), [])

    def test_the_table_names_only_known_libraries(self):
        named = {library for row in self.rows.values() for library in row.libraries}
        self.assertEqual(named - set(LIBRARIES), set())

    def test_every_row_is_about_something_that_exists(self):
        paths = list(sources())
        for prefix in self.rows:
            with self.subTest(row=prefix):
                self.assertTrue(any(path.startswith(prefix) for path in paths))

    def test_includes_are_written_from_the_root(self):
        for path in sources():
            for include in includes_of(read(path)):
                with self.subTest(file=path, include=include):
                    self.assertIn("/", include)

    def test_files_use_only_the_libraries_of_their_row(self):
        for path in sources():
            allowed = row_for(self.rows, path)[1].libraries
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
    ROWS = {
        "top/": Row(3, ["middle/", "low/"], []),
        "middle/": Row(2, ["low/"], []),
        "beside/": Row(2, ["low/"], []),
        "low/": Row(1, [], []),
        "low/odd": Row(1, [], []),
        "low/demo/": Row(2, ["low/"], []),
    }

    def offences(self, **includes):
        """Of a tree of made-up files: top_a_h=["low/b.h"] is a file top/a.h that includes low/b.h."""
        tree = {}
        for name, included in includes.items():
            *places, stem, ending = name.split("_")
            place = "/".join(places)
            code = "".join(f'#include "{include}"\n' for include in included)
            tree[f"{place}/{stem}.{ending}"] = code
        return offences(self.ROWS, tree)

    def test_a_row_is_read(self):
        rows = read_table("| Floor | x |\n| 2 | `a/` | text `c` | `b/` `b/c.h` | GLUT, OpenGL |\n")
        self.assertEqual(rows, {"a/": Row(2, ["b/", "b/c.h"], ["GLUT", "OpenGL"])})

    def test_a_row_without_includes_and_libraries_is_read(self):
        self.assertEqual(read_table("| 1 | `a/` | text | | none |\n"), {"a/": Row(1, [], [])})

    def test_includes_that_point_down_pass(self):
        self.assertEqual(
            self.offences(top_a_cpp=["top/a.h", "low/b.h"], top_a_h=["middle/c.h"], low_b_h=["low/d.h"],
                          low_odd_cpp=["low/odd.h", "low/b.h"]),
            [],
        )

    def test_an_upward_include_is_refused(self):
        self.assertEqual(self.offences(low_b_cpp=["top/a.h"]), ["low/b.cpp may not include top/a.h"])

    def test_a_sideways_include_is_refused(self):
        self.assertEqual(
            self.offences(middle_b_h=["beside/a.h"]), ["middle/b.h may not include beside/a.h"]
        )

    def test_an_upward_include_of_a_file_with_a_row_of_its_own_is_refused(self):
        self.assertEqual(self.offences(low_odd_h=["top/a.h"]), ["low/odd.h may not include top/a.h"])

    def test_a_subfolder_on_a_higher_floor_is_above_its_folder(self):
        self.assertEqual(self.offences(low_demo_a_cpp=["low/b.h"]), [])
        self.assertEqual(
            self.offences(low_b_h=["low/demo/a.h"]), ["low/b.h may not include low/demo/a.h"]
        )

    def test_a_file_without_a_row_is_refused(self):
        self.assertEqual(self.offences(new_a_h=[]), ["new/a.h has no row"])

    def test_a_row_that_points_up_or_sideways_is_refused(self):
        for allowed in ("top/", "beside/", "middle/"):
            with self.subTest(allowed=allowed):
                self.assertEqual(
                    offences({**self.ROWS, "middle/": Row(2, [allowed], [])}, {}),
                    [f"the row of middle/ points at {allowed}, which is not below it"],
                )

    def test_headers_in_a_circle_are_refused(self):
        self.assertEqual(
            self.offences(low_a_h=["low/b.h"], low_b_h=["low/c.h"], low_c_h=["low/a.h"]),
            ["files in a circle: low/a -> low/b -> low/c -> low/a"],
        )

    def test_sources_that_need_each_others_headers_are_a_circle(self):
        self.assertEqual(
            self.offences(low_a_cpp=["low/a.h", "low/b.h"], low_b_cpp=["low/b.h", "low/a.h"]),
            ["files in a circle: low/a -> low/b -> low/a"],
        )

    def test_two_ways_to_one_file_are_no_circle(self):
        self.assertEqual(
            self.offences(low_a_h=["low/b.h", "low/c.h"], low_b_h=["low/d.h"], low_c_h=["low/d.h"]), []
        )

    def test_folders_in_a_circle_are_refused_even_where_no_file_is(self):
        found = self.offences(top_a_h=["low/b.h"], low_c_h=["top/d.h"])
        self.assertIn("folders in a circle: low -> top -> low", found)
        self.assertFalse(any(offence.startswith("files") for offence in found))

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

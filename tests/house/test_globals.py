"""Every mutable global of the built program has one home: an `extern` in a header of its folder with a
comment that says who writes and reads it, or a line in file_statics.txt with a reason."""

import os
import re
import subprocess
import unittest

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
BUILD = os.environ.get("TESSARY_BUILD", os.path.join(SOURCE, "build", "release"))
FOLDERS = ("app", "backends", "commands", "compute", "explorer", "frac", "GlutMenu")
LIST = "tests/house/file_statics.txt"

# One line of `objdump -t`: binding (g global, l local, u unique, w weak), section, demangled name.
SYMBOL = re.compile(r"^[0-9a-f]+ (.)(.)....[O ]\s+(\.\S+|\*COM\*)\t[0-9a-f]+\s+(?:\.hidden )?(.+)$")
# Read-only once the program has started, or a mere name for the linker (.group).
CONSTANT = re.compile(r"\.(group|rodata|data\.rel\.ro|text|init_array|fini_array|eh_frame|gcc_except|note|comment|debug)")
# What the compiler, the standard library and libraries of headers make for themselves.
MADE_BY_COMPILER = re.compile(r"^(guard variable for |std::|CLI::|nlohmann::|__|\.L|DW\.ref|_ZL?Z?GV|vtable|typeinfo)")

DECLARATION = re.compile(r"\s*(extern(?! \"C\")|static|inline static|inline thread_local)\b")


def objects():
    """(object, source relative to the root) of everything the program is linked from."""
    for folder in FOLDERS:
        for path, _folders, files in os.walk(os.path.join(BUILD, folder, "CMakeFiles")):
            for name in files:
                if not name.endswith(".o"):
                    continue
                target = re.search(r"CMakeFiles/[^/]+\.dir/(.*)", os.path.join(path, name))[1]
                inside = target[:-2].replace("__/", "../")
                source = os.path.normpath(os.path.join(folder, inside))
                if os.path.exists(os.path.join(SOURCE, source)):
                    yield os.path.join(path, name), source


def plain(name):
    """A demangled name without anonymous namespaces, compiler suffixes and ABI tags."""
    name = name.replace("(anonymous namespace)::", "")
    return re.sub(r"( \[clone[^]]*\]|\[abi:\w+\]|\.\w+)+$", "", name)


def mutable_symbols(listing):
    """(name, is global) of every mutable object in the output of `objdump -t -C`."""
    for line in listing.splitlines():
        match = SYMBOL.match(line)
        if not match or CONSTANT.match(match[3]) or MADE_BY_COMPILER.match(match[4]):
            continue
        if match[4] == match[3]:  # the section's own symbol
            continue
        yield plain(match[4]), match[1] != "l"


def extern_declarations(header):
    """{name: comment directly above} of the variables that a header declares, static members
    included; None in place of the comment where the variable is constant."""
    found = {}
    lines = header.splitlines()
    for number, line in enumerate(lines):
        if not DECLARATION.match(line):
            continue
        statement = " ".join(lines[number:]).split(";")[0]
        statement = re.sub(r"<[^()]*>", "", statement)
        statement = statement.split("=")[0].split("{")[0]
        if "(" in statement:
            continue
        constant = re.search(r"\b(const|constexpr)\b[^*]*$", statement)
        above = []
        first = number  # a comment is about all declarations that follow it without a gap
        while first > 0 and DECLARATION.match(lines[first - 1]):
            first -= 1
        for comment in reversed(lines[:first]):
            if not comment.strip().startswith("//"):
                break
            above.insert(0, comment.strip(" /"))
        for part in statement.split(","):
            name = re.search(r"(\w+)\s*(\[[^]]*\]\s*)*$", part.strip())
            found[name[1]] = None if constant else " ".join(above)
    return found


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


def listed_statics():
    """{(file, name): reason} of the list."""
    found = {}
    for line in read(LIST).splitlines():
        if line and not line.startswith("#"):
            place, _, reason = line.partition(": ")
            file, name = place.split(None, 1)
            found[file, name] = reason.strip()
    return found


def declarations_of(folder):
    found = {}
    for path, _folders, files in os.walk(os.path.join(SOURCE, folder)):
        for name in files:
            if name.endswith(".h"):
                with open(os.path.join(path, name), encoding="utf-8") as file:
                    found.update(extern_declarations(file.read()))
    return found


@unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers add symbols of their own")
class Globals(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.symbols = set()
        for path, source in objects():
            listing = subprocess.run(
                ["objdump", "-t", "-C", path], capture_output=True, text=True, check=True
            ).stdout
            cls.symbols |= {(source, *symbol) for symbol in mutable_symbols(listing)}

    def test_the_objects_are_found(self):
        names = {name for _, name, _ in self.symbols}
        self.assertLessEqual({"xMin", "update_count", "poolWords", "menu"}, names)

    def test_every_global_stands_in_a_header_of_its_folder(self):
        for source, name, is_global in sorted(self.symbols):
            if is_global:
                with self.subTest(file=source, name=name):
                    declared = declarations_of(source.split("/")[0])
                    self.assertTrue(name.split("::")[-1] in declared)

    def test_what_stands_without_a_window_keeps_nothing_that_a_picture_depends_on(self):
        kept = {name for file, name, _ in self.symbols if file.startswith(("compute/", "frac/"))}
        harmless = {
            "chunksWithoutFloat",  # what a thread expects of its next chunks: time, not pixels
            "cycleDetection",  # a switch of tests and benchmarks
            "lastOfThread",  # the discs of the constant that a thread had last: time, not pixels
            "lastRegion",  # where the orbits of a thread's last constant stay: time, not pixels
            "lastChunkRepeated",  # what a thread expects of its next chunk: time, not pixels
            "presets",  # never written
            "scalarAlone",  # a switch of tests and benchmarks
        }
        self.assertEqual({name for name in kept if name.split("::")[-1] not in harmless}, set())

    def test_every_declared_global_says_who_uses_it(self):
        for folder in FOLDERS:
            for name, comment in declarations_of(folder).items():
                with self.subTest(folder=folder, name=name):
                    if comment is None:
                        continue
                    self.assertRegex(comment, r"(?i)\b(thread|lock|written|writes?|guards)\b")

    def test_every_static_is_listed_with_a_reason(self):
        listed = listed_statics()
        for source, name, is_global in sorted(self.symbols):
            if not is_global:
                with self.subTest(file=source, name=name):
                    self.assertGreater(len(listed.get((source, name), "")), 10, f"see {LIST}")

    def test_the_list_names_nothing_that_is_gone(self):
        for file, name in listed_statics():
            with self.subTest(file=file, name=name):
                word = re.search(r"(\w+)$", name)[1]
                self.assertRegex(read(file), rf"\b{word}\b")


class TheScanItself(unittest.TestCase):
    LISTING = (
        "0000000000000000 g     O .bss\t0000000000000008 xMin\n"
        "0000000000000000 l     O .bss\t0000000000000001 (anonymous namespace)::bInit\n"
        "0000000000000000 l     O .data.rel.ro.local\t0000000000000010 names\n"
        "0000000000000000 l     O .bss\t0000000000000001 std::__ioinit\n"
        "0000000000000000 l    d  .bss\t0000000000000000 .bss\n"
        "0000000000000000 u     O .bss._ZN1A1bE\t0000000000000004 A::b\n"
    )

    def test_mutable_symbols_are_told_from_constants(self):
        self.assertEqual(
            list(mutable_symbols(self.LISTING)), [("xMin", True), ("bInit", False), ("A::b", True)]
        )

    def test_constants_need_no_comment(self):
        header = "extern const std::string s;\nextern const char* p;\n"
        self.assertEqual(extern_declarations(header), {"s": None, "p": ""})

    def test_names_of_one_declaration_share_its_comment(self):
        header = "// GLUT thread.\nextern std::map<int, int> a, b[2];\n\nextern int f(int);\nextern int c;\n"
        self.assertEqual(
            extern_declarations(header), {"a": "GLUT thread.", "b": "GLUT thread.", "c": ""}
        )


if __name__ == "__main__":
    unittest.main()

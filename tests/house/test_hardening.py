"""What makes a mistake harder to use is in the programs that are built: read from the programs, and
tried on small wrong programs that are compiled and linked as they are."""

import json
import os
import platform
import re
import shlex
import subprocess
import tempfile
import unittest

import harness

PROGRAMS = ("tessary", "tessary-frac", "tessary-render")
ENDBR64 = bytes.fromhex("f30f1efa")
X86_64 = platform.machine() == "x86_64"

# Sixteen bytes into eight whose number only the running program knows: the third level of fortifying
# finds it, the second does not.
TOO_MANY_FOR_THE_HEAP = """
#include <cstdlib>
#include <cstring>
int main(int argc, char** argv) {
    char* few = static_cast<char*>(std::malloc(8u * static_cast<unsigned>(argc)));
    if (!few) return 1;
    std::memset(few, argv[0][0], 16u * static_cast<unsigned>(argc));
    return few[3] == 'x';
}
"""

# Too short an array for any but the strong protector to guard.
TOO_MANY_FOR_THE_STACK = """
__attribute__((noinline)) void fill(char* place, int count) {
    for (volatile int i = 0; i < count; i = i + 1) place[i] = 'x';
}
__attribute__((noinline)) int overrun(int count) {
    char few[4];
    fill(few, count);
    return few[1];
}
int main(int argc, char**) { return overrun(64 * argc); }
"""

PAST_THE_END = """
#include <vector>
int main(int argc, char**) {
    const std::vector<int> few(static_cast<unsigned>(argc));
    return few[static_cast<unsigned>(argc)];
}
"""


def readelf(option, program):
    done = subprocess.run(["readelf", "--wide", option, os.path.join(harness.BUILD, program)],
                          check=True, capture_output=True, text=True)
    return done.stdout


def build_type():
    with open(os.path.join(harness.BUILD, "CMakeCache.txt"), encoding="utf-8") as cache:
        return re.search(r"^CMAKE_BUILD_TYPE:\w+=(\w*)", cache.read(), flags=re.M)[1]


def compile_commands(build):
    """The command line of each file of ours, by its path below the sources."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    return {os.path.relpath(entry["file"], harness.SOURCE): shlex.split(entry["command"])
            for entry in entries}


def run_compiled_alike(command, code):
    """Runs a program of this code, compiled with a file's options and linked as the programs are."""
    compiler = command[:command.index(next(a for a in command if a.startswith("-")))]
    options = [a for a in command if re.match(r"-[OfgDU]", a)]
    with tempfile.TemporaryDirectory() as folder:
        source, program = os.path.join(folder, "wrong.cpp"), os.path.join(folder, "wrong")
        with open(source, "w", encoding="utf-8") as file:
            file.write(code)
        subprocess.run([*compiler, "-w", *options, source, "-o", program], check=True)
        return subprocess.run([program], capture_output=True, text=True, cwd=folder)


@unittest.skipIf(harness.SANITIZE, "sanitizers bring checks of their own")
class Programs(unittest.TestCase):
    def assert_in_each(self, option, pattern):
        for program in PROGRAMS:
            with self.subTest(program=program):
                self.assertRegex(readelf(option, program), pattern)

    def test_they_are_loaded_anywhere(self):
        self.assert_in_each("--file-header", r"Type: +DYN")
        self.assert_in_each("--dynamic", r"FLAGS_1.*\bPIE\b")

    def test_their_tables_of_functions_are_filled_at_once_and_locked(self):
        self.assert_in_each("--program-headers", r"GNU_RELRO")
        self.assert_in_each("--dynamic", r"FLAGS_1.*\bNOW\b")

    def test_their_stack_and_data_cannot_be_executed(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                headers = readelf("--program-headers", program)
                self.assertRegex(headers, r"GNU_STACK( +0x\w+){5} RW +0x")
                self.assertNotRegex(headers, r" RWE ")

    def test_they_guard_their_stack(self):
        self.assert_in_each("--dyn-syms", r"UND __stack_chk_fail")

    @unittest.skipIf(build_type() == "Debug", "checked calls need optimisation")
    def test_they_call_the_checked_functions_of_the_c_library(self):
        self.assert_in_each("--dyn-syms", r"UND __\w+_chk@")

    @unittest.skipUnless(X86_64, "marks of x86")
    def test_every_function_that_others_can_name_is_a_marked_place_to_jump_to(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                functions = list(self.public_functions(program))
                self.assertGreater(len(functions), 300)
                self.assertEqual([name for name, start in functions if start != ENDBR64], [])

    def public_functions(self, program):
        """Name and first bytes of the functions of a program, but for the C library's entry."""
        text = re.search(r"\.text +PROGBITS +(\w+) (\w+) (\w+)", readelf("--sections", program))
        address, offset, size = (int(number, 16) for number in text.groups())
        with open(os.path.join(harness.BUILD, program), "rb") as file:
            content = file.read()
        for line in readelf("--syms", program).splitlines():
            found = re.search(r": (\w+) +\d+ FUNC +(?:GLOBAL|WEAK) +\w+ +\d+ (\S+)", line)
            if found and 0 <= (at := int(found[1], 16) - address) < size and found[2] != "_start":
                yield found[2], content[offset + at:offset + at + 4]


@unittest.skipIf(harness.SANITIZE, "sanitizers bring checks of their own")
class OtherBuilds(unittest.TestCase):
    """How a build folder of somebody else compiles, with nothing asked for and for finding
    mistakes."""

    @classmethod
    def setUpClass(cls):
        cls.commands = {kind: cls.configured(*options)
                        for kind, options in (("plain", []), ("debug", ["-DCMAKE_BUILD_TYPE=Debug"]))}

    @classmethod
    def configured(cls, *options):
        folder = tempfile.TemporaryDirectory(prefix="tessary-hardening-")
        cls.addClassCleanup(folder.cleanup)
        return cls.configured_again(folder.name, *options)

    @classmethod
    def configured_again(cls, folder, *options):
        subprocess.run(["cmake", "-S", harness.SOURCE, "-B", folder, "-G", "Ninja", *options],
                       check=True, capture_output=True)
        return compile_commands(folder)

    def assert_every_file_is_compiled_with(self, kind, *options):
        commands = self.commands[kind]
        self.assertGreater(len(commands), 100)
        # What may become part of a shared library is independent of its place by -fPIC.
        without = [path for path, command in commands.items()
                   if not set(options) <= {"-fPIE" if word == "-fPIC" else word for word in command}]
        self.assertEqual(without, [])

    def test_a_build_that_asks_for_nothing_is_hardened(self):
        self.assert_every_file_is_compiled_with(
            "plain", "-O3", "-D_FORTIFY_SOURCE=3", "-fstack-protector-strong", "-fPIE")

    def test_one_for_finding_mistakes_checks_indices(self):
        self.assert_every_file_is_compiled_with(
            "debug", "-D_GLIBCXX_ASSERTIONS", "-fstack-protector-strong", "-fPIE")

    def test_too_many_bytes_for_the_heap_end_the_program(self):
        done = run_compiled_alike(self.commands["plain"]["app/main.cpp"], TOO_MANY_FOR_THE_HEAP)
        self.assertIn("buffer overflow detected", done.stderr)

    def test_too_many_bytes_for_the_stack_end_the_program(self):
        done = run_compiled_alike(self.commands["plain"]["app/main.cpp"], TOO_MANY_FOR_THE_STACK)
        self.assertIn("stack smashing detected", done.stderr)

    def test_what_a_sanitizer_build_leaves_out_is_there_again_without_the_sanitizer(self):
        with tempfile.TemporaryDirectory(prefix="tessary-hardening-") as folder:
            skipped = [self.skipped_targets(self.configured_again(folder, f"-DTESSARY_SANITIZE={kind}"))
                       for kind in ("address", "", "thread")]
        self.assertEqual(skipped, ["(HWY_SSSE3|HWY_SSE4|HWY_AVX2)", "", "(HWY_SSSE3|HWY_SSE4|HWY_AVX2)"])

    def skipped_targets(self, commands):
        start = "-DTESSARY_SKIPPED_TARGETS="
        return "".join(word[len(start):] for word in commands["compute/vector_renderer.cpp"]
                       if word.startswith(start))

    def test_an_index_past_the_end_ends_a_program_for_finding_mistakes(self):
        done = run_compiled_alike(self.commands["debug"]["app/main.cpp"], PAST_THE_END)
        self.assertIn("Assertion", done.stderr)


if __name__ == "__main__":
    unittest.main()

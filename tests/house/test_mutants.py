"""Changes that are compiled together and chosen do what each does that is built by itself."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from collections import Counter

from sources import SOURCE

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(SOURCE, "tests", "mutants"))
import mutants  # noqa: E402
from changes import mutants_of  # noqa: E402
from schema import CHOICE, VARIABLE, Schema, errors_in, errors_on_the_way  # noqa: E402

COMPILER = shutil.which("g++") or shutil.which("clang++")

# Every place that a change may stand in, in as few lines as that takes.
PROGRAM = """
extern "C" int printf(const char*, ...);
struct Base { int a = 3; };
constexpr int LIMIT = 5;
const int TABLE[] = {LIMIT + 1, 7};
constexpr int half(int n) { return n / 2; }
static_assert(half(8) > 0);
enum class Kind { one = 1, two };
template <class T> T twice(const T& x) { return x + x; }
struct Point : Base {
    double x, y{2 + 1};
    Point(double a, double b) : x(a - 1), y{b * 2} { x += 1; }
    bool inside(double limit) const { return x * x + y * y <= limit && x > 0; }
};
static int count(int n) {
    int sum = 0;
    for (int i = 0, j = 5; i < n && j < 40; ++i, ++j) {
        if (i % 3 == 1) continue;
        sum += i;
        if (sum > 20 || i == 9) break;
    }
    while (sum > 100) sum /= 2;
    switch (n) {
    case 1: return sum - 2;
    default: break;
    }
    return sum;
}
int main() {
    const int numbers[3] = {1, 2, 3};
    const Point p(1.5, 2.5);
    const int six = 6;
    int n = half(six) - 3, m = n + TABLE[0] - 5;
    const auto f = [&](int k) { n += k; return k < 2; };
    const bool is = f(1) && f(3);
    printf("%d %d %d %d %d %d\\n", numbers[1], p.inside(40.0), count(1), count(12), n + m, is);
    if (const int k = m + 4; k > 3) printf("%d\\n", k << 1);
    printf("%d %g %g %d\\n", twice(n - 1), p.x, p.y, p.a + LIMIT + static_cast<int>(Kind::two));
    return 0;
}
"""


def compiled(folder, name, text):
    """A program, or None and what the compiler said."""
    source, program = os.path.join(folder, f"{name}.cpp"), os.path.join(folder, name)
    with open(source, "w", encoding="utf-8") as file:
        file.write(text)
    done = subprocess.run([COMPILER, "-std=c++20", "-O0", "-w", "-Wno-narrowing", "-include",
                           os.path.join(folder, "choice.h"), source, "-o", program],
                          capture_output=True, text=True)
    return (program if done.returncode == 0 else None), done.stderr


def printed(program, number=0):
    """What a program prints and ends with; one that finds no end is stopped."""
    try:
        done = subprocess.run(["timeout", "--preserve-status", "-s", "KILL", "20", program],
                              capture_output=True, env={VARIABLE: str(number)},
                              preexec_fn=limit)
    except OSError as error:
        return str(error)
    return done.returncode, done.stdout if done.returncode >= 0 else b""


def limit():
    import resource
    resource.setrlimit(resource.RLIMIT_CPU, (1, 2))


@unittest.skipUnless(COMPILER, "there is no compiler")
class Together(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="tessary-mutants-")
        with open(os.path.join(cls.folder, "choice.h"), "w", encoding="utf-8") as file:
            file.write(CHOICE)
        cls.changes = dict(enumerate(mutants_of(PROGRAM, "x.cpp"), 1))
        cls.schema = Schema(PROGRAM, cls.changes)
        cls.program = cls.fitted()

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    @classmethod
    def fitted(cls):
        """The program of all changes that compile."""
        path = os.path.join(cls.folder, "all.cpp")
        while True:
            program, said = compiled(cls.folder, "all", "".join(cls.schema.written().pieces))
            if program:
                return program
            assert cls.schema.drop(errors_in(said, path) or errors_on_the_way(said, path)), said

    def test_the_program_is_itself_where_none_is_chosen(self):
        alone, _ = compiled(self.folder, "unchanged", PROGRAM)
        self.assertEqual(printed(self.program), printed(alone))

    def test_a_chosen_change_does_what_it_does_by_itself(self):
        # Every third: each is a program to be compiled.
        for number in self.schema.numbers()[::3]:
            change = self.changes[number]
            with self.subTest(change=str(change)):
                alone, said = compiled(self.folder, "alone",
                                       PROGRAM[:change.start] + change.new + PROGRAM[change.end:])
                self.assertTrue(alone, said)
                self.assertEqual(printed(self.program, number), printed(alone))

    def test_only_what_the_compiler_evaluates_or_refuses_is_left_out(self):
        left = [self.changes[n] for n in self.changes.keys() - set(self.schema.numbers())]
        for change in left:
            if not any(word in change.before for word in ("constexpr", "static_assert", "enum", "case", "numbers[3]", "Point(double")):
                with self.subTest(change=str(change)):
                    text = PROGRAM[:change.start] + change.new + PROGRAM[change.end:]
                    self.assertIsNone(compiled(self.folder, "left", text)[0])
        self.assertGreater(len(self.schema.numbers()), 100)


class Complaints(unittest.TestCase):
    SAID = """In file included from /x/a.h:3,
                 from /x/b.cpp:5:
/x/c.h:30: note: where it is asked for
/x/b.cpp:7:2: note: required from here
/x/b.cpp:12:9: error: no match
"""

    def test_lines_with_an_error_are_read_of_the_file_alone(self):
        self.assertEqual(errors_in(self.SAID, "/x/b.cpp"), {12})
        self.assertEqual(errors_in(self.SAID, "/x/a.h"), set())

    def test_lines_on_the_way_are_all_that_are_named_of_it(self):
        self.assertEqual(errors_on_the_way(self.SAID, "/x/b.cpp"), {5, 7, 12})
        self.assertEqual(errors_on_the_way(self.SAID, "/x/a.h"), {3})


class Listed(unittest.TestCase):
    KNOWN = mutants.known_equivalents()

    def test_every_change_can_still_be_made(self):
        self.assertGreater(len(self.KNOWN), 50)
        self.assertEqual(mutants.unmatched(self.KNOWN), set())

    def test_one_of_another_line_or_source_is_noticed(self):
        path, before, after = next(iter(self.KNOWN))
        others = {(path, before + " more", after), (path, before, before),
                  ("GlutMenu/Gone.cpp", before, after)}
        self.assertEqual(mutants.unmatched(self.KNOWN | others), others)


class Sums(unittest.TestCase):
    def test_the_interval_of_a_sample_is_wilsons(self):
        # 81 of 263: the example of Newcombe (1998), table I.
        low, high = mutants.interval(81, 263)
        self.assertAlmostEqual(low, 0.2553, 4)
        self.assertAlmostEqual(high, 0.3662, 4)

    def test_listed_and_unfit_changes_count_for_nothing(self):
        counts = Counter({"killed": 1, mutants.LISTED: 5, mutants.NO_CODE: 7})
        self.assertIn("100.0 % noticed", mutants.estimate(counts))


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
r"""Changes C++ sources one token at a time and reports the changes that no test notices.

    mutants.py [SOURCE[:FIRST-LAST] ...]

Without a source: all of compute/, commands/ and GlutMenu/, which takes a day or two.

Every change is made in a copy of the working tree, so that the tree itself stays as it is. The
copy is configured once, without optimisation worth the name and for one instruction set; then for
every change the first test's target is built and run, and, if it passes, the next one's. A change
is killed when a test fails, crashes or runs out of time. What does not compile counts for nothing.
Which tests are a source's own says TESTS_OF below; other sources need --test.

Survivors that cannot change a result are listed, with the reason, in equivalent.txt: they are
matched by the text of their line, so that the list outlives edits elsewhere.

The sources are expected in the format of this project, which puts spaces around binary operators
and around no other.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EQUIVALENT = Path(__file__).with_name("equivalent.txt")
ONE_TARGET = "TESSARY_SKIPPED_TARGETS=(HWY_SSSE3|HWY_SSE4|HWY_AVX3)"

# The tests of a source, cheapest first: those of the first line whose folder or beginning of a name
# is the source's.
TESTS_OF = [
    ("compute/vector_certified-inl.h", "trig_claims_test trig_pictures_test value_vector_test"),
    ("compute/vector_trig-inl.h", "trig_claims_test trig_pictures_test value_vector_test"),
    ("compute/vector_trig_floats-inl.h", "float_claims_test trig_pictures_test"),
    ("compute/vector_trig_short-inl.h", "float_claims_test trig_pictures_test"),
    ("compute/vector_ball-inl.h", "lean_claims_test trig_pictures_test value_vector_test"),
    ("compute/vector_lean-inl.h", "lean_claims_test trig_pictures_test value_vector_test"),
    ("compute/vector_certified_values-inl.h", "value_vector_test"),
    ("compute/vector_rounded-inl.h", "vector_rounded_test value_vector_test"),
    ("compute/vector_log-inl.h", "value_vector_test"),
    ("compute/vector_values-inl.h", "value_vector_test"),
    ("compute/vector_trig_values-inl.h", "value_vector_test"),
    ("compute/attracting_discs", "attracting_discs_test"),
    ("compute/vector_unwatched", "vector_conditions_test vector_test"),
    ("compute/vector_renderer", "vector_targets_test vector_boundary_test vector_test"),
    ("compute/vector_", "trig_pictures_test vector_test vector_boundary_test value_vector_test"),
    ("compute/value_", "value_test value_vector_test"),
    ("compute/exact_trig", "rounded_trig_test"),
    ("compute/quick_", "rounded_trig_test"),
    ("compute/rounded_trig", "rounded_trig_test"),
    ("compute/palette_tables", "palette_tables_test"),
    ("compute/pixels", "pixels_test tile_test"),
    ("compute/fixed_math", "fixed_math_test"),
    ("compute/", "formula_test tile_test value_test"),
    ("commands/", "commands_test"),
    ("GlutMenu/PlainState", "toolkit_plain_state_test"),
    ("GlutMenu/", "toolkit_all_test toolkit_globals_test"),
]
GENERATED = {"compute/trig_tables.h"}  # held by a test of its own to be what the script makes

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<string>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
      | (?P<number>(?:0[xX][0-9a-fA-F.']+(?:[pP][+-]?\d+)?|\d[\d']*\.?\d*(?:[eE][+-]?\d+)?)[a-zA-Z]*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<operator><<=|>>=|<=>|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|[-+*/%&|^~!<>=?:;,.(){}\[\]])
      | (?P<space>\s+)""",
    re.VERBOSE | re.MULTILINE | re.DOTALL)

# What stands in for what. Templates' angle brackets turned round do not compile.
OPERATORS = {
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"], "!": [""],
    "++": ["--"], "--": ["++"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "&=": ["|="], "|=": ["&="],
}
NAMES = {
    "Le": ["Lt", "Gt"], "Lt": ["Le", "Ge"], "Ge": ["Gt", "Lt"], "Gt": ["Ge", "Le"],
    "Eq": ["Ne"], "Ne": ["Eq"], "Add": ["Sub"], "Sub": ["Add"], "Mul": ["Add"],
    "And": ["Or"], "Or": ["And"], "AndNot": ["And"], "AllTrue": ["AllFalse"],
    "AllFalse": ["AllTrue"], "min": ["max"], "max": ["min"], "true": ["false"],
    "false": ["true"], "LowerHalf": ["UpperHalf"], "UpperHalf": ["LowerHalf"],
    "ShiftLeft": ["ShiftRight"], "ShiftRight": ["ShiftLeft"], "sin": ["cos"], "cos": ["sin"],
    "sinh": ["cosh"], "cosh": ["sinh"], "continue": ["break"], "break": ["continue"],
}
UNARY = {"!", "++", "--"}
FOR_SPEED_ALONE = {"HWY_UNROLL", "HWY_ALIGN"}
COMMUTATIVE = {"And", "Or", "Xor", "Add", "Mul", "Eq", "Ne", "min", "max", "length"}
PRODUCT_AND_SUM = {"multiplyAdd", "MulAdd"}  # which take their first two in either order
TAGS = {"d", "dd", "dh", "di", "du", "D()"}  # of vector types: swapped they never compile
OPENING, CLOSING = "([{", ")]}"
ENDS_A_TERM = {"+", "-", "?", ":", "<", ">", "<=", ">=", "==", "!=", "&&", "||", "="}


@dataclass(frozen=True)
class Mutant:
    path: str
    start: int
    end: int
    new: str
    line: int
    before: str  # the whole line
    after: str

    def __str__(self):
        return f"{self.path}:{self.line}: {in_one_line(self.before)}  ==>  {in_one_line(self.after)}"


def tokens_of(text):
    found = []
    for match in TOKEN.finditer(text):
        if match.lastgroup not in ("comment", "directive", "space"):
            found.append((match.lastgroup, match.group(), match.start(), match.end()))
    return found


def changed_numbers(text):
    """Half, double, one more and one less."""
    suffix = re.search(r"[uUlLfF]*$", text).group() if not text.lower().startswith("0x") else ""
    body = text[:len(text) - len(suffix)] if suffix else text
    if re.fullmatch(r"[\d']+", body):
        value = int(body.replace("'", ""))
        return [str(n) + suffix for n in dict.fromkeys([value // 2, 2 * value, value + 1, value - 1])
                if n != value]
    return [f"({body} / 2)", f"({body} * 2)", f"({body} + 1)", f"({body} - 1)"]


def skip_bracket(tokens, at):
    """The index behind the bracket that opens at `at`."""
    depth = 0
    while at < len(tokens):
        depth += tokens[at][1] in OPENING
        depth -= tokens[at][1] in CLOSING
        at += 1
        if depth == 0:
            return at
    return at


def is_binary(text, token):
    """The format of the house puts spaces around binary operators and nothing else."""
    return text[token[2] - 1] in " \n" and text[token[3]] in " \n"


def is_call(tokens, at):
    """Whether the bracket at `at` holds arguments, rather than parameters or a condition."""
    if tokens[at][1] not in "({" or at < 2 or tokens[at - 1][0] != "name":
        return False
    if tokens[at - 1][1] in ("for", "if", "while", "switch", "sizeof"):
        return False
    kind, text = tokens[at - 2][:2]
    return not (kind == "name" and text not in ("return", "else") or text in (">", "&", "*"))


def end_of_term(text, tokens, at):
    """The index behind the product that begins at `at`."""
    while at < len(tokens) and tokens[at][1] not in CLOSING:
        token = tokens[at][1]
        if token in ",;" or token in ENDS_A_TERM and is_binary(text, tokens[at]):
            break
        at = skip_bracket(tokens, at) if tokens[at][1] in OPENING else at + 1
    return at


def arguments_of(tokens, at):
    """The ranges of text between the commas of a call whose bracket opens at `at`."""
    end, found = skip_bracket(tokens, at) - 1, []
    first = at = at + 1
    while at < end:
        if tokens[at][1] == ",":
            found.append((tokens[first][2], tokens[at - 1][3]))
            first = at + 1
        at = skip_bracket(tokens, at) if tokens[at][1] in OPENING else at + 1
    if first < end:
        found.append((tokens[first][2], tokens[end - 1][3]))
    return found


def swapped_arguments(text, tokens, at):
    """Neighbours among the arguments of the call whose bracket opens at `at` change places."""
    name = tokens[at - 1][1]
    arguments = arguments_of(tokens, at)
    for n, ((a, b), (c, d)) in enumerate(zip(arguments, arguments[1:])):
        same = text[a:b] == text[c:d] or name in COMMUTATIVE or name in PRODUCT_AND_SUM and n == 0
        if not same and not TAGS & {text[a:b], text[c:d]}:
            yield a, d, text[c:d] + text[b:c] + text[a:b]


def changes_of(text):
    """(start, end, new text) of every change to a source."""
    tokens = tokens_of(text)
    for at, (kind, token, start, end) in enumerate(tokens):
        if kind == "number" and not (at > 1 and tokens[at - 2][1] in FOR_SPEED_ALONE):
            yield from ((start, end, new) for new in changed_numbers(token))
        binary = is_binary(text, tokens[at])
        if kind == "name":
            yield from ((start, end, new) for new in NAMES.get(token, []))
        if binary or token in UNARY:
            yield from ((start, end, new) for new in OPERATORS.get(token, []))
        if token in ("+", "-") and binary:
            last = end_of_term(text, tokens, at + 1) - 1
            if last > at:
                yield start, tokens[last][3], ""
        if is_call(tokens, at):
            yield from swapped_arguments(text, tokens, at)


def mutants_of(source):
    path, _, lines = source.partition(":")
    first, _, last = lines.partition("-")
    return [m for m in all_mutants_of(path)
            if not lines or int(first) <= m.line <= int(last or first)]


def all_mutants_of(path):
    text = (ROOT / path).read_text()
    for start, end, new in changes_of(text):
        line_start = text.rfind("\n", 0, start) + 1
        line_end = text.find("\n", end)
        changed = text[line_start:start] + new + text[end:line_end]
        yield Mutant(path, start, end, new, text.count("\n", 0, start) + 1,
                     text[line_start:line_end], changed)


def in_one_line(text):
    return " ".join(text.split())


def known_equivalents():
    """(file name, line before, line after) of every listed change."""
    known = set()
    lines = [line for line in EQUIVALENT.read_text().splitlines() if line.strip()
             and not line.startswith(("#", "    "))] if EQUIVALENT.exists() else []
    path = ""
    for line in lines:
        if line.startswith("== "):
            path = line[3:].strip()
        else:
            before, _, after = line.partition("  ==>  ")
            known.add((path, in_one_line(before), in_one_line(after)))
    return known


class Workshop:
    """A copy of the tree with a build folder of its own."""

    def __init__(self, folder, definitions):
        self.tree, self.build = folder / "tree", folder / "build"
        self.tree.mkdir(parents=True, exist_ok=True)
        files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT,
                               capture_output=True, text=True, check=True).stdout.splitlines()
        for name in files:
            self._refresh(name)
        command = ["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja",
                   "-DTESSARY_TESTS=ON", "-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1",
                   "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                   *definitions]
        if shutil.which("ccache"):
            command.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)

    def _refresh(self, name):
        source, copy = ROOT / name, self.tree / name
        if not source.is_file() or copy.is_file() and copy.read_bytes() == source.read_bytes():
            return
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, copy)

    def builds(self, target):
        done = subprocess.run(["ninja", "-C", self.build, f"{target}"], capture_output=True)
        return done.returncode == 0

    def program(self, target):
        return next(p for p in self.build.rglob(target) if p.is_file() and os.access(p, os.X_OK))

    def passes(self, target, filter_, seconds):
        command = [self.program(target), "--gtest_brief=1", "--gtest_fail_fast"]
        if filter_:
            command.append(f"--gtest_filter={filter_}")
        process = subprocess.Popen(command, cwd=self.build, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            return process.wait(seconds) == 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False

    def verdict(self, mutant, tests, seconds):
        path = self.tree / mutant.path
        original = path.read_text()
        path.write_text(original[:mutant.start] + mutant.new + original[mutant.end:])
        try:
            for target, filter_ in tests:
                if not self.builds(target):
                    return "does not compile"
                if not self.passes(target, filter_, seconds):
                    return f"killed by {target}"
            return "SURVIVED"
        finally:
            path.write_text(original)


def sources_of_the_folders():
    """What is tried when nothing is named. The toolkit's demo is no part of the toolkit."""
    return [path for folder in ("compute", "commands", "GlutMenu")
            for path in sorted(str(p.relative_to(ROOT)) for p in (ROOT / folder).iterdir())
            if path.endswith((".cpp", ".h")) and path not in GENERATED]


def tests_of(path):
    """(target, filter) of the tests of a source."""
    found = next((tests for beginning, tests in TESTS_OF if path.startswith(beginning)), "")
    return [(target, "") for target in found.split()]


def problem_with(source, any_test):
    """What is wrong with the name of a source, if anything."""
    path, colon, lines = source.partition(":")
    if not path.endswith((".cpp", ".h")) or not (ROOT / path).is_file():
        return f"there is no C++ source '{path}'"
    if colon and not re.fullmatch(r"[1-9]\d*(-[1-9]\d*)?", lines):
        return f"'{lines}' is no line and no range of lines"
    if not any_test and not tests_of(path):
        return f"no unit tests are known of '{path}'"
    return ""


def arguments():
    parser = argparse.ArgumentParser(prog="mutants", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sources", nargs="*", metavar="SOURCE[:FIRST-LAST]",
                        help="relative to the top folder; perhaps some lines alone")
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "mutants",
                        help="folder for the copy, kept")
    parser.add_argument("--test", action="append", default=[], metavar="TARGET[:FILTER]",
                        help="instead of the tests that are known of a source")
    parser.add_argument("--define", action="append", default=[ONE_TARGET], help="a -D for CMake")
    parser.add_argument("--seconds", type=float, default=60, help="most that a test may run")
    parser.add_argument("--part", default="1/1", metavar="K/N", help="every N-th change, from K")
    parser.add_argument("--list", action="store_true", help="only print the changes")
    parser.add_argument("--all", action="store_true", help="try listed equivalents too")
    parser.add_argument("--verbose", action="store_true", help="print every change's end")
    options = parser.parse_args()
    for source in options.sources:
        if problem := problem_with(source, options.test):
            print(f"mutants: {problem}", file=sys.stderr)
            sys.exit(2)
    return options


def chosen_tests(options, path):
    return [(t.partition(":")[0], t.partition(":")[2]) for t in options.test] or tests_of(path)


def try_without_change(workshop, tests, seconds):
    for target, filter_ in tests:
        if not workshop.builds(target) or not workshop.passes(target, filter_, seconds):
            sys.exit(f"mutants: {target} fails without any change")


def total(counts):
    killed = sum(n for verdict, n in counts.items() if verdict.startswith("killed"))
    return (f"{sum(counts.values())} changes: {killed} killed, {counts.get('SURVIVED', 0)} survived, "
            f"{counts.get('listed', 0)} listed as equivalent, "
            f"{counts.get('does not compile', 0)} do not compile")


def main():
    options = arguments()
    part, parts = map(int, options.part.split("/"))
    sources = options.sources or sources_of_the_folders()
    mutants = [m for source in sources for m in mutants_of(source)][part - 1::parts]
    if options.list:
        print(*mutants, sep="\n")
        return 0
    known = set() if options.all else known_equivalents()
    workshop = Workshop(options.build, ["-D" + d for d in options.define])
    tests = {path: chosen_tests(options, path) for path in {m.path for m in mutants}}
    try_without_change(workshop, sorted(set(sum(tests.values(), []))), options.seconds)
    counts = {}
    for mutant in mutants:
        listed = (mutant.path, in_one_line(mutant.before), in_one_line(mutant.after)) in known
        verdict = "listed" if listed else workshop.verdict(mutant, tests[mutant.path],
                                                           options.seconds)
        counts[verdict] = counts.get(verdict, 0) + 1
        if verdict == "SURVIVED" or options.verbose:
            print(f"{verdict}: {mutant}", flush=True)
    print(total(counts))
    return 1 if counts.get("SURVIVED") else 0


if __name__ == "__main__":
    sys.exit(main())

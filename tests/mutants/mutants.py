#!/usr/bin/env python3
r"""Changes C++ sources one token at a time and reports the changes that no test notices.

    mutants.py [SOURCE[:FIRST-LAST] ...]

Without a source: all of compute/, commands/ and GlutMenu/.

Every change is made in a copy of the working tree, so that the tree itself stays as it is. The
copy is configured once, as the release or, where vectors are changed, without optimisation worth the
name and for one instruction set. Nearly all changes are compiled into the tests at once (schema.py), and each test is run for each change, which
the environment chooses. What can be no part of that, and what no test notices there, is then tried by
itself: changed, built and run. A change is killed when a test fails, crashes or runs out of time. What
does not compile counts for nothing. Which tests are a source's own says TESTS_OF below; other sources
need --test.

Survivors that cannot change a result are listed, with the reason, in equivalent.txt: they are
matched by the text of their line, so that the list outlives edits elsewhere.
"""

import argparse
import math
import random
import re
import sys
from collections import Counter
from pathlib import Path

from changes import in_one_line, mutants_of
from schema import Schema
from workshop import Workshop

ROOT = Path(__file__).resolve().parents[2]
EQUIVALENT = Path(__file__).with_name("equivalent.txt")
SURVIVED, NO_CODE, LISTED = "SURVIVED", "does not compile", "listed"

# The tests of a source, cheapest first: those of the first line whose folder or beginning of a name
# is the source's. Behind a colon stands which of a program's tests.
COLOURS = ("render_test:Curves.*:AValue*:SmoothColours.*:ColoursOf*:WhatHasNo*:TheEscapeBound.*"
           ":TheDither*:Dither*:Vectors.*:Light.*:Level.*:TheLevel*:TheTable.Sees*:*AreTakenOf*"
           ":*AnyWidth*:ADeep* render_test:TheTable.*:Gimps*:ASupersampled*:ARowOfValues.*:AveragesOf*")
FORMULAS = "formula_test:FormulaTest*:RuleNumbers*:*Rules*:InDouble* formula_test:JuliaAt*"
POOL = "queue_test pool_steps_test device_shutdown_test shutdown_test pool_test initial_values_test"
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
    ("compute/staying_region", "staying_region_test"),
    ("compute/vector_region-inl.h", "region_claims_test"),
    ("compute/vector_unwatched", "vector_conditions_test vector_test"),
    ("compute/vector_renderer", "vector_targets_test vector_boundary_test vector_test"),
    ("compute/vector_", "trig_pictures_test vector_test vector_boundary_test value_vector_test"),
    ("compute/value_scalar", "value_test"),
    ("compute/value_colours", COLOURS),
    ("compute/colour_renderer", COLOURS),
    ("compute/value_", "value_test value_vector_test"),
    ("compute/exact_trig", "rounded_trig_test"),
    ("compute/quick_", "rounded_trig_test"),
    ("compute/rounded_trig", "rounded_trig_test"),
    ("compute/palette_tables", "palette_tables_test"),
    ("compute/pixels", "pixels_test tile_test"),
    ("compute/fixed_math", "fixed_math_test"),
    ("compute/formulas", FORMULAS),
    ("compute/rules", FORMULAS),
    ("compute/complex", FORMULAS),
    ("compute/pair", "pair_test"),
    ("compute/rounded_value", "rounded_value_test"),
    ("compute/scalar_renderer", "tile_test vector_stop_test"),
    ("compute/tile_renderer", "tile_test"),
    ("compute/wide", "wide_test"),
    ("render/colour_options", "render_test:AColour*:TheHelp.*:TheGradientOf*:Numbers.*:ASwatch.*"
                              ":APalette.*:ARange.*:WhatIsAbout*"),
    ("render/colour_range", "render_test:TheValues*:Where*:AStretched*"),
    ("render/colour_settings", "render_test:ColoursInA*:NumbersInA*:Wrong*:AWrong*"),
    ("render/colour", COLOURS),
    ("render/pipeline", "render_pipeline_test"),
    ("render/npy_encoder", "render_test:ANumberFile.*:AShare*:StoredNumbers.*"),
    ("render/row_codes", "render_test:*Code*:*Zeros*:*Filtered*:*Bands*:*Smooth*:*Packer*"),
    ("render/", "render_test"),
    ("deep/multi_orbit", "deep_tiers_test:Digits*:*TheLine*/2 deep_core_test"),
    ("deep/", "deep_claims_test deep_core_test deep_tiers_test"),
    ("compute/", "formula_test tile_test value_test"),
    ("backends/auto_array", "cache_lines_test"),
    ("backends/image", "image_test"),
    ("backends/palette", "palette_test"),
    ("backends/view_state", "view_state_test initial_values_test"),
    ("backends/tile_queue", "tile_queue_test queue_test"),
    ("backends/worker_pool", POOL),
    ("commands/", "commands_test"),
    ("GlutMenu/PlainState", "toolkit_plain_state_test"),
    ("GlutMenu/GlutKeys.cpp", "toolkit_shift_tab_test"),
    ("GlutMenu/", "toolkit_all_test toolkit_globals_test"),
]
GENERATED = {"compute/trig_tables.h"}  # held by a test of its own to be what the script makes


def chosen_lines(source):
    """The changes of a source, or of some lines of it."""
    path, _, lines = source.partition(":")
    first, _, last = lines.partition("-")
    return [m for m in mutants_of((ROOT / path).read_text(), path)
            if not lines or int(first) <= m.line <= int(last or first)]


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


def unmatched(known):
    """Those of the listed changes that can be made to no source: its lines are others now."""
    changes = {identity(m) for path in {path for path, _, _ in known} if (ROOT / path).is_file()
               for m in mutants_of((ROOT / path).read_text(), path)}
    return known - changes


def identity(mutant):
    """What the list knows a change by."""
    return mutant.path, in_one_line(mutant.before), in_one_line(mutant.after)


def sources_of_the_folders():
    """What is tried when nothing is named. The toolkit's demo is no part of the toolkit."""
    return [path for folder in ("compute", "commands", "GlutMenu")
            for path in sorted(str(p.relative_to(ROOT)) for p in (ROOT / folder).iterdir())
            if path.endswith((".cpp", ".h")) and path not in GENERATED]


def named(test):
    """(target, filter) of what stands as one."""
    target, _, filter_ = test.partition(":")
    return target, filter_


def tests_of(path):
    """(target, filter) of the tests of a source."""
    found = next((tests for beginning, tests in TESTS_OF if path.startswith(beginning)), "")
    return [named(test) for test in found.split()]


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


def ratio(text):
    """(k, n) of k/n, with k from 1 to n."""
    match = re.fullmatch(r"([1-9]\d*)/([1-9]\d*)", text)
    if not match or int(match[1]) > int(match[2]):
        raise argparse.ArgumentTypeError(f"'{text}' is no part such as 1/20")
    return int(match[1]), int(match[2])


def arguments():
    parser = argparse.ArgumentParser(prog="mutants", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sources", nargs="*", metavar="SOURCE[:FIRST-LAST]",
                        help="relative to the top folder; perhaps some lines alone")
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "mutants",
                        help="folder for the copy, kept")
    parser.add_argument("--test", action="append", default=[], metavar="TARGET[:FILTER]",
                        help="instead of the tests that are known of a source")
    parser.add_argument("--define", action="append", default=[], help="a -D for CMake")
    parser.add_argument("--seconds", type=float, default=60,
                        help="of the processor, the most that a test may run")
    parser.add_argument("--part", type=ratio, default=(1, 1), metavar="K/N",
                        help="every N-th change, from K")
    parser.add_argument("--sample", type=ratio, default=(1, 1), metavar="K/N",
                        help="so many of all changes, drawn at random")
    parser.add_argument("--seed", type=int, default=1, help="of what is drawn")
    parser.add_argument("--one-by-one", action="store_true", help="build every change by itself")
    parser.add_argument("--quick", action="store_true",
                        help="only those that can be compiled together, and trust what survives there")
    parser.add_argument("--list", action="store_true", help="only print the changes")
    parser.add_argument("--all", action="store_true", help="try listed equivalents too")
    parser.add_argument("--verbose", action="store_true", help="print every change's end")
    options = parser.parse_args()
    for source in options.sources:
        if problem := problem_with(source, options.test):
            print(f"mutants: {problem}", file=sys.stderr)
            sys.exit(2)
    return options


def drawn(mutants, sample, seed):
    """As many of them, in their order, as k of n are of all."""
    wanted = math.ceil(len(mutants) * sample[0] / sample[1])
    chosen = set(random.Random(seed).sample(range(len(mutants)), wanted))
    return [m for at, m in enumerate(mutants) if at in chosen]


class Trial:
    """Changes, the tests of their sources, and what became of them."""

    def __init__(self, options, mutants):
        self.options, self.mutants, self.counts = options, dict(enumerate(mutants, 1)), {}
        given = [named(test) for test in options.test]
        self.tests = {path: given or tests_of(path) for path in {m.path for m in mutants}}
        self.limits = {}

    def run(self, listed):
        """Tries all but those that are listed."""
        wanted = {n: m for n, m in self.mutants.items() if not listed(m)}
        for number in self.mutants.keys() - wanted.keys():
            self.end(number, LISTED)
        if not wanted:
            return
        self.workshop = Workshop(ROOT, self.options.build.resolve(), self.options.define,
                                 any("vector" in path for path in self.tests))
        alone = wanted if self.options.one_by_one else self.together(wanted)
        if alone and not self.options.quick:
            self.one_by_one(alone)
        elif self.options.quick:
            for number in alone:
                self.end(number, "left out")

    def together(self, wanted):
        """Tries those that can be compiled together; what is to be tried by itself."""
        schemas = {path: Schema((ROOT / path).read_text(),
                                {n: m for n, m in wanted.items() if m.path == path})
                   for path in self.tests}
        fitting = self.workshop.fit(schemas, self.targets())
        numbers = sorted(n for schema in schemas.values() for n in schema.numbers()) if fitting else []
        self.measure()
        alone = wanted.keys() - set(numbers)
        for number in numbers:
            verdict = self.tried(number, number)
            if verdict == SURVIVED and not self.options.quick:
                alone.add(number)
            else:
                self.end(number, verdict)
        return {n: wanted[n] for n in sorted(alone)}

    def one_by_one(self, wanted):
        for path in self.tests:
            self.workshop.restore(path)
        self.measure()
        for number, mutant in wanted.items():
            original = (ROOT / mutant.path).read_text()
            self.workshop.put(mutant.path,
                              original[:mutant.start] + mutant.new + original[mutant.end:])
            self.end(number, self.tried(number, 0))
            self.workshop.restore(mutant.path)

    def targets(self):
        return sorted({target for tests in self.tests.values() for target, _ in tests})

    def measure(self):
        """How long each test may take: ten times what it takes without a change, and a little."""
        for test in sorted(set(sum(self.tests.values(), []))):
            seconds = self.workshop.builds(test[0]) and self.workshop.seconds_of(
                *test, self.options.seconds)
            if not seconds and seconds != 0.0:
                sys.exit(f"mutants: {test[0]} fails without any change")
            self.limits[test] = min(self.options.seconds, 10 * seconds + 5)

    def tried(self, number, chosen):
        """What the tests make of a change, which is chosen or, with 0, built."""
        for target, filter_ in self.tests[self.mutants[number].path]:
            if not chosen and not self.workshop.builds(target):
                return NO_CODE
            limit = self.limits[target, filter_]
            if not self.workshop.passes(target, filter_, limit, chosen):
                return f"killed by {target}"
        return SURVIVED

    def end(self, number, verdict):
        mutant = self.mutants[number]
        folder = mutant.path.split("/")[0] + "/"
        self.counts.setdefault(folder, Counter())[verdict.split(" by ")[0]] += 1
        if verdict == SURVIVED or self.options.verbose:
            print(f"{verdict}: {mutant}", flush=True)


def interval(killed, tried):
    """Between which shares the true one lies, 95 times of 100 (Wilson's score interval)."""
    z = 1.96
    share, centre = killed / tried, z * z / (2 * tried)
    half = z * math.sqrt(share * (1 - share) / tried + (z / (2 * tried)) ** 2)
    return [(share + centre + sign * half) / (1 + 2 * centre) for sign in (-1, 1)]


def total(counts):
    line = (f"{sum(counts.values())} changes: {counts['killed']} killed, {counts[SURVIVED]} survived, "
            f"{counts[LISTED]} listed as equivalent, {counts[NO_CODE]} do not compile")
    return line + (f", {counts['left out']} left out" if counts["left out"] else "")


def estimate(counts):
    """What a sample says of all changes that compile and are not listed."""
    tried = counts["killed"] + counts[SURVIVED]
    if not tried:
        return "nothing to go by"
    low, high = interval(counts["killed"], tried)
    return f"{100 * counts['killed'] / tried:.1f} % noticed, of all between {100 * low:.1f} and {100 * high:.1f} %"


def report(options, counts):
    if len(counts) > 1:
        for folder, some in sorted(counts.items()):
            print(f"{folder} {total(some)}" + (f"; {estimate(some)}" if options.sample != (1, 1) else ""))
    everything = sum(counts.values(), Counter())
    if options.sample != (1, 1):
        print(f"sample {options.sample[0]}/{options.sample[1]}, seed {options.seed}: "
              f"{estimate(everything)} (95 %)")
    print(total(everything))
    return 1 if everything[SURVIVED] else 0


def main():
    options = arguments()
    sources = options.sources or sources_of_the_folders()
    mutants = [m for source in sources for m in chosen_lines(source)]
    mutants = drawn(mutants[options.part[0] - 1::options.part[1]], options.sample, options.seed)
    if options.list:
        print(*mutants, sep="\n")
        return 0
    known = set() if options.all else known_equivalents()
    trial = Trial(options, mutants)
    trial.run(lambda m: identity(m) in known)
    return report(options, trial.counts)


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3
"""Takes the terms of the bounds of deep/ out, one at a time, and tells which test notices.

    remove_terms.py BUILD [--term TEXT] [TEST...]

BUILD is a release build with tests; without a TEST all of them are asked, quickest first. With
--term only terms whose name contains the text are taken out. Each change is made in a copy of deep/, compiled for few instruction sets and linked with the tests'
objects of the build. The table of what it tells is in docs/deep-zoom.md, the page of the bounds.
"""

import glob
import os
import shlex
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TERMS = [  # what, file, text, what stands in its place
    ("all with u, kappa and beta", "tiers.cpp", "constexpr double u = TierData<PARTS>::UNIT;",
     "constexpr double u = TierData<PARTS>::UNIT * 0x1p-40;"),
    ("18 u |z||d| of a step", "tiers.cpp", "tier.sizeFactor = 3 * ofSize * ofSize",
     "tier.sizeFactor = 0"),
    ("b of a step", "tiers.cpp", "tier.ownSquared = 3 * own * own",
     "tier.ownSquared = 0x1p-300 * own"),
    ("6 u Delta of b", "tiers.cpp", "own = 6 * u + eta,", "own = eta,"),
    ("128 * 2^-p of b", "tiers.cpp", "own = 6 * u + eta,", "own = 6 * u,"),
    ("7 u of the start", "tiers.cpp", "tier.startSquared = 3 * start", "tier.startSquared = 0 * start"),
    ("2 |z| e of a step: 4 for 1", "vector_steps-inl.h", "Real(4 * UPWARDS) * x.s",
     "Real(1 * UPWARDS) * x.s"),
    ("e^2 of a step", "vector_steps-inl.h", "slope = mulAdd(with.second, x.f,",
     "slope = mulAdd(Real(0.0), x.f,"),
    ("new reference, one lane", "lane_steps-inl.h",
     "8 * U * U * dSize[l]) * by * by + 32 * U * U * s", "0) * by * by"),
    ("new reference, all lanes", "orbits-inl.h", "ofD(8 * U * U), ofZ(32 * U * U * UPWARDS)",
     "ofD(0.0), ofZ(0.0)"),
    ("2 |z| e + e^2 of a decision", "orbit_lanes-inl.h",
     "(2 * std::sqrt(size[l]) * e + e * e +", "(0 +"),
    ("2 |z| e of a decision", "orbit_lanes-inl.h",
     "(2 * std::sqrt(size[l]) * e + e * e +", "(e * e +"),
    ("e^2 of a decision", "orbit_lanes-inl.h", "(2 * std::sqrt(size[l]) * e + e * e +",
     "(2 * std::sqrt(size[l]) * e +"),
    ("8 u of a decision", "orbit_lanes-inl.h", "8 * U * (std::fabs(head(kept))",
     "0 * U * (std::fabs(head(kept))"),
    ("sizeOff of a decision", "orbit_lanes-inl.h", "(length + away)) + tier.sizeOff)",
     "(length + away)))"),
    ("the same below doubles", "orbit_lanes-inl.h", "roundings + tier.ownSizeOff)", "roundings)"),
    ("the size of sizeOff", "tiers.cpp", "Wide(8 * (400 + 4 * view.limit)", "Wide(0x1p-30"),
    ("kappa", "skips.cpp", "map.kappa = (ay * x.kappa", "map.kappa = 0 * (ay * x.kappa"),
    ("|A_y| kappa_x", "skips.cpp", "map.kappa = (ay * x.kappa +", "map.kappa = ("),
    ("kappa_y (|A_x| + kappa_x)", "skips.cpp", "y.kappa * (ax + x.kappa) +", "0 +"),
    ("6 u |A_y||A_x|", "skips.cpp", "+ 6 * u * ay * ax)", ")"),
    ("beta", "skips.cpp", "map.beta = ((ay", "map.beta = 0 * ((ay"),
    ("|A_y| beta_x", "skips.cpp", "map.beta = ((ay * x.beta +", "map.beta = (("),
    ("kappa_y (|B_x| + beta_x)", "skips.cpp", "y.kappa * (bx + x.beta) +", "0 +"),
    ("6 u |A_y||B_x|", "skips.cpp", "+ 6 * u * ay * bx)", ")"),
    ("beta_y + 6 u |B_y|", "skips.cpp", "(y.beta + 6 * u * by)", "0"),
    ("8 u |A| of a node's use", "skips.cpp", "size = map.kappa + 8 * u * a,", "size = map.kappa,"),
    ("8 u |B| of a node's use", "skips.cpp", "rest = map.beta + 8 * u * b;", "rest = map.beta;"),
    ("6 u |B_y|", "skips.cpp", "(y.beta + 6 * u * by)", "y.beta"),
    ("1.0626", "skips.cpp", "Wide(1 / 1.0626)", "Wide(1.0)"),
    ("16 e^2 of a difference's size, all lanes", "orbits-inl.h",
     "mulAdd(Real(16.0), e2, this->vectorOf(dSize, v))", "this->vectorOf(dSize, v)"),
    ("16 e^2 of a difference's size, one lane", "apart_orbits-inl.h",
     "const double now = dSize[l] + 16 * operations[l] * bound[l];", "const double now = dSize[l];"),
    ("the square left out", "skips.cpp", "size * Wide(epsilon)", "size * Wide(0x1p-20)"),
    ("the room to the limit", "skips.cpp", "stays(0.995 * std::min(2.0, std::sqrt(limit)))",
     "stays(1e9)"),
    ("a beginning at the critical point, first step", "orbits-inl.h",
     "bool united = live != 0 && rebaseSome();", "bool united = live != 0;"),
    ("the same behind a tiny point", "orbits-inl.h", "return live != 0 && rebaseSome() && gather();",
     "return live != 0 && gather();"),
    ("the reference's bits for a large limit", "reference.cpp", "if (view.limit > 16) digits",
     "if (view.limit > 1e300) digits"),
    ("its bits for points far out", "reference.cpp", "bits + 2 * std::max(", "bits + 0 * std::max("),
    ("1024 e^2 of what is surely inside, one lane", "orbit_lanes-inl.h",
     "return size[l] + 1024 * operations[l]", "return size[l] + 0 * operations[l]"),
    ("the same, all lanes", "vector_steps-inl.h", "Real(1024) * j * squared", "Real(0.0) * j * squared"),
    ("0.9375 of what is surely inside, one lane", "orbit_lanes-inl.h", "< 0.9375 * tier.limit",
     "< tier.limit"),
    ("the same, all lanes", "vector_steps-inl.h", "Real(0.9375 * tier.limit)", "Real(tier.limit)"),
    ("8 m (|Z| + m) of lanes next to a reference", "orbits-inl.h", "Wide(8) * most *", "Wide(0x1p-20) * most *"),
    ("18 u |z||d| of a step from a tiny point", "lane_steps-inl.h", "2 * tier.sizeFactor * dSize[l]",
     "0 * dSize[l]"),
    ("2 |z| e of a step from a tiny point", "lane_steps-inl.h", "(4 * f +", "(0 * f +"),
    ("e^2 of a step from a tiny point", "lane_steps-inl.h", "3 * j * f * j * f * ofSquares", "0 * ofSquares"),
    ("the error of a value", "orbit_lanes-inl.h", "(2 * std::sqrt(s * e2) + e2) / s", "0 / s"),
    ("8 (s + |c|) of a step in digits", "multi_orbit.cpp", "Wide(8) * (size + constantSize) * unit",
     "Wide(0.0) * unit"),
    ("3 s of a size in digits", "multi_orbit.cpp", "Wide(3) * size * unit", "Wide(0.0) * unit"),
    ("the rounding of c in digits", "multi_orbit.cpp", "+ radius) * radius + constantOff;",
     "+ radius) * radius;"),
    ("2 |z| e + e^2 of a size in digits", "multi_orbit.cpp",
     "sizeOff = (root(size) * Wide(2) + radius) * radius;", "sizeOff = Wide(0.0);"),
    ("2 |z| e + e^2 of a step in digits", "multi_orbit.cpp",
     "Wide next = (root(size) * Wide(2) + radius) * radius + constantOff;", "Wide next = constantOff;"),
    ("the error of a value in digits", "multi_orbit.cpp",
     "std::max(ratio(beforeOff, before), ratio(sizeOff, size)) +", "0 +"),
    ("2^-600, below which no reference ends", "reference.cpp", "square > 0x1p-600 && ", ""),
    ("units of a step from a tiny point", "lane_steps-inl.h", "        fit(l);\n        const auto* tiny",
     "        const auto* tiny"),
    ("how far units are apart that lanes share", "orbits-inl.h", "MOST_UNITS_APART = 64",
     "MOST_UNITS_APART = 200"),
    ("none for a radius that is no number", "skips.cpp", "return radius > Wide() ? radius : Wide();",
     "return radius;"),
    ("none for an overflowed certificate", "skips.cpp",
     "if (!std::isfinite(map.kappa) || !std::isfinite(map.beta)) return {};", ""),
    ("the error of a value near the limit in digits", "multi_orbit.cpp", "4 * quotient(off, gap) +", "0 +"),
]
TESTS = {  # quickest first
    "deep_claims_test": "*",
    "deep_core_test": "DeepReference*",
    "deep_tiers_test": "Digits*:*IsRightOrLeaves*:*DecidesMost*/0:*DecidesMost*/1",
    "deep_places_test": "*limit*:*spiral*:*minibrot_off*:*zero*",
}
# The tests that contain what the library does with lanes, or its tables' maker: they look into it.
LANE_CLAIMS = ["tests/deep/step_claims_test.cpp", "tests/deep/decision_claims_test.cpp"]
SKIP_CLAIMS = "tests/deep/skip_claims_test.cpp"


def command_of(build, name):
    """How the build compiles a source of deep/, without the source and its object."""
    lines = subprocess.run(["ninja", "-C", build, "-t", "commands", "deep_claims_test"], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    line = next(line for line in lines if f"/{name}" in line and " -c " in line)
    words = shlex.split(line)
    words = words[:words.index("-MD")] if "-MD" in words else words[:words.index("-o")]
    return [word for word in words if not word.endswith("ccache")]


def compiled(build, folder, name):
    words = [word.replace(f"-I{SOURCE}", f"-I{folder}") for word in command_of(build, name)]
    one = ["-DTESSARY_SKIPPED_TARGETS=(HWY_SSSE3|HWY_SSE4|HWY_AVX3|HWY_AVX3_DL)"]
    made = f"{folder}/{os.path.basename(name)}.o"
    words = [word for word in words if "SKIPPED_TARGETS" not in word]
    subprocess.run([*words, *one, "-O1", "-w", "-c", f"{folder}/{name}", "-o", made], check=True,
                   cwd=build)
    return made


def linked(build, folder, test, made):
    objects = glob.glob(f"{build}/tests/deep/CMakeFiles/{test}.dir/*.o")
    anew = [os.path.basename(object) for object in made]
    objects = [object for object in objects if os.path.basename(object) not in anew]
    if test != "deep_claims_test":
        made = [object for object in made if "_claims_test" not in object]
    libraries = [f"{build}/tests/deep/libtessary_deep_oracle.a", f"{build}/deep/libtessary_deep.a",
                 *sorted(glob.glob(f"{build}/frac/lib*.a"), reverse=True), *glob.glob(f"{build}/compute/lib*.a")]
    program = f"{folder}/{test}"
    subprocess.run(["c++", *objects, *made, *libraries, "-lgmock", "-lgtest", "-lgtest_main",
                    "-lhwy", "-lmpfr", "-lgmpxx", "-lgmp", "-lpthread", "-o", program], check=True)
    return program


def first_failure(build, folder, made, tests):
    for test in tests:
        which = TESTS[test]
        program = linked(build, folder, test, made)
        done = subprocess.run([program, f"--gtest_filter={which}"], capture_output=True, text=True,
                              check=False, timeout=900)
        failed = [line for line in done.stdout.splitlines() if line.startswith("[  FAILED  ]")]
        if failed or done.returncode != 0:
            name = failed[0].split("]")[1] if failed else f" {test} crashes"
            return name.split(",")[0].split(" (")[0].strip()
    return None


def main(build, *tests):
    build, survived, wanted = os.path.abspath(build), 0, ""
    if tests[:1] == ("--term",):
        wanted, tests = tests[1], tests[2:]
    terms = [term for term in TERMS if wanted in term[0]]
    # Unchanged first: what fails then would be no news.
    for what, name, text, instead in [("nothing", None, None, None), *terms]:
        with tempfile.TemporaryDirectory() as folder:
            for part in ("deep", "compute", "frac", "tests/deep"):
                shutil.copytree(f"{SOURCE}/{part}", f"{folder}/{part}")
            made = []
            if name is not None:
                path = f"{folder}/deep/{name}"
                with open(path, encoding="utf-8") as file:
                    before = file.read()
                if before.count(text) != 1:
                    sys.exit(f"{name}: {text} stands there {before.count(text)} times")
                with open(path, "w", encoding="utf-8") as file:
                    file.write(before.replace(text, instead))
                anew = [f"deep/{name}"]
                if name == "skips.cpp":
                    anew.append(SKIP_CLAIMS)
                if not name.endswith(".cpp"):
                    anew = ["deep/vector_orbits.cpp", *LANE_CLAIMS]
                made = [compiled(build, folder, source) for source in anew]
            noticed = first_failure(build, folder, made, tests or TESTS)
            print(f"{what}: {noticed or 'not noticed'}", flush=True)
            survived += noticed is None and name is not None
    return survived


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

#!/usr/bin/python3
"""Takes the terms of the bounds of deep/ out, one at a time, and tells which test notices.

    remove_terms.py BUILD

BUILD is a release build with tests. Each change is made in a copy of deep/, compiled for one
instruction set and linked with the tests' objects of the build. The page of the bounds is
docs/deep-zoom.md.
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
    ("18 u |z||d|", "tiers.cpp", "tier.sizeFactor = 3 * ofSize * ofSize", "tier.sizeFactor = 0"),
    ("b", "tiers.cpp", "tier.ownSquared = 3 * own * own", "tier.ownSquared = 0x1p-300 * own"),
    ("kappa", "skips.cpp", "map.kappa = (ay * x.kappa", "map.kappa = 0 * (ay * x.kappa"),
    ("the square left out", "skips.cpp", "size * Wide(epsilon)", "size * Wide(0x1p-20)"),
    ("beta", "skips.cpp", "map.beta = ((ay", "map.beta = 0 * ((ay"),
    ("the room to the limit", "skips.cpp", "stays(0.995 * std::min(2.0, std::sqrt(limit)))",
     "stays(1e9)"),
    ("2 |z| e: 4 for 1", "vector_steps-inl.h", "Real(4 * UPWARDS) * x.s", "Real(1 * UPWARDS) * x.s"),
    ("2 |z| e + e^2 of a decision", "orbit_lanes-inl.h",
     "off = (2 * std::sqrt(size[l]) * e + e * e", "off = (0"),
]
TESTS = {  # quickest first
    "deep_tiers_test": "*IsRightOrLeaves*:*DecidesMost*/0:*DecidesMost*/1",
    "deep_places_test": "*limit*:*spiral*:*minibrot_off*:*zero*",
}


def command_of(build, name):
    """How the build compiles a source of deep/, without the source and its object."""
    lines = subprocess.run(["ninja", "-C", build, "-t", "commands", "deep_tiers_test"], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    line = next(line for line in lines if f"deep/{name}" in line and " -c " in line)
    words = shlex.split(line)
    words = words[:words.index("-MD")] if "-MD" in words else words[:words.index("-o")]
    return [word for word in words if not word.endswith("ccache")]


def compiled(build, folder, name):
    words = [word.replace(f"-I{SOURCE}", f"-I{folder}") for word in command_of(build, name)]
    one = ["-DHWY_DISABLED_TARGETS=(HWY_SSSE3|HWY_SSE4|HWY_AVX3|HWY_AVX3_DL|HWY_AVX3_ZEN4)"]
    made = f"{folder}/{name}.o"
    words = [word for word in words if "SKIPPED_TARGETS" not in word]
    subprocess.run([*words, *one, "-O1", "-Wno-error", "-c", f"{folder}/deep/{name}", "-o", made], check=True,
                   cwd=build)
    return made


def linked(build, folder, test, made):
    objects = glob.glob(f"{build}/tests/deep/CMakeFiles/{test}.dir/*.o")
    libraries = [f"{build}/tests/deep/libtessary_deep_oracle.a", f"{build}/deep/libtessary_deep.a",
                 *glob.glob(f"{build}/frac/lib*.a"), *glob.glob(f"{build}/compute/lib*.a")]
    program = f"{folder}/{test}"
    subprocess.run(["c++", *objects, *made, *libraries, "-lgmock", "-lgtest", "-lgtest_main",
                    "-lhwy", "-lmpfr", "-lgmpxx", "-lgmp", "-lpthread", "-o", program], check=True)
    return program


def first_failure(build, folder, made):
    for test, which in TESTS.items():
        program = linked(build, folder, test, made)
        done = subprocess.run([program, f"--gtest_filter={which}"], capture_output=True, text=True,
                              check=False, timeout=900)
        failed = [line for line in done.stdout.splitlines() if line.startswith("[  FAILED  ]")]
        if failed or done.returncode != 0:
            return failed[0].split("]")[1].split(",")[0].strip() if failed else f"{test} crashes"
    return None


def main(build):
    build, survived = os.path.abspath(build), 0
    # Unchanged first: what fails then would be no news.
    for what, name, text, instead in [("nothing", None, None, None), *TERMS]:
        with tempfile.TemporaryDirectory() as folder:
            for part in ("deep", "compute", "frac"):
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
                anew = name if name.endswith(".cpp") else "vector_orbits.cpp"
                made = [compiled(build, folder, anew)]
            noticed = first_failure(build, folder, made)
            print(f"{what}: {noticed or 'not noticed'}", flush=True)
            survived += noticed is None and name is not None
    return survived


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))

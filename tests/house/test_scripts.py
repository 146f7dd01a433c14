"""./run, ./test and ./fuzz, with stand-ins for the package manager, cmake, ninja and the program."""

import fnmatch
import glob
import os
import re
import shutil
import stat
import subprocess
import tempfile
import unittest

import numpy as np
from PIL import Image

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))
TESSARY = os.environ.get("TESSARY", "")
SLOW_CREATION = os.path.join(os.environ.get("TESSARY_BUILD", ""), "tests", "house",
                             "libtessary_slow_creation.so")

# Every stand-in notes its call, then does what the test asks of it.
STAND_IN = """#!/bin/bash
printf '%s\\n' "$(basename "$0") $*" >>"$CALLS"
{body}
"""
INSTALLED = """shift 2; for p; do [[ " $MISSING " == *" $p "* ]] || echo "$p installed"; done"""
CMAKE = """folder=$PWD/build/$2; mkdir -p "$folder"; touch "$folder/build.ninja"; exit ${CMAKE_STATUS:-0}"""
NINJA = """
if [[ $3 == -n ]]; then [[ -z $BUILD ]] && echo 'ninja: no work to do.'; exit 0; fi
echo "compiling"; exit ${NINJA_STATUS:-0}"""
PROGRAM = """
echo "program: $*"
if [[ -z $DISPLAY && $1 == "" ]]; then echo "failed to open display ''" >&2; exit 1; fi
exit ${PROGRAM_STATUS:-0}"""


def read(path):
    with open(os.path.join(SOURCE, path)) as file:
        return file.read()


class ScriptTest(unittest.TestCase):
    def setUp(self):
        self.root = tempfile.mkdtemp(prefix="tessary-scripts-")
        self.addCleanup(shutil.rmtree, self.root)
        os.chmod(self.root, 0o777)
        for name in ("run", "test", "fuzz", "CMakePresets.json"):
            shutil.copy(os.path.join(SOURCE, name), self.root)
        shutil.copytree(os.path.join(SOURCE, "packaging"), os.path.join(self.root, "packaging"))
        self.tools = os.path.join(self.root, "tools")
        self.calls_file = os.path.join(self.root, "calls")
        self.stand_in("tools/dpkg-query", INSTALLED)
        self.stand_in("tools/apt-get", "exit ${APT_STATUS:-0}")
        self.stand_in("tools/apt-cache", """shift; for p; do
            echo "$p:"; [[ " $AVAILABLE " == *" $p "* ]] && echo "  Candidate: 1" || echo "  Candidate: (none)"
        done""")
        self.stand_in("tools/sudo", 'exec "$@"')
        self.stand_in("tools/cmake", CMAKE)
        self.stand_in("tools/ninja", NINJA)
        self.stand_in("tools/ctest", "echo 'tests passed'; exit ${CTEST_STATUS:-0}")
        self.stand_in("tools/xdpyinfo", "[[ $DISPLAY == :good ]]")
        self.stand_in("tools/Xvfb", "exit 1")
        self.stand_in("tools/clinfo", """for t in $DEVICE_TYPES; do
            echo "[X/0] CL_DEVICE_NAME thing"; echo "[X/0] CL_DEVICE_TYPE CL_DEVICE_TYPE_$t"
        done""")
        self.stand_in("build/release/tessary", PROGRAM)
        os.chmod(os.path.join(self.root, "build"), 0o777)
        os.chmod(os.path.join(self.root, "build", "release"), 0o777)

    def stand_in(self, path, body):
        path = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write(STAND_IN.format(body=body))
        os.chmod(path, 0o755)

    def call(self, script, *arguments, prefix=(), cwd=None, **environment):
        env = {
            "PATH": f"{self.tools}:/usr/bin:/bin",
            "CALLS": self.calls_file,
            "MISSING": "",
            "HOME": self.root,
            **environment,
        }
        return subprocess.run(
            [*prefix, os.path.join(self.root, script), *arguments],
            env=env, cwd=cwd or self.root, capture_output=True, text=True, timeout=60,
        )

    def calls(self, tool):
        if not os.path.exists(self.calls_file):
            return []
        with open(self.calls_file) as file:
            return [line.strip() for line in file if line.startswith(tool + " ")]


class Packages(ScriptTest):
    def test_nothing_missing_installs_nothing(self):
        self.call("run", DISPLAY=":good")
        self.assertEqual(self.calls("apt-get"), [])

    def test_what_is_missing_is_installed(self):
        done = self.call("run", DISPLAY=":good", MISSING="cmake libhwy-dev")
        self.assertEqual(
            self.calls("apt-get"),
            ["apt-get update", "apt-get install -y --no-install-recommends cmake libhwy-dev"],
        )
        self.assertEqual(done.stdout, "program: \n")

    def test_a_tool_that_the_release_lacks_is_done_without(self):
        self.call("test", MISSING="oclgrind")
        self.assertEqual(self.calls("apt-get"), [])

    def test_a_tool_that_the_release_has_is_installed(self):
        self.call("test", MISSING="oclgrind", AVAILABLE="oclgrind")
        self.assertEqual(self.calls("apt-get")[1:],
                         ["apt-get install -y --no-install-recommends oclgrind"])

    def test_such_a_tool_is_installed_along_with_the_rest(self):
        self.call("test", MISSING="cmake oclgrind", AVAILABLE="oclgrind")
        self.assertEqual(self.calls("apt-get")[1:],
                         ["apt-get install -y --no-install-recommends cmake oclgrind"])

    def test_an_installation_that_fails_is_one_clear_line(self):
        done = self.call("run", DISPLAY=":good", MISSING="cmake", APT_STATUS="100")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "")
        self.assertRegex(done.stderr.splitlines()[-1], "apt-get could not install cmake")
        self.assertEqual(self.calls("ninja"), [])

    def test_root_needs_no_sudo_and_others_do(self):
        unprivileged = os.geteuid() != 0
        prefix = [] if unprivileged else ["setpriv", "--reuid=65534", "--clear-groups"]
        self.call("run", prefix=prefix, DISPLAY=":good", MISSING="cmake")
        self.assertEqual(len(self.calls("sudo")), 2)
        if not unprivileged:
            os.remove(self.calls_file)
            self.call("run", DISPLAY=":good", MISSING="cmake")
            self.assertEqual(self.calls("sudo"), [])

    def test_run_does_not_ask_for_what_only_tests_need(self):
        self.call("run", DISPLAY=":good")
        asked = self.calls("dpkg-query")[0].split()
        self.assertIn("freeglut3-dev", asked)
        self.assertNotIn("libgtest-dev", asked)

    def test_every_section_of_the_list_is_used_and_names_no_package_twice(self):
        sections, section = {}, None
        for line in filter(None, read("packaging/debian-packages.txt").splitlines()):
            if line.startswith("["):
                section = sections.setdefault(line.strip("[]"), [])
            elif not line.startswith("#"):
                self.assertRegex(line, r"^[a-z0-9][a-z0-9+.-]+$")
                section.append(line)
        scripts = read("run") + read("test") + read("fuzz") + read("package")
        for name, packages in sections.items():
            with self.subTest(section=name):
                step = name.removesuffix("-where-available")
                self.assertRegex(scripts, rf"\b{step}\b")
                self.assertEqual(len(packages), len(set(packages)))


class Building(ScriptTest):
    def test_the_first_call_configures_and_the_second_does_not(self):
        self.call("run", DISPLAY=":good")
        self.call("run", DISPLAY=":good")
        self.assertEqual(len(self.calls("cmake")), 1)

    def test_the_tests_configure_what_run_left_out_once(self):
        self.call("run", DISPLAY=":good")
        self.call("test")
        self.call("run", DISPLAY=":good")
        self.call("test")
        self.assertEqual(len(self.calls("cmake")), 2)
        self.assertIn("-DTESSARY_TESTS=OFF", self.calls("cmake")[0])
        self.assertNotIn("-DTESSARY_TESTS=OFF", self.calls("cmake")[1])

    def test_nothing_to_build_says_nothing(self):
        self.call("run", DISPLAY=":good")
        self.assertEqual(self.call("run", DISPLAY=":good").stderr, "")

    def test_no_list_of_files_is_checked_at_each_build(self):
        # Ninja would have work to do each time, and ./run would say so.
        for path, folders, files in os.walk(SOURCE):
            folders[:] = [f for f in folders if f not in ("build", "out", ".git")]
            if "CMakeLists.txt" in files:
                self.assertNotRegex(read(os.path.join(path, "CMakeLists.txt")),
                                    r"\bCONFIGURE_DEPENDS\b")

    def test_build_output_stays_off_standard_output(self):
        done = self.call("run", DISPLAY=":good", BUILD="yes")
        self.assertEqual(done.stdout, "program: \n")
        self.assertIn("compiling", done.stderr)

    def test_a_build_that_fails_ends_with_1(self):
        done = self.call("run", DISPLAY=":good", BUILD="yes", NINJA_STATUS="3")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("could not build", done.stderr)

    def test_a_configuration_that_fails_ends_with_1(self):
        done = self.call("run", DISPLAY=":good", CMAKE_STATUS="1")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("could not configure", done.stderr)


class Running(ScriptTest):
    def test_arguments_arrive_unchanged_and_the_exit_status_comes_back(self):
        done = self.call("run", "--bench:a b.frac", "--cpu2", DISPLAY=":good", PROGRAM_STATUS="5")
        self.assertEqual(done.returncode, 5)
        self.assertEqual(done.stdout, "program: --bench:a b.frac --cpu2\n")

    def test_it_says_when_the_only_device_is_a_slow_one(self):
        self.call("run", DISPLAY=":good")  # configures
        for devices, options, told in (("CPU", (), True), ("CPU CPU", ("--double",), True),
                                       ("CPU", ("--cpu4",), False), ("CPU GPU", (), False),
                                       ("", (), False)):
            with self.subTest(devices=devices, options=options):
                done = self.call("run", *options, DISPLAY=":good", DEVICE_TYPES=devices)
                self.assertEqual(len(done.stderr.splitlines()), int(told))
                self.assertEqual("--cpu" in done.stderr, told)

    def test_the_program_runs_where_the_caller_stands(self):
        self.stand_in("build/release/tessary", "pwd")
        folder = os.path.join(self.root, "elsewhere")
        os.mkdir(folder)
        done = self.call("run", cwd=folder, DISPLAY=":good")
        self.assertEqual(done.stdout.strip(), folder)

    def test_list_and_help_need_no_display(self):
        for option in ("--list", "--HELP"):
            with self.subTest(option=option):
                done = self.call("run", option)
                self.assertEqual((done.returncode, done.stdout), (0, f"program: {option}\n"))
        self.assertEqual(self.calls("Xvfb"), [])

    def test_an_option_error_needs_no_display_and_is_printed_once(self):
        done = self.call("run", "--device7", PROGRAM_STATUS="1")
        self.assertEqual((done.returncode, done.stdout), (1, "program: --device7\n"))
        self.assertEqual(self.calls("Xvfb"), [])

    def test_a_display_that_does_not_answer_counts_as_none(self):
        done = self.call("run", DISPLAY=":bad")
        self.assertIn("no display", done.stderr)
        self.assertEqual(len(self.calls("Xvfb")), 1)

    def test_a_virtual_display_that_does_not_start_is_an_error(self):
        done = self.call("run")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("could not start a virtual display", done.stderr)


class Companions(ScriptTest):
    def setUp(self):
        super().setUp()
        for name in ("tessary-frac", "tessary-render"):
            self.stand_in(f"build/release/{name}", f'echo "{name}: $*"; exit ${{PROGRAM_STATUS:-0}}')

    def test_they_run_without_a_display_and_give_their_status_back(self):
        for name in ("frac", "render"):
            done = self.call("run", name, "--help", "a b", PROGRAM_STATUS="2")
            self.assertEqual((done.returncode, done.stdout), (2, f"tessary-{name}: --help a b\n"))
        self.assertEqual(self.calls("Xvfb") + self.calls("xdpyinfo"), [])

    def test_nothing_else_is_built_for_them(self):
        self.call("run", "frac", "list", BUILD="yes")
        built = [call for call in self.calls("ninja") if " -n " not in call]
        self.assertEqual([call.split()[-1] for call in built], ["tessary-frac"])

    def test_a_build_that_fails_runs_nothing(self):
        done = self.call("run", "frac", BUILD="yes", NINJA_STATUS="3")
        self.assertEqual((done.returncode, done.stdout), (1, ""))


@unittest.skipUnless(shutil.which("Xvfb") and TESSARY, "needs Xvfb and the program")
class WithoutADisplay(ScriptTest):
    def setUp(self):
        super().setUp()
        for tool in ("Xvfb", "xdpyinfo"):
            os.remove(os.path.join(self.tools, tool))
        os.remove(os.path.join(self.root, "build", "release", "tessary"))
        os.symlink(TESSARY, os.path.join(self.root, "build", "release", "tessary"))

    def run_headless(self, *arguments, **environment):
        return self.call("run", *arguments, OCL_ICD_VENDORS="/nonexistent",
                         ASAN_OPTIONS="detect_leaks=0", **environment)

    def test_the_first_picture_is_left_as_a_screenshot(self):
        done = self.run_headless("--cpu")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(re.findall("no display", done.stderr)), 1)
        path = re.search(r"^Screenshot: (.*)$", done.stdout, flags=re.M)[1]
        picture = np.asarray(Image.open(path).convert("RGB"))
        self.assertEqual(picture.shape, (921, 1152, 3))
        self.assertGreater(len(np.unique(picture.reshape(-1, 3), axis=0)), 20)

    def test_what_the_program_prints_is_printed_once(self):
        lines = self.run_headless("--cpu").stdout.splitlines()
        self.assertEqual(sum(line.startswith("Running on CPU") for line in lines), 1)
        self.assertEqual(lines[-2], "Thread shutdown complete")

    @unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "a sanitizer wants to be loaded first")
    def test_what_the_program_prints_is_printed_when_its_file_comes_late(self):
        done = self.run_headless("--cpu", LD_PRELOAD=SLOW_CREATION)
        self.assertIn("Running on CPU", done.stdout)
        self.assertEqual(done.stdout.splitlines()[-2], "Thread shutdown complete")
        self.assertNotIn("No such file", done.stderr)

    def test_a_fatal_status_is_passed_on(self):
        done = self.run_headless("--device9")
        self.assertEqual(done.returncode, 1)
        self.assertNotIn("no display", done.stderr)


class Testing(ScriptTest):
    def test_the_runners_summary_comes_last_and_its_status_is_passed_on(self):
        done = self.call("test", CTEST_STATUS="8")
        self.assertEqual((done.returncode, done.stdout), (8, "tests passed\n"))

    def test_options_go_to_the_runner(self):
        self.call("test", "-R", "Palette")
        self.assertTrue(self.calls("ctest")[0].endswith("-R Palette"))

    def test_a_variant_has_its_own_build_folder(self):
        self.call("test", "--asan", "-R", "x")
        self.assertIn("/build/asan ", self.calls("ctest")[0])
        self.assertNotIn("--asan", self.calls("ctest")[0])

    def test_a_build_that_fails_runs_no_test(self):
        done = self.call("test", BUILD="yes", NINJA_STATUS="1")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(self.calls("ctest"), [])


    def test_one_label_is_built_and_run_alone(self):
        self.call("test", "--asan", "--only", "memory", BUILD="yes")
        built = [call for call in self.calls("ninja") if " -n " not in call]
        self.assertEqual([call.split()[-1] for call in built], ["tests-memory"])
        self.assertTrue(self.calls("ctest")[0].endswith("-L ^memory$"))

    def test_the_programs_alone_run_no_test(self):
        done = self.call("test", "--clang", "--only", "programs", BUILD="yes")
        self.assertEqual(done.returncode, 0)
        self.assertIn("tests-programs", self.calls("ninja")[-1])
        self.assertEqual(self.calls("ctest"), [])

    def test_the_guide_brings_its_browser_and_without_one_nothing_was_looked_at(self):
        self.stand_in("tools/pandoc", "")
        done = self.call("test", "--only", "guide", MISSING="chromium", APT_STATUS="100")
        self.assertEqual((done.returncode, self.calls("ctest")), (77, []))
        self.assertIn("apt-get could not install chromium", done.stderr)
        if not shutil.which("chromium", path="/usr/bin:/bin"):
            done = self.call("test", "--only", "guide")
            self.assertEqual((done.returncode, self.calls("ctest")), (77, []))
            self.assertEqual(done.stderr, "test: there is no chromium\n")
        self.stand_in("tools/chromium", "")
        self.assertEqual(self.call("test", "--only", "guide").returncode, 0)
        self.assertTrue(self.calls("ctest")[0].endswith("-L ^guide$"))

    def test_what_the_guide_lacks_stops_no_other_test(self):
        self.assertEqual(self.call("test", MISSING="chromium", APT_STATUS="100").returncode, 0)

    def test_there_are_two_places_a_core(self):
        self.stand_in("tools/nproc", "echo 3")
        self.call("test")
        self.assertIn(" --parallel 6", self.calls("ctest")[0])

    def test_coverage_is_told_after_the_tests_whose_status_is_passed_on(self):
        self.stand_in("tools/gcovr", "echo 'lines: 100 %'")
        done = self.call("test", "--coverage", CTEST_STATUS="8")
        self.assertEqual((done.returncode, done.stdout), (8, "tests passed\nlines: 100 %\n"))


class Linting(ScriptTest):
    # What each is called by.
    TOOLS = {"cppcheck": "cppcheck --project", "clang-tidy": "python3 tests/house/tidy.py",
             "analyzer": "python3 tests/house/analyze.py"}

    def setUp(self):
        super().setUp()
        for tool in ("cppcheck", "python3"):
            self.stand_in(f"tools/{tool}", f'[[ ! $FINDING || "{tool} $*" != "$FINDING"* ]]')

    def looks(self, name):
        call = self.TOOLS[name]
        return [line for line in self.calls(call.split()[0]) if line.startswith(call)]

    def test_every_tool_looks_and_nothing_found_is_success(self):
        self.assertEqual(self.call("test", "--lint").returncode, 0)
        for name in self.TOOLS:
            self.assertEqual(len(self.looks(name)), 1)

    def test_what_one_tool_finds_keeps_no_other_from_looking(self):
        for name, call in self.TOOLS.items():
            with self.subTest(tool=name):
                done = self.call("test", "--lint", FINDING=call)
                self.assertEqual(done.returncode, 1)
                self.assertIn(f"test: {name} found something", done.stderr)
        self.assertEqual([len(self.looks(name)) for name in self.TOOLS], [3, 3, 3])

    def test_one_tool_can_be_asked_alone(self):
        self.call("test", "--lint", "cppcheck")
        self.assertEqual([len(self.looks(name)) for name in self.TOOLS], [1, 0, 0])

    def test_every_source_can_be_asked_for(self):
        self.call("test", "--lint", "--all", "clang-tidy")
        self.assertTrue(self.looks("clang-tidy")[0].endswith(" build/clang --all"))


class Gate(ScriptTest):
    """.ci/run, with a stand-in for ./test."""

    STAGES = 8

    def setUp(self):
        super().setUp()
        os.mkdir(os.path.join(self.root, ".ci"))
        shutil.copy(os.path.join(SOURCE, ".ci", "run"), os.path.join(self.root, ".ci"))
        self.stand_in("test", '[[ $* != "$BAD" ]]')

    def gate(self, **environment):
        done = self.call(".ci/run", BAD=environment.pop("BAD", "none"), **environment)
        told = [line for line in done.stdout.splitlines() if line.startswith("ci: ")]
        return done.returncode, told

    def test_the_plain_tests_come_first_and_every_stage_is_a_line(self):
        status, told = self.gate()
        self.assertEqual((status, len(told)), (0, self.STAGES))
        self.assertEqual(self.calls("test")[0].strip(), "test")
        for line in told:
            self.assertRegex(line, r"^ci: .*: passed in \d+ min \d+ s$")

    def test_a_stage_that_fails_fails_the_run_and_stops_none_of_the_others(self):
        for stage in ("", "--asan --only memory", "--lint cppcheck", "--lint clang-tidy",
                      "--lint analyzer"):
            with self.subTest(stage=stage):
                status, told = self.gate(BAD=stage)
                self.assertEqual((status, len(told)), (1, self.STAGES))
                self.assertEqual(sum("FAILED with status 1" in line for line in told), 1)

    def test_a_stage_that_this_machine_cannot_run_is_left_out_and_has_not_passed(self):
        self.stand_in("package", "exit 77")
        status, told = self.gate()
        self.assertEqual((status, len(told)), (0, self.STAGES + 1))
        self.assertEqual([line for line in told if "passed" not in line],
                         ["ci: packages: left out, for the reason given above; by hand: ./package --check"])

    def test_a_guide_that_cannot_be_looked_at_is_left_out(self):
        self.stand_in("test", '[[ $* != "--only guide" ]] || exit 77')
        status, told = self.gate()
        self.assertEqual((status, len(told)), (0, self.STAGES))
        self.assertEqual([line for line in told if "passed" not in line],
                         ["ci: the guide in a browser: left out, for the reason given above; "
                          "by hand: ./test --only guide"])

    def test_what_the_time_does_not_suffice_for_is_left_out_and_named(self):
        status, told = self.gate(CI_SECONDS="60")
        self.assertEqual((status, len(told)), (0, self.STAGES))
        self.assertEqual(self.calls("test"), ["test"])
        self.assertIn("left out for want of time; by hand: ./test --asan --only memory", told[1])

    def test_tests_that_take_all_the_time_are_a_failure(self):
        self.stand_in("tools/timeout", """(($# > 3)) || exit 124; shift 2; "$@" """)
        status, told = self.gate(CI_SECONDS="100000")
        self.assertEqual((status, len(told)), (1, self.STAGES))
        self.assertRegex(told[0], "^ci: tests: given up after .* for want of time; by hand: ./test$")
        limit = re.fullmatch(r"timeout --kill-after=10 (\d+) ./test", self.calls("timeout")[0])[1]
        self.assertTrue(90000 < int(limit) <= 100000, limit)


class Fuzzing(ScriptTest):
    def setUp(self):
        super().setUp()
        for name in ("one", "two"):
            folder = os.path.join(self.root, "tests", "fuzz", "corpus", name)
            os.makedirs(folder)
            open(os.path.join(self.root, "tests", "fuzz", f"{name}_fuzz.cpp"), "w").close()
            self.stand_in(f"build/fuzz/tests/fuzz/{name}_fuzz", "exit ${FUZZ_STATUS:-0}")

    def options(self):
        return self.calls("two_fuzz")[0].split()

    def test_the_list_is_a_name_a_line_and_builds_nothing(self):
        done = self.call("fuzz", "--list")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "one\ntwo\n", ""))
        self.assertEqual(self.calls("ninja") + self.calls("dpkg-query"), [])

    def test_one_target_is_built_and_run_for_so_long(self):
        done = self.call("fuzz", "two", "7", BUILD="yes")
        self.assertEqual(done.returncode, 0)
        built = [call for call in self.calls("ninja") if " -n " not in call]
        self.assertEqual([call.split()[-1] for call in built], ["two_fuzz"])
        self.assertIn("-max_total_time=7", self.options())
        self.assertEqual(self.calls("one_fuzz"), [])

    def test_what_is_found_goes_below_the_build_folder_and_the_corpus_is_read(self):
        self.call("fuzz", "two", "7")
        found = os.path.join(self.root, "build", "fuzz", "found", "two")
        corpus = os.path.join(self.root, "tests", "fuzz", "corpus", "two")
        # The first folder is the one that is written to.
        self.assertEqual(self.options()[-2:], [found, corpus])
        self.assertTrue(os.path.isdir(found))

    def test_a_finding_is_status_1_and_its_input_is_named(self):
        failed = os.path.join(self.root, "build", "fuzz", "failed", "two")
        self.stand_in("build/fuzz/tests/fuzz/two_fuzz", f"touch {failed}/crash-1; exit 77")
        done = self.call("fuzz", "two", "7")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.splitlines()[-1], os.path.join(failed, "crash-1"))
        self.assertIn(f"-artifact_prefix={failed}/", self.options())

    def test_a_dictionary_is_used_where_there_is_one(self):
        path = os.path.join(self.root, "tests", "fuzz", "two.dict")
        open(path, "w").close()
        self.call("fuzz", "two", "7")
        self.call("fuzz", "one", "7")
        self.assertIn(f"-dict={path}", self.options())
        self.assertNotIn("-dict", self.calls("one_fuzz")[0])

    def test_a_wrong_command_line_is_one_line_and_status_2(self):
        for arguments in ((), ("two",), ("three", "7"), ("two", "0"), ("two", "-1"), ("two", "1s"),
                          ("two", ""), ("", "7"), ("two", "7", "8"), ("--list", "x"), ("--what",),
                          ("t.o", "7"), ("-w", "7")):
            with self.subTest(arguments=arguments):
                done = self.call("fuzz", *arguments)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertRegex(done.stderr, r"\Afuzz: .*\(see \./fuzz --help\)\n\Z")
        self.assertEqual(self.calls("ninja") + self.calls("dpkg-query"), [])

    def test_help_tells_of_both_forms(self):
        done = self.call("fuzz", "--help")
        self.assertEqual(done.returncode, 0)
        self.assertIn("./fuzz --list | TARGET SECONDS\n", done.stdout)

    def test_a_build_that_fails_runs_nothing(self):
        done = self.call("fuzz", "two", "7", BUILD="yes", NINJA_STATUS="1")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(self.calls("two_fuzz"), [])


class Mutants(ScriptTest):
    """./test --mutants on a tree of two lines, whose test notices only what is grossly wrong."""

    SOURCE = "bool less(int a, int b) {\n    return a < b;\n}\n"
    # Both forms of the change: as the environment chooses it, and in its place.
    WRITES_A_TEST = """folder=$2; source=${folder%/build/release}/compute/pixels.h; shift 2; mkdir -p "$folder"
        [[ $1 != -t ]] || exit 0
        [[ $1 != -k ]] || shift 2
        if [[ $UNFIT ]] && line=$(grep -n 'a >= b' "$source"); then
            echo "$source:${line%%:*}:1: error: unfit" && exit 1
        fi
        for name; do
            printf '#!/bin/bash\n%s\n' "${UNFIT_FROM_THE_START:+exit 1}" "source=$source" '
                grep -q chosen "$source" || { ! grep -q "a >= b" "$source"; exit; }
                ! grep -A1 -F "chosen($TESSARY_MUTANT)" "$source" | grep -q "a >= b"' >"$folder/$name"
            chmod +x "$folder/$name"
        done"""

    def setUp(self):
        super().setUp()
        os.makedirs(os.path.join(self.root, "tests", "mutants"))
        os.mkdir(os.path.join(self.root, "compute"))
        for path in glob.glob(os.path.join(SOURCE, "tests", "mutants", "*.py")):
            shutil.copy(path, os.path.join(self.root, "tests", "mutants"))
        self.source = os.path.join(self.root, "compute", "pixels.h")
        self.write(self.source, self.SOURCE)
        self.list_equivalents("")
        self.stand_in("tools/cmake", "")
        self.stand_in("tools/ninja", self.WRITES_A_TEST)
        self.stand_in("tools/git", "echo compute/pixels.h")

    def write(self, path, text):
        with open(path, "w") as file:
            file.write(text)

    def list_equivalents(self, text):
        self.write(os.path.join(self.root, "tests", "mutants", "equivalent.txt"), text)

    def test_what_no_test_notices_is_told_with_its_line_and_the_sum_comes_last(self):
        done = self.call("test", "--mutants", "compute/pixels.h")
        self.assertEqual(done.stdout.splitlines(), [
            "SURVIVED: compute/pixels.h:2: return a < b;  ==>  return a <= b;",
            "2 changes: 1 killed, 1 survived, 0 listed as equivalent, 0 do not compile"])
        self.assertEqual((done.returncode, done.stderr), (1, ""))

    def test_no_survivor_is_success(self):
        self.list_equivalents("== compute/pixels.h\n\nreturn a < b;  ==>  return a <= b;\n"
                              "    Nobody asks for two of a kind.\n")
        done = self.call("test", "--mutants", "compute/pixels.h")
        self.assertEqual((done.returncode, done.stdout), (
            0, "2 changes: 1 killed, 0 survived, 1 listed as equivalent, 0 do not compile\n"))

    def test_what_does_not_compile_is_no_survivor(self):
        done = self.call("test", "--mutants", "compute/pixels.h", UNFIT="yes")
        self.assertEqual(done.stdout.splitlines()[-1],
                         "2 changes: 0 killed, 1 survived, 0 listed as equivalent, 1 do not compile")

    def test_lines_can_be_chosen(self):
        done = self.call("test", "--mutants", "compute/pixels.h:1-1")
        self.assertRegex(done.stdout, "^0 changes: ")

    def test_the_tree_stays_as_it_is(self):
        self.call("test", "--mutants", "compute/pixels.h")
        with open(self.source) as file:
            self.assertEqual(file.read(), self.SOURCE)

    def test_the_folders_own_tests_are_built_in_a_folder_of_their_own(self):
        self.call("test", "--mutants", "compute/pixels.h")
        folder = os.path.join(self.root, "build", "mutants", "tree", "build", "release")
        words = [call.split()[1:] for call in self.calls("ninja")]
        self.assertEqual({tuple(w[:2]) for w in words}, {("-C", folder)})
        self.assertEqual({w[-1] for w in words}, {"pixels_test", "tile_test"})

    def test_each_change_can_be_built_by_itself(self):
        together = self.call("test", "--mutants", "compute/pixels.h").stdout
        os.remove(self.calls_file)
        alone = self.call("test", "--mutants", "compute/pixels.h", "--one-by-one").stdout
        self.assertEqual(alone, together)
        self.assertFalse(any("-k" in call for call in self.calls("ninja")))

    def test_a_sample_is_drawn_by_its_seed_and_says_what_it_is_worth(self):
        self.write(self.source, self.SOURCE * 20)
        call = ("test", "--mutants", "compute/pixels.h", "--sample", "1/4", "--seed")
        one, again, other = (self.call(*call, seed, "--list").stdout for seed in "112")
        self.assertEqual(len(one.splitlines()), 10)
        self.assertEqual(one, again)
        self.assertNotEqual(one, other)
        self.write(self.source, self.SOURCE)
        told = self.call("test", "--mutants", "compute/pixels.h", "--sample", "1/2").stdout
        self.assertRegex(told, r"(?m)^sample 1/2, seed 1: .* noticed, of all between .* \(95 %\)$")
        self.assertRegex(told, "(?m)^1 changes: ")

    def test_tests_that_fail_by_themselves_are_told_before_anything_is_changed(self):
        done = self.call("test", "--mutants", "compute/pixels.h", UNFIT_FROM_THE_START="yes")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "mutants: pixels_test fails without any change\n")

    def test_a_wrong_name_is_one_line_and_status_2(self):
        self.write(os.path.join(self.root, "README.md"), "")
        self.write(os.path.join(self.root, "lone.h"), "")
        for name, told in (("compute/pixel.h", "there is no C++ source 'compute/pixel.h'"),
                           ("compute", "there is no C++ source 'compute'"),
                           ("README.md", "there is no C++ source 'README.md'"),
                           ("lone.h", "no unit tests are known of 'lone.h'"),
                           ("compute/pixels.h:x", "'x' is no line and no range of lines")):
            with self.subTest(name=name):
                done = self.call("test", "--mutants", "compute/pixels.h", name)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertEqual(done.stderr, f"mutants: {told}\n")
        self.assertEqual(self.calls("ninja"), [])

    def test_every_test_and_every_beginning_that_it_knows_is_there(self):
        text = read("tests/mutants/mutants.py")
        rows = re.findall(r'^    \("([^"]+)", "([^"]+)"\),$', text, re.MULTILINE)
        self.assertGreater(len(rows), 10)
        for beginning, tests in rows:
            folder, start = beginning.split("/")
            self.assertTrue(any(name.startswith(start)
                                for name in os.listdir(os.path.join(SOURCE, folder))), beginning)
            # What every global holds at first is looked at in one place.
            cmake = read(f"tests/{folder.lower()}/CMakeLists.txt") + read("tests/app/CMakeLists.txt")
            for subject in re.findall(r"foreach\(subject ([^)]*)\)", cmake):
                cmake += "".join(f"NAME toolkit_{name}_test\n" for name in subject.split())
            cases = self.cases_in(f"tests/{folder.lower()}")
            for test in tests.split():
                target, *chosen = test.split(":")
                self.assertRegex(cmake, rf"(NAME |add_executable\(){target}\b")
                for pattern in chosen:
                    self.assertTrue(fnmatch.filter(cases, pattern.partition("/")[0]), pattern)

    @staticmethod
    def cases_in(folder):
        """Suite.Name of every unit test of a folder."""
        sources = [name for name in os.listdir(os.path.join(SOURCE, folder)) if name.endswith(".cpp")]
        return [f"{suite}.{name}" for source in sources for suite, name in
                re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", read(f"{folder}/{source}"), re.MULTILINE)]


class Syntax(unittest.TestCase):
    def test_the_shell_accepts_every_script(self):
        for name in ("run", "test", "fuzz", ".ci/run", "packaging/setup.sh", "packaging/virtual_display.sh"):
            with self.subTest(script=name):
                path = os.path.join(SOURCE, name)
                done = subprocess.run(["bash", "-n", path], capture_output=True, text=True)
                self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_what_is_called_can_be_executed(self):
        for name in ("run", "test", "fuzz", ".ci/run"):
            with self.subTest(script=name):
                mode = os.stat(os.path.join(SOURCE, name)).st_mode
                self.assertTrue(mode & stat.S_IXUSR)


if __name__ == "__main__":
    unittest.main()

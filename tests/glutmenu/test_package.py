"""Programs of others find the toolkit that was installed, alone or with the whole: by CMake, by
pkg-config, at the place it was installed to and at another; and they show its menus."""

import json
import os
import shutil
import tempfile
import unittest

import numpy as np

from toolkit_package import (TOOLKIT, Window, attempt, build, compile_by_pkg_config, files_below, harness,
                             is_plain_build, pkg_config, run)

WITH_KEYS = {
    "include/GlutMenu/CGlutMenu.h", "include/GlutMenu/GlutKeys.h",
    "lib/cmake/GlutMenu/GlutMenuConfig.cmake", "lib/cmake/GlutMenu/GlutMenuConfigVersion.cmake",
    "lib/cmake/GlutMenu/GlutMenuGlutMenu-release.cmake",
    "lib/cmake/GlutMenu/GlutMenuGlutMenu.cmake", "lib/cmake/GlutMenu/GlutMenuKeys-release.cmake",
    "lib/cmake/GlutMenu/GlutMenuKeys.cmake", "lib/libglutmenu.a", "lib/libglutmenu_keys.a",
    "lib/pkgconfig/glutmenu-keys.pc", "lib/pkgconfig/glutmenu.pc",
    "share/doc/glutmenu/example/CMakeLists.txt", "share/doc/glutmenu/example/dots.cpp"}
WITHOUT_KEYS = {name for name in WITH_KEYS if "eys" not in name or name.endswith("GlutKeys.h")}

KEYS_PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(Keys LANGUAGES CXX)
find_package(GlutMenu {version} REQUIRED COMPONENTS {component})
file(WRITE ${{CMAKE_BINARY_DIR}}/keys.cpp
  "#include <GlutMenu/GlutKeys.h>\\nint main() {{ GlutMenu::EnableShiftTab(); }}\\n")
add_executable(keys ${{CMAKE_BINARY_DIR}}/keys.cpp)
target_link_libraries(keys PRIVATE GlutMenu::{component})
"""


class PackageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tessary-package-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, *parts):
        return os.path.join(self.folder, *parts)

    def project(self, component="Keys", version=""):
        """What comes of a project that asks for a component."""
        os.makedirs(self.path("project"), exist_ok=True)
        with open(self.path("project", "CMakeLists.txt"), "w") as file:
            file.write(KEYS_PROJECT.format(component=component, version=version))
        shutil.rmtree(self.path("tried"), ignore_errors=True)
        return attempt("cmake", "-S", self.path("project"), "-B", self.path("tried"),
                       f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def assert_the_example_works(self, program):
        """Clicks beside the bar put dots; the bar's drop-down counts them in a dialog."""
        with harness.Screen() as screen:
            window = Window(screen, program, "Dots")
            self.addCleanup(window.stop)
            window.click(200, 200)
            harness.wait_until(lambda: window.screenshot()[200, 200].min() == 255, 10, "the dot")
            window.click(10, 8)
            window.wait_for_line("^Item Dots$")
            window.click(10, 20)
            window.wait_for_line("^Item Count$")
            # The title bar of the dialog, in the text's white.
            harness.wait_until(lambda: self.white_share(window) > 0.5, 10, "the dialog")

    @staticmethod
    def white_share(window):
        return np.mean(window.screenshot()[102:110, 102:120].min(axis=2) == 255)


class Installed:
    """What holds for the toolkit installed in `prefix`."""

    def test_exactly_what_programs_need_is_there(self):
        found = {name.replace("relwithdebinfo", "release").replace("debug", "release")
                 for name in files_below(self.prefix)}
        self.assertEqual(found, WITH_KEYS)

    def test_the_example_finds_it_by_cmake_and_works(self):
        example = os.path.join(self.prefix, "share/doc/glutmenu/example")
        build(example, self.path("dots"), f"-DCMAKE_PREFIX_PATH={self.prefix}")
        self.assert_the_example_works(self.path("dots", "dots"))

    def test_the_example_finds_it_by_pkg_config_at_another_place_and_works(self):
        moved = self.path("moved")
        shutil.copytree(self.prefix, moved)
        compile_by_pkg_config(os.path.join(moved, "share/doc/glutmenu/example/dots.cpp"),
                              self.path("dots"), moved, "glutmenu")
        self.assertNotIn(self.prefix, pkg_config(moved, "--cflags", "--libs", "glutmenu"))
        self.assert_the_example_works(self.path("dots"))

    def test_nothing_that_is_installed_names_the_place_where_it_was_built(self):
        for name in files_below(self.prefix):
            if not name.endswith(".a"):
                with self.subTest(file=name), open(os.path.join(self.prefix, name)) as file:
                    text = file.read()
                    self.assertNotIn(harness.SOURCE, text)
                    self.assertNotIn(self.prefix, text)

    def test_the_helper_for_keys_is_a_component(self):
        done = self.project()
        self.assertEqual(done.returncode, 0, done.stdout)
        run("cmake", "--build", self.path("tried"))
        compile_by_pkg_config(self.path("tried", "keys.cpp"), self.path("keys"), self.prefix,
                              "glutmenu-keys")


@unittest.skipUnless(is_plain_build(), "what was built links with special options alone")
class OfTheWhole(PackageTest, Installed):
    @classmethod
    def setUpClass(cls):
        cls.prefix = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-package-"))
        run("cmake", "--install", harness.BUILD, "--component", "glutmenu", "--prefix", cls.prefix)


class Alone(PackageTest, Installed):
    @classmethod
    def setUpClass(cls):
        cls.built = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-package-"))
        cls.prefix = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-package-"))
        build(TOOLKIT, cls.built, "-DGLUTMENU_DEMO=OFF", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")
        run("cmake", "--install", cls.built, "--prefix", cls.prefix)

    def test_destdir_is_put_before_the_prefix(self):
        run("cmake", "--install", self.built, "--prefix", "/opt/toolkit", DESTDIR=self.folder)
        self.assertEqual(files_below(self.path("opt/toolkit")), files_below(self.prefix))
        self.assertEqual(os.listdir(self.folder), ["opt"])

    def test_no_file_is_compiled_with_contraction_or_as_an_older_language(self):
        with open(os.path.join(self.built, "compile_commands.json")) as file:
            commands = [entry["command"] for entry in json.load(file)]
        self.assertGreater(len(commands), 10)
        for command in commands:
            self.assertIn(" -ffp-contract=off ", command)
            self.assertIn(" -std=c++20 ", command)

    def test_a_later_version_of_the_same_major_number_is_wanted_in_vain(self):
        self.assertEqual(self.project(version="1.0").returncode, 0)
        for version in ("1.99", "2.0"):
            with self.subTest(version=version):
                done = self.project(version=version)
                self.assertNotEqual(done.returncode, 0)
                self.assertIn(f'compatible with requested version "{version}"',
                              " ".join(done.stdout.split()))

    def test_cmake_and_pkg_config_tell_the_same_version(self):
        for package in ("glutmenu", "glutmenu-keys"):
            version = pkg_config(self.prefix, "--modversion", package)
            self.assertEqual(self.project(version=f"{version} EXACT").returncode, 0)

    def test_an_unknown_component_is_refused(self):
        done = self.project(component="Strings")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("of the components Strings, one was not built", done.stdout)


class WithoutX11(PackageTest):
    @classmethod
    def setUpClass(cls):
        cls.built = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-package-"))
        cls.prefix = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="tessary-package-"))
        build(TOOLKIT, cls.built, "-DCMAKE_DISABLE_FIND_PACKAGE_X11=ON", "-DGLUTMENU_EXAMPLE=ON")
        run("cmake", "--install", cls.built, "--prefix", cls.prefix)

    def test_all_but_the_helper_for_keys_is_there(self):
        self.assertEqual(set(files_below(self.prefix)), WITHOUT_KEYS)

    def test_the_example_is_built_within_the_toolkit(self):
        self.assert_the_example_works(os.path.join(self.built, "example", "dots"))

    def test_the_component_is_refused(self):
        done = self.project()
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("of the components Keys, one was not built", done.stdout)


class Example(unittest.TestCase):
    def test_it_has_at_most_fifty_lines(self):
        with open(os.path.join(TOOLKIT, "example", "dots.cpp")) as file:
            self.assertLessEqual(len(file.readlines()), 50)


if __name__ == "__main__":
    unittest.main()

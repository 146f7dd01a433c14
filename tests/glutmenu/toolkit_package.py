"""An installed toolkit, and programs that are built against it."""

import os
import shutil
import subprocess
import sys

try:
    import harness
except ImportError:  # run by hand rather than by ctest
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))
    import harness

TOOLKIT = os.path.join(harness.SOURCE, "GlutMenu")
HANG = 60 * harness.PATIENCE


def environment(**extra):
    env = dict(os.environ, **extra)
    if shutil.which("ccache"):
        env.setdefault("CMAKE_CXX_COMPILER_LAUNCHER", "ccache")
    return env


def attempt(*command, cwd=None, **extra):
    """What came of a command: status, and both outputs as one text."""
    return subprocess.run(command, cwd=cwd, env=environment(**extra), stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=HANG)


def run(*command, cwd=None, **extra):
    """The output of a command that must not fail."""
    done = attempt(*command, cwd=cwd, **extra)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(command)}:\n{done.stdout}")
    return done.stdout


def is_plain_build():
    """Whether what was built links into programs that are built without special options."""
    with open(os.path.join(harness.BUILD, "CMakeCache.txt")) as file:
        return not harness.SANITIZE and "TESSARY_COVERAGE:BOOL=ON" not in file.read()


def build(source, folder, *options, **extra):
    run("cmake", "-S", source, "-B", folder, *options, **extra)
    run("cmake", "--build", folder, "--parallel", "2", **extra)


def files_below(folder):
    return sorted(os.path.relpath(os.path.join(path, name), folder)
                  for path, _, names in os.walk(folder) for name in names)


def pkg_config(prefix, *arguments):
    path = os.path.join(prefix, "lib", "pkgconfig")
    return run("pkg-config", *arguments, PKG_CONFIG_PATH=path).strip()


def compile_by_pkg_config(source, program, prefix, *packages):
    flags = pkg_config(prefix, "--cflags", "--libs", *packages).split()
    run("c++", "-std=c++20", source, "-o", program, *flags)


class Window(harness.Program):
    """A program whose window has this title."""

    def __init__(self, screen, program, title):
        super().__init__(screen, program=program)
        self.title = title
        self.wait_for_window()

    def _find_window(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended: {self.errors}")
        _, found = self.screen.tool("xdotool", "search", "--onlyvisible", "--name",
                                    f"^{self.title}$", check=False)
        return found.split()[-1].decode() if found.split() else None

"""A copy of the working tree that may be changed, with a build folder of its own."""

import os
import resource
import shutil
import signal
import subprocess

from schema import CHOICE, VARIABLE, errors_in, errors_on_the_way

MOST_MEMORY = 8 << 30  # bytes of a test's address space: a changed loop may ask for all there is
INCLUDED = ".changed.h"
LINES_ADDED = 2  # by put()
SILENT = "#pragma GCC system_header\n"
VECTORS = ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1",
           "-DTESSARY_SKIPPED_TARGETS=(HWY_SSSE3|HWY_SSE4|HWY_AVX3)"]
WAITING = 20  # seconds of the clock for each of the processor, for what hangs without working


class Workshop:
    """Built as the release is, so that the compiler's cache has what no change is in; the folder stands
    in the copy where it stands in the tree, which the cache wants too. What is compiled for vectors
    takes minutes so: it is built plainly, for one instruction set."""

    def __init__(self, root, folder, definitions, vectors):
        self.root, self.tree = root, folder / ("vectors" if vectors else "tree")
        self.build = self.tree / "build" / "release"
        self.tree.mkdir(parents=True, exist_ok=True)
        self.choice = folder / "choice.h"
        self._write(self.choice, CHOICE)
        for name in self._names():
            self._refresh(name)
        command = ["cmake", "--preset", "release", *("-D" + d for d in definitions),
                   "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", *(VECTORS if vectors else [])]
        if shutil.which("ccache"):
            command.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        subprocess.run(command, cwd=self.tree, check=True, stdout=subprocess.DEVNULL)

    def _names(self):
        return subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=self.root,
                              capture_output=True, text=True, check=True).stdout.splitlines()

    def _refresh(self, name):
        source, copy = self.root / name, self.tree / name
        if source.is_file():
            copy.parent.mkdir(parents=True, exist_ok=True)
            if not copy.is_file() or copy.read_bytes() != source.read_bytes():
                shutil.copy(source, copy)

    @staticmethod
    def _write(path, text):
        """Leaves a file alone that is so already: what depends on it is not built again."""
        if not path.is_file() or path.read_text() != text:
            path.write_text(text)

    def put(self, path, text):
        """A changed text in the place of a file. Whatever a compiler warns of there is passed over, as
        in a header of the system; to be one, a source is included by what stands in its place."""
        if path.endswith(".cpp"):
            self._write(self.tree / (path + INCLUDED), f'{SILENT}\n{text}')
            self._write(self.tree / path, f'#include "{self.choice}"\n#include "{path}{INCLUDED}"\n')
        else:
            self._write(self.tree / path, f'{SILENT}#include "{self.choice}"\n{text}')

    def restore(self, path):
        self._refresh(path)

    def compiler_says(self, *targets):
        """Builds; what was said, and whether all is built."""
        done = subprocess.run(["ninja", "-C", self.build, "-k", "0", *targets], capture_output=True,
                              text=True, errors="replace")
        # The cache names files from the build folder, and a source by what it includes.
        said = (done.stdout + done.stderr).replace("../../", f"{self.tree}/").replace(INCLUDED, "")
        return said, done.returncode == 0

    def builds(self, target):
        return subprocess.run(["ninja", "-C", self.build, target], capture_output=True).returncode == 0

    def fit(self, schemas, targets):
        """Builds what the schemas say, less what does not compile; whether that came to an end."""
        while True:
            for path, schema in schemas.items():
                self.put(path, "".join(schema.written().pieces))
            output, built = self.compiler_says(*targets)
            if built or not self._drop(schemas, output):
                return built

    def _drop(self, schemas, output):
        """Whether something was left out because of what the compiler said."""
        for lines_in in (errors_in, errors_on_the_way):
            if any([schema.drop({line - LINES_ADDED for line in lines_in(output, self.tree / path)})
                    for path, schema in schemas.items()]):
                return True
        named = [s for path, s in schemas.items() if s.numbers() and str(self.tree / path) in output]
        for schema in named:
            schema.drop_all()
        return bool(named)

    def program(self, target):
        return next(p for p in self.build.rglob(target) if p.is_file() and os.access(p, os.X_OK))

    def passes(self, target, filter_, seconds, number=0):
        """Whether a test passes within so many seconds of the processor, with a change chosen."""
        command = [self.program(target), "--gtest_brief=1", "--gtest_fail_fast"]
        if filter_:
            command.append(f"--gtest_filter={filter_}")
        process = subprocess.Popen(command, cwd=self.build, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True,
                                   env={**os.environ, VARIABLE: str(number)},
                                   preexec_fn=lambda: bound(seconds))
        try:
            return process.wait(WAITING * seconds) == 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False

    def seconds_of(self, target, filter_, most):
        """The processor's seconds that a test takes unchanged, or None where it fails."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not self.passes(target, filter_, most):
            return None
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def bound(seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 2))
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

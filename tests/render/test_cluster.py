"""The same film by one run, by GNU parallel and by a Slurm job array, with the commands shown."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

from film_catalogues import FAMILY, FilmTest
from render_command import BUILD, SOURCE
from slurm import CannotStart, Cluster

FILM = ["--glide", "linear", "--steps", "9", "--size", "40x30"]
BIN = os.path.abspath(BUILD)


def shown(program):
    """The commands of the page that begin so."""
    with open(os.path.join(SOURCE, "docs", "cluster.md"), encoding="utf-8") as file:
        return re.findall(rf"(?m)^({program}\b.*)$", file.read())


class ClusterTest(FilmTest):
    def setUp(self):
        super().setUp()
        self.write("stdin.frac", FAMILY)
        self.whole = self.film(*FILM)
        for name in self.whole:
            os.remove(self.path(name))
        os.mkdir(self.path("frames"))
        self.environment = {**os.environ, "PATH": f"{BIN}:{os.environ['PATH']}",
                            "HOME": self.folder}

    def as_test(self, command):
        """A command of the page with the catalogue, the size and the script of this test."""
        command = command.replace("tour.frac", "stdin.frac")
        if "sbatch" in command or "--film" in command:
            command = command.replace("stdin.frac", "stdin.frac --glide linear --steps 9")
        command = re.sub(r"\bfilm\.sbatch", os.path.join(SOURCE, "packaging", "film.sbatch"), command)
        return re.sub(r"--size \d+x\d+", "--size 40x30", command)

    def run_shell(self, command, **environment):
        done = subprocess.run(["sh", "-c", command], cwd=self.folder, capture_output=True,
                              env={**self.environment, **environment}, timeout=300, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""), command)

    def assert_film(self, folder="frames"):
        made = self.pictures(folder)
        self.assertEqual(sorted(made), sorted(self.whole))
        for name, data in self.whole.items():
            self.assertEqual(made[name], data, name)
        self.assertEqual(sorted(os.listdir(self.path(folder))), sorted(self.whole))


@unittest.skipUnless(shutil.which("parallel"), "needs GNU parallel")
class Parallel(ClusterTest):
    def test_the_film_of_the_page_is_that_of_one_run(self):
        (command,) = [c for c in shown("seq") if "--film" in c]
        self.run_shell(self.as_test(command))
        self.assert_film()

    def test_the_poster_of_the_page_is_that_of_one_run(self):
        self.run_bands("-o band")
        self.render("stdin.frac", "--entry", 1, "--size", "40x30", "-o", "whole.png")
        self.assertEqual(self.read("poster.png"), self.read("whole.png"))

    def test_the_numbers_of_the_page_are_those_of_one_run(self):
        self.run_bands("--values band")
        self.render("stdin.frac", "--entry", 1, "--size", "40x30", "--values", "whole.npy")
        self.assertEqual(self.read("values.npy"), self.read("whole.npy"))

    def run_bands(self, what):
        (shares,) = [c for c in shown("seq") if what in c]
        (join,) = [c for c in shown("tessary-render --join") if ("npy" in c) == ("npy" in shares)]
        self.run_shell(self.as_test(shares))
        self.run_shell(join)


class Slurm(ClusterTest):
    def setUp(self):
        super().setUp()
        folder = tempfile.mkdtemp(prefix="slurm-")
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        try:
            self.cluster = Cluster(folder)
        except CannotStart as reason:
            self.skipTest(str(reason))
        self.addCleanup(self.cluster.close)

    def submit(self, command, **environment):
        self.run_shell(command.replace("sbatch ", "sbatch --wait --quiet ", 1),
                       SLURM_CONF=self.cluster.environment["SLURM_CONF"], **environment)

    def test_the_film_of_the_page_is_that_of_one_run(self):
        (command,) = shown("sbatch")
        self.submit(self.as_test(command))
        self.assert_film()

    def test_tasks_that_failed_may_be_given_again(self):
        (command,) = shown("sbatch")
        self.submit(self.as_test(command))
        missing = sorted(self.whole)[3::8]
        for name in missing:
            os.remove(self.path("frames/" + name))
        (again,) = shown(r"TESSARY_SHARES=\d+")
        assignment, again = again.split(" ", 1)
        again = re.sub(r"--array=[\d,-]+", "--array=4", again)
        self.submit(self.as_test(again), **dict([assignment.split("=")]))
        self.assert_film()


if __name__ == "__main__":
    unittest.main()

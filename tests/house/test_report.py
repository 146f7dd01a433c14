"""bench/report.py makes the table, the plot and the rows of a benchmark's run, also of a part of one."""

import csv
import json
import os
import subprocess
import sys
import tempfile
import unittest

from sources import SOURCE

FRAME = {"run_type": "iteration", "real_time": 12.0, "scalar_ms": 480.0, "vectors_ms": 10.0,
         "ratio": 48.0, "Gsteps/s": 27.5, "peak": 0.71, "queue": 0.19}


def frame(name, **figures):
    return {"name": name + "/iterations:3/manual_time", **FRAME, **figures}


def search(name, share):
    return {"name": name + "/search/iterations:3/manual_time", "run_type": "iteration",
            "real_time": 9.0, "search": share}


class Report(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tessary-report-")
        self.addCleanup(folder.cleanup)
        self.path = lambda name: os.path.join(folder.name, name)

    def report(self, text, *outputs):
        with open(self.path("run.json"), "w") as file:
            file.write(text)
        return subprocess.run(
            [sys.executable, os.path.join(SOURCE, "bench", "report.py"), self.path("run.json"),
             *map(self.path, outputs)], capture_output=True, text=True)

    def report_rows(self, *entries, outputs=("plot.svg", "rows.tsv")):
        text = json.dumps({"context": {"num_cpus": 2}, "benchmarks": entries}, indent=2)
        return self.report(text, *outputs)

    def rows(self):
        with open(self.path("rows.tsv"), newline="") as file:
            return list(csv.DictReader(file, delimiter="\t"))

    def test_a_run_becomes_a_line_for_each_view_at_its_own_limit(self):
        done = self.report_rows(
            frame("Mandelbrot/768/single/AVX3"), search("Mandelbrot/768/single/AVX3", -0.292),
            frame("Mandelbrot/4096/single/AVX3", ratio=133.0),
            frame("Mandelbrot/768/double/AVX3", ratio=22.2))
        self.assertEqual(done.stdout.splitlines(), [
            "| view, limit | AVX-512 float | AVX-512 double | search |",
            "| --- | ---: | ---: | ---: |",
            "| Mandelbrot 768 | 48.0 | 22.2 | -29.2 % |"])

    def test_every_row_stands_in_the_table_of_rows(self):
        self.report_rows(frame("Mandelbrot/768/single/AVX3"),
                         search("Mandelbrot/768/single/AVX3", 0.01),
                         frame("Sine/256/double/AVX2/nodetect"))
        first, second = self.rows()
        self.assertEqual(list(first.values()), ["AVX-512", "Mandelbrot", "768", "", "float", "480",
                                                "10.0", "48.0", "27.50", "71", "19", "+1.0"])
        self.assertEqual((second["set"], second["options"], second["precision"],
                          second["search_percent"]), ("AVX2", "nodetect", "double", ""))

    def test_the_plot_shows_both_renderers(self):
        self.report_rows(frame("Mandelbrot/768/single/AVX3"), frame("Mandelbrot/4096/single/AVX3"))
        with open(self.path("plot.svg")) as file:
            plot = file.read()
        self.assertEqual(plot.count("<circle"), 2 * 3)  # two limits, and one number of threads

    def test_a_run_that_breaks_off_gives_its_whole_rows(self):
        text = json.dumps({"context": {"num_cpus": 2}, "benchmarks": [
            frame("Mandelbrot/768/single/AVX3"), frame("Sine/256/single/AVX3")]}, indent=2)
        done = self.report(text[:text.index('"Sine') + 40], "plot.svg", "rows.tsv")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual([row["view"] for row in self.rows()], ["Mandelbrot"])

    def test_a_row_that_failed_is_left_out(self):
        done = self.report_rows(
            {"name": "Sine/256/single/AVX3", "error_occurred": True, "error_message": "no"},
            frame("Mandelbrot/768/single/AVX3"))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(self.rows()), 1)

    def test_a_search_without_its_frame_still_gives_a_row(self):
        self.report_rows(search("Mandelbrot/768/single/AVX3", -0.5),
                         frame("Mandelbrot/4096/single/AVX3"))
        self.assertEqual([row["search_percent"] for row in self.rows()], ["-50.0", ""])

    def test_rows_of_other_views_alone_say_why_there_is_no_plot(self):
        done = self.report_rows(frame("Sine/256/single/AVX3"))
        self.assertEqual(len(done.stderr.splitlines()), 1)
        self.assertIn("no plot", done.stderr)
        self.assertEqual(len(self.rows()), 1)

    def test_what_is_no_run_is_one_line(self):
        for text in ("", "not a run", "{}", '{"benchmarks": []}'):
            with self.subTest(text=text):
                done = self.report(text)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)

    def test_a_device_is_put_beside_the_pool(self):
        done = self.report_rows({"name": "Mandelbrot/single", "pool_ms": 20.0, "real_time": 400.0,
                                 "ratio": 20.0}, outputs=())
        self.assertIn("| Mandelbrot | 20.0 | 400 | 20.0 |  |  |  |", done.stdout)


if __name__ == "__main__":
    unittest.main()

"""bench/report.py makes the table, the plot and the rows of a benchmark's run, also of a part of one."""

import csv
import json
import os
import subprocess
import sys
import tempfile
import unittest

from sources import SOURCE

sys.path.append(os.path.join(SOURCE, "bench"))
import processor

HERE = ("processor", "date")

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

    def report_in_parts(self, *runs):
        """The lines printed of each run, one after the other into the same rows."""
        return [self.report_rows(*run).stdout.splitlines() for run in runs]

    def test_a_run_becomes_a_line_for_each_view_at_its_own_limit(self):
        done = self.report_rows(
            frame("Mandelbrot/768/single/AVX3"), search("Mandelbrot/768/single/AVX3", -0.292),
            frame("Mandelbrot/4096/single/AVX3", ratio=133.0),
            frame("Mandelbrot/768/double/AVX3", ratio=22.2))
        self.assertEqual(done.stdout.splitlines(), [
            "| view, limit | float ms | double ms | AVX-512 float | AVX-512 double | search |",
            "| --- | ---: | ---: | ---: | ---: | ---: |",
            "| Mandelbrot 768 | 10.0 | 10.0 | 48.0 | 22.2 | -29.2 % |"])

    def test_every_row_stands_in_the_table_of_rows(self):
        self.report_rows(frame("Mandelbrot/768/single/AVX3"),
                         search("Mandelbrot/768/single/AVX3", 0.01),
                         frame("Sine/256/double/AVX2/nodetect"))
        first, second = self.rows()
        self.assertEqual({name: text for name, text in first.items() if name not in HERE}, {
            "what": "frame", "set": "AVX-512", "view": "Mandelbrot", "limit": "768", "threads": "2",
            "options": "", "precision": "float", "scalar_ms": "480", "vectors_ms": "10.0",
            "ratio": "48.0", "Gsteps_per_s": "27.50", "peak_percent": "71", "queue_percent": "19",
            "search_percent": "+1.0", "bands_ms": "", "of_bands": "", "of_bands_cpu": ""})
        self.assertEqual((second["set"], second["options"], second["precision"],
                          second["search_percent"]), ("AVX2", "nodetect", "double", ""))

    def test_a_row_says_on_which_processor_and_day(self):
        entry = frame("Mandelbrot/768/single/AVX3")
        context = {"num_cpus": 2, "date": "2026-11-22T10:00:00+00:00", "processor": "an abacus"}
        self.report(json.dumps({"context": context, "benchmarks": [entry]}), "rows.tsv")
        self.assertEqual((self.rows()[0]["processor"], self.rows()[0]["date"]),
                         ("an abacus", "2026-11-22"))
        self.report_rows(entry)
        self.assertEqual([row["processor"] for row in self.rows()], ["an abacus", processor.this()])

    def test_threads_that_are_not_all_have_a_row_of_their_own(self):
        self.report_rows(frame("Mandelbrot/768/single/AVX3"),
                         frame("Mandelbrot/768/single/AVX3/threads1", vectors_ms=20.0))
        self.assertEqual([(row["threads"], row["options"]) for row in self.rows()],
                         [("2", ""), ("1", "")])

    def test_a_run_in_parts_gives_one_table(self):
        lines = self.report_in_parts([frame("Mandelbrot/768/single/AVX3")],
                                     [frame("Mandelbrot/768/single/AVX2", ratio=26.0)])[-1]
        self.assertEqual(lines[0], "| view, limit | float ms | AVX-512 float | AVX2 float | search |")
        self.assertEqual(lines[2], "| Mandelbrot 768 | 10.0 | 48.0 | 26.0 |  |")

    def test_a_row_that_was_measured_anew_is_replaced_and_the_others_stay(self):
        self.report_in_parts([frame("Mandelbrot/768/single/AVX3"), frame("Sine/256/single/AVX3")],
                             [frame("Mandelbrot/768/single/AVX3", ratio=50.0)],
                             [search("Mandelbrot/768/single/AVX3", -0.3)])
        self.assertEqual([(row["view"], row["ratio"], row["search_percent"]) for row in self.rows()],
                         [("Mandelbrot", "50.0", "-30.0"), ("Sine", "48.0", "")])

    def test_rows_with_other_columns_are_left_alone(self):
        with open(self.path("rows.tsv"), "w") as file:
            file.write("set\tview\nAVX2\tSine\n")
        done = self.report_rows(frame("Mandelbrot/768/single/AVX3"))
        self.assertEqual((done.returncode, len(done.stderr.splitlines())), (1, 1))
        with open(self.path("rows.tsv")) as file:
            self.assertEqual(file.read(), "set\tview\nAVX2\tSine\n")

    def test_smooth_values_stand_among_the_rows(self):
        self.report_rows(frame("Mandelbrot/768/single/AVX3"))
        self.report("Mandelbrot               8.7   1.21   1.31     21.1   1.09   1.19\n", "rows.tsv")
        rows = [(row["what"], row["precision"], row["threads"], row["bands_ms"], row["of_bands"])
                for row in self.rows()]
        self.assertEqual(rows, [
            ("frame", "float", "2", "", ""),
            ("values", "float", "1", "8.7", "1.21"), ("smooth values", "float", "1", "8.7", "1.31"),
            ("values", "double", "1", "21.1", "1.09"),
            ("smooth values", "double", "1", "21.1", "1.19")])

    def test_whole_smooth_pictures_stand_among_the_rows(self):
        done = self.report("2 threads, 1920x1080\n\n"
                           "| view | single PNG | CPU | double PPM | CPU |\n|---|---:|---:|---:|---:|\n"
                           "| Mandelbrot | 1.93 | 1.90 | 1.30 | 1.28 |\n", "rows.tsv")
        self.assertEqual((done.stdout, done.stderr), ("", ""))
        rows = [(row["what"], row["view"], row["precision"], row["threads"], row["of_bands"],
                 row["of_bands_cpu"]) for row in self.rows()]
        self.assertEqual(rows, [("smooth PNG", "Mandelbrot", "float", "2", "1.93", "1.90"),
                                ("smooth PPM", "Mandelbrot", "double", "2", "1.30", "1.28")])

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

    def test_a_processor_is_named_by_maker_set_and_model(self):
        facts = ("processor\t: 0\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 207\n"
                 "model name\t: A Processor\nflags\t\t: fpu ssse3 sse4_1 avx2 avx512f\n")
        self.assertEqual(processor.describe(facts, 2), "Intel, AVX-512 (family 6, model 207), 2 cores")
        self.assertEqual(processor.describe(facts.replace(" avx512f", "").replace("GenuineIntel", "Other"), 4),
                         "Other, AVX2 (family 6, model 207), 4 cores")
        self.assertEqual(processor.describe("CPU part\t: 0xd0c\n", 4), "unknown processor, 4 cores")

    def test_a_device_is_put_beside_the_pool(self):
        done = self.report_rows({"name": "Mandelbrot/single", "pool_ms": 20.0, "real_time": 400.0,
                                 "ratio": 20.0}, outputs=())
        self.assertIn("| Mandelbrot | 20.0 | 400 | 20.0 |  |  |  |", done.stdout)


if __name__ == "__main__":
    unittest.main()

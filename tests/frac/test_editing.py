"""tessary-frac makes and changes catalogues: set, new, merge, take."""

import math
import os
import struct
import unittest

from frac_command import FORMULAS, FracTest, record, unpack


def bits(value):
    return struct.pack("=d", value)


class Set(FracTest):
    def setUp(self):
        super().setUp()
        self.before = record(name=b"one") + record(name=b"two", formula=1) + record(name=b"three")
        self.write("a.frac", self.before)

    def change(self, *options, entry=2):
        """The entry after the change; nothing else may have changed."""
        self.frac("set", "a.frac", "--entry", str(entry), *options, "-o", "b.frac")
        before, after = unpack(self.before), self.entries("b.frac")
        changed = after.pop(entry - 1)
        before.pop(entry - 1)
        self.assertEqual(after, before)
        return changed

    def test_every_value_is_changed_by_its_option_alone(self):
        old = unpack(self.before)[1]
        cases = [
            (["--name", "new"], dict(name=b"new")),
            (["--name", ""], dict(name=b"")),
            (["--name="], dict(name=b"")),
            (["--name=a=b"], dict(name=b"a=b")),
            (["--name", "[a, b]"], dict(name=b"[a, b]")),
            (["--name", "--limit"], dict(name=b"--limit")),
            (["--name", "Ä"], dict(name="Ä".encode())),
            (["--limit", "-5"], dict(limit=-5)),
            (["--limit=2147483647"], dict(limit=2147483647)),
            (["--size-limit", "1e300"], dict(bound=1e300)),
            (["--size-limit", "inf"], dict(bound=math.inf)),
            (["--palette", "rgb"], dict(palette=1)),
            (["--palette", "7"], dict(palette=7)),
            (["--c", "-0.5,1e-17"], dict(c=(-0.5, 1e-17))),
            (["--view", "-3,1,-.5,2e-9"], dict(x=(-3, 1), y=(-0.5, 2e-9))),
            (["--view=-inf,inf,0,-1"], dict(x=(-math.inf, math.inf), y=(0, -1))),
        ]
        for options, expected in cases:
            with self.subTest(options=options):
                self.assertEqual(self.change(*options), old | expected)

    def test_names_of_any_bytes_are_taken(self):
        self.assertEqual(self.change("--name", b"\xff\xfe\x01")["name"], b"\xff\xfe\x01")

    def test_no_digit_is_lost(self):
        number = -0.74364388703715104
        entry = self.change("--view", f"{number!r},{math.nextafter(number, 1)!r},-0.0,1")
        self.assertEqual(entry["x"], (number, math.nextafter(number, 1)))
        self.assertEqual(bits(entry["y"][0]), bits(-0.0))

    def test_a_nan_keeps_its_bits(self):
        entry = self.change("--c", "nan:0x7ff8000000000abc,-inf")
        self.assertEqual(bits(entry["c"][0]), struct.pack("=Q", 0x7FF8000000000ABC))

    def test_a_center_moves_the_rectangle_and_keeps_its_size(self):
        entry = self.change("--center", "10,-20")
        self.assertEqual((entry["x"], entry["y"]), ((8, 12), (-21.5, -18.5)))

    def test_a_width_keeps_the_middle_and_the_proportions(self):
        self.before = record(x=(0, 4), y=(-1.5, 1.5))
        self.write("a.frac", self.before)
        entry = self.change("--width", "1", entry=1)
        self.assertEqual((entry["x"], entry["y"]), ((1.5, 2.5), (-0.375, 0.375)))

    def test_center_and_width_go_together(self):
        entry = self.change("--center", "1,2", "--width", "8")
        self.assertEqual((entry["x"], entry["y"]), ((-3, 5), (-1, 5)))

    def test_swapped_edges_stay_swapped(self):
        self.before = record(x=(2, -2), y=(1, 3))
        self.write("a.frac", self.before)
        entry = self.change("--width", "2", entry=1)
        self.assertEqual((entry["x"], entry["y"]), ((1, -1), (1.5, 2.5)))

    def test_a_rectangle_without_a_width_has_no_proportions(self):
        for x in ((1, 1), (-math.inf, 1), (math.nan, 1)):
            self.write("c.frac", record(x=x))
            self.assertIn("--view", self.fails(1, "set", "c.frac", "--entry", "1", "--width", "2"))
            self.assertEqual(self.read("c.frac"), record(x=x))

    def test_without_an_output_the_file_itself_is_changed(self):
        self.frac("set", "a.frac", "--entry", "1", "--limit", "9")
        self.assertEqual([e["limit"] for e in self.entries("a.frac")], [9, 768, 768])
        self.assertEqual(os.listdir(self.folder), ["a.frac"])

    def test_mode_and_links_of_the_file_stay(self):
        os.chmod(self.path("a.frac"), 0o640)
        os.symlink("a.frac", self.path("link.frac"))
        self.frac("set", "link.frac", "--entry", "1", "--limit", "9")
        self.assertTrue(os.path.islink(self.path("link.frac")))
        self.assertEqual(self.entries("a.frac")[0]["limit"], 9)
        self.assertEqual(os.stat(self.path("a.frac")).st_mode & 0o777, 0o640)

    def test_standard_input_goes_to_standard_output(self):
        changed = self.frac("set", "-", "--entry", "1", "--limit", "9", data=self.before)
        self.assertEqual(unpack(changed)[0]["limit"], 9)

    def test_an_entry_that_is_not_there_leaves_the_file_alone(self):
        for entry in ("4", "18446744073709551615"):
            self.assertIn("there is no entry " + entry,
                          self.fails(1, "set", "a.frac", "--entry", entry, "--limit", "9"))
        self.assertEqual(self.read("a.frac"), self.before)

    def test_bad_values_are_mistakes(self):
        cases = {
            "--limit": ["", "x", "1.5", "2147483648", "1e3"],
            "--size-limit": ["", "x", "1x", "1e999", "nan"],
            "--palette": ["", "grey", "RGB", "1.0"],
            "--c": ["", "1", "1,", ",1", "1,2,3", "1;2", "a,b"],
            "--center": ["1", "1,2,3", "inf,0", "0,nan:0x7ff8000000000000"],
            "--width": ["", "0", "-1", "inf", "x", "1e-400"],
            "--view": ["1,2,3", "1,2,3,4,5", "1,2,3,x", "1 2 3 4"],
            "--entry": ["", "0", "-1", "x", "1-2", "99999999999999999999"],
        }
        for option, values in cases.items():
            for value in values:
                with self.subTest(option=option, value=value):
                    entry = [] if option == "--entry" else ["--entry", "1"]
                    line = self.fails(2, "set", "a.frac", *entry, f"{option}={value}", "--name", "n")
                    self.assertIn(option, line)
        self.assertEqual(self.read("a.frac"), self.before)

    def test_options_that_do_not_go_together_are_mistakes(self):
        for other in (["--center", "0,0"], ["--width", "1"]):
            self.fails(2, "set", "a.frac", "--entry", "1", "--view", "0,1,0,1", *other)

    def test_nothing_to_change_is_a_mistake(self):
        self.fails(2, "set", "a.frac", "--entry", "1")

    def test_an_entry_must_be_named(self):
        self.assertIn("--entry", self.fails(2, "set", "a.frac", "--limit", "9"))

    def test_a_damaged_catalogue_is_changed_with_a_warning(self):
        self.write("d.frac", self.before + b"123")
        done = self.run_frac("set", "d.frac", "--entry", "1", "--limit", "9")
        self.assertEqual(done.returncode, 0)
        self.assertIn("warning", self.one_line(done))
        self.assertEqual(len(self.entries("d.frac")), 3)


class New(FracTest):
    def test_every_formula_starts_from_its_preset(self):
        self.write("presets.json", '{"tessary": 1, "entries": [' + ",".join(
            '{"formula": "%s", "view": {"xMin": 0, "xMax": 1, "yMin": 0, "yMax": 1}}' % name
            for name in FORMULAS) + "]}")
        self.frac("import", "presets.json", "-o", "presets.frac")
        for expected, name in zip(self.entries("presets.frac"), FORMULAS):
            self.frac("new", "--formula", name, "-o", "a.frac")
            entry, = self.entries("a.frac")
            self.assertNotEqual((entry["x"], entry["y"]), ((0, 1), (0, 1)))
            self.assertEqual(entry | dict(x=(0, 1), y=(0, 1)), expected)

    def test_the_start_of_the_program(self):
        self.frac("new", "--formula", "mandelbrot", "-o", "a.frac")
        self.assertEqual(self.read("a.frac"), record(name=b"Mandelbrot"))

    def test_the_same_options_as_for_set_change_it(self):
        self.frac("new", "--formula", "julia", "--name", "n", "--limit", "5", "--size-limit", "6",
                  "--palette", "random", "--c", "1,2", "--center", "1,1", "--width", "2",
                  "-o", "a.frac")
        self.assertEqual(self.entries("a.frac"), [dict(
            name=b"n", x=(0, 2), y=(0, 2), c=(1, 2), limit=5, bound=6, palette=0, formula=1,
            identity=0)])

    def test_mistakes(self):
        self.fails(2, "new", "-o", "a.frac")
        self.fails(2, "new", "--formula", "mandelbrot")
        for name in ("", "Mandelbrot", "0", "newton"):
            self.assertIn("--formula", self.fails(2, "new", "--formula", name, "-o", "a.frac"))
        self.fails(2, "new", "--formula", "julia", "--entry", "1", "-o", "a.frac")
        self.assertEqual(os.listdir(self.folder), [])


class Merge(FracTest):
    def identities(self, *files):
        """The identities of a merged catalogue, file by file."""
        names = []
        for number, identities in enumerate(files):
            names.append(self.write(f"{number}.frac", b"".join(
                record(name=b"%d" % number, identity=identity) for identity in identities)))
        self.frac("merge", *names, "-o", "all.frac")
        merged = self.entries("all.frac")
        self.assertEqual([e["name"] for e in merged],
                         [b"%d" % number for number, ids in enumerate(files) for _ in ids])
        merged = [e["identity"] for e in merged]
        return [[merged.pop(0) for _ in identities] for identities in files]

    def test_identities_of_different_files_are_kept_apart(self):
        self.assertEqual(self.identities([0, 1], [0, 1]), [[0, 1], [2, 3]])

    def test_sharing_within_a_file_stays(self):
        self.assertEqual(self.identities([0, 0, 1], [5, 0, 5, 0]), [[0, 0, 1], [5, 2, 5, 2]])

    def test_a_new_identity_is_none_that_stays_in_any_entry(self):
        self.assertEqual(self.identities([0], [0, 1, 2]), [[0], [3, 1, 2]])

    def test_what_is_free_in_all_files_before_stays(self):
        self.assertEqual(self.identities([7], [8], [7, 8, -1]), [[7], [8], [0, 1, -1]])

    def test_the_smallest_and_largest_numbers_are_no_harm(self):
        ends = [-2**31, 2**31 - 1]
        self.assertEqual(self.identities(ends, ends), [ends, [0, 1]])

    def test_a_file_merged_with_itself_is_two_files(self):
        self.assertEqual(self.identities([4, 4]), [[4, 4]])
        self.frac("merge", "0.frac", "0.frac", "-o", "0.frac")
        self.assertEqual([e["identity"] for e in self.entries("0.frac")], [4, 4, 0, 0])

    def test_names_in_brackets_are_names(self):
        self.write("[a,b]", record())
        self.frac("merge", "[a,b]", "[a,b]", "-o", "[c]")
        self.assertEqual(len(self.entries("[c]")), 2)

    def test_mistakes(self):
        self.fails(2, "merge", "-o", "a.frac")
        self.write("a.frac", record())
        self.fails(2, "merge", "a.frac", "a.frac")

    def test_one_unreadable_file_writes_nothing(self):
        self.write("a.frac", record())
        self.assertIn("nowhere", self.fails(1, "merge", "a.frac", "nowhere", "-o", "b.frac"))
        self.assertEqual(os.listdir(self.folder), ["a.frac"])


class Take(FracTest):
    def taken(self, ranges):
        self.write("a.frac", b"".join(record(name=b"%d" % n, identity=n) for n in range(1, 10)))
        self.frac("take", "a.frac", ranges, "-o", "b.frac")
        names = [int(entry["name"]) for entry in self.entries("b.frac")]
        self.assertEqual(names, [entry["identity"] for entry in self.entries("b.frac")])
        return names

    def test_entries_come_as_they_are_listed(self):
        self.assertEqual(self.taken("3,5-7"), [3, 5, 6, 7])
        self.assertEqual(self.taken("9,1,1-2"), [9, 1, 1, 2])
        self.assertEqual(self.taken("4-4"), [4])

    def test_entries_that_are_not_there_are_told(self):
        self.taken("1")
        for ranges in ("10", "1,9-10", "1-18446744073709551615"):
            self.assertIn("there is no entry", self.fails(1, "take", "a.frac", ranges, "-o", "c.frac"))
        self.assertFalse(os.path.exists(self.path("c.frac")))

    def test_mistakes(self):
        self.taken("1")
        for ranges in ("", "0", "x", "1,", ",1", "1-", "-1", "7-5", "1--2", "1 2", "+1", "1.0"):
            with self.subTest(ranges=ranges):
                self.fails(2, "take", "a.frac", "-o", "c.frac", "--", ranges)
        self.fails(2, "take", "a.frac", "-o", "c.frac")
        self.fails(2, "take", "a.frac", "1")


if __name__ == "__main__":
    unittest.main()

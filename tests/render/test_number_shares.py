"""Shares of numbers: NumPy files of some rows that know what they belong to, and joining them."""

import os
import random
import subprocess
import unittest

import numpy as np

from render_command import BUILD, RenderTest, record

VIEW = record(x=(-2.0, 1.0), y=(-1.25, 1.25), limit=99)
SIZE = ["--size", "50x40"]


class NumberTest(RenderTest):
    def share(self, which, share, name, *options, data=VIEW):
        self.render("-", *options, f"--{which}", name, "--shard", share, data=data)
        return name

    def shares(self, which, count, *options, data=VIEW):
        return [self.share(which, f"{k}/{count}", f"{which}{k}.npy", *options, data=data)
                for k in range(1, count + 1)]

    def whole(self, which, *options, data=VIEW):
        return self.render("-", *options, f"--{which}", "-", data=data)

    def joined(self, names):
        self.render("--join", *names, "-o", "joined.npy")
        return self.read("joined.npy")

    def refused(self, *names, output="joined.npy"):
        """What is said of files that make nothing together; the file to be made stays as it was."""
        self.write(output, "before")
        there = {name: self.read(name) for name in self.names()}
        line = self.fails(1, "--join", *names, "-o", output)
        self.assertEqual({name: self.read(name) for name in self.names()}, there)
        return line


class Joining(NumberTest):
    def test_in_any_order_they_are_the_file_of_one_run(self):
        for seed, (which, count, options) in enumerate([
                ("counts", 3, ["--size", "301x200"]), ("values", 3, ["--size", "301x200"]),
                ("values", 1, SIZE), ("counts", 7, ["--size", "64x5"]),
                ("values", 9, ["--size", "31x1"]), ("values", 2, ["--size", "1x9", "--single"]),
                ("counts", 4, [*SIZE, "--limit", 9, "--escape", 100]),
                ("values", 5, ["--size", "300x400", "--fit", "cover", "--threads", 3])]):
            with self.subTest(which=which, count=count, options=options):
                names = self.shares(which, count, *options)
                random.Random(seed).shuffle(names)
                self.assertEqual(self.joined(names), self.whole(which, *options))

    def test_without_shares_nothing_stands_behind_the_rows(self):
        np.save(self.path("numpy.npy"), np.load(self.written("counts")))
        self.assertEqual(self.read("numpy.npy"), self.read("counts"))

    def written(self, which):
        return self.path(self.write(which, self.whole(which, *SIZE)))

    def test_numpy_reads_them_as_the_rows_that_they_are(self):
        for which, kind in (("counts", np.int32), ("values", np.float64)):
            whole = np.load(self.written(which))
            for count in (3, 41):
                parts = [np.load(self.path(name)) for name in self.shares(which, count, *SIZE)]
                self.assertEqual({part.dtype for part in parts}, {np.dtype(kind)})
                np.testing.assert_array_equal(np.concatenate(parts), whole)
                self.assertLess(np.ptp([len(part) for part in parts]), 2)
            mapped = np.load(self.path(f"{which}1.npy"), mmap_mode="r")
            self.assertEqual(mapped.shape, (0, 50))

    def test_without_a_name_each_has_one_of_its_own(self):
        os.mkdir(self.path("out"))
        for share in ("1/2", "2/2"):
            self.share("values", share, "out/", *SIZE)
        self.assertEqual(sorted(os.listdir(self.path("out"))),
                         ["stdin-001.1-of-2.npy", "stdin-001.2-of-2.npy"])

    def test_of_several_entries_a_share_is_every_nth_file(self):
        os.mkdir(self.path("out"))
        self.share("counts", "2/3", "out/", "--size", 16, data=VIEW * 8)
        self.assertEqual(sorted(os.listdir(self.path("out"))),
                         ["stdin-002.npy", "stdin-005.npy", "stdin-008.npy"])
        self.assertEqual(self.read("out/stdin-005.npy"), self.whole("counts", "--size", 16))

    def test_they_go_through_pipes_and_over_one_another(self):
        first = self.share("values", "1/2", "first", *SIZE)
        piped = self.render("-", *SIZE, "--values", "-", "--shard", "2/2", data=VIEW)
        last = self.write("last", piped)
        whole = self.whole("values", *SIZE)
        self.assertEqual(self.render("--join", last, first, "-o", "-"), whole)
        self.render("--join", last, first, "-o", last)
        self.assertEqual(self.read(last), whole)

    def test_what_no_number_depends_on_may_differ(self):
        names = [self.share("counts", "1/2", "a.npy", *SIZE),
                 self.share("counts", "2/2", "b.npy", *SIZE, "--threads", 2,
                            data=record(b"other", (-2.0, 1.0), (-1.25, 1.25), limit=99, palette=1,
                                        identity=7))]
        self.assertEqual(self.joined(names), self.whole("counts", *SIZE))

    def test_many_more_shares_than_rows_are_joined(self):
        names = self.shares("counts", 300, "--size", "3x2")
        self.assertEqual(self.joined(names), self.whole("counts", "--size", "3x2"))

    @unittest.skipIf(os.environ.get("TESSARY_SANITIZE"), "sanitizers keep memory of their own")
    def test_memory_does_not_grow_with_the_height(self):
        names = self.shares("values", 2, "--size", "500x40000", "--limit", 1)  # 160 MB
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True);"
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        for command in (["--join", *names, "-o", "joined.npy"],
                        ["stdin.frac", "--size", "500x40000", "--limit", "1", "--values", names[0],
                         "--shard", "1/2", "--resume", "--threads", "2"]):
            self.write("stdin.frac", VIEW)
            done = subprocess.run(["python3", "-c", code, os.path.join(BUILD, "tessary-render"),
                                   *command], cwd=self.folder, capture_output=True, check=True,
                                  timeout=120)
            self.assertLess(int(done.stdout), 60000, command)  # KiB


class Refusing(NumberTest):
    def setUp(self):
        super().setUp()
        self.first, self.last = self.shares("values", 2, *SIZE)

    def test_a_share_that_is_missing(self):
        names = self.shares("counts", 3, *SIZE)
        for missing in range(3):
            some = [name for n, name in enumerate(names) if n != missing]
            self.assertEqual(self.refused(*some), f"band {missing + 1} of 3 is missing")

    def test_a_share_given_twice(self):
        self.assertEqual(self.refused(self.first, self.last, self.first),
                         "values1.npy: band 1 of 2, as values1.npy")

    def test_a_share_of_other_numbers(self):
        for which, options in (
                ("counts", SIZE), ("values", [*SIZE, "--single"]), ("values", [*SIZE, "--limit", 98]),
                ("values", [*SIZE, "--escape", 65535]), ("values", ["--size", "50x42"]),
                ("values", ["--size", "51x40"]), ("values", [*SIZE, "--fit", "cover"])):
            with self.subTest(which=which, options=options):
                self.share(which, "2/2", "other.npy", *options)
                self.assertEqual(self.refused(self.first, "other.npy"),
                                 "other.npy: of another picture than values1.npy")
        for view in (record(x=(-2.0, 1.0), y=(-1.25, 1.2500001), limit=99),
                     record(x=(-2.0, 1.0), y=(-1.25, 1.25), limit=99, formula=12),
                     record(x=(-2.0, 1.0), y=(-1.25, 1.25), limit=99, c=(0.1, 0.0))):
            self.share("values", "2/2", "other.npy", *SIZE, data=view)
            self.assertEqual(self.refused(self.first, "other.npy"),
                             "other.npy: of another picture than values1.npy")

    def test_a_share_of_another_number_of_them(self):
        self.share("values", "2/3", "other.npy", *SIZE)
        self.assertEqual(self.refused(self.first, "other.npy"),
                         "other.npy: of another picture than values1.npy")

    def test_a_band_of_a_picture_among_them(self):
        self.render("-", *SIZE, "--shard", "2/2", "-o", "band.png", data=VIEW)
        self.assertEqual(self.refused(self.first, "band.png"),
                         "band.png: of another picture than values1.npy")
        self.assertEqual(self.refused("band.png", self.first),
                         "values1.npy: of another picture than band.png")

    def test_a_file_that_is_cut_anywhere(self):
        data = self.read(self.last)
        rows = 128 + 8 * 20 * 50
        for length in (0, 1, 5, 6, 127, 128, 129, rows - 1, rows, rows + 1, len(data) - 10,
                       len(data) - 9, len(data) - 1):
            with self.subTest(length=length):
                self.write("cut.npy", data[:length])
                line = self.refused(self.first, "cut.npy")
                self.assertRegex(line, r"\Acut\.npy: ")
                if length > 128:
                    self.assertRegex(line, "not whole|no band of a picture: nothing stands behind")

    def test_a_file_with_more_behind_its_end(self):
        for more in (b"\n", b"x", self.read(self.first), bytes(100000)):
            self.write("long.npy", self.read(self.last) + more)
            self.assertEqual(self.refused(self.first, "long.npy"), "long.npy: longer than it says")

    def test_a_file_with_a_wrong_bit_anywhere(self):
        data = self.read(self.last)
        chance = random.Random(14)
        record_at = len(data) - 600
        places = ([*range(0, 128, 7)] + chance.sample(range(128, record_at), 20)
                  + [*range(record_at, len(data), 11)] + [*range(len(data) - 9, len(data))])
        for place in places:
            broken = bytearray(data)
            broken[place] ^= 1 << chance.randrange(8)
            self.write("broken.npy", bytes(broken))
            with self.subTest(place=place):
                self.assertRegex(self.refused(self.first, "broken.npy"), r"\Abroken\.npy: ")

    def test_wrong_rows_are_told_by_the_checksum(self):
        data = bytearray(self.read(self.first))
        data[5000] ^= 1
        self.write("broken.npy", bytes(data))
        self.assertEqual(self.refused("broken.npy", self.last),
                         "broken.npy: damaged: its checksum is another one")

    def test_a_wrong_record_of_a_share_without_rows_is_told_too(self):
        names = self.shares("counts", 3, "--size", "3x2")
        empty = next(name for name in names if len(np.load(self.path(name))) == 0)
        data = self.read(empty)
        self.write(empty, data[:-2] + (b"0" if data[-2:-1] != b"0" else b"1") + b"\n")
        self.assertEqual(self.refused(*names), f"{empty}: damaged: its checksum is another one")

    def test_what_is_no_share_at_all(self):
        self.write("whole.npy", self.whole("values", *SIZE))
        np.save(self.path("version2.npy"), np.zeros(3, [("é", int)]))
        np.save(self.path("flat.npy"), np.zeros(5))
        self.write("text.npy", "no numbers")
        os.mkdir(self.path("folder"))
        for wrong, reason in (("whole.npy", "no band of a picture: nothing stands behind its rows"),
                              ("version2.npy", "no band of a picture"),
                              ("flat.npy", "no band of a picture"), ("text.npy", ""),
                              ("folder", ""), ("none.npy", "")):
            line = self.fails(1, "--join", self.first, wrong, "-o", "joined.npy")
            self.assertRegex(line, rf"\A{wrong}: {reason}")
        self.assertNotIn("joined.npy", self.names())

    def test_a_record_of_more_rows_than_there_are(self):
        """With a sound checksum, too: the size is looked at by itself."""
        tall = self.share("values", "2/2", "tall.npy", "--size", "50x44")
        record_of = lambda name, rows: self.read(name)[128 + 8 * 50 * rows:]
        self.write("liar.npy", self.read(self.last)[:128 + 8 * 50 * 20] + record_of(tall, 22))
        self.assertEqual(self.refused("liar.npy", self.first),
                         "liar.npy: not of the size that it tells of")
        counts = self.share("counts", "2/2", "counts.npy", *SIZE)
        self.write("liar.npy", self.read(self.last)[:128 + 8 * 50 * 20]
                   + self.read(counts)[128 + 4 * 50 * 20:])
        self.assertEqual(self.refused("liar.npy", self.first),
                         "liar.npy: its record tells of other numbers")

    def test_a_full_disk(self):
        line = self.fails(1, "--join", self.first, self.last, "-o", "/dev/full")
        self.assertEqual(line, "/dev/full: cannot be written: No space left on device")


class Resuming(NumberTest):
    OPTIONS = [*SIZE, "--values", "b.npy", "--shard", "2/3", "--resume"]

    def stamp(self, name):
        status = os.stat(self.path(name))
        return status.st_ino, status.st_mtime_ns

    def test_a_share_that_is_done_is_left(self):
        self.render("-", *self.OPTIONS, data=VIEW)
        before = self.stamp("b.npy")
        self.render("-", *self.OPTIONS, data=VIEW)
        self.assertEqual(self.stamp("b.npy"), before)

    def test_a_share_without_rows_is_left_too(self):
        options = ["--size", "3x2", "--values", "b.npy", "--shard", "1/3", "--resume"]
        self.render("-", *options, data=VIEW)
        before = self.stamp("b.npy")
        self.render("-", *options, data=VIEW)
        self.assertEqual(self.stamp("b.npy"), before)

    def test_anything_else_is_made_anew(self):
        self.render("-", *self.OPTIONS, data=VIEW)
        done = self.read("b.npy")
        flipped = bytearray(done)
        flipped[3000] ^= 1
        others = []
        for options in (["--limit", 98], ["--single"], ["--escape", 65535]):
            self.render("-", *self.OPTIONS, *options, data=VIEW)
            others.append(self.read("b.npy"))
        for wrong in (*others, b"", done[:-1], done[:3000], done[:100], done + b"\n", bytes(flipped),
                      done[:-2] + b"?\n", self.whole("values", "--size", "50x13")):
            self.write("b.npy", wrong)
            self.render("-", *self.OPTIONS, data=VIEW)
            self.assertEqual(self.read("b.npy"), done)

    def test_a_whole_file_does_not_tell_what_it_is_and_is_made_anew(self):
        self.write("b.npy", self.whole("values", *SIZE))
        before = self.stamp("b.npy")
        self.render("-", *SIZE, "--values", "b.npy", "--resume", data=VIEW)
        self.assertNotEqual(self.stamp("b.npy"), before)
        self.assertEqual(self.read("b.npy"), self.whole("values", *SIZE))

    def test_what_a_killed_run_left_is_removed(self):
        self.render("-", *self.OPTIONS, data=VIEW)
        self.write(".tessary-render-0123456789ab.tmp", b"left over")
        self.render("-", *self.OPTIONS, data=VIEW)
        self.assertEqual(self.names(), ["b.npy"])

    def test_it_needs_a_file(self):
        self.assertIn("--resume", self.fails(2, "-", *SIZE, "--values", "-", "--resume", data=VIEW))


if __name__ == "__main__":
    unittest.main()

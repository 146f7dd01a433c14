"""Work in shares: shards, bands that are joined, and runs that go on where others were killed."""

import os
import random
import struct
import time
import unittest
import zlib

from film_catalogues import FAMILY, FilmTest
from render_command import document, pixels, record, texts

LINEAR = ["--glide", "linear"]
FILM = ["--film", *LINEAR, "--steps", 9, "--size", "40x30", "--fade", 2]


class Shards(FilmTest):
    def test_any_number_of_them_in_any_order_gives_the_files_of_one_run(self):
        whole = self.film(*FILM[1:])
        self.assertEqual(len(whole), 13)
        for count in (1, 2, 3, 5, 13, 20):
            folder = f"of-{count}"
            os.mkdir(self.path(folder))
            numbers = list(range(1, count + 1))
            random.Random(count).shuffle(numbers)
            for number in numbers:
                self.render("-", *FILM, "--shard", f"{number}/{count}", "-o", folder, data=FAMILY)
            made = self.pictures(folder)
            self.assertEqual(sorted(made), sorted(whole))
            for name in whole:
                self.assertEqual(made[name], whole[name], name)

    def test_each_makes_every_nth_picture(self):
        self.render("-", "--size", 16, "--shard", "2/3", data=record() * 8)
        self.assertEqual(self.names(), ["stdin-002.png", "stdin-005.png", "stdin-008.png"])
        flight = self.flight(*FILM[1:], "--shard", "3/4")
        self.assertEqual([number for number, _, _ in flight], [3, 7, 11])

    def test_a_stream_takes_its_share(self):
        whole = self.render("-", *FILM, "-o", "-", data=FAMILY)
        size = len(whole) // 13
        share = self.render("-", *FILM, "-o", "-", "--shard", "13/13", data=FAMILY)
        self.assertEqual(share, whole[-size:])

    def test_they_may_all_run_at_once(self):
        whole = self.film(*FILM[1:])
        os.mkdir(self.path("out"))
        self.write("stdin.frac", FAMILY)
        runs = [self.begins("stdin.frac", *FILM, "--shard", f"{k}/4", "-o", "out")
                for k in (1, 2, 3, 4)]
        self.assertEqual([run.wait(timeout=300) for run in runs], [0] * 4)
        self.assertEqual(self.pictures("out"), whole)


class Bands(FilmTest):
    def bands(self, count, *options, data=record()):
        names = []
        for number in range(1, count + 1):
            names.append(f"band{number}")
            self.render("-", *options, "--shard", f"{number}/{count}", "-o", names[-1], data=data)
        return names

    def join(self, names):
        self.render("--join", *names, "-o", "joined.png")
        return self.read("joined.png")

    def test_joined_in_any_order_they_are_the_file_of_one_run(self):
        self.write("grey.map", "0 0 0\n70 80 90\n")
        for seed, (count, options) in enumerate([
                (3, ["--size", "301x200"]), (1, ["--size", "20x20"]), (7, ["--size", "64x5"]),
                (2, ["--size", "31x1"]), (4, ["--size", "90x77", "--supersample", 3]),
                (3, ["--size", "90x77", "--compress", "small", "--single", "--limit", 9]),
                (3, ["--size", "90x77", "--metadata", "none", "--palette", "rgb"]),
                (5, ["--size", "300x400", "--fit", "cover", "--palette", "grey.map"])]):
            with self.subTest(count=count, options=options):
                names = self.bands(count, *options)
                random.Random(seed).shuffle(names)
                self.assertEqual(self.join(names), self.still("-", *options, data=record()))

    def test_they_are_rows_of_the_picture_and_say_which(self):
        whole = self.still("-", "--size", "50x41", data=record())
        top = 0
        for number, name in enumerate(self.bands(4, "--size", "50x41"), 1):
            rows = pixels(self.read(name))
            self.assertTrue((rows == pixels(whole)[top:top + len(rows)]).all())
            top += len(rows)
            found = document(self.read(name))
            self.assertEqual(found["render"]["size"], [50, 41])
            self.assertEqual((found["render"]["band"]["number"], found["render"]["band"]["of"]),
                             (number, 4))
        self.assertEqual(top, 41)

    def test_without_a_name_each_has_one_of_its_own(self):
        for number in (1, 2):
            self.render("-", "--size", "9x9", "--shard", f"{number}/2", data=record())
        self.assertEqual(self.names(), ["stdin-001.1-of-2.png", "stdin-001.2-of-2.png"])

    def test_the_joined_picture_may_go_to_standard_output_or_over_a_band(self):
        names = self.bands(2, "--size", "50x40")
        whole = self.still("-", "--size", "50x40", data=record())
        self.assertEqual(self.render("--join", *names, "-o", "-"), whole)
        self.render("-o", names[0], "--join", *names)
        self.assertEqual(self.read(names[0]), whole)

    def test_what_is_not_complete_is_refused(self):
        names = self.bands(3, "--size", "50x40")
        for missing in (0, 1, 2):
            some = [name for n, name in enumerate(names) if n != missing]
            self.assertIn(f"band {missing + 1} of 3 is missing",
                          self.fails(1, "--join", *some, "-o", "joined.png"))
        self.assertIn("band2", self.fails(1, "--join", *names, names[1], "-o", "joined.png"))
        self.assertNotIn("joined.png", self.names())

    def test_what_does_not_belong_together_is_refused(self):
        first, last = self.bands(2, "--size", "50x40")
        foreign = [["--size", "50x42"], ["--size", "50x40", "--limit", 63],
                   ["--size", "50x40", "--single"], ["--size", "50x40", "--supersample", 2],
                   ["--size", "50x40", "--compress", "small"], ["--size", "50x40", "--fit", "stretch"],
                   ["--size", "50x40", "--metadata", "none"], ["--size", "50x40", "--palette", "rgb"]]
        for options in foreign:
            self.render("-", *options, "--shard", "2/2", "-o", "other", data=record())
            with self.subTest(options=options):
                self.assertIn("other", self.fails(1, "--join", first, "other", "-o", "joined.png"))
        self.render("-", "--size", "50x40", "--shard", "2/3", "-o", "other", data=record())
        self.assertIn("other", self.fails(1, "--join", first, "other", "-o", "joined.png"))
        self.assertNotIn("joined.png", self.names())

    def test_what_is_no_band_is_refused(self):
        first, last = self.bands(2, "--size", "50x40")
        self.write("text", "no picture")
        self.write("whole", self.still("-", "--size", "50x40", data=record()))
        self.write("plain", self.still("-", "--size", "50x40", "--metadata", "none", data=record()))
        for wrong in ("text", "whole", "plain", "none", "."):
            self.assertIn(wrong, self.fails(1, "--join", first, wrong, "-o", "joined.png"))
        self.assertNotIn("joined.png", self.names())

    def test_a_band_that_is_not_whole_is_refused(self):
        first, last = self.bands(2, "--size", "50x40")
        data = self.read(last)
        bad = bytearray(data)
        bad[-40] ^= 1
        for broken in (data[:-30], data[:-5], bytes(bad)):
            self.write("broken", broken)
            self.assertIn("broken", self.fails(1, "--join", first, "broken", "-o", "joined.png"))
        self.assertNotIn("joined.png", self.names())

    def test_mistakes(self):
        for arguments in (["--join", "a"], ["--join", "-o", "b"], ["--join", "a", "", "-o", "b"],
                          ["--join", "a", "-o", "b", "--size", "5"],
                          ["--join", "a", "-o", "b", "--film"],
                          ["--join", "a", "-o", "b", "--resume"],
                          ["--join", "a", "-o", "b", "--shard", "1/2"]):
            self.fails(2, *arguments)


def chunk(kind, content):
    return (struct.pack(">I", len(content)) + kind + content
            + struct.pack(">I", zlib.crc32(kind + content)))


class Resuming(FilmTest):
    def stamp(self, name):
        status = os.stat(self.path(name))
        return status.st_ino, status.st_mtime_ns

    def test_a_picture_that_is_done_is_left(self):
        self.film(*FILM[1:])
        before = {name: self.stamp(name) for name in self.names()}
        self.render("-", *FILM, "--resume", data=FAMILY)
        self.assertEqual({name: self.stamp(name) for name in self.names()}, before)

    def test_anything_else_is_made_anew(self):
        whole = self.film(*FILM[1:])
        name = "stdin-000005.png"
        data = whole[name]
        flipped = bytearray(data)
        flipped[-60] ^= 4
        rows, tail = data.index(b"IDAT", data.index(b"IDAT") + 4) - 4, data.rindex(b"IDAT") - 4
        behind = rows + 12 + int.from_bytes(data[rows:rows + 4], "big")
        without_rows = data[:rows] + data[behind:]
        without_tail = data[:tail] + data[data.index(b"IEND") - 4:]
        wrong_sum = data[:behind - 1] + bytes([data[behind - 1] ^ 1]) + data[behind:]
        packed = zlib.compress(bytes(29 * (1 + 3 * 40)), 1)  # one row less, but sound
        assert packed[:2] == b"\x78\x01"
        too_short = data[:rows] + chunk(b"IDAT", packed[2:]) + chunk(b"IEND", b"")
        for wrong in (b"", data[:-1], data[:len(data) // 2], data + b"x", bytes(flipped),
                      without_rows, without_tail, wrong_sum,
                      too_short, whole["stdin-000006.png"], whole["stdin-000012.png"], b"text"):
            self.write(name, wrong)
            others = {other: self.stamp(other) for other in self.names() if other != name}
            self.render("-", *FILM, "--resume", data=FAMILY)
            self.assertEqual(self.pictures(), whole)
            self.assertEqual({other: self.stamp(other) for other in others}, others)

    def test_other_options_make_it_anew(self):
        first = ["-", "--size", "40x30", "-o", "a.png"]
        for options in (["--limit", 7], ["--single"], ["--supersample", 2], ["--palette", "rgb"],
                        ["--size", "40x31"], ["--fit", "stretch", "--size", "40x35"],
                        ["--metadata", "none"], ["--shard", "1/2"], ["--compress", "small"]):
            self.render(*first, data=record())
            wanted = [o for o in first if "--size" not in options or o not in ("--size", "40x30")]
            self.render(*wanted, *options, "--resume", data=record())
            resumed = self.read("a.png")
            os.remove(self.path("a.png"))
            self.render(*wanted, *options, data=record())
            with self.subTest(options=options):
                self.assertEqual(resumed, self.read("a.png"))

    def test_a_small_file_is_left_too(self):
        options = ["-", "--size", "40x30", "--compress", "small", "-o", "a.png"]
        self.render(*options, data=record())
        before = self.stamp("a.png")
        self.render(*options, "--resume", data=record())
        self.assertEqual(self.stamp("a.png"), before)

    def test_after_kills_at_any_moment_the_files_are_those_of_one_run(self):
        options = ["--film", *LINEAR, "--steps", 30, "--size", "200x150", "--limit", 3000]
        whole = self.film(*options[1:])
        os.mkdir(self.path("out"))
        self.write("stdin.frac", FAMILY)
        command = ["stdin.frac", *options, "--resume", "-o", "out"]
        chance = random.Random(1)
        for shard in [[]] * 6 + [["--shard", "1/2"], ["--shard", "2/2"]] * 3:
            process = self.begins(*command, *shard)
            time.sleep(chance.uniform(0, 0.2))
            process.kill()
            process.wait(timeout=60)
            for name, data in self.pictures("out").items():
                self.assertEqual(data, whole[name], name)
        self.write("out/.tessary-render-0123456789ab.tmp", b"left over")
        self.render(*command)
        self.assertEqual(self.pictures("out"), whole)
        self.assertEqual(sorted(os.listdir(self.path("out"))), sorted(whole))
        self.write("out/.tessary-render-0123456789ab.tmp", b"left over")
        self.render(*command)
        self.assertEqual(sorted(os.listdir(self.path("out"))), sorted(whole))


if __name__ == "__main__":
    unittest.main()

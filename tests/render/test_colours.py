"""Smooth colours, gradients, sixteen bits, numbers for NumPy, and pictures that know them."""

import io
import json
import os
import struct
import subprocess
import unittest
import zlib

import numpy as np

from render_command import SOURCE, RenderTest, chunks, document, pixels, record, with_other_processors

TOUR = os.path.join(SOURCE, "share", "tour.frac")
RAMP = ["--gradient", "#000000 0, #ffffff 1, #ffffff 1", "--blend", "srgb"]
GIMP = """GIMP Gradient
Name: Bad Hair Day
3
0.000000 0.050000 0.250000 1.0 0.5 0.0 1.0 0.0 0.2 1.0 1.0 1 0 0 0
0.250000 0.500000 0.600000 0.0 0.2 1.0 1.0 0.1 1.0 0.1 0.5 3 1 0 0
0.600000 0.800000 1.000000 0.1 0.1 0.1 1.0 0.9 0.9 0.3 1.0 2 2 0 0
"""


def deep(data):
    """Height x width x 3 levels of a PNG of 16 bits and unfiltered rows."""
    found = chunks(data)
    width, height, depth, kind = struct.unpack_from(">IIBB", dict(found)[b"IHDR"])
    assert (depth, kind) == (16, 2)
    rows = zlib.decompress(b"".join(content for name, content in found if name == b"IDAT"))
    rows = np.frombuffer(rows, np.uint8).reshape(height, 1 + 6 * width)
    assert not rows[:, 0].any()
    return rows[:, 1:].copy().view(">u2").reshape(height, width, 3).astype(int)


def light(levels):
    return np.where(levels <= 0.04045, levels / 12.92, ((levels + 0.055) / 1.055) ** 2.4)


def level(lights):
    return np.where(lights <= 0.0031308, lights * 12.92, 1.055 * lights ** (1 / 2.4) - 0.055)


class ColourTest(RenderTest):
    def swatch(self, *options):
        self.render("--swatch", "swatch.png", *options)
        return self.read("swatch.png")

    def numbers(self, which, *options, data=b""):
        self.render(*options, f"--{which}", "numbers.npy", data=data)
        return np.load(self.path("numbers.npy"))


class Ramps(ColourTest):
    def test_a_grey_one_has_the_exact_levels(self):
        exact = (np.arange(1024) + 0.5) / 1024
        picture = deep(self.swatch(*RAMP, "--depth", 16))
        self.assertEqual(picture.shape, (64, 1024, 3))
        self.assertTrue((picture == np.round(exact * 65535)[None, :, None]).all())
        picture = pixels(self.swatch(*RAMP, "--dither", "none"))
        self.assertTrue((picture == np.floor(exact * 255 + 0.5)[None, :, None]).all())

    def test_dithered_columns_have_the_exact_mean(self):
        picture = pixels(self.swatch(*RAMP, "--size", "4080x32")).astype(float)
        exact = 255 * (np.arange(4080) + 0.5) / 4080
        self.assertGreater(np.ptp(picture, axis=0).max(), 0)
        self.assertLess(np.abs(picture - exact[None, :, None]).max(), 1)
        blocks = picture.reshape(2, 16, 255, 16, 3).mean(axis=(1, 3))
        self.assertLess(np.abs(blocks - exact.reshape(255, 16).mean(axis=1)[None, :, None]).max(),
                        0.1)

    def test_a_size_is_taken(self):
        self.assertEqual(pixels(self.swatch("--gradient", "tide", "--size", "20x3")).shape, (3, 20, 3))
        self.assertEqual(pixels(self.swatch("--gradient", "tide", "--size", 20)).shape, (64, 20, 3))

    def test_files_are_read(self):
        self.write("a.map", "0 0 0\n255 255 255\n")
        self.assertEqual(self.swatch("--gradient", "a.map"),
                         self.swatch("--gradient", "#000000 0, #ffffff 0.5"))
        self.write("a.ggr", GIMP)
        self.assertEqual(pixels(self.swatch("--gradient", "a.ggr", "--dither", "none"))[0, 0].tolist(),
                         [np.floor(255 * v + 0.5) for v in
                          pixels_of_gimp((0.5 / 1024) / 0.25)])

    def test_bad_files_are_told(self):
        self.write("a.ggr", GIMP.replace("0.250000 0.5", "0.350000 0.5"))
        self.assertIn("a.ggr: line 5: ", self.fails(1, "--swatch", "s.png", "--gradient", "a.ggr"))
        self.write("a.map", "0 0\n")
        self.assertIn("a.map:1: ", self.fails(1, "--swatch", "s.png", "--gradient", "a.map"))
        self.assertIn("none.ggr", self.fails(1, "--swatch", "s.png", "--gradient", "none.ggr"))

    def test_bad_stops_are_told_with_their_column(self):
        self.assertIn("--gradient: column 12: ", self.fails(2, "-", "--gradient", "#000000 0, red 1"))


def pixels_of_gimp(inside):
    """The colour so far in the first segment of GIMP: curved about 0.2, in levels."""
    share = inside ** (np.log(0.5) / np.log(0.2))
    return np.array([1, 0.5, 0]) + share * (np.array([0, 0.2, 1]) - np.array([1, 0.5, 0]))


class Depth(ColourTest):
    OPTIONS = [TOUR, "--entry", 2, "--size", "80x60"]

    def test_eight_bits_are_sixteen_rounded(self):
        for options in (["--colour", "smooth"], ["--gradient", "dusk", "--period", 7],
                        ["--colour", "smooth", "--supersample", 3]):
            wide = deep(self.still(*self.OPTIONS, *options, "--depth", 16)) / 257
            narrow = pixels(self.still(*self.OPTIONS, *options, "--dither", "none"))
            self.assertLessEqual(np.abs(wide - narrow).max(), 0.5 + 1 / 257)
            dithered = pixels(self.still(*self.OPTIONS, *options, "--dither", "pattern"))
            self.assertLess(np.abs(wide - dithered).max(), 1 + 1 / 257)

    def test_the_window_s_colours_have_their_levels_in_both(self):
        wide = deep(self.still(*self.OPTIONS, "--depth", 16))
        self.assertTrue((wide == 257 * pixels(self.still(*self.OPTIONS)).astype(int)).all())

    def test_the_window_s_escape_bound_is_the_entry_s(self):
        for palette in ([], ["--palette", "rgb"]):
            plain = pixels(self.still("-", "--size", 60, *palette, data=record(bound=9.0)))
            told = pixels(self.still("-", "--size", 60, *palette, "--escape", 9,
                                     data=record(bound=4.0)))
            self.assertTrue((plain == told).all())

    def test_told_its_own_bound_a_view_of_any_formula_stays_as_it_is(self):
        for entry, bound in zip(range(2, 19), [4] * 5 + [128] * 4 + [4] * 5 + [16] * 3):
            options = [TOUR, "--entry", entry, "--size", "30x24"]
            self.assertTrue((pixels(self.still(*options)) == pixels(
                self.still(*options, "--escape", bound))).all(), entry)

    def test_averages_are_taken_in_light(self):
        options = [TOUR, "--entry", 5, "--colour", "smooth", "--depth", 16]
        for n in (2, 5):
            large = deep(self.still(*options, "--size", f"{40 * n}x{30 * n}")) / 65535
            small = deep(self.still(*options, "--size", "40x30", "--supersample", n)) / 65535
            mean = light(large.reshape(30, n, 40, n, 3)).mean(axis=(1, 3))
            self.assertLess(np.abs(small - level(mean)).max(), 2 / 65535)

    def test_small_and_fast_show_the_same(self):
        self.write("a.png", self.still(*self.OPTIONS, "--colour", "smooth", "--depth", 16))
        self.write("b.png", self.still(*self.OPTIONS, "--colour", "smooth", "--depth", 16,
                                       "--compress", "small"))
        wide = deep(self.read("a.png")) >> 8
        self.assertTrue((pixels(self.read("b.png")) == wide).all())

    def test_a_film_has_it_too(self):
        options = ["-", "--film", "--size", "8x6", "--fps", 2, "--hold", 0.5, "--fade", 1,
                   "--colour", "smooth", "--depth", 16]
        views = record(identity=1) + record(c=(0.3, 0.5), formula=1, identity=2)
        stream = self.render(*options, "-o", "-", data=views)
        self.assertTrue(stream.startswith(b"P6\n8 6\n65535\n"))
        frames = stream.split(b"P6\n8 6\n65535\n")[1:]
        self.assertEqual([len(frame) for frame in frames], [8 * 6 * 6] * 3)
        first, mixed, last = (np.frombuffer(frame, ">u2") / 65535 for frame in frames)
        self.assertLess(np.abs(mixed - level((light(first) + light(last)) / 2)).max(), 1e-4)

    def test_bands_are_joined_and_whole_ones_left(self):
        options = [TOUR, "--entry", 1, "--size", "40x30", "--colour", "smooth", "--depth", 16]
        for k in (1, 2, 3):
            self.render(*options, "--shard", f"{k}/3", "-o", f"{k}.png")
        self.render("--join", "2.png", "3.png", "1.png", "-o", "all.png")
        self.assertEqual(self.read("all.png"), self.still(*options))
        before = os.stat(self.path("all.png")).st_mtime_ns
        self.render(*options, "--resume", "-o", "all.png")
        self.assertEqual(os.stat(self.path("all.png")).st_mtime_ns, before)


class Range(ColourTest):
    """One turn of the gradient over the values that occur."""

    STRETCH = ["--colour", "smooth", *RAMP, "--range", "auto", "--depth", 16]

    def exact(self, values, scale=lambda v: v):
        low, high = scale(np.nanmin(values)), scale(np.nanmax(values))
        return np.where(np.isnan(values), 0, (scale(values) - low) / (high - low) * 65535)

    def test_the_least_value_is_at_its_beginning_and_the_greatest_at_its_end(self):
        for entry in (1, 2, 17):
            options = [TOUR, "--entry", entry, "--size", "60x45"]
            values = self.numbers("values", *options)
            picture = deep(self.still(*options, *self.STRETCH))
            self.assertLess(np.abs(picture[..., 0] - self.exact(values)).max(), 0.6)
            self.assertEqual((picture[~np.isnan(values)].min(), picture.max()), (0, 65535))
            picture = deep(self.still(*options, *self.STRETCH, "--scale", "log"))
            exact = self.exact(values, lambda v: np.log1p(np.maximum(v, 0)))
            self.assertLess(np.abs(picture[..., 0] - exact).max(), 0.6)

    def test_counts_are_stretched_too(self):
        options = ["-", "--size", "60x45"]
        counts = self.numbers("counts", *options, data=record()).astype(float)
        counts[counts == 64] = np.nan
        picture = deep(self.still(*options, *RAMP, "--range", "auto", "--depth", 16, data=record()))
        self.assertLess(np.abs(picture[..., 0] - self.exact(counts)).max(), 0.6)

    def test_the_picture_knows_it_and_a_share_has_that_of_the_whole(self):
        options = [TOUR, "--entry", 1, "--size", "40x31", *self.STRETCH]
        whole = self.still(*options)
        self.assertEqual(self.still("-", data=whole), whole)
        self.assertEqual(len(document(whole)["render"]["range"]), 2)
        for k in (1, 2):
            self.render(*options, "--shard", f"{k}/2", "-o", f"{k}.png")
        self.render("--join", "1.png", "2.png", "-o", "all.png")
        self.assertEqual(self.read("all.png"), whole)

    def test_where_nothing_escapes_nothing_fails(self):
        picture = deep(self.still("-", "--size", "8x6", *self.STRETCH,
                                  data=record(x=(-0.1, 0.1), y=(-0.1, 0.1))))
        self.assertFalse(picture.any())

    def test_a_glide_goes_evenly_from_range_to_range(self):
        views = record(identity=1) + record(x=(-1.0, -0.5), y=(0.1, 0.5), identity=1)
        options = ["-", "--film", "--size", "32x24", "--glide", "linear", "--steps", 4, *self.STRETCH]
        self.render(*options, data=views)
        found = [document(self.read(name))["render"]["range"] for name in self.names()]
        self.assertEqual(len(found), 5)
        stills = [document(self.still("-", "--entry", n, "--size", "32x24", *self.STRETCH,
                                      data=views))["render"]["range"] for n in (1, 2)]
        for n, actual in enumerate(found):
            np.testing.assert_allclose(actual, np.add(stills[0], np.multiply(
                n / 4, np.subtract(stills[1], stills[0]))), rtol=1e-12)

    def test_a_share_of_a_film_has_the_frames_of_the_whole(self):
        views = (record(identity=1) + record(x=(-1.0, -0.5), y=(0.1, 0.5), identity=1)
                 + record(c=(0.3, 0.5), formula=1, identity=2))
        options = ["-", "--film", "--size", "16x12", "--glide", "linear", "--steps", 5, "--fade", 2,
                   *self.STRETCH]
        for folder, shares in (("whole", ["1/1"]), ("shares", ["3/3", "1/3", "2/3"])):
            os.mkdir(self.path(folder))
            for share in shares:
                self.render(*options, "--shard", share, "-o", folder, data=views)
        names = os.listdir(self.path("whole"))
        self.assertEqual(sorted(os.listdir(self.path("shares"))), sorted(names))
        for name in names:
            self.assertEqual(self.read(f"shares/{name}"), self.read(f"whole/{name}"), name)

    def test_the_brightness_of_a_slow_zoom_never_jumps(self):
        views = (record(x=(-2.0, 1.0), y=(-1.2, 1.2), limit=200, identity=1)
                 + record(x=(-1.0, -0.4), y=(0.0, 0.48), limit=200, identity=1))
        stream = self.render("-", "--film", "--size", "40x32", "--seconds", 4, "--fps", 10, "--hold", 0,
                             "--colour", "smooth", "--range", "auto", "--scale", "log", "-o", "-",
                             data=views)
        frames = stream.split(b"P6\n40 32\n255\n")[1:]
        means = [np.frombuffer(frame, np.uint8).mean() for frame in frames]
        self.assertEqual(len(means), 41)
        self.assertLess(np.abs(np.diff(means)).max(), 6)


class Inside(ColourTest):
    def test_it_has_its_colour(self):
        for kind in (["--colour", "smooth"], ["--gradient", "grey"]):
            picture = pixels(self.still("-", "--size", "64x48", *kind, "--inside", "#204060",
                                        data=record()))
            self.assertEqual(picture[24, 32].tolist(), [0x20, 0x40, 0x60])


class Numbers(ColourTest):
    def test_counts_are_those_of_the_bands(self):
        ramp = "".join(f"{n // 256} {n % 256} 7\n" for n in range(768))
        self.write("count.map", ramp)
        view = record(limit=200)
        counts = self.numbers("counts", "-", "--size", "70x50", data=view)
        self.assertEqual((counts.shape, counts.dtype), ((50, 70), np.int32))
        picture = pixels(self.still("-", "--size", "70x50", "--palette", "count.map",
                                    data=view)).astype(int)
        escaped = counts < 200
        self.assertTrue(escaped.any() and not escaped.all())
        self.assertEqual(counts.max(), 200)
        self.assertTrue((picture[..., 0] * 256 + picture[..., 1] == counts)[escaped].all())
        self.assertFalse(picture[~escaped].any())

    def test_values_lie_below_their_counts(self):
        options = [TOUR, "--entry", 4, "--size", "70x50"]
        for precision in ("--single", "--double"):
            values = self.numbers("values", *options, precision, "--escape", 16)
            counts = self.numbers("counts", *options, precision, "--escape", 16)
            self.assertEqual((values.shape, values.dtype), ((50, 70), np.float64))
            inside = np.isnan(values)
            self.assertTrue(((counts == counts.max()) | ~inside).all())
            steps = (counts - values)[~inside]
            self.assertTrue(((steps >= 0) & (steps <= 1)).all())
            self.assertGreater(np.unique(values[~inside]).size, 500)

    def test_they_are_what_colours_are_made_of(self):
        options = [TOUR, "--entry", 1, "--size", "60x45"]
        values = self.numbers("values", *options)
        picture = deep(self.still(*options, "--colour", "smooth", *RAMP, "--depth", 16, "--period",
                                  1000))
        exact = np.where(np.isnan(values), 0, values / 1000 * 65535)
        self.assertLess(np.abs(picture[..., 0] - exact).max(), 0.6)

    def test_those_of_a_supersampled_picture_are_one_a_pixel(self):
        self.write("p.png", self.still(TOUR, "--entry", 1, "--size", "40x30", "--supersample", 3))
        plain = self.numbers("counts", TOUR, "--entry", 1, "--size", "40x30")
        np.testing.assert_array_equal(self.numbers("counts", "p.png"), plain)

    def test_they_go_to_a_folder_and_to_standard_output(self):
        os.mkdir(self.path("out"))
        self.render(TOUR, "--entry", "1-2", "--size", "8x6", "--counts", "out/")
        self.assertEqual(sorted(os.listdir(self.path("out"))), ["tour-001.npy", "tour-002.npy"])
        data = self.render(TOUR, "--entry", 1, "--size", "8x6", "--counts", "-")
        self.assertEqual(data, self.read("out/tour-001.npy"))
        self.assertEqual(np.load(io.BytesIO(data)).shape, (6, 8))

    def test_threads_and_bands_do_not_matter(self):
        options = [TOUR, "--entry", 15, "--size", "301x403"]
        for which in ("counts", "values"):
            first = self.render(*options, f"--{which}", "-", "--threads", 1)
            self.assertEqual(self.render(*options, f"--{which}", "-", "--threads", 5), first)
            array = np.load(io.BytesIO(first))
            self.assertEqual(array.shape, (403, 301))


class Again(ColourTest):
    """A picture with colours is input like any other, and makes itself again."""

    def test_it_makes_the_same_file(self):
        self.write("a.ggr", GIMP)
        self.write("a.map", "0 0 0\n255 128 0\n9 9 200\n")
        for options in (["--colour", "smooth"], ["--gradient", "a.map", "--period", 0.3],
                        ["--colour", "smooth", "--gradient", "a.ggr", "--offset", 0.1],
                        ["--colour", "smooth", "--gradient", "a.ggr", "--blend", "linear"],
                        ["--colour", "smooth", "--gradient", "#123456 0.1, #fedcba 0.7", "--scale",
                         "log", "--period", 12.5, "--offset=-0.3", "--inside", "#abcdef",
                         "--dither", "none", "--escape", 100, "--supersample", 2, "--single"],
                        ["--depth", 16], ["--escape", 7.25],
                        ["--colour", "smooth", "--depth", 16, "--scale", "sqrt"]):
            with self.subTest(options=options):
                self.write("p.png", self.still(TOUR, "--entry", 2, "--size", 50, *options))
                for name in ("a.ggr", "a.map"):
                    os.rename(self.path(name), self.path(name + ".away"))
                self.assertEqual(self.still("p.png"), self.read("p.png"))
                for name in ("a.ggr", "a.map"):
                    os.rename(self.path(name + ".away"), self.path(name))

    def test_options_win_over_what_it_says(self):
        plain = ["-", "--size", "40x40"]
        self.write("p.png", self.still(*plain, "--colour", "smooth", "--gradient", "dusk",
                                       "--period", 9, data=record()))
        for options in (["--gradient", "ember"], ["--period", 30], ["--colour", "bands"],
                        ["--blend", "linear"]):
            with self.subTest(options=options):
                whole = ["--colour", "smooth", "--gradient", "dusk", "--period", 9]
                where = dict(zip(whole[::2], whole[1::2])) | dict(zip(options[::2], options[1::2]))
                told = [word for pair in where.items() for word in pair]
                self.assertTrue((pixels(self.still("p.png", *options))
                                 == pixels(self.still(*plain, *told, data=record()))).all())
        self.assertTrue((pixels(self.still("p.png", "--palette", "rgb"))
                         == pixels(self.still(*plain, "--palette", "rgb", data=record()))).all())

    def test_the_document_tells_the_options(self):
        found = document(self.still("-", "--size", "8x6", "--gradient", "#000000 0, #ffffff 0.5",
                                    "--period", 7.5, "--inside", "#010203", "--depth", 16,
                                    data=record()))["render"]
        self.assertEqual({key: found[key] for key in found
                          if key not in ("size", "precision", "supersample")},
                         {"colour": "bands", "gradient": "#000000 0, #ffffff 0.5", "blend": "oklab",
                          "period": 7.5, "inside": "#010203", "depth": 16})

    def test_wrong_settings_are_told(self):
        entry = {"formula": "mandelbrot", "view": {"xMin": -2, "xMax": 2, "yMin": -2, "yMax": 2}}
        for key, value in (("colour", "x"), ("escape", 0), ("escape", "4"), ("gradient", 5),
                           ("gradient", "#00000 0"), ("blend", "x"), ("scale", 1), ("period", 0),
                           ("period", -1), ("offset", "x"), ("inside", "black"), ("inside", 0),
                           ("depth", 12), ("depth", "16"), ("dither", True)):
            text = json.dumps({"tessary": 1, "entries": [entry], "render": {key: value}})
            with self.subTest(key=key, value=value):
                self.assertIn(f'"{key}"', self.fails(1, "-", "--size", 8, data=text.encode()))


class Sameness(ColourTest):
    def test_the_number_of_threads_does_not_matter(self):
        options = [TOUR, "--entry", 15, "--size", "201x153", "--colour", "smooth", "--supersample", 2]
        first = self.still(*options, "--threads", 1)
        for threads in (2, 5):
            self.assertEqual(self.still(*options, "--threads", threads), first)

    @with_other_processors
    def test_the_processor_does_not_matter(self):
        self.write("a.ggr", GIMP)
        for options in (["--colour", "smooth", "--scale", "log", "--supersample", 2],
                        ["--colour", "smooth", "--gradient", "a.ggr", "--depth", 16]):
            arguments = [TOUR, "--entry", 2, "--size", "40x30", *options, "-o", "-"]
            here = self.render(*arguments)
            for processor in ("Nehalem", "Haswell", "max"):
                done = self.run_render(*arguments, prefix=["qemu-x86_64", "-cpu", processor],
                                       stderr=subprocess.DEVNULL)
                self.assertEqual((done.returncode, done.stdout), (0, here), processor)


if __name__ == "__main__":
    unittest.main()

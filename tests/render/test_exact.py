"""tessary-render draws views that lie at decimals: options, numbers, shares, documents, films."""

import json
import os
import unittest
from fractions import Fraction

import numpy as np

from render_command import RenderTest, document, pixels, record

# Beside the point i, where the set is the same at every depth.
DEEP = {"formula": "mandelbrot", "center": ["1e-18", "1.000000000000000002"], "width": "1e-16",
        "maxIters": 400}
FLAT = {"formula": "mandelbrot", "center": ["-0.75", "0.125"], "width": "0.5", "maxIters": 200}
JULIA = {"formula": "julia", "center": ["0.0625", "0.25"], "width": "1.5",
         "c": ["-0.75", "0.1875"], "maxIters": 150}


def counts_exactly(entry, width, height):
    """The counts by fractions of whole numbers, orbit by orbit, until they are too long: then to
    200 bits, far more than so few steps lose."""
    re, im = map(Fraction, entry["center"])
    wide = Fraction(entry["width"])
    bound, unit = 4, 1 << 200
    counts = np.empty((height, width), int)
    for j in range(height):
        for i in range(width):
            p = (re + (Fraction(i, width) - Fraction(1, 2)) * wide,
                 im + (Fraction(j, height) - Fraction(1, 2)) * wide * height / width)
            c = tuple(map(Fraction, entry["c"])) if entry["formula"] == "julia" else p
            z = p if entry["formula"] == "julia" else (Fraction(0), Fraction(0))
            c, z = ([int(part * unit) for part in number] for number in (c, z))
            n = 0
            while n < entry["maxIters"]:
                z = [(z[0] * z[0] - z[1] * z[1]) // unit + c[0], 2 * z[0] * z[1] // unit + c[1]]
                if z[0] * z[0] + z[1] * z[1] > bound * unit * unit:
                    break
                n += 1
            counts[j, i] = n
    return counts


class ExactTest(RenderTest):
    def document(self, *entries, **members):
        return json.dumps({"tessary": 1, "entries": list(entries), **members})

    def setUp(self):
        super().setUp()
        self.write("deep.json", self.document(DEEP))
        self.write("flat.json", self.document(FLAT))

    def numbers(self, *arguments, kind="--counts"):
        self.render(*arguments, kind, "out.npy")
        return np.load(self.path("out.npy"))


class Stills(ExactTest):
    def test_counts_are_those_of_exact_arithmetic(self):
        for entry in (DEEP, FLAT, JULIA):
            with self.subTest(entry=entry):
                self.write("one.json", self.document(entry))
                counts = self.numbers("one.json", "--size", "12x9", "--precision", "exact")
                self.assertTrue((counts == counts_exactly(entry, 12, 9)).all())

    def test_a_deep_view_is_exact_by_itself(self):
        by_itself = self.still("deep.json", "--size", "16")
        self.assertEqual(document(by_itself)["render"]["precision"], "exact")
        self.assertEqual(self.still("deep.json", "--size", "16", "--precision", "exact"), by_itself)
        self.assertFalse((pixels(by_itself)
                          == pixels(self.still("deep.json", "--size", "16", "--double"))).all())

    def test_a_wide_view_is_double_by_itself(self):
        by_itself = self.still("flat.json", "--size", "16x12")
        self.assertEqual(document(by_itself)["render"]["precision"], "double")
        self.assertEqual(self.still("flat.json", "--size", "16x12", "--precision", "auto"), by_itself)

    def test_a_poster_may_be_exact_where_a_picture_is_double(self):
        self.write("edge.json", self.document({**FLAT, "width": "1e-10"}))
        def precision(*options):
            return document(self.still("edge.json", *options, "--limit", "1"))["render"]["precision"]
        self.assertEqual(precision("--size", "64"), "double")
        self.assertEqual(precision("--size", "256"), "exact")
        self.assertEqual(precision("--size", "64", "--supersample", "4"), "exact")

    def test_where_doubles_are_right_the_pixels_are_theirs(self):
        for entry in (FLAT, JULIA):
            for options in ([], ["--colour", "smooth"], ["--gradient", "dusk"], ["--supersample", "3"],
                            ["--depth", "16"], ["--palette", "rgb"]):
                with self.subTest(entry=entry, options=options):
                    self.write("one.json", self.document(entry))
                    one, other = (pixels(self.still("one.json", "--size", "24x18", *options,
                                                    "--precision", precision)).astype(int)
                                  for precision in ("double", "exact"))
                    self.assertLessEqual(np.abs(one - other).max(), 1 if "smooth" in options else 0)

    def test_values_lie_at_most_one_below_their_counts(self):
        counts = self.numbers("deep.json", "--size", "16", "--escape", "65536")
        values = self.numbers("deep.json", "--size", "16", kind="--values")
        stays = counts == DEEP["maxIters"]
        self.assertTrue((np.isnan(values) == stays).all())
        self.assertTrue((np.abs(counts - 0.5 - values)[~stays] <= 0.5).all())

    def test_a_rectangle_of_doubles_may_be_exact(self):
        self.write("view.frac", record(x=(-1.0, -0.5), y=(0.0, 0.25), limit=200))
        exact = self.still("view.frac", "--size", "24x12", "--precision", "exact")
        entry = document(exact)["entries"][0]
        self.assertEqual((entry["center"], entry["width"]), (["-0.75", "0.125"], "0.5"))
        self.assertTrue((pixels(exact) == pixels(self.still("view.frac", "--size", "24x12"))).all())

    def test_threads_do_not_matter(self):
        one, many = (self.still("deep.json", "--size", "40", "--threads", n) for n in (1, 5))
        self.assertEqual(one, many)

    def test_a_picture_without_a_height_is_a_square(self):
        self.assertEqual(pixels(self.still("deep.json", "--size", "9")).shape, (9, 9, 3))

    def test_pictures_of_one_row_or_column_or_pixel_are_made(self):
        for size, shape in (("1x1", (1, 1, 3)), ("1x300", (300, 1, 3)), ("300x1", (1, 300, 3))):
            self.assertEqual(pixels(self.still("deep.json", "--size", size)).shape, shape)

    def test_numbers_go_into_a_pipe(self):
        for kind in ("--counts", "--values"):
            self.render("deep.json", "--size", "12x9", kind, "file.npy")
            self.assertEqual(self.render("deep.json", "--size", "12x9", kind, "-"), self.read("file.npy"))

    def test_a_limit_below_one_is_none_to_reach(self):
        self.write("none.json", self.document({**DEEP, "maxIters": 0}))
        self.assertEqual(pixels(self.still("none.json", "--size", "4")).max(), 0)


class Undecided(ExactTest):
    """A point on the circle under z^2, which never leaves it: with a bound of 1 each step is a tie
    of numbers whose digits double. Pixel (1, 1) of four is that point."""

    OPTIONS = ["tie.json", "--size", "2x2", "--escape", "1"]

    def setUp(self):
        super().setUp()
        self.write("tie.json", self.document(
            {"formula": "julia", "center": ["0.6", "0.8"], "width": "1e-30", "c": ["0", "0"],
             "maxIters": 300}))

    def told(self, *arguments):
        """What is made, of which the run says how much was not decided."""
        done = self.run_render(*self.OPTIONS, *arguments)
        self.assertEqual((done.returncode, done.stderr), (0, b"tessary-render: unproven: 1\n"))
        return done.stdout

    def test_its_count_is_marked(self):
        self.told("--counts", "out.npy")
        counts = np.load(self.path("out.npy"))
        self.assertEqual(counts[1, 1], -1)
        self.assertGreater(np.delete(counts, 3).min(), 0)

    def test_it_has_no_value(self):
        self.told("--values", "out.npy")
        self.assertTrue(np.isnan(np.load(self.path("out.npy"))[1, 1]))

    def test_it_is_painted_as_a_point_that_stays(self):
        for options, colour in ([], (0, 0, 0)), (["--gradient", "dusk", "--inside", "#102030"], (16, 32, 48)), \
                (["--colour", "smooth", "--dither", "none"], (0, 0, 0)), (["--depth", "16"], (0, 0, 0)):
            with self.subTest(options=options):
                picture = pixels(self.told(*options, "-o", "-"))
                self.assertEqual(tuple(picture[1, 1]), colour)

    def test_it_is_told_once_where_values_are_measured_first(self):
        self.told("--gradient", "dusk", "--range", "auto", "-o", "-")


class Documents(ExactTest):
    def test_a_picture_knows_where_it_lies_and_makes_itself_again(self):
        picture = self.still("deep.json", "--size", "16x12", "--colour", "smooth")
        entry = document(picture)["entries"][0]
        self.assertEqual((entry["center"], entry["width"]), (DEEP["center"], DEEP["width"]))
        self.write("a.png", picture)
        self.assertEqual(self.still("a.png"), picture)
        larger = self.still("a.png", "--size", "32")
        self.assertTrue((pixels(larger) == pixels(
            self.still("deep.json", "--size", "32x24", "--colour", "smooth"))).all())

    def test_bands_join_to_the_picture(self):
        whole = self.still("deep.json", "--size", "16x40", "--supersample", "2")
        for n in (1, 2, 3):
            self.render("deep.json", "--size", "16x40", "--supersample", "2", "--shard", f"{n}/3",
                        "-o", f"{n}.png")
        self.render("--join", "3.png", "1.png", "2.png", "-o", "joined.png")
        self.assertEqual(self.read("joined.png"), whole)

    def test_bands_of_numbers_join_to_the_numbers(self):
        whole = self.numbers("deep.json", "--size", "10x40", kind="--values")
        for n in (1, 2):
            self.render("deep.json", "--size", "10x40", "--values", f"{n}.npy", "--shard", f"{n}/2")
        self.render("--join", "1.npy", "2.npy", "-o", "joined.npy")
        np.testing.assert_array_equal(np.load(self.path("joined.npy")), whole)

    def test_bands_of_another_place_are_refused(self):
        self.write("other.json", self.document({**DEEP, "width": "1.0e-16"}))
        for name, n in (("deep", 1), ("other", 2)):
            self.render(name + ".json", "--size", "10x40", "--shard", f"{n}/2", "-o", f"{n}.png")
        self.assertIn("of another picture", self.fails(1, "--join", "1.png", "2.png", "-o", "out.png"))

    def test_what_is_done_is_left(self):
        self.write("two.json", self.document(DEEP, FLAT))
        os.mkdir(self.path("out"))
        self.render("two.json", "--size", "8", "-o", "out/")
        before = os.stat(self.path("out/two-001.png")).st_mtime_ns
        os.remove(self.path("out/two-002.png"))
        self.render("two.json", "--size", "8", "-o", "out/", "--resume")
        self.assertEqual(os.stat(self.path("out/two-001.png")).st_mtime_ns, before)
        self.assertTrue(os.path.exists(self.path("out/two-002.png")))


class Refusals(ExactTest):
    def about(self, *arguments, **members):
        self.write("bad.json", self.document({**DEEP, **members}))
        return self.fails(1, "bad.json", "--size", "8", *arguments, "-o", "bad.png")

    def test_other_rules_are_not_there_that_deep(self):
        said = self.about(formula="sine")
        self.assertEqual(said, "entry 1: exact arithmetic, which a view this deep takes, is there for "
                               "Mandelbrot and Julia alone, not for sine")
        self.assertNotIn("bad.png", self.names())

    def test_other_rules_are_there_with_doubles(self):
        self.write("sine.json", self.document({**FLAT, "formula": "sine", "center": ["0", "0"]}))
        self.still("sine.json", "--size", "8")
        self.write("sine.json", self.document({**DEEP, "formula": "sine"}))
        self.still("sine.json", "--size", "8", "--precision", "double")

    def test_a_width_is_above_zero(self):
        for width in ("0", "-1e-30"):
            self.assertIn("expected a number above 0", self.about(width=width))

    def test_an_absurd_exponent_is_told(self):
        self.assertIn("exponent", self.about(center=["1e99999999", "0"]))
        self.assertIn("exponent", self.about(width="1e-900000"))

    def test_what_is_no_decimal_is_told_at_its_place(self):
        texts = ["", " ", " 1", "1 ", "1e", "e5", ".5", "5.", "+", "-", "--1", "1e+", "1e1e1", "0x10",
                 "1,5", "1_000", "nan", "inf", "-inf", "\u0661", "\uff11", "1\u00a0", "\u22121", "1\0",
                 "1e-1000000000", "1e1000000000", "1e-99999999999999999999", "1e99999999999999999999"]
        for text in texts:
            for members in ({"center": [text, "0"]}, {"center": ["0", text]}, {"width": text}):
                with self.subTest(members=members):
                    said = self.about(**members)
                    self.assertRegex(said, r"^bad\.json: line 1, column \d+: expected a (decimal|number)")
                    self.assertNotIn("bad.png", self.names())

    def test_what_is_no_place_is_told_at_its_place(self):
        view = {"xMin": -2, "xMax": 2, "yMin": -2, "yMax": 2}
        for members in ({"center": None}, {"center": "1"}, {"center": [1, 2]}, {"center": ["1"]},
                        {"center": ["1", "2", "3"]}, {"center": [["1"], ["2"]]}, {"width": 1e-16},
                        {"center": {"re": "1", "im": "2"}}, {"width": None}, {"width": ["1"]}, {"view": view}):
            with self.subTest(members=members):
                self.assertRegex(self.about(**members), r"^bad\.json: line 1, column \d+: .*expected ")
        for missing in ("center", "width"):
            entry = {key: value for key, value in DEEP.items() if key != missing}
            self.write("bad.json", self.document(entry))
            self.assertIn(f'expected "{missing}"', self.fails(1, "bad.json", "-o", "bad.png"))

    def test_too_many_digits_are_told(self):
        self.assertIn("entry 1: the centre has too many digits", self.about(center=["0." + 10**6 * "1", "0"]))
        self.assertIn("entry 1: the width has too many digits", self.about(width="0." + 200000 * "0" + "1"))

    def test_sizes_and_limits_are_checked_before_the_view(self):
        for option, values in (("--size", ("0", "-1", "nan", "2147483647", "2147483647x1", "8x0", "1x65536")),
                               ("--limit", ("0", "-1", "1e9", "2147483648", "nan", ""))):
            for value in values:
                with self.subTest(option=option, value=value):
                    said = self.fails(2, "deep.json", option, value, "-o", "bad.png")
                    self.assertTrue(said.startswith(option + ": expected"), said)

    def test_a_film_names_the_entry(self):
        endless, sine = {**DEEP, "maxIters": 2**31 - 1}, {**DEEP, "formula": "sine"}
        for bad, reason in ((endless, "so many iterations take"), (sine, "exact arithmetic, which")):
            self.write("film.json", self.document(FLAT, bad))
            for options in ([], ["--fade", "3"], ["--shard", "4/4"], ["--range", "auto", "--gradient", "dusk"]):
                with self.subTest(reason=reason, options=options):
                    said = self.fails(1, "film.json", "--film", "--size", "8", "--seconds", "1", *options,
                                      "-o", "-")
                    self.assertTrue(said.startswith("entry 2: " + reason), said)

    def test_a_film_names_the_entry_whose_proportions_it_cannot_have(self):
        self.write("thin.frac", record(x=(-1.0, 1.0), y=(-1e9, 1e9)))
        self.assertIn("entry 1: a view of these proportions",
                      self.fails(1, "thin.frac", "--film", "--size", "800", "-o", "-"))
        self.assertIn("entry 1: a view of these proportions",
                      self.fails(1, "thin.frac", "--size", "800", "-o", "bad.png"))

    def test_thumbnails_are_not_of_documents(self):
        self.assertEqual(self.fails(1, "--thumbnail", "64", "-o", "bad.png", "deep.json"),
                         "deep.json: a JSON document, and thumbnails are of .frac catalogues")
        self.assertNotIn("bad.png", self.names())

    def test_memory_that_would_not_suffice_is_told_before_the_start(self):
        self.assertIn("memory", self.about(maxIters=2**31 - 1))

    def test_a_constant_is_finite(self):
        self.assertIn("a finite constant", self.about(formula="julia", c=["inf", 0]))

    def test_a_mirrored_rectangle_is_told(self):
        self.write("m.frac", record(x=(1.0, -1.0), y=(-1.0, 1.0)))
        self.assertIn("mirrored", self.fails(1, "m.frac", "--precision", "exact", "-o", "m.png"))

    def test_pixels_that_are_not_square_are_told(self):
        self.write("m.frac", record(x=(-1.0, 1.0), y=(-1.0, 1.0)))
        self.assertIn("square pixels", self.fails(1, "m.frac", "--precision", "exact", "--size", "8x4",
                                                  "--fit", "stretch", "-o", "m.png"))

    def test_one_precision_is_given(self):
        self.assertIn("--single", self.fails(2, "deep.json", "--precision", "exact", "--single"))
        self.assertEqual(self.fails(2, "deep.json", "--precision", "quad"),
                         "--precision: expected single or double or exact or auto, not 'quad'")

    def test_a_linear_glide_adds_doubles(self):
        self.write("two.json", self.document({**FLAT, "fractalID": 1}, {**DEEP, "fractalID": 1}))
        self.assertIn("entry 1: a linear glide", self.fails(
            1, "two.json", "--film", "--glide", "linear", "--size", "8", "-o", "-"))


class Films(ExactTest):
    FILM = ["--film", "--size", "12x8", "--seconds", "2", "--fps", "6", "--hold", "0"]

    def setUp(self):
        super().setUp()
        self.write("flight.json", self.document(
            {"formula": "mandelbrot", "view": {"xMin": -2.5, "xMax": 1.5, "yMin": -2, "yMax": 2}},
            {**DEEP, "center": ["0", "1"], "width": "1e-100"}))

    def places(self):
        lines = self.render("flight.json", *self.FILM, "--dry-run").decode().splitlines()
        return [line.split("\t") for line in lines]

    def test_a_flight_goes_through_all_depths(self):
        os.mkdir(self.path("out"))
        self.render("flight.json", *self.FILM, "-o", "out/")
        names = sorted(os.listdir(self.path("out")))
        self.assertEqual(len(names), 13)
        made = [document(self.read("out/" + name)) for name in names]
        self.assertEqual([d["render"]["precision"] for d in made[:1] + made[-3:]],
                         ["double", "exact", "exact", "exact"])
        self.assertEqual(made[-1]["entries"][0]["width"], "1e-100")

    def test_each_frame_is_made_alone_from_what_it_says(self):
        os.mkdir(self.path("out"))
        self.render("flight.json", *self.FILM, "-o", "out/")
        for n in (1, 4, 7, 13):
            name = f"out/flight-{n:06}.png"
            self.assertEqual(self.still(name), self.read(name))

    def test_the_list_shows_places_by_one_factor_a_frame(self):
        places = self.places()
        self.assertEqual(len(places[0]), 6)  # the rectangle of doubles
        widths = [Fraction(place[4]) for place in places[1:]]
        self.assertEqual(places[-1][4], "1e-100")
        steady = widths[3:8]
        factors = [float(b / a) for a, b in zip(steady, steady[1:])]
        for factor in factors:
            self.assertAlmostEqual(factor / factors[0], 1, places=9)

    def test_a_share_of_a_film_has_its_frames(self):
        os.mkdir(self.path("out"))
        self.render("flight.json", *self.FILM, "-o", "out/", "--shard", "2/4")
        self.assertEqual(len(os.listdir(self.path("out"))), 3)

    def test_a_range_goes_along(self):
        stream = self.render("flight.json", *self.FILM, "--colour", "smooth", "--range", "auto", "-o", "-")
        self.assertEqual(len(stream), 13 * len(b"P6\n12 8\n255\n" + bytes(12 * 8 * 3)))


if __name__ == "__main__":
    unittest.main()

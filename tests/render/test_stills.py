"""What tessary-render makes of catalogues and options: names, sizes, rectangles, colours, texts."""

import json
import math
import os
import struct
import unittest

import numpy as np

from render_command import RenderTest, SOURCE, document, pixels, record, texts

GREY = "".join(f"{n} {n} {n}\n" for n in range(256))


class Names(RenderTest):
    def test_pictures_are_numbered_after_their_entries(self):
        self.write("tour.of.frac", record() * 3)
        self.render("tour.of.frac", "--size", 16)
        self.assertEqual(self.names(), ["tour.of-001.png", "tour.of-002.png", "tour.of-003.png",
                                        "tour.of.frac"])

    def test_they_stand_in_the_current_folder_wherever_the_catalogue_is(self):
        os.mkdir(self.path("sub"))
        self.write("sub/a.frac", record())
        self.render("sub/a.frac", "--size", 16)
        self.assertEqual(self.names(), ["a-001.png", "sub"])

    def test_standard_input_is_called_stdin(self):
        self.render("-", "--size", 16, data=record())
        self.assertEqual(self.names(), ["stdin-001.png"])

    def test_one_entry_keeps_its_number(self):
        self.render("-", "--size", 16, "--entry", 2, data=record() * 3)
        self.assertEqual(self.names(), ["stdin-002.png"])

    def test_a_range_has_both_ends(self):
        self.render("-", "--size", 16, "--entry", "2-3", data=record() * 4)
        self.assertEqual(self.names(), ["stdin-002.png", "stdin-003.png"])

    def test_numbers_grow_beyond_three_digits(self):
        self.render("-", "--size", 1, "--entry", "999-1000", data=record() * 1000)
        self.assertEqual(self.names(), ["stdin-1000.png", "stdin-999.png"])

    def test_one_picture_goes_where_it_is_told(self):
        self.render("-", "--size", 16, "-o", "here.png", data=record())
        self.assertEqual(self.names(), ["here.png"])
        self.render("-", "--size", 16, "--entry", 2, "-o", "there", data=record() * 2)
        self.assertEqual(self.names(), ["here.png", "there"])

    def test_a_folder_takes_all_pictures(self):
        os.mkdir(self.path("out"))
        for where in ("out/", "out", self.path("out") + "/"):
            self.render("-", "--size", 16, "-o", where, data=record() * 2)
            self.assertEqual(sorted(os.listdir(self.path("out"))),
                             ["stdin-001.png", "stdin-002.png"])

    def test_standard_output_is_the_same_file(self):
        self.render("-", "--size", 16, data=record())
        self.assertEqual(self.still("-", "--size", 16, data=record()), self.read("stdin-001.png"))

    def test_after_two_dashes_everything_is_a_file(self):
        self.write("--size", record())
        self.render("--size", 16, "--", "--size")
        self.assertEqual(self.names(), ["--size", "--size-001.png"])


class Sizes(RenderTest):
    def size(self, *arguments, data=record()):
        height, width, _ = pixels(self.still("-", *arguments, data=data)).shape
        return width, height

    def test_the_default_is_2048_wide_in_the_views_proportions(self):
        self.assertEqual(self.size(), (2048, 1536))

    def test_a_width_alone_takes_the_views_proportions(self):
        self.assertEqual(self.size("--size", 100), (100, 75))
        self.assertEqual(self.size("--size", 10, data=record(x=(0, 4), y=(0, 1))), (10, 3))
        self.assertEqual(self.size("--size", 10, data=record(x=(4, 0), y=(0, 1e-9))), (10, 1))

    def test_any_size_can_be_asked_for(self):
        for size in ((1, 1), (1, 65535), (65535, 1), (97, 61), (17, 4099), (8191, 7)):
            self.assertEqual(self.size("--size=%dx%d" % size, "--fit", "stretch"), size)

    def test_each_entry_has_the_height_of_its_own_view(self):
        self.render("-", "--size", 40, data=record() + record(y=(-2, 2)))
        self.assertEqual(pixels(self.read("stdin-001.png")).shape, (30, 40, 3))
        self.assertEqual(pixels(self.read("stdin-002.png")).shape, (40, 40, 3))

    def test_a_height_out_of_range_is_an_error(self):
        for y in ((0.0, 1e9), (0.0, math.inf), (0.0, math.nan)):
            self.assertIn("height", self.fails(1, "-", "--size", 100, data=record(y=y)))
        self.fails(1, "-", "--size", 100, data=record(x=(1.0, 1.0)))
        self.assertEqual(self.names(), [])

    def test_odd_sizes_show_what_a_whole_picture_shows(self):
        """A row of a picture is what a picture of that one row shows."""
        whole = pixels(self.still("-", "--size", "131x67", "--fit", "stretch", data=record()))
        step = 3 / 67
        for row in (0, 1, 66):
            y = -1.5 + row * step
            one = self.still("-", "--size", "131x1", "--fit", "stretch",
                             data=record(y=(row / 67 * 3 - 1.5, y + 1)))
            self.assertTrue((pixels(one)[0] == whole[row]).all(), row)


class Rectangles(RenderTest):
    def view(self, *arguments, **fields):
        view = document(self.still("-", *arguments, data=record(**fields)))["entries"][0]["view"]
        return view["xMin"], view["xMax"], view["yMin"], view["yMax"]

    def test_contain_is_the_default_and_lets_the_short_side_grow(self):
        self.assertEqual(self.view("--size", "40x40"), (-2, 2, -2, 2))
        self.assertEqual(self.view("--size", "80x30", "--fit", "contain"), (-4, 4, -1.5, 1.5))

    def test_cover_lets_the_long_side_shrink(self):
        self.assertEqual(self.view("--size", "30x30", "--fit", "cover"), (-1.5, 1.5, -1.5, 1.5))
        self.assertEqual(self.view("--size", "80x30", "--fit", "cover"), (-2, 2, -0.75, 0.75))

    def test_stretch_leaves_the_rectangle(self):
        self.assertEqual(self.view("--size", "7x99", "--fit", "stretch"), (-2, 2, -1.5, 1.5))

    def test_orientation_stays(self):
        self.assertEqual(self.view("--size", "40x40", x=(2.0, -2.0), y=(1.5, -1.5)), (2, -2, 2, -2))

    def test_a_rectangle_without_a_side_stays(self):
        self.assertEqual(self.view("--size", "40x40", x=(1.0, 1.0)), (1, 1, -1.5, 1.5))
        self.assertEqual(self.view("--size", "40x40", x=(-math.inf, 1.0)), ("-inf", 1, -1.5, 1.5))

    def test_the_picture_shows_that_rectangle_with_yMin_on_top(self):
        low = self.still("-", "--size", "64x64", data=record(x=(-2, 2), y=(-2, 2), formula=9))
        flipped = self.still("-", "--size", "64x64", data=record(x=(-2, 2), y=(2, -2), formula=9))
        self.assertTrue((pixels(low)[1:] == pixels(flipped)[:0:-1]).all())
        self.assertFalse((pixels(low) == pixels(flipped)).all())


class Colours(RenderTest):
    def test_a_map_gives_entry_n_colour_n_modulo_their_number(self):
        self.write("two.map", "# comment\n\n255 0 0\n; another\n  0\t0 255  named blue\n")
        image = pixels(self.still("-", "--size", 64, "--palette", "two.map", data=record()))
        index = pixels(self.still("-", "--size", 64, "--palette", self.write("n.map", GREY),
                                  data=record()))[..., 0]
        inside = pixels(self.still("-", "--size", 64, "--palette", self.write("w.map", "9 9 9"),
                                   data=record()))[..., 0] == 0
        expected = np.array([(255, 0, 0), (0, 0, 255)])[index % 2]
        expected[inside] = 0
        self.assertTrue((image == expected).all())

    def test_768_colours_are_all_used(self):
        colours = [(n % 256, n // 256, 7) for n in range(768)]
        self.write("all.map", "".join("%d %d %d\n" % c for c in colours))
        image = pixels(self.still("-", "--size", "300x300", "--palette", "all.map",
                                  data=record(x=(-0.8, -0.7), y=(0.0, 0.1), limit=3000)))
        self.assertGreater(len(np.unique(image.reshape(-1, 3), axis=0)), 400)

    def test_built_in_palettes_replace_the_entrys(self):
        random, cycle = (self.still("-", "--size", 64, data=record(palette=p)) for p in (0, 1))
        self.assertTrue((pixels(random) != pixels(cycle)).any())
        for palette, name, expected in ((1, "random", random), (0, "rgb", cycle)):
            self.assertEqual(self.still("-", "--size", 64, "--palette", name,
                                        data=record(palette=palette)), expected)

    def test_an_unknown_palette_is_the_random_one(self):
        known, unknown = (self.still("-", "--size", 64, data=record(palette=p)) for p in (0, 7))
        self.assertTrue((pixels(known) == pixels(unknown)).all())

    def test_a_limit_replaces_the_entrys(self):
        self.assertEqual(self.still("-", "--size", 64, "--limit", 5, data=record(limit=900)),
                         self.still("-", "--size", 64, data=record(limit=5)))

    def test_precision_matters_deep_down(self):
        deep = record(x=(-0.743643887037151, -0.743643886037151),
                      y=(0.131825904205330, 0.131825905205330), limit=3000)
        single, double, default = (pixels(self.still("-", "--size", "64x64", *option, data=deep))
                                   for option in (["--single"], ["--double"], []))
        self.assertTrue((double == default).all())
        self.assertFalse((double == single).all())


class BadMaps(RenderTest):
    def test_each_is_told_with_its_line(self):
        for text, line in (("1 2\n", 1), ("1 2 3\n256 0 0\n", 2), ("-1 0 0\n", 1), ("a b c\n", 1),
                           ("1.5 2 3", 1), ("1 2 3x", 1), ("0 0 0\n" * 769, 769)):
            self.write("bad.map", text)
            with self.subTest(text=text[:20]):
                self.assertIn(f"bad.map:{line}: ", self.fails(1, "-", "--palette", "bad.map",
                                                              data=record()))

    def test_none_at_all_is_told(self):
        self.write("empty.map", "# nothing\n")
        self.assertIn("empty.map", self.fails(1, "-", "--palette", "empty.map", data=record()))
        self.assertIn("none.map", self.fails(1, "-", "--palette", "none.map", data=record()))


class Supersampling(RenderTest):
    def test_pixels_are_averages_in_linear_light(self):
        def light(levels):
            v = levels / 255.0
            return np.where(v <= 0.04045, v / 12.92, ((v + 0.055) / 1.055) ** 2.4)

        def level(lights):
            return 255 * np.where(lights <= 0.0031308, lights * 12.92,
                                  1.055 * lights ** (1 / 2.4) - 0.055)

        for n in (2, 3, 8):
            large = pixels(self.still("-", "--size", f"{40 * n}x{30 * n}", data=record()))
            small = pixels(self.still("-", "--size", "40x30", "--supersample", n, data=record()))
            mean = light(large.reshape(30, n, 40, n, 3)).mean(axis=(1, 3))
            self.assertTrue((small == np.floor(level(mean) + 0.5 + 1e-9)).all(), n)

    def test_one_sample_is_the_plain_picture(self):
        self.assertEqual(self.still("-", "--size", 40, "--supersample", 1, data=record()),
                         self.still("-", "--size", 40, data=record()))


class Texts(RenderTest):
    def test_title_and_software_stand_beside_the_document(self):
        found = texts(self.still("-", "--size", 8, data=record(name=b"A view")))
        self.assertEqual(found["Title"], "A view")
        self.assertRegex(found["Software"], r"^Tessary \d+\.\d+\.\d+$")
        self.assertEqual(set(found), {"Title", "Software", "tessary"})

    def test_names_beyond_ascii_survive(self):
        name = "Blüte ✿ 花"
        data = self.still("-", "--size", 8, data=record(name=name.encode()))
        self.assertEqual(texts(data)["Title"], name)
        self.assertEqual(document(data)["entries"][0]["name"], name)

    def test_names_that_are_no_text_survive_in_the_document(self):
        data = self.still("-", "--size", 8, data=record(name=b"a\xff\x01b"))
        self.assertEqual(document(data)["entries"][0]["nameBytes"], "61ff0162")
        self.assertEqual(texts(data)["Title"], "a\ufffd\x01b")

    def test_the_document_is_the_entry_after_the_options(self):
        self.write("grey.map", "0 0 0\n9 9 9\n")
        found = document(self.still("-", "--entry", 2, "--size", "40x40", "--single", "--limit", 77,
                                    "--supersample", 2, "--palette", "rgb",
                                    data=record() + record(name=b"two", formula=1, c=(0.25, -0.5),
                                                           bound=9.0, identity=5)))
        self.assertEqual(found, {
            "tessary": 1,
            "entries": [{"name": "two", "formula": "julia",
                         "view": {"xMin": -2, "xMax": 2, "yMin": -2, "yMax": 2}, "c": [0.25, -0.5],
                         "maxIters": 77, "maxSize": 9, "palette": "rgb", "fractalID": 5}],
            "render": {"size": [40, 40], "precision": "single", "supersample": 2}})
        found = document(self.still("-", "--size", 8, "--palette", "grey.map", data=record()))
        self.assertEqual(found["render"]["colours"], [[0, 0, 0], [9, 9, 9]])
        self.assertEqual(found["entries"][0]["palette"], "random")

    def test_none_leaves_all_out(self):
        data = self.still("-", "--size", 8, "--metadata", "none", data=record())
        self.assertEqual(texts(data), {})
        self.assertTrue((pixels(data) == pixels(self.still("-", "--size", 8, data=record()))).all())


class Again(RenderTest):
    """A picture is input like any other, and makes itself again."""

    def test_it_makes_the_same_file(self):
        self.write("grey.map", GREY)
        for options in (["--size", 100], ["--size", "77x31", "--single"],
                        ["--size", "50x50", "--fit", "cover", "--supersample", 3],
                        ["--size", "31x77", "--fit", "stretch", "--palette", "grey.map"],
                        ["--size", 60, "--limit", 9, "--palette", "rgb"]):
            with self.subTest(options=options):
                self.write("p.png", self.still("-", *options, data=record(y=(0.1, 1.7))))
                self.assertEqual(self.still("p.png"), self.read("p.png"))

    def test_it_makes_the_same_picture_larger(self):
        for options in (["--size", "30x20"], ["--size", "30x20", "--fit", "stretch"],
                        ["--size", "31x17"]):
            self.write("p.png", self.still("-", *options, data=record()))
            small, large = self.read("p.png"), self.still("p.png", "--size", 93)
            self.assertEqual(document(large)["entries"], document(small)["entries"])
            self.assertEqual(pixels(large).shape[1], 93)
            if options[1] != "30x20":
                self.assertTrue((pixels(large)[::3, ::3] == pixels(small)).all())

    def test_options_win_over_what_it_says(self):
        self.write("grey.map", GREY)
        self.write("p.png", self.still("-", "--size", "40x40", "--single", "--supersample", 2,
                                       "--palette", "grey.map", data=record()))
        self.assertEqual(self.still("p.png", "--double", "--supersample", 1, "--palette", "random"),
                         self.still("-", "--size", "40x40", data=record(y=(-2, 2))))

    def test_it_may_come_through_a_pipe(self):
        data = self.still("-", "--size", 40, data=record())
        self.assertEqual(self.still("-", data=data), data)

    def test_a_foreign_picture_is_refused(self):
        data = self.still("-", "--size", 8, "--metadata", "none", data=record())
        self.write("p.png", data)
        self.assertIn("p.png", self.fails(1, "p.png"))
        self.write("p.png", self.still("-", "--size", 8, data=record())[:60])
        self.assertIn("p.png", self.fails(1, "p.png"))


class Inputs(RenderTest):
    DOCUMENT = {"tessary": 1, "entries": [
        {"name": "name", "formula": "mandelbrot", "maxIters": 64, "fractalID": 0,
         "view": {"xMin": -2, "xMax": 2, "yMin": -1.5, "yMax": 1.5}}]}

    def test_a_document_is_rendered_like_its_catalogue(self):
        self.assertEqual(self.still("-", "--size", 40, data=json.dumps(self.DOCUMENT).encode()),
                         self.still("-", "--size", 40, data=record()))

    def test_content_counts_and_not_the_name(self):
        self.write("a.png", json.dumps(self.DOCUMENT))
        self.write("b.json", record())
        self.assertEqual(self.still("a.png", "--size", 40), self.still("b.json", "--size", 40))

    def test_a_catalogue_may_begin_like_a_document(self):
        (brace,) = struct.unpack("=d", b"{\x00\x00\x00\x00\x00\x00\x40")
        data = self.still("-", "--size", "8x8", "--fit", "stretch", data=record(x=(-2.0, brace)))
        self.assertEqual(document(data)["entries"][0]["view"]["xMax"], brace)

    def test_a_wrong_document_is_told_with_line_and_column(self):
        self.assertRegex(self.fails(1, "-", data=b'{"tessary": 1,\n "entries": 5}'),
                         r"standard input: line 2, column \d+: expected ")

    def test_wrong_settings_are_told(self):
        for wrong in ({"size": 5}, {"size": [0, 1]}, {"size": [1, 65536]}, {"supersample": 9},
                      {"precision": "half"}, {"colours": [[1, 2]]}, {"colours": []},
                      {"supersample": 1.5}, {"colours": [[1, 2, 256]]}, {"size": [1e300, 1]}):
            text = json.dumps({**self.DOCUMENT, "render": wrong})
            with self.subTest(wrong=wrong):
                self.assertIn("render", self.fails(1, "-", data=text.encode()))

    def test_a_damaged_catalogue_renders_what_the_program_would_load(self):
        done = self.run_render("-", "--size", "8x8", data=record() + record()[:-20])
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr, rb"\Atessary-render: standard input: damaged[^\n]*\n\Z")
        self.assertEqual(self.names(), ["stdin-001.png", "stdin-002.png"])

    def test_no_entries_are_an_error(self):
        self.assertIn("no entries", self.fails(1, "-", data=b""))
        self.assertIn("no entries", self.fails(1, "-", data=b'{"tessary": 1, "entries": []}'))

    def test_what_cannot_be_read_is_an_error(self):
        self.assertIn("none.frac", self.fails(1, "none.frac"))
        self.assertIn(self.folder, self.fails(1, self.folder))

    def test_an_entry_that_is_not_there_is_an_error(self):
        for entry in ("4", "2-4", "4-9"):
            self.assertIn("entry 4", self.fails(1, "-", "--entry", entry, data=record() * 3))
        self.assertEqual(self.names(), [])

    def test_every_installed_catalogue_is_rendered(self):
        for name in ("tour", "deep-zoom", "benchmark"):
            self.render(os.path.join(SOURCE, "share", name + ".frac"), "--size", "16x16")
            self.assertIn(f"{name}-001.png", self.names())


if __name__ == "__main__":
    unittest.main()

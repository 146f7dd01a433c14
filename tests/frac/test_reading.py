"""tessary-frac looks into catalogues and converts them: list, check, export, import."""

import json
import os
import random
import struct
import subprocess
import unittest
import zlib

from frac_command import FORMULAS, FRAC, SHARE, FracTest, record


class List(FracTest):
    def table(self, data):
        return self.frac("list", self.write("a.frac", data)).decode().splitlines()

    def test_there_is_a_line_for_each_entry_under_the_headings(self):
        lines = self.table(record(name=b"first") + record(name=b"second", formula=1, identity=7))
        self.assertEqual(len(lines), 3)
        self.assertRegex(lines[0], r"^No +Formula +Limit +Size limit +Palette +X +Y +Width +Identity +Name$")
        self.assertRegex(lines[1], r"^1 +mandelbrot +768 +4 +random +0 +0 +4 +0 +first$")
        self.assertRegex(lines[2], r"^2 +julia +768 +4 +random +0 +0 +4 +7 +second$")

    def test_columns_stand_under_their_headings(self):
        lines = self.table(record(formula=5) + record(formula=0))
        for line in lines[1:]:
            self.assertEqual(line.index("768"), lines[0].index("Limit"))
            self.assertEqual(line.index("name"), lines[0].index("Name"))

    def test_deep_views_are_shown_to_the_last_digit(self):
        line = self.table(record(x=(-0.74364388703715104, -0.74364388703715098)))[1]
        self.assertIn("-0.743643887037151", line)

    def test_unknown_formulas_and_palettes_are_numbers(self):
        self.assertRegex(self.table(record(formula=99, palette=-3))[1], r"^1 +99 .* -3 ")

    def test_no_name_can_drive_a_terminal(self):
        name = "\x1b[31m\n\x07\x7f\u009b Ä中".encode() + b"\xff\xc3"
        self.assertTrue(self.table(record(name=name))[1].endswith("  ?[31m???? Ä中??"))

    def test_an_empty_catalogue_has_its_headings(self):
        self.assertEqual(len(self.table(b"")), 1)

    def test_json_is_the_document_that_export_writes(self):
        self.write("a.frac", record() + record(formula=3))
        self.assertEqual(self.frac("list", "--json", "a.frac"), self.frac("export", "a.frac"))

    def test_a_damaged_catalogue_is_listed_with_one_warning(self):
        self.write("a.frac", record() + record()[:60])
        done = self.run_frac("list", "a.frac")
        self.assertEqual((done.returncode, len(done.stdout.splitlines())), (0, 3))
        self.assertIn("warning: a.frac is damaged: byte 141: entry 2", self.one_line(done))


class Check(FracTest):
    def test_a_sound_catalogue_says_nothing(self):
        for data in (b"", record(), record() * 3):
            self.assertEqual(self.frac("check", self.write("a.frac", data)), b"")

    def test_what_is_damaged_is_a_line_each_with_its_byte(self):
        self.write("a.frac", record(length=0)[:72] + struct.pack("=i", 1) + record(name=b"a\0b") + b"rest")
        done = self.run_frac("check", "a.frac")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.decode().splitlines(), [
            "a.frac: byte 68: entry 1: the length of the name is 0, the smallest is 1",
            "a.frac: byte 149: entry 2: a NUL ends the name 2 bytes before its end",
            "a.frac: byte 156: entry 3: 4 bytes at the end of the file, too few for an entry",
        ])
        self.assertEqual(self.one_line(done), "a.frac is damaged")

    def test_every_cut_is_found(self):
        whole = record(name=b"cut")
        for length in range(1, len(whole)):
            done = self.run_frac("check", "-", data=whole[:length])
            self.assertEqual(done.returncode, 1, length)
            self.assertRegex(done.stdout, rb"\Astandard input: byte \d+: entry 1: [^\n]+\n\Z")


class Export(FracTest):
    def test_the_document_goes_to_standard_output_or_to_a_file(self):
        self.write("a.frac", record(name=b"n"))
        document = self.frac("export", "a.frac")
        self.assertEqual(json.loads(document), {"tessary": 1, "entries": [{
            "name": "n", "formula": "mandelbrot",
            "view": {"xMin": -2, "xMax": 2, "yMin": -1.5, "yMax": 1.5}, "c": [0, 0],
            "maxIters": 768, "maxSize": 4, "palette": "random", "fractalID": 0}]})
        for option in (["-o", "a.json"], ["--output", "b.json"], ["--output=c.json"]):
            self.assertEqual(self.frac("export", "a.frac", *option), b"")
            self.assertEqual(self.read(option[-1].split("=")[-1]), document)
        self.assertEqual(self.frac("export", "a.frac", "-o", "-"), document)

    def test_every_formula_has_its_name(self):
        self.write("a.frac", b"".join(record(formula=number) for number in range(14)))
        names = [entry["formula"] for entry in self.document("a.frac")["entries"]]
        self.assertEqual(names, FORMULAS)

    def test_numbers_are_the_shortest_that_read_back(self):
        self.write("a.frac", record(x=(-2.0, 0.1), y=(-0.0, 1e300), bound=float("inf")))
        text = self.frac("export", "a.frac").decode()
        self.assertIn('{"xMin": -2, "xMax": 0.1, "yMin": -0.0, "yMax": 1e+300}', text)
        self.assertIn('"maxSize": "inf"', text)

    def test_a_damaged_catalogue_is_what_the_program_would_load_with_a_warning(self):
        self.write("a.frac", record() + record()[:20])
        done = self.run_frac("export", "a.frac", "-o", "a.json")
        self.assertEqual(done.returncode, 0)
        self.assertIn("warning: a.frac is damaged", self.one_line(done))
        self.assertEqual(len(json.loads(self.read("a.json"))["entries"]), 2)

    def test_what_is_no_catalogue_is_told(self):
        self.write("a.json", '{"tessary": 1, "entries": []}')
        self.assertIn("a JSON document", self.fails(1, "export", "a.json"))
        data = picture(before=text_chunks()["tEXt"])
        self.write("a.png", data)
        self.assertIn("a picture", self.fails(1, "set", "a.png", "--entry", "1", "--limit", "5"))
        self.assertEqual(self.read("a.png"), data)

    def test_a_catalogue_that_begins_with_a_brace_is_one(self):
        data = b"{" + record()[1:]
        self.write("a.frac", data)
        self.frac("export", "a.frac", "-o", "a.json")
        self.frac("import", "a.json", "-o", "b.frac")
        self.assertEqual(self.read("b.frac"), data)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


DOCUMENT = ('{"tessary": 1, "entries": [{"name": "Ä", "formula": "julia", '
            '"view": {"xMin": 0, "xMax": 1, "yMin": 2, "yMax": 3}}], "render": {"size": [1, 1]}}')
HEADER = chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0))
PIXELS = chunk(b"IDAT", zlib.compress(b"\0\1\2\3"))
END = chunk(b"IEND", b"")


def picture(before=b"", after=b""):
    """A picture of one pixel with chunks before and after the pixels."""
    return b"\x89PNG\r\n\x1a\n" + HEADER + before + PIXELS + after + END


def text_chunks(document=DOCUMENT, keyword=b"tessary"):
    data = document.encode()
    packed = zlib.compress(data)
    return {
        "tEXt": chunk(b"tEXt", keyword + b"\0" + data),
        "zTXt": chunk(b"zTXt", keyword + b"\0\0" + packed),
        "iTXt": chunk(b"iTXt", keyword + b"\0\0\0\0\0" + data),
        "packed iTXt": chunk(b"iTXt", keyword + b"\0\1\0\0\0" + packed),
    }


class Import(FracTest):
    def imported(self, *names):
        self.frac("import", *names, "-o", "out.frac")
        return self.entries("out.frac")

    def test_what_is_missing_is_the_presets(self):
        self.write("a.json", '{"tessary": 1, "entries": [{"formula": "julia", '
                             '"view": {"xMin": 0, "xMax": 1, "yMin": 2, "yMax": 3}}]}')
        self.assertEqual(self.imported("a.json"), [dict(
            name=b"Julia", x=(0, 1), y=(2, 3), c=(-0.8, 0.156), limit=768, bound=4, palette=1,
            formula=1, identity=0)])

    def test_several_documents_come_one_after_another(self):
        self.write("b.frac", record(name=b"b"))
        self.write("c.frac", record(name=b"c"))
        for name in "bc":
            self.frac("export", name + ".frac", "-o", name + ".json")
        names = [entry["name"] for entry in self.imported("c.json", "b.json", "c.json")]
        self.assertEqual(names, [b"c", b"b", b"c"])

    def test_a_picture_gives_the_document_it_carries(self):
        for kind, text in text_chunks().items():
            for data in (picture(before=text), picture(after=text)):
                with self.subTest(kind=kind):
                    self.write("a.png", data)
                    entry, = self.imported("a.png")
                    self.assertEqual((entry["name"], entry["x"]), ("Ä".encode(), (0, 1)))

    def test_pixels_of_any_number_and_parts_are_passed_over(self):
        pixels = zlib.compress(b"".join(b"\0" + os.urandom(3 * 1000) for _ in range(500)), 1)
        parts = [chunk(b"IDAT", pixels[at:at + 8192]) for at in range(0, len(pixels), 8192)]
        header = chunk(b"IHDR", struct.pack(">IIBBBBB", 1000, 500, 8, 2, 0, 0, 0))
        data = b"\x89PNG\r\n\x1a\n" + header + b"".join(parts) + text_chunks()["zTXt"] + END
        self.write("a.png", data)
        self.assertEqual(len(self.imported("a.png")), 1)

    def test_the_first_document_of_a_picture_counts(self):
        other = text_chunks(DOCUMENT.replace("Ä", "other"))
        stranger = text_chunks("no document", b"Title")["tEXt"]
        self.write("a.png", picture(before=stranger + text_chunks()["zTXt"] + other["tEXt"]))
        self.assertEqual(self.imported("a.png")[0]["name"], "Ä".encode())

    def test_a_picture_of_another_program_is_told(self):
        self.write("a.png", picture())
        self.assertIn('no text chunk "tessary"', self.fails(1, "import", "a.png", "-o", "o.frac"))

    def test_a_damaged_picture_is_told(self):
        whole = picture(after=text_chunks()["zTXt"])
        for length in range(8, len(whole) - 40):
            self.write("a.png", whole[:length])
            self.assertIn("the picture cannot be read", self.fails(1, "import", "a.png", "-o", "o"))
        self.assertFalse(os.path.exists(self.path("o")))

    def test_a_text_that_unpacks_to_gigabytes_is_refused(self):
        packer = zlib.compressobj(9)
        bomb = b"".join(packer.compress(bytes(1 << 24)) for _ in range(32)) + packer.flush()
        self.write("a.png", picture(before=chunk(b"zTXt", b"tessary\0\0" + bomb)))
        self.assertIn('no text chunk "tessary"', self.fails(1, "import", "a.png", "-o", "o.frac"))

    def test_what_is_wrong_is_told_with_its_place(self):
        self.write("a.json", '{"tessary": 1,\n "entries": [{"nam": 1}]}')
        self.assertRegex(self.fails(1, "import", "a.json", "-o", "o.frac"),
                         r'^a.json: line 2, column 15: unknown key "nam", expected one of "name"')
        self.write("a.png", picture(before=text_chunks("{}")["tEXt"]))
        self.assertRegex(self.fails(1, "import", "a.png", "-o", "o.frac"), "^a.png: line 1, column 2: ")
        self.assertFalse(os.path.exists(self.path("o.frac")))

    def test_one_bad_document_among_good_ones_writes_nothing(self):
        self.write("a.json", '{"tessary": 1, "entries": []}')
        self.write("b.json", "{}")
        self.write("o.frac", b"old")
        self.fails(1, "import", "a.json", "b.json", "-o", "o.frac")
        self.assertEqual(self.read("o.frac"), b"old")

    def test_a_catalogue_is_no_document(self):
        self.write("a.frac", record())
        self.assertIn("line 1, column 1: ", self.fails(1, "import", "a.frac", "-o", "o.frac"))


class ThereAndBack(FracTest):
    def back(self, data):
        document = self.frac("export", "-", data=data)
        return self.frac("import", "-", "-o", "-", data=document)

    def test_the_catalogues_that_come_along_stay_as_they_are(self):
        for name in ("tour", "deep-zoom", "benchmark"):
            with open(os.path.join(SHARE, name + ".frac"), "rb") as file:
                data = file.read()
            self.assertEqual(self.back(data), data)

    def test_500_random_catalogues_stay_as_they_are(self):
        source = random.Random(3)
        for _ in range(500):
            data = b"".join(self.random_record(source) for _ in range(source.randrange(8)))
            self.assertEqual(self.back(data), data)

    def random_record(self, source):
        def real():
            bits = source.getrandbits(64)
            special = source.randrange(4)
            if special == 0:
                bits |= 0x7FF << 52
            if special == 1:
                return struct.pack("=d", source.choice([-0.0, 0.0, -2.0, 0.1, float("inf")]))
            return struct.pack("=Q", bits)

        def whole(usual):
            return struct.pack("=i", source.choice([source.randrange(usual), source.randrange(-2**31, 2**31)]))

        name = bytes(source.randrange(1, 256) for _ in range(source.randrange(20)))
        name = source.choice([name, "Ä中😀".encode(), b"plain"])
        return (b"".join(real() for _ in range(6)) + whole(1000) + real() + whole(2) + whole(14)
                + struct.pack("=i", len(name) + 1) + name + b"\0" + whole(9))

    def test_damaged_catalogues_come_back_as_they_would_be_saved(self):
        cut = record(name=b"whole") + record(name=b"cut")[:50]
        done = subprocess.run([FRAC, "export", "-"], input=cut, capture_output=True, timeout=60)
        saved = self.frac("import", "-", "-o", "-", data=done.stdout)
        empty = record(name=b"", y=(-1.5, 1.5), limit=0, bound=0.0)
        self.assertEqual(saved, record(name=b"whole") + empty)


if __name__ == "__main__":
    unittest.main()

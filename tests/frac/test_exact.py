"""tessary-frac works on documents whose entries say in decimals where they lie."""

import json
import struct
import unittest
import zlib

from frac_command import FracTest, record

RE, IM, WIDTH = "-1.76938317919551501821384728608547378290574726365475143746552821652788", "+4.2e-3", "3.50e-500"


def entry(**members):
    return dict({"formula": "mandelbrot", "center": [RE, IM], "width": WIDTH, "maxIters": 9000}, **members)


def document(*entries):
    return json.dumps({"tessary": 1, "entries": list(entries)})


class Exact(FracTest):
    def setUp(self):
        super().setUp()
        self.write("deep.json", document(entry(name="one"), entry(name="two", fractalID=3)))

    def written(self, name):
        return json.loads(self.read(name))["entries"]

    def test_export_keeps_every_digit(self):
        one, two = self.document("deep.json")["entries"]
        self.assertEqual((one["center"], one["width"], one["maxIters"]), ([RE, IM], WIDTH, 9000))
        self.assertNotIn("view", one)
        self.assertEqual(two["fractalID"], 3)

    def test_what_is_exported_is_exported_the_same(self):
        once = self.frac("export", "deep.json")
        self.write("again.json", once)
        self.assertEqual(self.frac("export", "again.json"), once)

    def test_the_table_cuts_long_numbers(self):
        row = self.frac("list", "deep.json").decode().splitlines()[1].split()
        self.assertEqual(row[5:8], [RE[:24] + "...", IM, WIDTH])

    def test_the_table_as_json_is_the_document(self):
        self.assertEqual(self.frac("list", "--json", "deep.json"), self.frac("export", "deep.json"))

    def test_check_finds_no_damage(self):
        self.assertEqual(self.frac("check", "deep.json"), b"")

    def test_no_catalogue_is_made_of_it(self):
        self.write("flat.json", json.dumps({"tessary": 1, "entries": []}))
        said = self.fails(1, "import", "flat.json", "deep.json", "-o", "out.frac")
        self.assertEqual(said, "deep.json: entry 1 lies deeper than a .frac record can tell")
        for arguments in (["take", "deep.json", "2"], ["merge", "deep.json"]):
            said = self.fails(1, *arguments, "-o", "out.frac")
            self.assertEqual(said, "out.frac: entry 1 lies deeper than a .frac record can tell: "
                                   "name an output that ends in .json")

    def test_entries_are_taken_into_a_document(self):
        self.frac("take", "deep.json", "2,1", "-o", "out.json")
        self.assertEqual([e["name"] for e in self.written("out.json")], ["two", "one"])
        self.assertEqual(json.loads(self.frac("take", "deep.json", "1", "-o", "-"))["entries"][0]["width"], WIDTH)

    def test_catalogues_are_merged_with_it_into_a_document(self):
        self.write("flat.frac", record(name=b"flat", identity=0))
        self.frac("merge", "flat.frac", "deep.json", "-o", "out.json")
        flat, one, two = self.written("out.json")
        self.assertEqual(flat["view"]["xMax"], 2)
        self.assertEqual((one["width"], two["width"]), (WIDTH, WIDTH))
        self.assertNotEqual(flat["fractalID"], one["fractalID"])

    def test_an_entry_is_changed_in_place(self):
        self.frac("set", "deep.json", "--entry", "2", "--limit", "77", "--name", "new")
        one, two = self.written("deep.json")
        self.assertEqual((two["name"], two["maxIters"], two["center"]), ("new", 77, [RE, IM]))
        self.assertEqual(one["maxIters"], 9000)

    def test_a_new_place_keeps_the_digits_that_were_typed(self):
        self.frac("set", "deep.json", "--entry", "1", "--center", f"0.{'1' * 40},-0", "--width", "1e-4000",
                  "--c", "0.30,-1")
        one, two = self.written("deep.json")
        self.assertEqual((one["center"], one["width"]), (["0." + "1" * 40, "-0"], "1e-4000"))
        self.assertEqual(one["c"], ["0.30", "-1"])
        self.assertEqual(two["width"], WIDTH)

    def test_a_view_takes_the_place_of_decimals(self):
        self.frac("set", "deep.json", "--entry", "1", "--view", "-1,1,-2,2", "-o", "out.json")
        one = self.written("out.json")[0]
        self.assertEqual(one["view"], {"xMin": -1, "xMax": 1, "yMin": -2, "yMax": 2})
        self.assertNotIn("center", one)

    def test_a_rectangle_of_doubles_gets_no_narrower_than_they_can_tell(self):
        self.write("flat.frac", record())
        said = self.fails(2, "set", "flat.frac", "--entry", "1", "--width", "1e-400")
        self.assertEqual(said, "--width: no rectangle of doubles is as narrow as 1e-400")

    def test_a_picture_is_not_overwritten(self):
        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        picture = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0))
                   + chunk(b"tEXt", b"tessary\0" + document(entry()).encode())
                   + chunk(b"IDAT", zlib.compress(b"\0\1\2\3")) + chunk(b"IEND", b""))
        self.write("deep.png", picture)
        self.assertIn("ends in .json", self.fails(1, "set", "deep.png", "--entry", "1", "--limit", "5"))
        self.assertEqual(self.read("deep.png"), picture)
        self.frac("take", "deep.png", "1", "-o", "out.json")
        self.assertEqual(self.written("out.json")[0]["center"], [RE, IM])

    def test_a_mistake_in_the_document_is_told_with_its_place(self):
        self.write("bad.json", '{"tessary": 1, "entries": [\n{"formula": 0, "center": ["0", "0"],\n"width": "-1"}]}')
        self.assertIn("bad.json: line 3, column 10: expected a number above 0", self.fails(1, "list", "bad.json"))


if __name__ == "__main__":
    unittest.main()

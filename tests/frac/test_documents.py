"""Documents that come along: the schema says what the command takes, and the catalogues are made of
their documents."""

import copy
import json
import os
import unittest

import jsonschema

from frac_command import BUILD, FORMULAS, SHARE, FracTest, record

CATALOGUES = ["tour", "deep-zoom", "benchmark"]


def read_shared(name):
    with open(os.path.join(SHARE, name), "rb") as file:
        return file.read()


class SharedCatalogues(FracTest):
    def test_the_build_makes_the_files_that_come_along(self):
        for name in CATALOGUES:
            with open(os.path.join(BUILD, "share", name + ".frac"), "rb") as file:
                self.assertEqual(file.read(), read_shared(name + ".frac"))

    def test_each_document_is_what_its_catalogue_exports(self):
        for name in CATALOGUES:
            exported = self.frac("export", os.path.join(SHARE, name + ".frac"))
            self.assertEqual(exported, read_shared(name + ".json"))

    def test_every_catalogue_has_its_document(self):
        shared = os.listdir(SHARE)
        self.assertEqual(sorted(name for name in shared if name.endswith(".frac")),
                         sorted(name + ".frac" for name in CATALOGUES))


ENTRY = {"formula": "julia", "view": {"xMin": -2, "xMax": 2, "yMin": -1.5, "yMax": 1.5}}


def with_member(key, value):
    return {"tessary": 1, "entries": [{**ENTRY, key: value}]}


def with_edge(value):
    document = {"tessary": 1, "entries": [copy.deepcopy(ENTRY)]}
    document["entries"][0]["view"]["yMax"] = value
    return document


def without(key):
    return {"tessary": 1, "entries": [{k: v for k, v in ENTRY.items() if k != key}]}


def exact(**members):
    entry = {"formula": "julia", "center": ["-0.5", "1e-30"], "width": "2.5e-100", **members}
    return {"tessary": 1, "entries": [{k: v for k, v in entry.items() if v is not None}]}


EXACT = [
    exact(), exact(center=["+1", "-0"]), exact(width="+0.01"), exact(width="1E5"),
    exact(c=["0.25", "-1.0"]), exact(c=[0.25, "1"]), exact(c=["inf", 0]),
]

GOOD = [
    {"tessary": 1, "entries": []},
    {"tessary": 1.0, "entries": [ENTRY, ENTRY]},
    {"tessary": 1, "entries": [], "render": {"size": [1, {"any": None}]}},
    with_member("name", ""), with_member("name", "Ä😀\n"), with_member("nameBytes", ""),
    with_member("nameBytes", "fFfe0a"), with_member("c", [0, "-inf"]),
    with_member("c", ["nan:0x7ff8000000000001", "nan:0xFFFfffffffffffff"]),
    with_member("maxIters", -2147483648), with_member("maxIters", 768.0),
    with_member("maxSize", "inf"), with_member("maxSize", 1e308), with_member("palette", "rgb"),
    with_member("palette", 2147483647), with_member("fractalID", 0), with_edge("inf"),
    with_edge(5e-324), *(with_member("formula", name) for name in FORMULAS),
    with_member("formula", 99), with_member("formula", -1),
]

BAD = [
    [], 1, "text", None, {}, {"tessary": 1}, {"entries": []}, {"tessary": 2, "entries": []},
    {"tessary": "1", "entries": []}, {"tessary": True, "entries": []},
    {"tessary": 1, "entries": {}}, {"tessary": 1, "entries": [1]},
    {"tessary": 1, "entries": [], "more": 1}, {"tessary": 1, "entries": [], "render": []},
    without("formula"), without("view"), with_member("unknown", 1), with_member("name", 1),
    with_member("name", "a\0"), with_member("nameBytes", "6"), with_member("nameBytes", "6100"),
    with_member("nameBytes", "0x61"), with_member("nameBytes", 61), with_member("formula", "newton"),
    with_member("formula", "Julia"), with_member("formula", 0.5), with_member("formula", None),
    with_member("c", [0]), with_member("c", [0, 0, 0]), with_member("c", {"re": 0}),
    with_member("c", ["0", 0]), with_member("maxIters", "768"), with_member("maxIters", 1.5),
    with_member("maxIters", 2147483648), with_member("maxIters", -2147483649),
    with_member("maxSize", "nan"), with_member("maxSize", "Inf"), with_member("maxSize", True),
    with_member("maxSize", "nan:0x7ff0000000000000"), with_member("maxSize", "nan:0x7fe8000000000001"),
    with_member("maxSize", "nan:0x7ff800000000001"), with_member("palette", "grey"),
    with_member("palette", 1e10), with_member("fractalID", [0]), with_member("view", []),
    with_member("view", {"xMin": 0, "xMax": 0, "yMin": 0}),
    with_member("view", {"xMin": 0, "xMax": 0, "yMin": 0, "yMax": 0, "zMax": 0}),
    with_edge(None), with_edge("1"), with_member("width", "1"),
    with_member("center", ["0", "0"]), with_member("c", ["0.5", "1"]),
    exact(center=None), exact(width=None), exact(view=ENTRY["view"]), exact(width="0"),
    exact(width="-1"), exact(width="0.0e5"), exact(width=1), exact(width="1e"), exact(width=".5"),
    exact(center=[0, 0]), exact(center=["0"]), exact(center=["0", "0", "0"]),
    exact(center=["inf", "0"]), exact(c=["x", 0]),
    {"tessary": 1, "entries": [{**ENTRY, "name": "a", "nameBytes": "61"}]},
]


class Schema(FracTest):
    @classmethod
    def setUpClass(cls):
        schema = json.loads(read_shared("tessary.schema.json"))
        jsonschema.Draft202012Validator.check_schema(schema)
        cls.validator = jsonschema.Draft202012Validator(schema)

    def test_it_holds_for_every_document_that_the_command_takes(self):
        for document in GOOD:
            with self.subTest(document=document):
                self.assertTrue(self.validator.is_valid(document))
                self.frac("import", "-", "-o", "-", data=json.dumps(document).encode())

    def test_it_holds_for_documents_that_no_catalogue_is_made_of(self):
        for document in EXACT:
            with self.subTest(document=document):
                self.assertTrue(self.validator.is_valid(document))
                written = self.frac("export", "-", data=json.dumps(document).encode())
                self.validator.validate(json.loads(written))

    def test_it_holds_for_none_that_the_command_refuses(self):
        for document in BAD:
            with self.subTest(document=document):
                self.assertFalse(self.validator.is_valid(document))
                self.assertRegex(
                    self.fails(1, "import", "-", "-o", "-", data=json.dumps(document).encode()),
                    r"^standard input: line 1, column \d+: .*expected")

    def test_it_holds_for_what_is_exported(self):
        strange = record(name=b"\xff\n", x=(float("-inf"), float("nan")), formula=77, palette=-4,
                         limit=-2**31)
        documents = [read_shared(name + ".json") for name in CATALOGUES]
        documents.append(self.frac("export", "-", data=strange))
        for document in documents:
            self.validator.validate(json.loads(document))


if __name__ == "__main__":
    unittest.main()

"""`cmake --install` yields a program that runs from where it was put, with its desktop files."""

import configparser
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

import harness


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tessary-install-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = folder.name
        subprocess.run(
            ["cmake", "--install", harness.BUILD, "--prefix", cls.prefix],
            check=True, capture_output=True,
        )

    def path(self, *parts):
        return os.path.join(self.prefix, *parts)

    def test_the_program_runs(self):
        done = harness.run_program(["--help"], program=self.path("bin", "tessary"))
        self.assertEqual(done.returncode, 0)
        self.assertIn(b"CL Tessary V1.0", done.stdout)

    def test_only_the_program_and_its_companions_lie_among_the_programs(self):
        programs = os.listdir(self.path("bin"))
        self.assertLessEqual({"tessary", "tessary-frac"}, set(programs))
        self.assertLessEqual(set(programs), {"tessary", "tessary-frac", "tessary-render"})

    def test_the_companions_run(self):
        for name in os.listdir(self.path("bin")):
            if name != "tessary":
                done = harness.run_program(["--version"], program=self.path("bin", name))
                self.assertEqual(done.returncode, 0)
                self.assertTrue(done.stdout.startswith(f"{name} (Tessary) ".encode()))

    def test_every_program_has_its_manual_page(self):
        for name in os.listdir(self.path("bin")):
            with open(self.path("share", "man", "man1", name + ".1")) as page:
                self.assertIn(f'.TH "{name}" "1"', page.read())

    def test_the_shell_completes_every_program(self):
        for name in os.listdir(self.path("bin")):
            path = self.path("share", "bash-completion", "completions", name)
            done = subprocess.run(["bash", "-c", f"source {path} && complete -p {name}"],
                                  capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_the_schema_lies_among_the_catalogues(self):
        self.assertTrue(os.path.exists(self.path("share", "tessary", "tessary.schema.json")))

    def test_the_job_of_a_film_is_installed(self):
        self.assertTrue(os.access(self.path("share", "tessary", "film.sbatch"), os.X_OK))

    def test_the_desktop_entry_starts_what_was_installed(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(self.path("share", "applications", "tessary.desktop"))
        self.assertEqual(entry["Desktop Entry"]["Exec"], "tessary")
        icon = entry["Desktop Entry"]["Icon"] + ".svg"
        self.assertTrue(os.path.exists(self.path("share/icons/hicolor/scalable/apps", icon)))

    def test_the_icon_is_well_formed(self):
        path = self.path("share/icons/hicolor/scalable/apps/tessary.svg")
        root = xml.etree.ElementTree.parse(path).getroot()
        self.assertTrue(root.tag.endswith("svg"))

    def test_the_desktop_entry_is_valid(self):
        done = subprocess.run(
            ["desktop-file-validate", self.path("share", "applications", "tessary.desktop")],
            capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))

    def test_few_pixels_have_a_plain_icon(self):
        for side in (16, 22):
            with self.subTest(side=side):
                path = self.path(f"share/icons/hicolor/{side}x{side}/apps/tessary.svg")
                root = xml.etree.ElementTree.parse(path).getroot()
                self.assertLess(len(list(root.iter())), 10)

    def test_every_link_of_the_installed_pages_leads_to_what_is_installed(self):
        pages = [os.path.join(folder, name)
                 for folder, _, names in os.walk(self.path("share", "doc"))
                 for name in names if name.endswith(".md")]
        self.assertGreater(len(pages), 5)
        for page in pages:
            with open(page, encoding="utf-8") as file:
                targets = re.findall(r"\]\(([^)#:]+)\)", file.read())
            for target in targets:
                with self.subTest(page=os.path.basename(page), link=target):
                    self.assertTrue(os.path.exists(os.path.join(os.path.dirname(page), target)))

    def test_the_guide_is_installed_with_its_pictures(self):
        if not os.path.exists(os.path.join(harness.BUILD, "docs", "guide", "html", "index.html")):
            self.skipTest("the guide was not made: no pandoc")
        folder = self.path("share", "doc", "tessary", "guide")
        pages = [name for name in os.listdir(folder) if name.endswith(".html")]
        self.assertGreater(len(pages), 10)
        for page in pages:
            with open(os.path.join(folder, page), encoding="utf-8") as file:
                targets = re.findall(r'(?:src|href)="([^"#]+)', file.read())
            for target in set(targets):
                with self.subTest(page=page, target=target):
                    self.assertTrue(os.path.exists(os.path.join(folder, target)))

    def test_every_catalogue_is_installed(self):
        shipped = [n for n in os.listdir(os.path.join(harness.SOURCE, "share")) if n.endswith(".frac")]
        for name in shipped:
            self.assertTrue(os.path.exists(self.path("share", "tessary", name)), name)


if __name__ == "__main__":
    unittest.main()

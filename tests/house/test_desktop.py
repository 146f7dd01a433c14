"""The desktop's own tools take what is installed for them, and file managers get their pictures."""

import os
import re
import shlex
import shutil
import struct
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

import harness

SYSTEM = ("/usr", "/bin", "/lib", "/lib64", "/etc/alternatives", "/etc/ld.so.cache")


def may_make_namespaces():
    """As root or not: some machines and containers let nobody."""
    return subprocess.run(["bwrap", "--ro-bind", "/", "/", "--proc", "/proc", "--dev", "/dev",
                           "--unshare-all", "true"], capture_output=True).returncode == 0


class Desktop(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tessary-desktop-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = folder.name
        subprocess.run(["cmake", "--install", harness.BUILD, "--prefix", cls.prefix],
                       check=True, capture_output=True)
        cls.share = os.path.join(cls.prefix, "share")

    def accepts(self, *command, **options):
        done = subprocess.run(command, capture_output=True, text=True, **options)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def metadata(self):
        return os.path.join(self.share, "metainfo", "org.tessary.Tessary.metainfo.xml")

    def test_software_centres_take_the_metadata(self):
        self.accepts("appstreamcli", "validate", "--no-net", self.metadata())

    def test_the_releases_are_those_of_the_change_log(self):
        root = xml.etree.ElementTree.parse(self.metadata()).getroot()
        told = [release.get("version") for release in root.iter("release")]
        with open(os.path.join(harness.SOURCE, "CHANGELOG.md"), encoding="utf-8") as file:
            self.assertEqual(told, re.findall(r"(?m)^## (\d\S*)", file.read()))
        for release in root.iter("release"):
            self.assertGreater(len(list(release.iter("li"))), 0)

    def test_the_program_opens_no_plain_file(self):
        with open(os.path.join(self.share, "applications", "tessary.desktop")) as file:
            self.assertNotIn("MimeType", file.read())

    def test_every_size_of_the_icon_is_its_own(self):
        for side in (16, 22, 24, 32, 48, 64, 128, 256, 512):
            path = os.path.join(self.share, f"icons/hicolor/{side}x{side}/apps/tessary.png")
            with open(path, "rb") as file:
                self.assertEqual(struct.unpack(">2I", file.read(24)[16:]), (side, side))

    def test_catalogues_have_a_type(self):
        self.accepts("update-mime-database", os.path.join(self.share, "mime"))
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a.frac")
            shutil.copy(os.path.join(self.share, "tessary", "tour.frac"), path)
            environment = {**os.environ, "XDG_DATA_DIRS": self.share + ":/usr/share",
                           "XDG_DATA_HOME": folder, "XDG_CURRENT_DESKTOP": "GNOME"}
            told = self.accepts("xdg-mime", "query", "filetype", path, env=environment)
            self.assertEqual(told.strip(), "application/x-tessary-frac")

    def entry(self):
        with open(os.path.join(self.share, "thumbnailers", "tessary.thumbnailer")) as file:
            return dict(line.strip().split("=", 1) for line in file if "=" in line)

    def draw(self, catalogue, work):
        """The line of the thumbnailer, on a system it can only read, without a display or a network."""
        if not may_make_namespaces():
            self.skipTest("bwrap may not make namespaces here")
        line = self.entry()["Exec"]
        for key, value in {"%s": "128", "%o": "/made/out.png", "%i": "/in/a b.frac"}.items():
            line = line.replace(key, shlex.quote(value))
        system = [word for path in SYSTEM for word in ("--ro-bind-try", path, path)]
        return subprocess.run(
            ["bwrap", *system, "--ro-bind", os.path.join(self.prefix, "bin"), "/opt/bin",
             "--ro-bind", catalogue, "/in/a b.frac", "--bind", work, "/made", "--proc", "/proc",
             "--dev", "/dev", "--unshare-all", "--die-with-parent", "--clearenv",
             "--setenv", "PATH", "/opt/bin", *shlex.split(line)],
            capture_output=True, text=True, timeout=300)

    def test_the_thumbnailer_draws_where_file_managers_let_it(self):
        self.assertEqual(self.entry()["MimeType"], "application/x-tessary-frac;")
        with tempfile.TemporaryDirectory() as work:
            done = self.draw(os.path.join(self.share, "tessary", "tour.frac"), work)
            self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))
            self.assertEqual(os.listdir(work), ["out.png"])

    def test_the_thumbnailer_leaves_nothing_of_what_it_cannot_draw(self):
        with tempfile.TemporaryDirectory() as work:
            done = self.draw(os.devnull, work)
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assertEqual(os.listdir(work), [])


if __name__ == "__main__":
    unittest.main()

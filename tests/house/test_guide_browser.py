"""The guide as HTML in a real browser, where Chromium is installed: nothing is broken, nothing sticks
out of a telephone, and it is dark where the reader wants that."""

import glob
import html
import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest

import harness
from guide import GUIDE

BOOK = os.path.join(harness.BUILD, "docs", "guide", "html")
CHROMIUM = shutil.which("chromium")
WIDTH = 400  # CSS pixels of a narrow telephone

# Shows every page in a frame of that width and writes down what came of it.
VISITOR = """<!DOCTYPE html><html><head><meta name="color-scheme" content="light dark"></head><body>
<pre id="found"></pre><script>
const names = %s, found = {};
function look(name, frame) {
  const page = frame.contentDocument, style = frame.contentWindow.getComputedStyle;
  found[name] = {
    broken: [...page.images].filter(i => !i.complete || !i.naturalWidth).map(i => i.src),
    width: page.documentElement.scrollWidth,
    paper: style(page.body).backgroundColor, ink: style(page.body).color,
    link: style(page.links[0]).color, title: page.title, images: page.images.length };
  if (Object.keys(found).length == names.length)
    document.getElementById("found").textContent = JSON.stringify(found);
}
for (const name of names) {
  const frame = document.createElement("iframe");
  frame.width = %d; frame.height = 800; frame.style.border = 0; frame.style.colorScheme = "light dark";
  frame.onload = () => look(name, frame);
  frame.src = name;
  document.body.append(frame);
}
</script></body></html>"""


def visit(folder, names, dark):
    """What the browser found on each page."""
    visitor = os.path.join(folder, "visitor.html")
    with open(visitor, "w", encoding="utf-8") as file:
        file.write(VISITOR % (json.dumps(names), WIDTH))
    with tempfile.TemporaryDirectory(prefix="tessary-browser-") as home:
        done = subprocess.run(
            [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
             "--no-first-run", f"--user-data-dir={home}", "--allow-file-access-from-files",
             f"--blink-settings=preferredColorScheme={0 if dark else 1}", "--window-size=900,900",
             "--virtual-time-budget=60000", "--dump-dom", "file://" + visitor],
            env={**os.environ, "HOME": home}, capture_output=True, text=True, timeout=300)
    text = re.search(r'(?s)<pre id="found">(.*?)</pre>', done.stdout)
    if not text or not text[1]:
        raise AssertionError("the browser did not visit every page:\n" + done.stderr[-2000:])
    return json.loads(html.unescape(text[1]))


def light(colour):
    """How light a CSS colour such as rgb(20, 23, 28) is, from 0 to 1 (relative luminance)."""
    parts = [int(part) / 255 for part in re.findall(r"\d+", colour)[:3]]
    linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return sum(share * part for share, part in zip((0.2126, 0.7152, 0.0722), linear))


def contrast(one, other):
    lights = sorted((light(one), light(other)))
    return (lights[1] + 0.05) / (lights[0] + 0.05)


@unittest.skipUnless(CHROMIUM, "chromium is not installed")
@unittest.skipUnless(os.path.exists(os.path.join(BOOK, "index.html")), "the guide was not made: no pandoc")
class Browser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tessary-guide-")
        cls.addClassCleanup(folder.cleanup)
        cls.names = sorted(os.path.basename(path) for path in glob.glob(os.path.join(BOOK, "*.html")))
        for name in cls.names:
            shutil.copy(os.path.join(BOOK, name), folder.name)
        shutil.copy(os.path.join(GUIDE, "html", "guide.css"), folder.name)
        for pictures in ("gallery", "pictures"):
            shutil.copytree(os.path.join(GUIDE, pictures), os.path.join(folder.name, pictures))
        cls.light = visit(folder.name, cls.names, dark=False)
        cls.dark = visit(folder.name, cls.names, dark=True)

    def each(self):
        """(name, what was found) of each page, light and dark."""
        return [*self.light.items(), *self.dark.items()]

    def test_every_page_of_the_guide_is_there_with_its_title(self):
        pages = {"index" if name == "README.md" else name[:-3]
                 for name in os.listdir(GUIDE) if name.endswith(".md")}
        self.assertEqual({name[:-5] for name in self.light}, pages)
        for name, page in self.each():
            self.assertTrue(page["title"], name)

    def test_no_picture_is_broken(self):
        self.assertGreater(sum(page["images"] for page in self.light.values()), 50)
        for name, page in self.each():
            self.assertEqual(page["broken"], [], name)

    def test_nothing_scrolls_sideways_on_a_telephone(self):
        for name, page in self.each():
            self.assertLessEqual(page["width"], WIDTH, name)

    def test_it_is_light_or_dark_as_the_reader_wants(self):
        for name in self.names:
            self.assertGreater(light(self.light[name]["paper"]), 0.9)
            self.assertLess(light(self.dark[name]["paper"]), 0.05)

    def test_text_and_links_stand_out(self):
        for name, page in self.each():
            self.assertGreater(contrast(page["paper"], page["ink"]), 7, name)
            self.assertGreater(contrast(page["paper"], page["link"]), 4.5, name)


if __name__ == "__main__":
    unittest.main()

"""The guide as the tests read it."""

import os
import re

from sources import SOURCE

GUIDE = os.path.join(SOURCE, "docs", "guide")
PAGES = sorted(name for name in os.listdir(GUIDE) if name.endswith(".md"))


def read(page):
    with open(os.path.join(GUIDE, page), encoding="utf-8") as file:
        return file.read()


def without_blocks(text):
    return re.sub(r"(?ms)^```.*?^```$", "", text)


def blocks(page, kind=""):
    """The blocks of a kind, which stands behind the marks that they begin with."""
    return [text for marked, text in re.findall(r"(?ms)^```(\w*)\n(.*?)^```$", read(page))
            if marked == kind]


def commands(page):
    """The command lines of its blocks, what a program prints left out."""
    lines = [line for block in blocks(page) for line in block.splitlines()]
    return [line for line in lines if not line.startswith("Total rendering time")]


def documents(page):
    """The JSON documents that a page shows."""
    return blocks(page, "json")


def anchors(page):
    """The places in a page that a link may name."""
    headings = re.findall(r"(?m)^#+ (.*)$", without_blocks(read(page)))
    return {re.sub(r"[^\w -]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


def images(page):
    """(text in its place, path) of each picture."""
    return re.findall(r"!\[([^]]*)\]\(([^)]+)\)", read(page))


def links(page):
    return re.findall(r"(?<!!)\[[^]]*\]\(([^)]+)\)", without_blocks(read(page)))


def committed_pictures():
    return sorted(os.path.join(folder, name) for folder in ("gallery", "pictures")
                  for name in os.listdir(os.path.join(GUIDE, folder)))

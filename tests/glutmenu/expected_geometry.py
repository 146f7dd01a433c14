"""Works out, in single precision and by itself, where the menus of geometry_test.cpp belong.

Writes expected_geometry.inc beside this file; run it after changing the tree, never to make a
failing test pass.
"""

import os

from numpy import float32 as f

# Widths of the stroke Roman glyphs from blank to tilde, as freeglut reports them.
GLYPHS = [
    105, 27, 51, 79, 76, 97, 102, 14, 47, 48, 59, 97, 26, 101, 26, 82,
    77, 67, 78, 77, 80, 78, 74, 77, 78, 74, 26, 26, 82, 97, 82, 74,
    74, 80, 84, 84, 85, 78, 79, 90, 89, 21, 60, 79, 71, 97, 89, 89,
    86, 88, 82, 81, 72, 89, 82, 101, 72, 80, 74, 46, 78, 46, 90, 104,
    84, 67, 70, 69, 70, 69, 39, 71, 71, 29, 36, 63, 19, 124, 71, 72,
    71, 71, 49, 62, 39, 71, 61, 80, 56, 66, 62, 42, 24, 41, 91,
]
BAR = ["File", "Palette", "Zoom", "Devices"]
DROP = ["Open", "Recent fractals", "Quit"]
NESTED = ["One", "Another one"]
DROP_AT, NESTED_AT = 2, 1
LIST = ["Grid", "More of them", "Axes"]
LIST_AT, CHILD_AT = (40, 60), 1
REFERENCE = (1024, 768)
# The last two are far wider and far higher than the reference screen, so that what belongs across
# cannot be taken for what belongs down.
SIZES = [(1024, 768), (1152, 921), (801, 613), (1367, 1031), (1600, 500), (500, 1400)]
WIDEST_H_BITMAP = 13


class Screen:
    def __init__(self, width, height):
        self.width, self.height = f(width), f(height)
        self.font_x = f(WIDEST_H_BITMAP) / f(89) * self.width * f(1 / 1024)
        self.line = self.height / f(768) * f(33.33)
        self.font_y = f(0.30003) * (self.height / f(768))

    def length(self, text):
        return f(sum(GLYPHS[ord(c) - 32] for c in text)) * self.font_x


class Vertical:
    def __init__(self, screen, items, mx=f(5), my=f(5)):
        self.screen, self.items, self.mx, self.my = screen, items, mx, my
        self.slot = f(2) * self.my + screen.line
        widest = max(int(screen.length(item)) for item in items)
        self.item_width = int(f(widest) + screen.length(" "))
        self.width = int(f(2) * self.mx + f(self.item_width))
        self.height = int(self.slot * f(len(items)))
        self.x = self.y = f(0)

    def corners(self, i):
        bx = int(self.x)
        by = int(self.slot * f(i) + self.y + self.screen.line)
        top = int(f(by) - self.screen.line)
        tx = int(f(2) * self.mx + f(self.item_width) + self.x)
        ty = int(f(top) + self.screen.line + self.my)
        return bx, by, tx, ty

    def area(self, i):
        bx, by, tx, ty = self.corners(i)
        return int(f(bx) - self.mx), bx, int(f(by) - self.screen.line), tx, ty

    def first_child(self, i):
        left = int(f(self.width + int(self.x)) + self.mx)
        above = int((self.slot * f(i) + self.y) - (self.screen.line + self.screen.line) - self.my)
        return left, int((f(above) + self.screen.line) + f(2) * self.my)

    def placed_child(self, i):
        return int(f(self.width + int(self.x)) + self.mx), int(self.slot * f(i) + self.y)


class Bar:
    def __init__(self, screen, items, mx, my):
        self.screen, self.items, self.mx, self.my = screen, items, mx, my
        self.x = self.y = f(0)
        self.bar_width = int(f(sum(int(screen.length(t)) for t in items)) + screen.length(" "))
        self.item_width = self.bar_width
        self.width = int(screen.width)
        self.height = int(f(2) * my + screen.line)

    def corners(self, i):
        left = 0
        for text in self.items[:i]:
            left = int(f(left) + self.screen.length(text + " "))
        bx = int(f(2) * f(max(i - 1, 0)) * self.mx + f(left))
        by = int(self.screen.line + self.my)
        tx = int(f(bx) + self.screen.length(self.items[i] + " "))
        return bx, by, tx, int(f(by) - self.screen.line)

    def area(self, i):
        bx, by, tx, ty = self.corners(i)
        return int(f(bx) - self.mx), bx, int(f(by) + self.my), tx, int(f(ty) - f(2) * self.my)

    def reported(self):
        blank, width = int(self.screen.length(" ")), 0
        for text in self.items:
            width = int(f(width) + (self.screen.length(text) + f(blank)))
        return width, int((self.screen.line + self.my) * self.screen.font_y)

    def first_child(self, i):
        below = int(f(5) * self.my)
        left = int(f(self.corners(i)[0]) + self.mx)
        return left, int((f(below) + self.screen.line) + f(2) * self.my)

    def placed_child(self, i):
        bx, by = self.corners(i)[:2]
        return bx, int(f(by) + self.my)


def row(values):
    return "{" + ", ".join(str(v) for v in values) + "}"


def number(value):
    """A float of C++; a whole one as an int."""
    return int(value) if value == int(value) else f"{float(value)!r}F"


def menu_row(menu):
    corners = ", ".join(row(menu.corners(i)) for i in range(len(menu.items)))
    box = [number(menu.x), number(menu.y), menu.width, menu.height, menu.item_width]
    areas = ", ".join(row(menu.area(i)) for i in range(len(menu.items)))
    return row([*box, "{" + corners + "}", "{" + areas + "}"])


def scaled_margins(screen):
    return f(5) * (screen.width * f(1 / 1024)), f(5) * (screen.height / f(768))


def screen_row(width, height, is_reshaped):
    screen = Screen(width, height)
    bar = Bar(screen, BAR, *(scaled_margins(screen) if is_reshaped else (f(5), f(5))))
    drop, nested = Vertical(screen, DROP), Vertical(screen, NESTED)
    first_drop = bar.first_child(DROP_AT)
    drop.x, drop.y = (f(v) for v in first_drop)
    first_nested = drop.first_child(NESTED_AT)
    drop.x, drop.y = (f(v) for v in bar.placed_child(DROP_AT))
    nested.x, nested.y = (f(v) for v in drop.placed_child(NESTED_AT))
    return "    " + row(
        [width, height, bar.bar_width, row(bar.reported()), row(first_drop), row(first_nested),
         menu_row(bar), menu_row(drop), menu_row(nested)]
    )


def list_row(width, height):
    """A list that is the root, moved and scaled from the reference screen, and its submenu: where a
    new one is put, and where it is placed."""
    screen = Screen(width, height)
    root, child = Vertical(screen, LIST, *scaled_margins(screen)), Vertical(screen, NESTED)
    root.x, root.y = (f(at) * (f(size) / f(reference)) for at, size, reference
                      in zip(LIST_AT, (width, height), REFERENCE))
    child.x, child.y = (f(v) for v in root.placed_child(CHILD_AT))
    return "    " + row([width, height, row(root.first_child(CHILD_AT)), menu_row(root),
                         menu_row(child)])


def write_lists(file):
    rows = ",\n".join(list_row(w, h) for w, h in SIZES)
    file.write(f"const ExpectedList reshaped_lists[] = {{\n{rows}}};\n")


def write_table(file, name, is_reshaped):
    rows = ",\n".join(screen_row(w, h, is_reshaped) for w, h in SIZES)
    file.write(f"const ExpectedScreen {name}[] = {{\n{rows}}};\n")


if __name__ == "__main__":
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "expected_geometry.inc")
    with open(path, "w", encoding="utf-8") as table:
        table.write("// Written by expected_geometry.py.\n")
        write_table(table, "initialised_screens", False)
        write_table(table, "reshaped_screens", True)
        write_lists(table)

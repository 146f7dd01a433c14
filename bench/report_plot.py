"""The plot of docs/performance.md: the time of a frame against two things that it depends on."""
import math

SERIES = [  # label, precision, whose time, colour
    ("scalar, float", "float", "scalar_ms", "#b8860b"),
    ("scalar, double", "double", "scalar_ms", "#8b1a1a"),
    ("vectors, float", "float", "vectors_ms", "#1f77b4"),
    ("vectors, double", "double", "vectors_ms", "#104e8b"),
]


class Panel:
    """One diagram with logarithmic times; x values are spread evenly in their order."""

    WIDTH, HEIGHT, LEFT, TOP = 290, 260, 76, 40

    def __init__(self, offset, title, ticks, low, high):
        self.offset, self.title, self.ticks = offset, title, ticks
        self.low, self.high = math.log10(low), math.log10(high)

    def x(self, tick):
        step = self.WIDTH / max(len(self.ticks) - 1, 1)
        return self.offset + self.LEFT + step * self.ticks.index(tick)

    def y(self, ms):
        share = (math.log10(ms) - self.low) / (self.high - self.low)
        return self.TOP + self.HEIGHT * (1 - share)

    def frame(self):
        left, bottom = self.offset + self.LEFT, self.TOP + self.HEIGHT
        yield (f'<rect x="{left}" y="{self.TOP}" width="{self.WIDTH}" height="{self.HEIGHT}" '
               'fill="none" stroke="#888"/>')
        yield f'<text x="{left}" y="{self.TOP - 12}">{self.title}</text>'
        for tick in self.ticks:
            yield (f'<text x="{self.x(tick):.0f}" y="{bottom + 16}" '
                   f'text-anchor="middle">{tick:,}</text>')
        for power in range(math.ceil(self.low), math.floor(self.high) + 1):
            y = self.y(10 ** power)
            yield (f'<line x1="{left}" x2="{left + self.WIDTH}" y1="{y:.0f}" y2="{y:.0f}" '
                   'stroke="#ddd"/>')
            yield f'<text x="{left - 6}" y="{y + 4:.0f}" text-anchor="end">{10 ** power:,} ms</text>'

    def line(self, points, colour):
        path = " ".join(f"{self.x(tick):.1f},{self.y(ms):.1f}" for tick, ms in points)
        yield f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>'
        for tick, ms in points:
            yield (f'<circle cx="{self.x(tick):.1f}" cy="{self.y(ms):.1f}" r="3" '
                   f'fill="{colour}"/>')


def points_of(rows, precision, whose, column):
    """[(value of the column, milliseconds)] of one series."""
    found = {int(row[column]): row[whose] for row in rows if row["precision"] == precision}
    return sorted((at, float(ms)) for at, ms in found.items() if ms)


def panels_of(rows, own_limit):
    """(panel, its rows, the column that its points lie along): limits, then threads."""
    most = max(int(row["threads"]) for row in rows)
    limits = [row for row in rows if int(row["threads"]) == most]
    threads = [row for row in rows if int(row["limit"]) == own_limit]
    times = [float(row[whose]) for row in rows for _, _, whose, _ in SERIES if row[whose]]
    low, high = min(times) / 2, max(times) * 2
    for offset, title, chosen, column in (
            (0, "Frame time against iteration limit", limits, "limit"),
            (400, f"Frame time against threads (limit {own_limit})", threads, "threads")):
        ticks = sorted({int(row[column]) for row in chosen})
        yield Panel(offset, title, ticks, low, high), chosen, column


def write_plot(rows, path, own_limit):
    """rows: of one view, one instruction set, each with both times; see COLUMNS of report.py."""
    parts = []
    for panel, chosen, column in panels_of(rows, own_limit):
        parts += panel.frame()
        for _, precision, whose, colour in SERIES:
            parts += panel.line(points_of(chosen, precision, whose, column), colour)
    for n, (label, _, _, colour) in enumerate(SERIES):
        parts.append(f'<rect x="{76 + 180 * n}" y="336" width="12" height="12" fill="{colour}"/>')
        parts.append(f'<text x="{94 + 180 * n}" y="347">{label}</text>')
    with open(path, "w", encoding="utf-8") as file:
        file.write('<svg xmlns="http://www.w3.org/2000/svg" width="780" height="360" '
                   'font-family="sans-serif" font-size="12">\n'
                   '<rect width="780" height="360" fill="white"/>\n')
        file.write("\n".join(parts))
        file.write("\n</svg>\n")

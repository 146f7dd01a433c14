"""Pictures of figures."""


class Drawing:
    """An SVG that grows downwards."""

    def __init__(self, width):
        self.width, self.height, self._body = width, 0, []

    def text(self, x, y, text, size=12, anchor="start"):
        self._body.append(f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{text}</text>')
        self.height = max(self.height, y + 10)

    def bar(self, x, y, width, height, colour, title=""):
        inner = f"<title>{title}</title>" if title else ""
        self._body.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{max(width, 0.3):.1f}" '
                          f'height="{height}" fill="{colour}">{inner}</rect>')
        self.height = max(self.height, y + height + 6)

    def write(self, path):
        with open(path, "w", encoding="utf-8") as file:
            file.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.width} {self.height:.0f}" '
                       'font-family="sans-serif">\n<rect width="100%" height="100%" fill="white"/>\n'
                       + "\n".join(self._body) + "\n</svg>\n")

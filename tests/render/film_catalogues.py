"""Catalogues to fly through, and what a dry run says of the flight."""

import os

from render_command import RenderTest, record

START = dict(x=(-2.0, 2.0), y=(-1.5, 1.5))
CHILD = dict(x=(-0.8, -0.7), y=(0.1, 0.175))
STRANGER = dict(x=(-1.0, 1.0), y=(-0.75, 0.75), identity=1, formula=1, c=(-0.4, 0.6))

FAMILY = record(**START) + record(**CHILD) + record(**STRANGER)


class FilmTest(RenderTest):
    def flight(self, *options, data=FAMILY):
        """[(number, entry flown to, [xMin, xMax, yMin, yMax])] of a dry run."""
        lines = self.render("-", "--film", "--dry-run", *options, data=data).decode().splitlines()
        rows = [line.split("\t") for line in lines]
        return [(int(number), int(entry), [float(edge) for edge in edges])
                for number, entry, *edges in rows]

    def film(self, *options, data=FAMILY, folder="."):
        """{name: bytes} of the frames in a folder."""
        self.render("-", "--film", "-o", folder + "/", *options, data=data)
        return self.pictures(folder)

    def pictures(self, folder="."):
        """{name: bytes} of the pictures in a folder."""
        return {name: self.read(os.path.join(folder, name))
                for name in os.listdir(self.path(folder)) if name.endswith(".png")}

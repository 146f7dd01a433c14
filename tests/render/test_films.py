"""Films: their frames, the lines of a dry run, and the stream into a video encoder."""

import os
import shutil
import struct
import subprocess
import unittest

import numpy as np

from film_catalogues import CHILD, FAMILY, START, STRANGER, FilmTest
from render_command import SOURCE, document, pixels, record, texts, with_other_processors

LINEAR = ["--glide", "linear"]
SMALL = ["--size", "40x30"]


def edges(of):
    return [*of["x"], *of["y"]]


def bits(numbers):
    return struct.pack(f"{len(numbers)}d", *numbers)


def window_views(old, new):
    """The 20 rectangles of the window's glide, added up as it adds them."""
    steps = [(b - a) / 20 for a, b in zip(old, new)]
    views, view = [], list(old)
    for _ in range(19):
        view = [edge + step for edge, step in zip(view, steps)]
        views.append(view)
    return views + [list(new)]


class Flights(FilmTest):
    def test_an_entry_its_child_and_a_stranger_are_1_and_20_and_1_frames(self):
        flight = self.flight(*LINEAR, *SMALL)
        self.assertEqual([number for number, _, _ in flight], list(range(1, 23)))
        self.assertEqual([entry for _, entry, _ in flight], [1] + 20 * [2] + [3])

    def test_a_linear_glide_is_the_windows_bit_for_bit(self):
        flight = self.flight(*LINEAR, *SMALL, "--fit", "stretch")
        expected = [edges(START), *window_views(edges(START), edges(CHILD)), edges(STRANGER)]
        self.assertEqual([bits(rectangle) for _, _, rectangle in flight],
                         [bits(rectangle) for rectangle in expected])

    def test_a_smooth_glide_has_seconds_times_rate_frames_and_entries_are_held(self):
        flight = self.flight(*SMALL)
        self.assertEqual([entry for _, entry, _ in flight], 30 * [1] + (120 + 29) * [2] + 30 * [3])
        self.assertEqual(flight[149][2], edges(CHILD))
        flight = self.flight(*SMALL, "--seconds", 2, "--fps", 10, "--hold", 0)
        self.assertEqual([entry for _, entry, _ in flight], [1] + 20 * [2] + [3])

    def test_no_frame_moves_back(self):
        with open(os.path.join(SOURCE, "share", "deep-zoom.frac"), "rb") as file:
            data = file.read()
        for options in (["--size", "320x180"], ["--size", "300x300", "--fit", "cover"],
                        ["--size", "1920x1080", "--fit", "stretch"]):
            flight = [(entry, rectangle) for _, entry, rectangle in
                      self.flight("--entry", "1-13", *options, data=data)]
            for (_, before), (entry, now) in zip(flight, flight[1:]):
                self.assertTrue(before[0] <= now[0] <= now[1] <= before[1], (options, entry))
                self.assertTrue(before[2] <= now[2] <= now[3] <= before[3], (options, entry))

    def test_one_size_is_that_of_the_first_entry(self):
        data = record(x=(0.0, 2.0), y=(0.0, 1.0)) + record(x=(0.0, 0.1), y=(0.0, 0.1), identity=1)
        frames = self.film(*LINEAR, "--size", 40, data=data)
        self.assertEqual([pixels(frame).shape for frame in frames.values()], 2 * [(20, 40, 3)])
        self.assertEqual(self.flight(*LINEAR, "--size", 40, data=data)[1][2],
                         [-0.05, 0.15000000000000002, 0.0, 0.1])

    def test_chosen_entries_keep_their_numbers(self):
        flight = self.flight(*LINEAR, *SMALL, "--entry", "2-3")
        self.assertEqual([entry for _, entry, _ in flight], [2, 3])

    def test_lines_are_the_shortest_texts_that_read_back(self):
        data = record(x=(-0.0, 1e22), y=(-2.0, 0.1)) + record(x=(float("nan"), 1.0), y=(5e-324, 1.0),
                                                              identity=1)
        printed = self.render("-", "--film", "--dry-run", *LINEAR, "--fit", "stretch", *SMALL,
                              data=data)
        self.assertEqual(printed, b"1\t1\t-0\t1e+22\t-2\t0.1\n"
                                  b"2\t2\tnan:0x7ff8000000000000\t1\t5e-324\t1\n")

    def test_a_dry_run_makes_nothing(self):
        self.flight(*SMALL)
        self.assertEqual(self.names(), [])

    def test_a_film_too_long_is_a_failure(self):
        self.assertIn("999999", self.fails(1, "-", "--film", "--hold", 86400, "--dry-run",
                                           data=FAMILY))


    @with_other_processors
    def test_flights_are_the_same_on_every_processor(self):
        arguments = ["-", "--film", "--dry-run", *SMALL, "--seconds", 2]
        here = self.render(*arguments, data=FAMILY)
        for processor in ("Nehalem", "Haswell", "qemu64"):
            done = self.run_render(*arguments, data=FAMILY, stderr=subprocess.DEVNULL,
                                   prefix=["qemu-x86_64", "-cpu", processor])
            self.assertEqual((done.returncode, done.stdout), (0, here), processor)


class Frames(FilmTest):
    def test_they_are_numbered_with_six_digits(self):
        frames = self.film(*LINEAR, *SMALL, "--steps", 3)
        self.assertEqual(sorted(frames), [f"stdin-{n:06}.png" for n in range(1, 6)])

    def test_each_is_the_still_of_its_rectangle(self):
        for options in ([*LINEAR, "--steps", 6], ["--seconds", 0.4, "--fps", 15, "--hold", 0],
                        [*LINEAR, "--steps", 3, "--fit", "cover", "--single", "--palette", "rgb"],
                        [*LINEAR, "--steps", 3, "--supersample", 2, "--limit", 33]):
            frames = self.film(*options, "--size", "48x31")
            wanted = [o for o in options if o not in (*LINEAR, "--seconds", "--fps", "--hold",
                                                      "--steps", 0.4, 15, 0, 6, 3)]
            for number, entry, rectangle in self.flight(*options, "--size", "48x31"):
                of = [START, CHILD, STRANGER][entry - 1]
                data = record(**{**of, "x": rectangle[:2], "y": rectangle[2:]})
                with self.subTest(options=options, number=number):
                    self.assertEqual(self.still("-", *wanted, "--size", "48x31", data=data),
                                     frames[f"stdin-{number:06}.png"])

    def test_each_makes_itself_again(self):
        for name, data in self.film(*LINEAR, "--steps", 2, *SMALL).items():
            self.assertEqual(self.still(name), data)

    def test_the_document_of_a_faded_frame_tells_what_fades(self):
        frames = self.film(*LINEAR, *SMALL, "--fade", 3, "--entry", "2-3")
        found = document(frames["stdin-000003.png"])
        self.assertEqual(found["render"]["fade"], [2, 4])
        self.assertEqual(found["render"]["from"]["view"]["xMin"], -0.8)
        self.assertEqual(found["entries"][0]["formula"], "julia")
        self.assertEqual(len({texts(frame)["tessary"] for frame in frames.values()}), 5)

    def test_a_cut_is_faded_in_linear_light(self):
        def light(levels):
            v = levels / 255
            return np.where(v <= 0.04045, v / 12.92, ((v + 0.055) / 1.055) ** 2.4)
        frames = [pixels(frame) for _, frame in
                  sorted(self.film(*LINEAR, *SMALL, "--fade", 3, "--entry", "2-3").items())]
        self.assertEqual(len(frames), 5)
        for step in (1, 2, 3):
            mixed = (light(frames[0]) * (4 - step) + light(frames[4]) * step) / 4
            level = 255 * np.where(mixed <= 0.0031308, mixed * 12.92,
                                   1.055 * mixed ** (1 / 2.4) - 0.055)
            self.assertLess(np.abs(frames[step] - level).max(), 0.5 + 1e-6)
            self.assertGreater(np.abs(frames[step].astype(int) - frames[0]).max(), 8)

    def test_a_name_for_one_picture_is_not_enough(self):
        self.assertIn("a.png", self.fails(1, "-", "--film", *SMALL, "-o", "a.png", data=FAMILY))


class Streams(FilmTest):
    def test_standard_output_takes_ppm_pictures(self):
        options = [*LINEAR, "--steps", 4, "--size", "41x29", "--fade", 2]
        frames = sorted(self.film(*options).items())
        self.assertEqual(len(frames), 8)
        stream = self.render("-", "--film", "-o", "-", *options, data=FAMILY)
        expected = b"".join(b"P6\n41 29\n255\n" + pixels(frame).tobytes() for _, frame in frames)
        self.assertEqual(stream, expected)

    def test_the_number_of_threads_does_not_matter(self):
        streams = {self.render("-", "--film", "-o", "-", *LINEAR, *SMALL, "--threads", threads,
                               data=FAMILY) for threads in (1, 2, 7)}
        self.assertEqual(len(streams), 1)

    def test_a_closed_pipe_is_a_failure_of_one_line(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.assertIn("standard output", self.fails(1, "-", "--film", "-o", "-", data=FAMILY,
                                                    stdout=writer))
        os.close(writer)


@unittest.skipUnless(shutil.which("ffmpeg"), "needs ffmpeg")
class Videos(FilmTest):
    def decoded(self, video, size):
        """The pictures of a video."""
        raw = subprocess.run(["ffmpeg", "-v", "error", "-i", self.path(video), "-f", "rawvideo",
                              "-pix_fmt", "rgb24", "-"], check=True, capture_output=True,
                             timeout=300).stdout
        return np.frombuffer(raw, np.uint8).reshape(-1, size[1], size[0], 3)

    def test_ffmpeg_takes_the_stream(self):
        self.write("a.frac", FAMILY)
        options = ["--size", "96x72", "--seconds", "1", "--fps", "12", "--hold", "0.25"]
        render = self.begins("a.frac", "--film", "-o", "-", *options, stdout=subprocess.PIPE)
        subprocess.run(["ffmpeg", "-v", "error", "-f", "image2pipe", "-framerate", "12", "-i", "-",
                        "-c:v", "ffv1", "-pix_fmt", "bgr0", "film.mkv"], cwd=self.folder,
                       stdin=render.stdout, check=True, timeout=300)
        render.stdout.close()
        self.assertEqual(render.wait(timeout=60), 0)
        video = self.decoded("film.mkv", (96, 72))
        self.assertEqual(len(video), 3 + 12 + 2 + 3)
        for picture, entry in ((video[0], 1), (video[14], 2), (video[-1], 3)):
            still = pixels(self.still("a.frac", "--entry", entry, "--size", "96x72"))
            self.assertTrue((picture == still).all())


class Mistakes(FilmTest):
    def test_bad_values(self):
        bad = {
            "--glide": ["", "fast", "Smooth"],
            "--steps": ["0", "-1", "1.5", "", "x", "1000000"],
            "--seconds": ["0", "-1", "", "x", "inf", "nan", "1e9", "4s"],
            "--fps": ["0", "-30", "", "x", "inf", "nan", "1e9"],
            "--hold": ["-1", "", "x", "inf", "nan", "1e9"],
            "--fade": ["-1", "1.5", "", "x", "65536"],
            "--shard": ["0/3", "4/3", "3", "1/0", "/", "a/b", "1/2/3", "", "-1/3", "1/1000001",
                        "1.5/2", "+1/2"],
        }
        for option, values in bad.items():
            for value in values:
                with self.subTest(option=option, value=value):
                    self.assertIn(option, self.fails(2, "-", "--film", option, value, data=FAMILY))
            self.assertIn(option, self.fails(2, "-", "--film", option))
        self.assertEqual(self.names(), [])

    def test_options_of_films_need_a_film(self):
        for option in (["--glide", "linear"], ["--steps", "2"], ["--seconds", "2"], ["--fps", "2"],
                       ["--hold", "2"], ["--fade", "2"], ["--dry-run"]):
            self.assertIn(option[0], self.fails(2, "-", *option, data=FAMILY))

    def test_options_of_the_other_glide_are_refused(self):
        self.assertIn("--steps", self.fails(2, "-", "--film", "--steps", 3))
        self.assertIn("--seconds", self.fails(2, "-", "--film", *LINEAR, "--seconds", 3))

    def test_what_keeps_nothing_cannot_be_resumed(self):
        self.assertIn("--resume", self.fails(2, "-", "--film", "-o", "-", "--resume"))
        self.assertIn("--resume", self.fails(2, "-", "-o", "-", "--resume"))


if __name__ == "__main__":
    unittest.main()

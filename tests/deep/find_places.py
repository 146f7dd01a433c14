#!/usr/bin/python3
"""Writes places.txt: views in which counts are hard to get right, at all depths.

    find_places.py > places.txt
    find_places.py edges > edges.txt
    find_places.py known | build/release/bench/deep_bench 1920 1080 0

The last are five kinds of place that people know, for the benchmark.

Needs gmpy2 (Debian: apt-get install python3-gmpy2). Neither the build nor the tests do: both lists
are kept, so that it is no package of packaging/debian-packages.txt.

Points are found by Newton's method at more digits than a view needs: nuclei (0 has period p),
Misiurewicz points (0 falls on a cycle after k steps), repelling points of Julia sets. Minibrots at any depth: about a Misiurewicz point, at distance r from it, there are
nuclei whose minibrots have a size of about r^2.

A line is: name, formula (-: Mandelbrot), re, im, width, c's re and im (-: none), escape limit,
iteration limit. In edges.txt the name is a pixel, x,y: there an orbit meets the limit but for a
tiny part, 1e-6 to 1e-36, of how far a picture's width would move it.
"""

import random
import sys

import gmpy2
from gmpy2 import mpc, mpfr

MISIUREWICZ = {  # near enough for Newton: preperiod, period, about where
    "spike": (3, 1, "-1.5436890126920763+0j"),
    "branch": (4, 1, "-0.1010963638456222+0.9562865108091415j"),
    "spiral": (24, 2, "-0.77568377+0.13646737j"),
    "antenna": (2, 2, "0+1j"),
    "elephant": (17, 1, "0.28488454+0.01112182j"),
}


def bits_for(width):
    """Digits for the view and for Newton's last steps."""
    return int(-2 * gmpy2.log2(mpfr(width))) + 300


def orbit(c, steps):
    """z_n and dz_n/dc after so many steps."""
    z, d = mpc(0), mpc(0)
    for _ in range(steps):
        z, d = z * z + c, 2 * z * d + 1
    return z, d


def newton(f, c, tries=200):
    """A zero of f near c; f answers value and derivative."""
    for _ in range(tries):
        value, slope = f(c)
        move = value / slope
        c -= move
        if abs(move) < mpfr(2) ** (12 - gmpy2.get_context().precision):
            return c
    raise RuntimeError("no convergence")


def misiurewicz(name):
    before, period, near = MISIUREWICZ[name]

    def f(c):
        (a, da), (b, db) = orbit(c, before), orbit(c, before + period)
        return b - a, db - da

    return newton(f, mpc(near))


def nucleus_within(c, radius):
    """The nucleus of lowest period in the disc: there the disc's image first holds 0."""
    z, d, period = mpc(c), mpc(1), 1
    while abs(z) > radius * abs(d):
        z, d, period = z * z + c, 2 * z * d + 1, period + 1
        if period > 100000:
            raise RuntimeError("no nucleus")
    return newton(lambda x: orbit(x, period), c), period


def minibrot_size(c, period):
    """Of the whole set's size, by how z_p near the nucleus follows the same map again."""
    step, total, z = mpc(1), mpc(1), mpc(c)
    for _ in range(1, period):
        step *= 2 * z
        total += 1 / step
        z = z * z + c
    return 1 / abs(total * step * step)


def digits(x, width):
    """x as a decimal, to a thousandth of the width; an imprecise zero is none."""
    places = max(3, int(-gmpy2.log10(mpfr(width))) + 5)
    scaled = int(gmpy2.rint(x * mpfr(10) ** places))
    sign, scaled = "-" if scaled < 0 else "", abs(scaled)
    text = str(scaled).rjust(places + 1, "0")
    return f"{sign}{text[:-places]}.{text[-places:]}".rstrip("0").rstrip(".")


def about(point, width, off=0):
    """A centre at this point, or off it by so many widths."""
    w = mpfr(width)
    return digits(point.real + off * w, width), digits(point.imag + off * w * 3 / 4, width), width


def with_digits(width):
    gmpy2.get_context().precision = bits_for(width) + 200


def at_misiurewicz(name, width, off=0):
    with_digits(width)
    return about(misiurewicz(name), width, off)


def minibrot(name, distance, widths, off=0):
    """A minibrot near a Misiurewicz point, the view so many times its size."""
    with_digits(f"{distance}")
    gmpy2.get_context().precision *= 3
    start = misiurewicz(name) + mpfr(distance) * mpc(gmpy2.exp(mpc(0, 0.7)))
    c, period = nucleus_within(start, mpfr(distance) / 8)
    width = "{0:.2e}".format(minibrot_size(c, period) * widths)
    return about(c, width, off)


def real_minibrot(period, widths):
    """The one nearest to -2 of this period."""
    gmpy2.get_context().precision = 12 * period + 200
    c = newton(lambda x: orbit(x, period), mpc(-2 + 3 * gmpy2.const_pi() ** 2 / 2 * mpfr(4) ** -period))
    width = "{0:.2e}".format(minibrot_size(c, period) * widths)
    return about(c, width)


def julia(point, c, width):
    """A view of Julia's set of c, all of whose digits count."""
    places = max(20, int(-2 * gmpy2.log10(mpfr(width))) + 30)
    precise = mpfr(10) ** -places
    return about(point, width) + (digits(c.real, precise), digits(c.imag, precise))


def julia_fixed_point(name, width):
    with_digits(width)
    c = misiurewicz(name)
    return julia((1 + gmpy2.sqrt(1 - 4 * c)) / 2, c, width)


def julia_of_minibrot(name, distance, sizes):
    """About 0, where Julia's set of a c beside a minibrot repeats what c's surroundings look like,
    with twice the depth: z^2 spans so many of its sizes."""
    with_digits(f"{distance}")
    gmpy2.get_context().precision *= 3
    start = misiurewicz(name) + mpfr(distance) * mpc(gmpy2.exp(mpc(0, 0.7)))
    c, period = nucleus_within(start, mpfr(distance) / 8)
    size = minibrot_size(c, period)
    return julia(mpc(0), c + size * mpc("0.4+0.9j"), "{0:.2e}".format(gmpy2.sqrt(size * sizes)))


def escape_step(c, limit):
    z, steps = mpc(c), 1
    while gmpy2.norm(z) <= limit:
        z, steps = z * z + c, steps + 1
    return steps


def on_the_limit(start, limit, width):
    """Near start, where it leaves: there |z| is the limit's root to 60 digits more than are seen."""
    with_digits(width)
    c = mpc(start)
    steps, root = escape_step(c, limit), gmpy2.sqrt(mpfr(limit))
    for _ in range(200):  # along the gradient of ln |z|
        z, d = orbit(c, steps)
        c += gmpy2.log(root / abs(z)) * z / d
    assert escape_step(c, limit * mpfr("1.000001")) == steps + 1
    return about(c, mpfr(width) * mpfr("1e-60"))[:2] + (width,)


def beside_zero(name, distance, width):
    """A nucleus to many more digits than the view shows: its orbit comes as near to 0."""
    return minibrot(name, distance, 1)[:2] + (width,)


def all_places():
    return [
        ("spiral-1e-5", at_misiurewicz("spiral", "1e-5"), 4, 1000),
        ("cusp-channel", ("0.250001", "0", "3e-9"), 4, 1000000),
        ("cusp", ("0.25", "0", "1e-6"), 4, 5000),
        ("valley", ("-0.75", "0.0003", "1e-7"), 4, 20000),
        ("minibrot-million", minibrot("branch", "1e-4", 40), 4, 1000000),
        ("spiral-2e-13", at_misiurewicz("spiral", "2e-13", 0.3), 65536, 50000),
        ("spike-1e-18", at_misiurewicz("spike", "1e-18"), 4, 10000),
        ("tip-1e-30", ("-2", "0", "1e-30"), 4, 10000),
        ("minibrot-1e-25", minibrot("spiral", "1e-11", 10), 4, 50000),
        ("minibrot-off", minibrot("antenna", "1e-20", 40, 0.3), 100, 20000),
        ("minibrot-inside", minibrot("spike", "1e-30", 3), 4, 2000),
        ("spiral-1e-77", at_misiurewicz("spiral", "1.7e-77"), 4, 20000),
        ("spiral-1e-100-off", at_misiurewicz("spiral", "1e-100", 0.4), 65536, 50000),
        ("minibrot-1e-100", minibrot("branch", "1e-50", 12), 4, 50000),
        ("antenna-1e-150", at_misiurewicz("antenna", "1e-150"), 4, 5000),
        ("tip-needle-1e-200", real_minibrot(166, 30), 4, 20000),
        ("branch-1e-320", at_misiurewicz("branch", "1e-320", 0.2), 4, 10000),
        ("minibrot-1e-400", minibrot("antenna", "1e-200", 20), 65536, 10000),
        ("spike-1e-600", at_misiurewicz("spike", "1e-600", 0.1), 4, 10000),
        ("tip-needle-1e-1000", real_minibrot(830, 30), 4, 5000),
        ("spiral-1e-1000", at_misiurewicz("antenna", "1e-1000", 0.3), 4, 20000),
        ("julia-fixed-1e-40", julia_fixed_point("branch", "1e-40"), 4, 10000),
        ("julia-minibrot-1e-50", julia_of_minibrot("branch", "1e-45", 20), 65536, 20000),
        ("julia-minibrot-1e-160", julia_of_minibrot("antenna", "1e-160", 20), 4, 10000),
        ("julia-fixed-1e-500", julia_fixed_point("antenna", "1e-500"), 4, 5000),
        # Built so that one term of a bound decides.
        ("limit-reached-40", on_the_limit("-0.7756835+0.1364670j", 4, "1e-40"), 4, 1000),
        ("limit-reached-15", on_the_limit("-0.10109-0.95629j", 4, "1e-15"), 4, 1000),
        ("far-limit-reached", on_the_limit("-0.7756835+0.1364670j", 65536, "1e-60"), 65536, 1000),
        ("zero-within-1e-160", beside_zero("antenna", "1e-80", "1e-30"), 4, 1000),
        ("zero-within-1e-400", beside_zero("branch", "1e-200", "1e-150"), 4, 5000),
    ]


def known_places():
    return [
        ("seahorse-valley", at_misiurewicz("spiral", "1e-30", 0.1), 4, 20000),
        ("elephant-valley", at_misiurewicz("elephant", "1e-50"), 4, 20000),
        ("minibrot", minibrot("branch", "1e-25", 12), 4, 50000),
        ("needle", real_minibrot(40, 30), 4, 20000),
        ("spiral", at_misiurewicz("branch", "1e-100", 0.1), 4, 20000),
    ]


WIDTHS = ["1e-4", "1e-9", "1e-13", "1e-20", "3e-33", "1e-60", "1e-100", "1e-152", "1e-170", "1e-250",
          "1e-305", "1e-318", "1e-322", "1e-325", "1e-400"]
SIDE = 128


def deviating(c, z, limit):
    """The step of the escape, and how |z|^2 there moves with the pixel's point: as a gradient."""
    julia = z is not None
    z, d, steps = (z, mpc(1), 0) if julia else (mpc(0), mpc(0), 0)
    while True:
        z, d, steps = z * z + c, 2 * z * d + (0 if julia else 1), steps + 1
        if gmpy2.norm(z) > limit or steps > 3000:
            return steps, z, 2 * z * d.conjugate()


def orbit_from(c, z, steps):
    d = mpc(0) if z is None else mpc(1)
    z, one = (mpc(0), 1) if z is None else (z, 0)
    for _ in range(steps):
        z, d = z * z + c, 2 * z * d + one
    return z, d


def edge(chance, width, julia):
    """A view and a pixel of it on the limit, or None where that random start is no good."""
    depth = -int(gmpy2.log10(mpfr(width)))
    gmpy2.get_context().precision = int(3.4 * depth) + 400
    name = chance.choice(sorted(MISIUREWICZ))
    limit = chance.choice([4, 4, 4, 100, 65536])
    c = misiurewicz(name)
    away = mpfr(10) ** -chance.uniform(1, max(2, min(60, 0.8 * depth)))
    away *= gmpy2.exp(mpc(0, chance.uniform(0, 6.3)))
    if julia:
        c = mpc(mpfr(digits(c.real, "1e-40")), mpfr(digits(c.imag, "1e-40")))
        point = (1 + gmpy2.sqrt(1 - 4 * c)) / 2 + away
    else:
        point = c + away
    steps, _, slope = deviating(*((c, point) if julia else (point, None)), limit)
    if steps > 3000 or abs(slope) * mpfr(width) > 0.01:
        return None
    about_what = chance.choice([(6, 36), (14.5, 17), (14.5, 17), (28, 33)])  # anything, doubles, pairs
    part = chance.choice([-1, 1]) * mpfr(10) ** -chance.uniform(*about_what)
    wanted = limit + part * abs(slope) * mpfr(width)
    for _ in range(60):
        z, d = orbit_from(*((c, point) if julia else (point, None)), steps)
        gradient = 2 * z * d.conjugate()
        move = (wanted - gmpy2.norm(z)) * gradient / gmpy2.norm(gradient)
        point += move
        if abs(move) < mpfr(10) ** -(depth + 45):
            break
    else:
        return None
    x, y = chance.randrange(SIDE), chance.randrange(SIDE)
    w = mpfr(width)
    centre = point - mpc((mpfr(x) / SIDE - 0.5) * w, (mpfr(y) / SIDE - 0.5) * w)
    exact = w * mpfr("1e-42")
    constant = (digits(c.real, "1e-40"), digits(c.imag, "1e-40")) if julia else "--"
    return (f"{x},{y}", "julia" if julia else "-", digits(centre.real, exact),
            digits(centre.imag, exact), width, *constant, limit, steps + 100)


def edges(number):
    chance = random.Random(1)
    while number > 0:
        found = edge(chance, chance.choice(WIDTHS + 3 * WIDTHS[:7]), chance.random() < 0.25)
        if found:
            print(*found)
            number -= 1


def places(which):
    for name, (re, im, width, *c), limit, steps in which:
        print(name, "julia" if c else "-", re, im, width, *(c or "--"), limit, steps)


if __name__ == "__main__":
    if sys.argv[1:] == ["edges"]:
        edges(700)
    else:
        places(known_places() if sys.argv[1:] == ["known"] else all_places())

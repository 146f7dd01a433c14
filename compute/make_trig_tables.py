#!/usr/bin/python3
"""Writes compute/trig_tables.h: every constant of compute/rounded_trig.cpp and exact_trig.cpp.

Whole numbers only: a value v is held as floor(v * 2^BITS), good to some hundred units. Run it as
`compute/make_trig_tables.py > compute/trig_tables.h`; a test holds the file to what this prints.
"""

import math

BITS = 2200


def arctan_inverse(n):
    """arctan(1/n) by its series."""
    term, total, k = (1 << BITS) // n, 0, 1
    while term:
        total += term // k if k % 4 == 1 else -(term // k)
        term, k = term // (n * n), k + 2
    return total


def artanh_inverse(n):
    """artanh(1/n) by its series."""
    term, total, k = (1 << BITS) // n, 0, 1
    while term:
        total, term, k = total + term // k, term // (n * n), k + 2
    return total


PI = 4 * (4 * arctan_inverse(5) - arctan_inverse(239))  # Machin
LN2 = 2 * artanh_inverse(3)


def exponential(x):
    term, total, n = 1 << BITS, 0, 1
    while term:
        total, term, n = total + term, (term * x >> BITS) // n, n + 1
    return total


def sine(x):
    term, total, n = x, 0, 1
    while term:
        total += term if n % 4 == 1 else -term
        term, n = (term * x >> BITS) * x // ((n + 1) * (n + 2)) >> BITS, n + 2
    return total


def rounded(v, bits):
    """v to the nearest number of so many significant bits, exactly."""
    drop = max(abs(v).bit_length() - bits, 0)
    return ((v + (1 << drop >> 1)) >> drop) << drop


def text(v):
    """A whole number of at most 53 significant bits, times 2^-BITS."""
    if v == 0:
        return "0.0"
    drop = max(abs(v).bit_length() - 53, 0)
    assert v >> drop << drop == v
    return math.ldexp(v >> drop, drop - BITS).hex()


def split(v):
    """v as a number of 29 bits and the rest of it as a double."""
    high = rounded(v, 29)
    low = v - high if abs(v - high) >> BITS // 2 else 0  # else v is the high part but for errors
    return f"{{{text(high)}, {text(rounded(low, 53))}}}"


def table(name, comment, values):
    print(f"\n// {comment}\ninline constexpr SplitDouble {name}[] = {{")
    for at in range(0, len(values), 2):
        print("    " + ", ".join(split(v) for v in values[at:at + 2]) + ",")
    print("};")


def three_parts(name, comment, v, first_unit, second_unit):
    """v as multiples of 2^-first_unit and 2^-second_unit, and the rest as a double."""
    print(f"\n// {comment}")
    for part, unit in ((1, first_unit), (2, second_unit)):
        high = v >> BITS - unit << BITS - unit
        print(f"inline constexpr double {name}_{part} = {text(high)};")
        v -= high
    print(f"inline constexpr double {name}_3 = {text(rounded(v, 53))};")


def limbs(name, comment, v, count, zeros=0):
    """The first so many 64-bit limbs behind the binary point, most significant first."""
    print(f"\n// {comment}\ninline constexpr std::uint64_t {name}[] = {{")
    words = [0] * zeros + [v >> BITS - 64 * (n + 1) & (1 << 64) - 1 for n in range(count)]
    for at in range(0, len(words), 4):
        print("    " + ", ".join(f"0x{w:016x}" for w in words[at:at + 4]) + ",")
    print("};")


print("""// Made by compute/make_trig_tables.py: do not edit.
//
// Constants of the sine, cosine and hyperbolic functions. See compute/rounded_trig.cpp and
// compute/exact_trig.cpp for what they are chosen for.
#pragma once

#include <cstdint>

// clang-format off

namespace trig_tables {

// A number as the sum of a part of at most 29 significant bits and the rest.
struct SplitDouble {
    double high, low;
};""")
three_parts("PI_1024", "pi / 1024: multiples of 2^-41 and 2^-74, and the rest.", PI >> 10, 41, 74)
three_parts("LN2_256", "ln(2) / 256: multiples of 2^-43 and 2^-77, and the rest.", LN2 >> 8, 43, 77)
print("\n// 1024 / pi and 256 / ln(2).")
print(f"inline constexpr double PER_PI = {text(rounded((1 << 2 * BITS + 10) // PI, 53))};")
print(f"inline constexpr double PER_LN2 = {text(rounded((1 << 2 * BITS + 8) // LN2, 53))};")
table("SINES", "sin(n pi / 1024) for n = 0 to 512.", [sine(PI * n >> 10) for n in range(513)])
table("POWERS", "2^(n / 256) for n = 0 to 255.",
      [exponential(LN2 * n >> 8) for n in range(256)])
limbs("TURNS", "1 / (2 pi) behind two limbs of zeros.", (1 << 2 * BITS - 1) // PI, 26, 2)
limbs("HALF_PI", "pi / 2 - 1.", (PI >> 1) - (1 << BITS), 8)
limbs("LN2", "ln 2.", LN2, 8)
print("\n}  // namespace trig_tables")

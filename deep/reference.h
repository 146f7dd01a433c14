// Reference orbits: what the pixels of a view are followed as differences from.
//
// A reference is a pseudo-orbit, Z' = Z^2 + C + eta with |eta| <= 128 * 2^-bits: its roundings are
// part of every difference's own equation, so that they neither grow nor need bounds of their own.
#pragma once

#include <cstdint>
#include <vector>

#include "compute/pair.h"
#include "compute/stop_flag.h"
#include "compute/wide.h"
#include "deep/exact_view.h"

namespace deep {

// x as the sum of two doubles.
Pair<double> split(mpfr_srcptr x);

// As many parts as a tier keeps.
template <int PARTS>
inline Of<PARTS, double> cut(const Pair<double>& x) {
    if constexpr (PARTS == 1) {
        return x.high;
    } else {
        return x;
    }
}
template <int PARTS>
inline Complex<Of<PARTS, double>> cut(const Complex<Pair<double>>& z) {
    return {cut<PARTS>(z.re), cut<PARTS>(z.im)};
}

// A point that doubles cannot hold: number * 2^exponent.
struct TinyPoint {
    std::uint32_t at;
    std::int32_t exponent;
    Complex<Pair<double>> number;
};

// A size |Z|^2 - L that doubles cannot hold.
struct TinySize {
    std::uint32_t at;
    Wide size;
};

// Points below this, 2^-150 in size, are kept as tiny points. Their squares, and products of these
// with the squares of differences, then stay in the range of double.
inline constexpr int TINY_EXPONENT = -150;

// Z_m and |Z_m|^2 - L of one or two orbits one behind the other, each as the sum of two doubles
// that is within 2^-105 of it, relative to it (the size within 2^-bits (1 + |Z|^2) besides).
//
// A Mandelbrot set has the orbit of 0 under the centre, with Z = 0 at index 0. A Julia set has
// first that of the centre, then that of 0, where Z = 0 at index `critical`. An orbit ends, with
// its last point kept, at the iteration limit or where |Z|^2 > max(16, L); that of a Mandelbrot set
// also where it is back at 0 but for an eighth of the picture's differences.
struct Reference {
    // bits: precision of the arithmetic, for points up to 1; what lies further out gets more. Gives
    // up, with an orbit cut short, once `stop` is set.
    Reference(const ExactView& exact, const View& view, long bits, StopFlag stop);

    // Whether index m is the last of its orbit.
    bool isEnd(std::uint32_t m) const { return m == firstEnd || m == lastEnd; }
    // |Z_m|^2 - L to a double's precision, however small.
    Wide sizeAt(std::uint32_t m) const;
    // The first tiny point at m or behind it, or the end of the list; the one at m, or null.
    const TinyPoint* tinyFrom(std::uint32_t m) const;
    const TinyPoint* tinyAt(std::uint32_t m) const;
    const TinyPoint* tinyEnd() const { return tiny.data() + tiny.size(); }

    template <int PARTS>
    Complex<Of<PARTS, double>> point(std::size_t m) const {
        return cut<PARTS>(
            Complex<Pair<double>>{{z[0][2 * m], z[1][2 * m]}, {z[0][2 * m + 1], z[1][2 * m + 1]}});
    }

    std::vector<double> z[2];     // re, im, re, im ... of each part
    std::vector<double> size[2];  // |Z|^2 - L of each part
    std::vector<TinyPoint> tiny;
    std::vector<TinySize> tinySizes;
    bool isWhole = true;  // was not cut short
    std::uint32_t critical = 0, firstEnd = 0, lastEnd = 0;
    long bits;

  private:
    long digits;  // the precision itself

    void addOrbit(const ExactView& exact, const View& view, const ExactPoint& start,
                  const ExactPoint& constant, StopFlag stop);
};

}  // namespace deep

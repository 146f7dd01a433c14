// Discs about an attracting cycle of z^2 + c: an orbit in one of them stays for ever, so it need
// not be followed until it repeats.
//
// Let b_0 .. b_(p-1) be points, c* a constant and F_0 .. F_(p-1) radii. From |z - b_k| <= F_k
// follows
//     |z^2 + c - b_(k+1)| <= F_k (2 |b_k| + F_k) + |b_k^2 + c* - b_(k+1)| + |c - c*|,
// for z^2 - b_k^2 = (z - b_k)(z - b_k + 2 b_k). Add what the roundings of a step may do, and let
// F_(k+1) be that sum: if the radius that follows F_(p-1) is no more than F_0, every later state
// lies in the disc whose turn it is. With |b_k| + F_k < 1.99 none has |z|^2 above 4, as computed
// either, so none escapes under a limit of 4 or more. Where the points come from does not matter.
//
// Roundings, in units of half the last place of 1: |z| <= 2 and |z'| <= 2, so |c| <= 6. Real part:
// two squares 4 together, their difference 4, the sum 2; imaginary part: the doubled product 4, the
// sum 2; together below 13. Radii and gaps are computed in double: each F_(k+1) by less than 6
// operations on numbers up to 4, below 24 of its units; the middle of several c is within 4. 64
// units, ROUNDINGS, cover all, in float many times over. No radius is smaller than that.
#pragma once

#include <cstddef>

#include "compute/complex.h"

using Point = cpuComplex<double>;

// What one c, or some c near each other, have in common.
struct Constants {
    Point middle;
    double extent;  // no c is further from the middle, but for its rounding
    double unit;    // half the last place of 1 in the numbers that an orbit is computed in

    static constexpr double ROUNDINGS = 64;
    double off() const { return ROUNDINGS * unit + extent; }
};

// A cycle of discs, or none.
struct Discs {
    static constexpr std::size_t MOST = 8;

    std::size_t count = 0;
    Point middle[MOST];
    double radius[MOST];

    // Sets the radii that follow from the first; returns whether the last disc is mapped into the
    // first.
    bool close(double first, const Constants& c);

    // Takes the first radius from `largest` downwards for which the discs close; none if none of so
    // many does.
    void fit(double largest, int tries, const Constants& c);

    // How far from the middle a state may be computed to lie for a place in disc k: against a
    // middle rounded by 2 units, with differences and squares that round by 6 of themselves.
    double reach(std::size_t k, double unit) const {
        return (radius[k] - 16 * unit) * (1 - 16 * unit);
    }

    // Whether everything within `extent` of z is in one of the discs.
    bool hold(const Point& z, double extent, double unit) const;
};

// Sets the discs about the fixed point or the cycle of two points that attracts under the middle c.
void findDiscs(const Constants& c, Discs& discs);

// Sets the discs about the cycle that the orbit of zero comes to under the middle c, if it has at
// most Discs::MOST points. Takes some microseconds.
void findDiscsByTrial(const Constants& c, Discs& discs);

// The discs that findDiscsByTrial sets for a constant that a whole view has. Any thread; each keeps
// those of its last constant and unit, to which the reference holds until it asks for others.
const Discs& discsOfView(const Point& c, double unit);

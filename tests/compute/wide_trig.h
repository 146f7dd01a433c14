// The trigonometric rules in extended precision, for what tests hold the bounds of doubles against.
// `type` is the rule's number: 2 sine, 3 cosine, 4 hyperbolic sine, 5 hyperbolic cosine.
#pragma once

#include <cmath>
#include <complex>

namespace wide_trig {

using Wide = std::complex<long double>;

// f of the rule z -> f(z) + c.
inline Wide valueOf(int type, const Wide& z) {
    switch (type) {
        case 2:
            return std::sin(z);
        case 3:
            return std::cos(z);
        case 4:
            return std::sinh(z);
        default:
            return std::cosh(z);
    }
}

// The slope of f.
inline Wide slopeOf(int type, const Wide& z) {
    switch (type) {
        case 2:
            return std::cos(z);
        case 3:
            return -std::sin(z);
        case 4:
            return std::cosh(z);
        default:
            return std::sinh(z);
    }
}

// f at z + e less f at z, to all digits however short e is.
inline Wide differenceOver(int type, const Wide& z, const Wide& e) {
    const Wide half = e / 2.0L, middle = z + half;
    switch (type) {
        case 2:
            return 2.0L * std::cos(middle) * std::sin(half);
        case 3:
            return -2.0L * std::sin(middle) * std::sin(half);
        case 4:
            return 2.0L * std::cosh(middle) * std::sinh(half);
        default:
            return 2.0L * std::sinh(middle) * std::sinh(half);
    }
}

}  // namespace wide_trig

// Values from magnitudes that are known within bounds.
#pragma once

// Values are whole multiples of this. Rounding to them hides which of several ways, all of them
// proven and none of them exact, a pixel took. Half a unit is below 1e-6 of a step.
inline constexpr double VALUE_UNIT = 0x1p-20;

struct Rounded {
    double value;  // a whole multiple of VALUE_UNIT
    bool certain;  // whether every exact value within the bound rounds to it
};

// The value of a pixel that escapes at step `count`, from the logarithms of |z|^2 before and after
// that step, each off by no more than `error`, and of the limit. logBefore may be minus infinity.
//
// With D the difference of the two and q = (ln L - before) / D in [0, 1],
//     |dq| <= (|d before| (1 - q) + |d after| q) / D' <= error / (D - 2 error).
// The logarithms' own roundings are part of `error`.
Rounded roundedValue(int count, double logBefore, double logAfter, double logLimit, double error);

// The same of a quotient q that is off by no more than `off`.
Rounded roundedQuotient(int count, double q, double off);

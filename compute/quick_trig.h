// The quick way of compute/rounded_trig.h: each function as the sum of two doubles, good to
// 1.25 2^-68 of its value. Products and sums of doubles alone, none fused: the same bits
// everywhere.
//
// Write u = 2^-53. x = n h + t with h = pi / 1024 (or ln 2 / 256), |t| <= (1/2 + 2^-31) h, below
// 2^-9.34 (2^-9.52). h is the sum of three doubles, n < 2^20 (2^18), so that n times the first and
// n times the second are exact. x is a multiple of 2^-62 unless n = 0; so is x - n h1, which is
// below 2^-9 and therefore exact. `high` is a float. Where |t| >= 2^-37 it is a multiple of 2^-62
// too, and x - n h1 - high - n h2 is exact: its terms are multiples of 2^-77 below 2^-22, the
// result is below 2^-33. What n h3 adds rounds to u times 2^-57 (2^-25 |t| if that is more), no
// more than 2^-73 |t|.
//
// sin x = S cos t + C sin t, S and C from a table for n. Each is a part of 29 bits and a rest, good
// to u 2^-29. C.high t.high, 29 bits times 24, is exact, and S.high plus it is kept with its error.
// S is 0 or |S| >= 2 |C t| (1 - 2^-18), so the value is no smaller than |C t| and half of |S|. What
// remains is summed in double. Its largest term is S c, c = cos t - 1, |c| < 2^-19.69: the rest
// rounded twice and squared puts in 5 u, the polynomial and its product with t^2 2 u, S rounded,
// the product and the three sums that it goes through 5 u. 12 u of c are 2^-69.1 of S, 2^-68.1 of
// the value. In the same way C s, s = sin t - t, |s| < 2^-21.2 |t|, gathers 14 u, 2^-70.4 of the
// value. Series' remainders are below 2^-90. Together that is less than 1.2 2^-68. The cosine is
// the same with C and -S.
//
// Hyperbolic functions: with A = 2^(n/256 - 1), B = 2^(-n/256 - 1), U = A + B, V = A - B, sinh |x|
// = V cosh t + U sinh t and cosh x = U cosh t + V sinh t. A and B come from the table of 2^(n/256),
// n >= 0, so A >= B. Leading sums, and the exact products with t.high, are kept with their errors.
// |c| < 2^-20.06, so V c costs 2^-68.4 of the value by the same count, and U s 2^-70.4. A.low and
// B.low are good to u 2^-29 A; with their difference and its two sums that is 2^-80 U, and U <
// 2^9.5 sinh |x| unless n = 0, when they are 0: 2^-70.5 of the value. Together less than 1.2 2^-68.
//
// Nothing rounds to a subnormal: |t| >= 2^-37, scales are 2^-1012 and more, and what B.low loses
// there is nothing beside A.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "compute/quick_sums.h"
#include "compute/trig_tables.h"

namespace quick_trig {

using trig_tables::SplitDouble;
using Approximation = QuickValue<double>;
using Pair = QuickPair<double>;
using Split = SplitNumber<double>;

inline constexpr double ERROR = QUICK_ERROR;
inline constexpr double SMALLEST = 0x1p-27;  // arguments are no smaller
inline constexpr double LARGEST = 3000.0;    // of a sine or cosine, unless reduced before
inline constexpr double LARGEST_HYPERBOLIC = 700.0;
inline constexpr double SMALLEST_REST = 0x1p-37;  // of an argument, else the bound does not hold

// n units and a rest t = high + low; high is a float. all: the rest within 2 u of it.
struct Reduced {
    std::int64_t n;
    double high, low, all;

    bool restIsLarge() const { return std::fabs(all) >= SMALLEST_REST; }
    QuickRest<double> rest() const { return {high, low, all}; }
};

inline Reduced reduced(const QuickUnits<double>& x) {
    return {std::bit_cast<std::int64_t>(x.shifted) - std::bit_cast<std::int64_t>(WITHOUT_FRACTION),
            x.rest.high, x.rest.low, x.rest.all};
}

// |x| <= LARGEST; the unit is pi / 1024.
inline Reduced reduceTrigonometric(double x) {
    using namespace trig_tables;
    return reduced(inUnits(x, PER_PI, PI_1024_1, PI_1024_2, PI_1024_3));
}

// |x| <= LARGEST_HYPERBOLIC; the unit is ln 2 / 256.
inline Reduced reduceHyperbolic(double x) {
    using namespace trig_tables;
    return reduced(inUnits(x, PER_LN2, LN2_256_1, LN2_256_2, LN2_256_3));
}

inline Split times(SplitDouble a, double power) {
    return {a.high * power, a.low * power};
}

inline Pair sineCosine(Reduced t) {
    constexpr double SIGNS[] = {1, 1, -1, -1, 1};
    const auto quarter = static_cast<std::size_t>(t.n >> 9 & 3);
    const auto within = static_cast<std::size_t>(t.n & 511);
    const std::size_t at = quarter % 2 == 0 ? within : 512 - within;
    return sineCosineBeyond(times(trig_tables::SINES[at], SIGNS[quarter]),
                            times(trig_tables::SINES[512 - at], SIGNS[quarter + 1]), t.rest());
}

// 2^(n/256 - 1).
inline Split halfPower(std::int64_t n) {
    const auto exponent = static_cast<std::uint64_t>((n >> 8) + 1022);
    return times(trig_tables::POWERS[n & 255], std::bit_cast<double>(exponent << 52));
}

// Of n units and a rest, n >= 0.
inline Pair hyperbolicSineCosine(Reduced t) {
    return hyperbolicBeyond(halfPower(t.n), halfPower(-t.n), t.rest());
}

}  // namespace quick_trig

// Logarithm, exponential and cube root by fixed operations: additions, subtractions,
// multiplications and divisions of doubles in the order written here, and operations on their bits.
// Each of those rounds the same way on every processor, so the results have the same bits
// everywhere; a C library's have not, because it picks fused operations where the processor has
// them.
//
// The logarithm is a template over a number type N: double, or a vector of doubles
// (compute/vector_number-inl.h). Its error is below 3 u, u = 2^-53, relative to the true value.
// With x = 2^k m, sqrt(1/2) <= m < sqrt(2), f = m - 1 (exact), s = f / (2 + f), h = f^2 / 2,
//     ln m = f - h + s (h + R(s^2)),
// where the remainder of R is below 2^-58 (coefficients of FDLIBM's e_log.c). For k = 0, relative
// to |ln m|: the last sum rounds by 1 u, the one before it by 0.2 u, h by 0.25 u, and s (h + R),
// which is at most 0.06 of the whole and has 6 roundings, by 0.35 u. For other k the sum with k
// LN2_HIGH (exact: 33 bits and 11) rounds once more, and |ln x| is no smaller than |ln m|: 1 u
// more.
//
// Logarithms to base 2 come in pairs, for one division does for both, and are within 10 u. With x =
// 2^k m as above, f = m - 1 (exact) and s = f / (m + 1),
//     log2 m = s G(s^2),   G(z) = 2 atanh(sqrt(z)) / (sqrt(z) ln 2) = 2.88 + 0.96 z + ...,
// where the coefficients below are a minimax fit of G for m from sqrt(1/2) to sqrt(2), off by less
// than 1.9 u of it with their own roundings. s of one number is its f times the sum m + 1 of the
// other, times the inverse of the product of both sums: five roundings, as that of the other's sum
// cancels. All but the first term of G are below 0.01 of it: what s and their own roundings put
// into them is below 0.2 u. The sum G and its product with s round by 1 u each: 9.1 u of log2 m
// together. |k + log2 m| is no smaller unless k = 0, when that sum is exact; else it rounds by less
// than 0.9 u more where |log2 m| is near 1/2 and the sum with it, and by 1 u where the rest is half
// of that or less.
//
// The cube root is within 1.5 u, the exponential within 2 u of the true value where that is normal.
// tests/compute/fixed_math_test.cpp holds all three to these bounds.
//
// Included once by plain code and again for each instruction set, as compute/complex.h is.
#if !defined(TESSARY_COMPUTE_FIXED_MATH_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_COMPUTE_FIXED_MATH_H
#define TESSARY_COMPUTE_FIXED_MATH_H

#include <bit>
#include <cstdint>
#include <limits>

#include "compute/complex.h"

// The bits of sqrt(1/2), cut after the first 32: where mantissas begin.
inline constexpr std::uint64_t MANTISSA_START = 0x3FE6A09E00000000u;
inline constexpr std::uint64_t ONE_BITS = 0x3FF0000000000000u;
inline constexpr std::uint64_t FRACTION_BITS = 0x000FFFFFFFFFFFFFu;

// x = 2^exponent * mantissa with sqrt(1/2) <= mantissa < sqrt(2), for a normal positive x.
template <class N>
struct BinaryParts {
    N exponent, mantissa;
};

inline BinaryParts<double> binaryParts(double x) {
    const std::uint64_t shifted = std::bit_cast<std::uint64_t>(x) + (ONE_BITS - MANTISSA_START);
    const std::uint64_t mantissa = (shifted & FRACTION_BITS) + MANTISSA_START;
    return {static_cast<double>(static_cast<std::int64_t>(shifted >> 52) - 1023),
            std::bit_cast<double>(mantissa)};
}

// 2^exponent for -1022 <= exponent <= 1023.
inline double powerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// e^x. 0 below -745.2, infinity above 709.8, NaN for NaN.
inline double fixedExp(double x) {
    constexpr double LOG2_E = 1.44269504088896338700e+00;
    constexpr double LN2_HIGH = 6.93147180369123816490e-01;  // first 33 bits
    constexpr double LN2_LOW = 1.90821492927058770002e-10;   // the rest
    if (!(x > -746.0)) return x != x ? x : 0.0;
    if (x > 710.0) return std::numeric_limits<double>::infinity();
    const int k = static_cast<int>(x * LOG2_E + (x < 0 ? -0.5 : 0.5));
    const double high = x - k * LN2_HIGH, low = k * LN2_LOW;
    const double r = high - low, t = r * r;
    // r coth(r / 2) - 2, as in FDLIBM's e_exp.c.
    const double p =
        t * (1.66666666666666019037e-01 +
             t * (-2.77777777770155933842e-03 +
                  t * (6.61375632143793436117e-05 +
                       t * (-1.65339022054652515390e-06 + t * 4.13813679705723846039e-08))));
    const double c = r - p;
    const double value = 1.0 + (r * c / (2.0 - c) - low + high);
    // In two halves, as 2^k need not be a normal number.
    return value * powerOfTwo(k / 2) * powerOfTwo(k - k / 2);
}

// The real cube root, of any sign; infinities and NaN stay what they are.
inline double fixedCubeRoot(double x) {
    constexpr double TINY = std::numeric_limits<double>::min();
    if (x < 0.0) return -fixedCubeRoot(-x);
    if (!(x > 0.0) || x > std::numeric_limits<double>::max()) return x;
    if (x < TINY) return fixedCubeRoot(x * 0x1p54) * 0x1p-18;
    if (x > 0x1p1000) return fixedCubeRoot(x * 0x1p-54) * 0x1p18;  // lest t * t * t overflow
    // A third of the exponent: good to a twentieth. Halley's iteration cubes the error.
    auto t = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) / 3 + 0x2A9F789300000000u);
    for (int i = 0; i < 2; ++i) {
        const double ratio = t * t * t / x;
        t = t * ((ratio + 2.0) / (ratio + ratio + 1.0));
    }
    // Cut to 24 bits its square is exact, and the last step rounds little beside its own sum.
    t = std::bit_cast<double>(std::bit_cast<std::uint64_t>(t) & 0xFFFFFFFFE0000000u);
    const double quotient = x / (t * t);
    return t + t * ((quotient - t) / (t + t + quotient));
}

#endif

// ln x. Minus infinity at 0, infinity at infinity, NaN below 0 and for NaN.
template <class N>
inline N fixedLog(N x) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
    constexpr double LN2_HIGH = 6.93147180369123816490e-01;  // first 33 bits
    constexpr double LN2_LOW = 1.90821492927058770002e-10;   // the rest
    const N zero(0.0), one(1.0), smallest(std::numeric_limits<double>::min());
    const auto isNormal = x >= smallest;
    const BinaryParts<N> parts = binaryParts(select(isNormal, x, x * N(0x1p54)));
    const N k = parts.exponent - select(isNormal, zero, N(54.0));
    const N f = parts.mantissa - one;
    const N h = N(0.5) * f * f;
    const N s = f / (N(2.0) + f);
    const N z = s * s;
    const N w = z * z;
    const N even = w * (N(3.999999999940941908e-01) +
                        w * (N(2.222219843214978396e-01) + w * N(1.531383769920937332e-01)));
    const N odd = z * (N(6.666666666666735130e-01) +
                       w * (N(2.857142874366239149e-01) +
                            w * (N(1.818357216161805012e-01) + w * N(1.479819860511658591e-01))));
    const N sum = s * (h + (odd + even)) + k * N(LN2_LOW) - h + f + k * N(LN2_HIGH);
    const N positive = select(x >= N(INFINITE), x, sum);
    return select(x > zero, positive, select(x >= zero, N(-INFINITE), N(NOT_A_NUMBER)));
}

// Logarithms of two numbers.
template <class N>
struct LogPair {
    N first, second;
};

// log2 of (1 + s) / (1 - s), for numbers from sqrt(1/2) to sqrt(2).
template <class N>
inline N log2Of(N s) {
    const N z = s * s;
    const N w = z * z;
    const N odd =
        N(0x1.ec709dc39dbcep-1) + w * (N(0x1.a617579931a4dp-2) + w * N(0x1.0bbeac6ac91a2p-2));
    const N even =
        N(0x1.2776c5156fbf0p-1) + w * (N(0x1.484f6b4c58c79p-2) + w * N(0x1.f0f31a5c50087p-3));
    return s * (N(0x1.71547652b82fep+1) + (z * odd + w * even));
}

// Logarithms to base 2 of normal positive numbers; what they are of others means nothing.
template <class N>
inline LogPair<N> fixedLogs2(N x, N y) {
    const N one(1.0);
    const BinaryParts<N> ofX = binaryParts(x), ofY = binaryParts(y);
    const N sumX = ofX.mantissa + one, sumY = ofY.mantissa + one;
    const N inverse = one / (sumX * sumY);
    return {ofX.exponent + log2Of((ofX.mantissa - one) * sumY * inverse),
            ofY.exponent + log2Of((ofY.mantissa - one) * sumX * inverse)};
}

// The same of any number that is not below 0: minus infinity at 0 and for NaN, infinity at
// infinity.
template <class N>
inline LogPair<N> fixedLogs2OfAny(N x, N y) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    const N zero(0.0), smallest(std::numeric_limits<double>::min()), up(0x1p54), places(54.0);
    const auto xIsNormal = x >= smallest, yIsNormal = y >= smallest;
    const LogPair<N> logs = fixedLogs2(select(xIsNormal, x, x * up), select(yIsNormal, y, y * up));
    const N first = logs.first - select(xIsNormal, zero, places);
    const N second = logs.second - select(yIsNormal, zero, places);
    const N infinite(INFINITE);
    return {select(x > zero, select(x >= infinite, x, first), -infinite),
            select(y > zero, select(y >= infinite, y, second), -infinite)};
}

template <class N>
inline N fixedLog2(N x) {
    return fixedLogs2OfAny(x, x).first;
}

// The value of a pixel that escaped at step `count`, from the logarithms of |z|^2 before and after
// that step and of the limit.
template <class N>
inline N valueBetween(N count, const LogPair<N>& logs, N logLimit) {
    const N one(1.0);
    const N q = (logLimit - logs.first) / (logs.second - logs.first);
    return (count - one) + select(q >= N(0.0), select(one >= q, q, one), one);
}

// The smooth value of a pixel that escaped at step `count`, from |z|^2 before and after that step
// and the logarithm to base 2 of the limit: see ValueTile.
template <class N>
inline N smoothValue(N count, N before, N after, N logLimit) {
    return valueBetween(count, fixedLogs2OfAny(before, after), logLimit);
}

// The nearest number of 32 significant bits, for |x| < 2^1000: of 53 bits the product cuts off 21
// (Veltkamp's splitting). Never less for a greater x.
template <class N>
inline N rounded32(N x) {
    const N product = x * N(0x1p21 + 1.0);
    return product - (product - x);
}

#endif

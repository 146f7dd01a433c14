// Fixed-point arithmetic with N limbs of 64 bits behind the binary point. All numbers are
// nonnegative; an operation drops what lies below the last limb, so it errs by less than one unit
// 2^-64N, downwards.
//
// Sine: x / (2 pi) without its whole turns comes from a window of 1 / (2 pi) (Payne and Hanek
// 1983), off by less than 2^53 units (x has 53 bits and the window is cut by one unit); times 4 and
// times pi / 2 that stays below 2^57. Hyperbolic functions: n ln 2 for n <= 1027 is off by less
// than 2^11 units, and x itself is exact. Taylor's series of an argument up to pi / 4 has less than
// 100 terms for N = 8; each errs by less than one unit more than twice the term before it shrinks
// by at least 6, the sums by less than 2^8 units. So sines and cosines are within 2^58 units and
// hyperbolic functions within 2^13; the rounding is tested with 2^60 and 2^20.
#include "compute/exact_trig.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "compute/trig_tables.h"

namespace exact_trig {
namespace {

using std::size_t;
using std::uint64_t;
__extension__ using uint128_t = unsigned __int128;

// limb[0] is the whole part; limb[n] counts units of 2^(-64 n).
template <size_t N>
using Fixed = std::array<uint64_t, N + 1>;

template <size_t N>
Fixed<N> add(const Fixed<N>& a, const Fixed<N>& b) {
    Fixed<N> sum;
    uint128_t carry = 0;
    for (size_t n = N + 1; n-- > 0; carry >>= 64) {
        carry += uint128_t{a[n]} + b[n];
        sum[n] = static_cast<uint64_t>(carry);
    }
    return sum;
}

// a - b, a >= b.
template <size_t N>
Fixed<N> subtract(const Fixed<N>& a, const Fixed<N>& b) {
    Fixed<N> difference;
    uint64_t borrow = 0;
    for (size_t n = N + 1; n-- > 0;) {
        const uint128_t d = uint128_t{a[n]} - b[n] - borrow;
        difference[n] = static_cast<uint64_t>(d);
        borrow = static_cast<uint64_t>(d >> 64) & 1;
    }
    return difference;
}

template <size_t N>
Fixed<N> multiply(const Fixed<N>& a, const Fixed<N>& b) {
    std::array<uint64_t, 2 * N + 2> product{};  // product[n + 1] counts 2^(-64 n)
    for (size_t i = N + 1; i-- > 0;) {
        uint128_t carry = 0;
        for (size_t j = N + 1; j-- > 0; carry >>= 64) {
            carry += uint128_t{a[i]} * b[j] + product[i + j + 1];
            product[i + j + 1] = static_cast<uint64_t>(carry);
        }
        product[i] = static_cast<uint64_t>(carry);
    }
    Fixed<N> result;
    std::copy_n(product.begin() + 1, N + 1, result.begin());
    return result;
}

template <size_t N>
Fixed<N> divide(const Fixed<N>& a, uint64_t by) {
    Fixed<N> quotient;
    uint128_t rest = 0;
    for (size_t n = 0; n <= N; ++n) {
        rest = rest << 64 | a[n];
        quotient[n] = static_cast<uint64_t>(rest / by);
        rest %= by;
    }
    return quotient;
}

template <size_t N>
Fixed<N> shiftLeft(const Fixed<N>& a, unsigned bits) {
    if (bits == 0) return a;
    Fixed<N> result;
    for (size_t n = 0; n <= N; ++n) {
        result[n] = a[n] << bits | (n < N ? a[n + 1] >> (64 - bits) : 0);
    }
    return result;
}

template <size_t N>
Fixed<N> shiftRight(const Fixed<N>& a, unsigned bits) {
    Fixed<N> result{};
    const size_t limbs = bits / 64, rest = bits % 64;
    for (size_t n = limbs; n <= N; ++n) {
        const size_t from = n - limbs;
        result[n] = a[from] >> rest;
        if (rest != 0 && from > 0) result[n] |= a[from - 1] << (64 - rest);
    }
    return result;
}

template <size_t N>
bool isZero(const Fixed<N>& a) {
    return std::all_of(a.begin(), a.end(), [](uint64_t limb) { return limb == 0; });
}

// whole + the number whose limbs behind the point are these.
template <size_t N>
Fixed<N> constant(uint64_t whole, const uint64_t* limbs) {
    Fixed<N> result;
    result[0] = whole;
    std::copy_n(limbs, N, result.begin() + 1);
    return result;
}

// The double nearest to a > 0, of two equally near the even one.
template <size_t N>
double nearest(const Fixed<N>& a) {
    size_t top = 0;
    while (a[top] == 0) ++top;
    const auto zeros = static_cast<unsigned>(std::countl_zero(a[top]));
    const Fixed<N> s = shiftLeft<N>(a, zeros);  // the first bit leads limb `top`
    bool more = (s[top] & 0x3ff) != 0;
    for (size_t n = top + 1; n <= N; ++n) more = more || s[n] != 0;
    uint64_t mantissa = s[top] >> 11;
    const bool half = (s[top] >> 10 & 1) != 0;
    if (half && (more || (mantissa & 1) != 0)) ++mantissa;
    return std::ldexp(static_cast<double>(mantissa),
                      11 - static_cast<int>(zeros) - 64 * static_cast<int>(top));
}

template <size_t N>
double nearestOrZero(const Fixed<N>& a) {
    return isZero<N>(a) ? 0 : nearest<N>(a);
}

// Rounds a, which is within 2^errorBits units of the truth; clears `decided` where the truth may
// round differently, or where a may be zero.
template <size_t N>
double roundTo(const Fixed<N>& a, unsigned errorBits, bool& decided) {
    Fixed<N> error{};
    error[N] = uint64_t{1} << errorBits;
    if (a <= shiftLeft<N>(error, 1)) {
        decided = false;
        return 0;
    }
    const double low = nearest<N>(subtract<N>(a, error));
    decided = decided && low == nearest<N>(add<N>(a, error));
    return low;
}

// The sums of r^n / n! for odd and for even n, with every second term of each taken away for the
// trigonometric functions. 0 <= r < 1.
template <size_t N>
struct Series {
    Fixed<N> odd, even;

    Series(const Fixed<N>& r, bool alternating) {
        const Fixed<N> square = multiply<N>(r, r);
        Fixed<N> one{};
        one[0] = 1;
        odd = sum(r, square, 2, alternating);
        even = sum(one, square, 1, alternating);
    }

    // first - first r^2 / (n (n + 1)) + ..., or with plus signs.
    static Fixed<N> sum(const Fixed<N>& first, const Fixed<N>& square, uint64_t n,
                        bool alternating) {
        Fixed<N> sums[2] = {first, {}}, term = first;
        for (unsigned sign = 1; !isZero<N>(term); sign ^= 1, n += 2) {
            term = divide<N>(multiply<N>(term, square), n * (n + 1));
            sums[sign] = add<N>(sums[sign], term);
        }
        return alternating ? subtract<N>(sums[0], sums[1]) : add<N>(sums[0], sums[1]);
    }
};

// |x| = mantissa * 2^exponent.
struct Parts {
    uint64_t mantissa;
    int exponent;

    explicit Parts(double x) {
        int e;
        mantissa = static_cast<uint64_t>(std::ldexp(std::frexp(std::fabs(x), &e), 53));
        exponent = e - 53;
    }
};

// |x| below 2^11 with no bit behind the last limb.
template <size_t N>
Fixed<N> fixed(const Parts& x) {
    Fixed<N> result{};
    result[0] = x.mantissa;
    return shiftRight<N>(result, static_cast<unsigned>(-x.exponent));
}

// 64 bits of 1 / (2 pi) from bit `at` of the table on.
uint64_t turnBits(unsigned at) {
    const uint64_t* limb = trig_tables::TURNS + at / 64;
    const unsigned rest = at % 64;
    return rest == 0 ? limb[0] : limb[0] << rest | limb[1] >> (64 - rest);
}

// |x| / (2 pi) without its whole part. The table starts with the bit of weight 2^127. A bit of
// 1 / (2 pi) that makes whole turns with the last bit of x is of no interest.
template <size_t N>
Fixed<N> turns(const Parts& x) {
    const auto start = static_cast<unsigned>(128 + x.exponent);
    Fixed<N> result{};
    uint128_t carry = 0;
    for (size_t n = N; n > 0; --n, carry >>= 64) {
        carry += uint128_t{x.mantissa} * turnBits(start + 64 * (static_cast<unsigned>(n) - 1));
        result[n] = static_cast<uint64_t>(carry);
    }
    return result;
}

constexpr unsigned TRIGONOMETRIC_ERROR = 60, HYPERBOLIC_ERROR = 20;  // bits, see the top

}  // namespace

template <int LIMBS>
Attempt trySineCosine(double x) {
    constexpr size_t N = LIMBS;
    Fixed<N> quarters = shiftLeft<N>(turns<N>(Parts(x)), 2);
    uint64_t quarter = quarters[0];
    quarters[0] = 0;
    Fixed<N> one{};
    one[0] = 1;
    const bool below = quarters[1] >> 63 != 0;  // of the next multiple of pi / 2
    if (below) {
        quarters = subtract<N>(one, quarters);
        ++quarter;
    }
    const Series<N> at(multiply<N>(quarters, constant<N>(1, trig_tables::HALF_PI)), true);
    Attempt result{{}, true};
    const double odd = roundTo<N>(at.odd, TRIGONOMETRIC_ERROR, result.decided);
    const double even = roundTo<N>(at.even, TRIGONOMETRIC_ERROR, result.decided);
    const double s = below ? -odd : odd;
    const double sines[] = {s, even, -s, -even};
    const double sine = sines[quarter % 4];
    result.value = {x < 0 ? -sine : sine, sines[(quarter + 1) % 4]};
    return result;
}

template <int LIMBS>
Attempt tryHyperbolicSineCosine(double x) {
    constexpr size_t N = LIMBS;
    const Fixed<N> a = fixed<N>(Parts(x));
    // Any multiple close by will do. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    const auto n = static_cast<unsigned>(std::fabs(x) / 0.6931471805599453 + 0.5);
    Fixed<N> whole{};
    whole[0] = n;
    const Fixed<N> near = multiply<N>(whole, constant<N>(0, trig_tables::LN2));
    const bool below = a < near;
    const Series<N> at(below ? subtract<N>(near, a) : subtract<N>(a, near), false);
    // e^t and e^-t, t = |x| - n ln 2; the functions are (e^t +- 4^-n e^-t) 2^(n - 1).
    const Fixed<N> more = add<N>(at.even, at.odd), less = subtract<N>(at.even, at.odd);
    const Fixed<N>& up = below ? less : more;
    const Fixed<N> down = shiftRight<N>(below ? more : less, std::min(2 * n, 64u * LIMBS + 63));
    Attempt result{{}, true};
    const auto scaled = [&](const Fixed<N>& value) {
        return std::ldexp(roundTo<N>(value, HYPERBOLIC_ERROR, result.decided),
                          static_cast<int>(n) - 1);
    };
    const double sine = scaled(subtract<N>(up, down));
    result.value = {std::copysign(sine, x), scaled(add<N>(up, down))};
    return result;
}

quick_trig::Reduced reduceTrigonometric(double x) {
    constexpr size_t N = 3;
    constexpr unsigned UNITS = 11, HALF_PI_UNITS = 9;  // as powers of two: of a turn, of pi / 2
    Fixed<N> rest = shiftLeft<N>(turns<N>(Parts(x)), UNITS);
    auto n = static_cast<std::int64_t>(rest[0]);
    rest[0] = 0;
    Fixed<N> one{};
    one[0] = 1;
    const bool below = rest[1] >> 63 != 0;
    if (below) {
        rest = subtract<N>(one, rest);
        ++n;
    }
    rest = multiply<N>(rest, shiftRight<N>(constant<N>(1, trig_tables::HALF_PI), HALF_PI_UNITS));
    const double high = static_cast<float>(nearestOrZero<N>(rest));
    const Fixed<N> taken = fixed<N>(Parts(high));
    const double low = taken <= rest ? nearestOrZero<N>(subtract<N>(rest, taken))
                                     : -nearestOrZero<N>(subtract<N>(taken, rest));
    const double sign = below != (x < 0) ? -1.0 : 1.0;
    return {x < 0 ? -n : n, sign * high, sign * low, sign * (high + low)};
}

template Attempt trySineCosine<3>(double);
template Attempt trySineCosine<8>(double);
template Attempt tryHyperbolicSineCosine<3>(double);
template Attempt tryHyperbolicSineCosine<8>(double);

SineCosine sineCosine(double x) {
    const Attempt first = trySineCosine<3>(x);
    return first.decided ? first.value : trySineCosine<8>(x).value;
}

SineCosine hyperbolicSineCosine(double x) {
    const Attempt first = tryHyperbolicSineCosine<3>(x);
    return first.decided ? first.value : tryHyperbolicSineCosine<8>(x).value;
}

}  // namespace exact_trig

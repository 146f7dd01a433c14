// Doubles with an exponent of their own: numbers far below 1e-308 at the precision of a double.
// Each operation rounds once, with a relative error of at most 2^-53; nothing underflows or
// overflows. Nothing is divided by zero.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

// 2^exponent; 0 below the normal numbers, infinite above them.
inline double widePower(std::int64_t exponent) {
    if (exponent < -1022) return 0;
    if (exponent > 1023) return std::numeric_limits<double>::infinity();
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// mantissa * 2^exponent with 1 <= |mantissa| < 2; zero has an exponent below all others. What is
// infinite or no number is so as among doubles, with an exponent above all others.
class Wide {
  public:
    Wide() = default;
    explicit Wide(double value, std::int64_t power = 0) : Wide(normal(value, power)) {}

    double mantissa() const { return m; }
    std::int64_t exponent() const { return e; }
    bool isZero() const { return m == 0; }

    // The nearest double, 0 below its range and infinite above; of subnormal numbers 0.
    double value() const { return at(0); }
    // The same of this number times 2^power.
    double at(std::int64_t power) const { return m == 0 ? 0 : m * widePower(e + power); }

    friend Wide operator*(Wide a, Wide b) { return Wide(a.m * b.m, a.e + b.e); }
    friend Wide operator/(Wide a, Wide b) { return Wide(a.m / b.m, a.e - b.e); }
    friend Wide operator+(Wide a, Wide b) {
        if (a.e < b.e) return b + a;
        const std::int64_t apart = a.e - b.e;
        if (apart > 200) return a;
        return Wide(a.m + b.m * widePower(-apart), a.e);
    }
    friend Wide operator-(Wide a) {
        a.m = -a.m;
        return a;
    }
    friend Wide operator-(Wide a, Wide b) { return a + -b; }
    // False with a NaN, as between doubles.
    friend bool operator<(Wide a, Wide b) { return (a - b).m < 0; }
    friend bool operator>(Wide a, Wide b) { return b < a; }

  private:
    static constexpr std::int64_t MOST = std::int64_t{1} << 60;
    static constexpr std::int64_t LEAST = -MOST;
    struct Parts {
        double m;
        std::int64_t e;
    };
    explicit Wide(Parts p) : m(p.m), e(p.e) {}

    static Parts normal(double value, std::int64_t exponent) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        const auto biased = static_cast<std::int64_t>((bits >> 52) & 0x7FF);
        if (value == 0) return {0, LEAST};
        if (biased == 0) return normal(value * 0x1p64, exponent - 64);
        if (biased == 0x7FF) return {value, MOST};
        return {std::bit_cast<double>((bits & 0x800FFFFFFFFFFFFFu) | 0x3FF0000000000000u),
                exponent + biased - 1023};
    }

    double m = 0;
    std::int64_t e = LEAST;
};

inline Wide abs(Wide x) {
    return x.mantissa() < 0 ? -x : x;
}

// The root of x >= 0, with a relative error of at most 2^-52.
inline Wide root(Wide x) {
    if (x.isZero()) return x;
    const bool odd = (x.exponent() & 1) != 0;
    return Wide(std::sqrt(odd ? 2 * x.mantissa() : x.mantissa()),
                (x.exponent() - (odd ? 1 : 0)) / 2);
}

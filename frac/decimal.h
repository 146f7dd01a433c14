// Decimal numbers with as many digits as they need. Sums, differences and products are exact.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "frac/big_number.h"

// digits * 10^exponent.
class Decimal {
  public:
    Decimal() = default;
    // text: isPlaceDecimal(); value: finite, taken with all its digits.
    static Decimal of(std::string_view text);
    static Decimal of(double value);

    friend Decimal operator+(const Decimal& a, const Decimal& b);
    friend Decimal operator-(const Decimal& a, const Decimal& b);
    friend Decimal operator*(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b);

    // The same times ten to some power.
    Decimal shifted(std::int64_t places) const;
    // The nearest multiple of 10^place, of two equally near the one further from 0.
    Decimal rounded(std::int64_t place) const;

    // All digits as a whole number where the last one stands for 10^place, which must not lie above
    // lastPlace().
    Integer digitsAt(std::int64_t place) const;
    std::int64_t lastPlace() const { return exponent; }

    int sign() const { return ::sign(digits); }
    // The n with 10^n <= |number| < 10^(n + 1); not of 0.
    std::int64_t magnitude() const;
    // The double nearest to number / 10^magnitude(); not of 0.
    double leading() const;

    // As people write it: "-0.75", "1.5e-100". It reads back as the same number.
    std::string text() const;

  private:
    Decimal(Integer all, std::int64_t tens) : digits(std::move(all)), exponent(tens) {}
    std::string plainDigits() const;

    Integer digits;
    std::int64_t exponent = 0;
};

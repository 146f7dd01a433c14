#include "frac/decimal.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "frac/decimal_text.h"
#include "frac/number_text.h"

namespace {

Integer powerOf(unsigned long base, std::int64_t exponent) {
    Integer power;
    mpz_ui_pow_ui(power, base, static_cast<unsigned long>(exponent));
    return power;
}

std::string textOf(const Integer& number) {
    std::string text(mpz_sizeinbase(number, 10) + 2, '\0');
    mpz_get_str(text.data(), 10, number);
    text.resize(text.find('\0'));
    return text;
}

}  // namespace

Decimal Decimal::of(std::string_view text) {
    const DecimalParts parts = decimalParts(text).value();
    std::string all(parts.whole);
    all += parts.fraction;
    Integer digits;
    mpz_set_str(digits, all.c_str(), 10);
    if (parts.negative) mpz_neg(digits, digits);
    return {std::move(digits), parts.exponent - static_cast<std::int64_t>(parts.fraction.size())};
}

// m * 2^-k is m * 5^k * 10^-k.
Decimal Decimal::of(double value) {
    constexpr int MANTISSA = 53;
    int twos = 0;
    Integer digits;
    mpz_set_d(digits, std::ldexp(std::frexp(value, &twos), MANTISSA));
    twos -= MANTISSA;
    mpz_mul(digits, digits, powerOf(twos < 0 ? 5 : 2, std::abs(twos)));
    return {std::move(digits), std::min(twos, 0)};
}

Integer Decimal::digitsAt(std::int64_t place) const {
    Integer all;
    mpz_mul(all, digits, powerOf(10, exponent - place));
    return all;
}

Decimal operator+(const Decimal& a, const Decimal& b) {
    const std::int64_t place = std::min(a.exponent, b.exponent);
    Integer sum = a.digitsAt(place);
    mpz_add(sum, sum, b.digitsAt(place));
    return {std::move(sum), place};
}

Decimal operator-(const Decimal& a, const Decimal& b) {
    Decimal negative = b;
    mpz_neg(negative.digits, negative.digits);
    return a + negative;
}

Decimal operator*(const Decimal& a, const Decimal& b) {
    Integer product;
    mpz_mul(product, a.digits, b.digits);
    return {std::move(product), a.exponent + b.exponent};
}

bool operator==(const Decimal& a, const Decimal& b) {
    return (a - b).sign() == 0;
}

Decimal Decimal::shifted(std::int64_t places) const {
    return {digits, exponent + places};
}

Decimal Decimal::rounded(std::int64_t place) const {
    if (exponent >= place) return *this;
    const Integer unit = powerOf(10, place - exponent);
    Integer twice, quotient;
    mpz_mul_2exp(twice, digits, 1);
    (sign() < 0 ? mpz_sub : mpz_add)(twice, twice, unit);
    mpz_tdiv_q(quotient, twice, unit);
    mpz_tdiv_q_2exp(quotient, quotient, 1);
    return {std::move(quotient), place};
}

std::string Decimal::plainDigits() const {
    Integer absolute;
    mpz_abs(absolute, digits);
    return textOf(absolute);
}

std::int64_t Decimal::magnitude() const {
    return exponent + static_cast<std::int64_t>(plainDigits().size()) - 1;
}

double Decimal::leading() const {
    return nearestNumber(shifted(-magnitude()).text());
}

std::string Decimal::text() const {
    constexpr std::int64_t FEWEST = -6,
                           MOST = 20;  // places of the first digit that are written out
    if (sign() == 0) return "0";
    std::string all = plainDigits();
    const std::int64_t first = magnitude();
    all.resize(all.find_last_not_of('0') + 1);
    std::string text = sign() < 0 ? "-" : "";
    if (first < FEWEST || first > MOST) {
        text += all.substr(0, 1);
        if (all.size() > 1) text.append(1, '.').append(all, 1);
        return text.append(1, 'e').append(std::to_string(first));
    }
    if (first < 0) return text.append("0.").append(static_cast<std::size_t>(-first - 1), '0') + all;
    const auto whole = static_cast<std::size_t>(first) + 1;
    if (all.size() <= whole) return text.append(all).append(whole - all.size(), '0');
    return text.append(all, 0, whole).append(1, '.').append(all, whole);
}

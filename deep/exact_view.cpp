#include "deep/exact_view.h"

#include <algorithm>

#include "frac/decimal_text.h"

namespace deep {
namespace {

std::string digitsOf(const DecimalParts& parts) {
    return std::string(parts.whole) + std::string(parts.fraction);
}

// The power of ten that the digits without their point are multiplied by.
long powerOf(const std::string& text) {
    const auto parts = decimalParts(text);
    return parts ? static_cast<long>(parts->exponent) - static_cast<long>(parts->fraction.size())
                 : 0;
}

// How many decimals make all of these whole.
unsigned long decimalsOf(const View& view) {
    long least = 0;
    for (const std::string* text : {&view.re, &view.im, &view.width, &view.cRe, &view.cIm}) {
        least = std::min(least, powerOf(*text));
    }
    return static_cast<unsigned long>(-least);
}

// text * 10^decimals; 0 for what is no decimal.
Integer scaled(const std::string& text, unsigned long decimals) {
    Integer value, ten;
    const auto parts = decimalParts(text);
    if (!parts) return value;
    mpz_set_str(value, digitsOf(*parts).c_str(), 10);
    if (parts->negative) mpz_neg(value, value);
    const long power = powerOf(text) + static_cast<long>(decimals);
    mpz_ui_pow_ui(ten, 10, static_cast<unsigned long>(power));
    mpz_mul(value, value, ten);
    return value;
}

}  // namespace

ExactView::ExactView(const View& view)
    : julia(!view.cRe.empty()), wide(view.pixelsWide), high(view.pixelsHigh) {
    const unsigned long decimals = decimalsOf(view);
    mpz_ui_pow_ui(over, 10, decimals);
    mpz_mul_si(over, over, 2 * wide);
    step = scaled(view.width, decimals);
    const auto whole = [&](const std::string& text) {
        Integer value = scaled(text, decimals);
        mpz_mul_si(value, value, 2 * wide);
        return value;
    };
    middle = {whole(view.re), whole(view.im)};
    juliaConstant = {whole(view.cRe), whole(view.cIm)};
}

ExactPoint ExactView::pixel(int i, int j) const {
    ExactPoint point = middle;
    Integer offset;
    mpz_mul_si(offset, step, stepsRight(i));
    mpz_add(point.re, point.re, offset);
    mpz_mul_si(offset, step, stepsDown(j));
    mpz_add(point.im, point.im, offset);
    return point;
}

long ExactView::spacingExponent() const {
    return static_cast<long>(mpz_sizeinbase(step, 2)) - static_cast<long>(mpz_sizeinbase(over, 2)) -
           1;
}

long ExactView::wholeBits(const ExactPoint& point) const {
    const std::size_t most = std::max(mpz_sizeinbase(point.re, 2), mpz_sizeinbase(point.im, 2));
    return std::max(0L, static_cast<long>(most) - static_cast<long>(mpz_sizeinbase(over, 2)) + 1);
}

// With b the larger root of t^2 - t + c, which is at least 1/2 and at most 2, z^2 + c maps [-b, b]
// into itself for c in [-2, 1/4]. |x| <= b means |x| <= 1/2 or x^2 - |x| + c <= 0.
bool ExactView::isWithinRealInterval(const Integer& x, const Integer& c) const {
    Integer size, bound;
    mpz_abs(size, x);
    mpz_mul_2exp(bound, size, 1);
    if (mpz_cmp(bound, over) <= 0) return true;
    mpz_sub(bound, size, over);   // over (|x| - 1)
    mpz_mul(bound, bound, size);  // over^2 (x^2 - |x|)
    mpz_addmul(bound, c, over);
    return sign(bound) <= 0;
}

bool ExactView::staysOnRealAxis(const ExactPoint& pixel) const {
    const ExactPoint& c = julia ? juliaConstant : pixel;
    Integer low, high4;
    mpz_mul_si(low, over, -2);
    mpz_mul_2exp(high4, c.re, 2);
    if (sign(c.im) != 0 || mpz_cmp(c.re, low) < 0 || mpz_cmp(high4, over) > 0) return false;
    if (!julia) return true;
    if (sign(pixel.im) == 0) return isWithinRealInterval(pixel.re, c.re);
    if (sign(pixel.re) != 0) return false;
    // From the imaginary axis the first step leads to c - y^2.
    Integer square, next, rest, constantTimesOver;
    mpz_mul(square, pixel.im, pixel.im);
    mpz_mul(constantTimesOver, c.re, over);
    mpz_sub(next, constantTimesOver, square);  // over^2 (c - y^2)
    mpz_tdiv_qr(next, rest, next, over);
    // A quotient that is not whole is taken one further out.
    if (sign(rest) != 0) mpz_add(next, next, Integer(sign(rest)));
    return isWithinRealInterval(next, c.re);
}

bool divide(Big& to, const Integer& exact, const Integer& over) {
    Big numerator(static_cast<mpfr_prec_t>(std::max<std::size_t>(mpz_sizeinbase(exact, 2), 2)));
    Big denominator(static_cast<mpfr_prec_t>(std::max<std::size_t>(mpz_sizeinbase(over, 2), 2)));
    mpfr_set_z(numerator, exact, MPFR_RNDN);
    mpfr_set_z(denominator, over, MPFR_RNDN);
    return mpfr_div(to, numerator, denominator, MPFR_RNDN) != 0;
}

}  // namespace deep

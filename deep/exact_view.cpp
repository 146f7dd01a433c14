#include "deep/exact_view.h"

#include <algorithm>

#include "frac/decimal.h"

namespace deep {
namespace {

Decimal numberOf(const std::string& text) {
    return text.empty() ? Decimal() : Decimal::of(std::string_view(text));
}

// The place of the last digit of all of these, or that of ones.
std::int64_t lastPlaceOf(const View& view) {
    std::int64_t last = 0;
    for (const std::string* text : {&view.re, &view.im, &view.width, &view.cRe, &view.cIm}) {
        last = std::min(last, numberOf(*text).lastPlace());
    }
    return last;
}

}  // namespace

ExactView::ExactView(const View& view)
    : julia(!view.cRe.empty()), wide(view.pixelsWide), high(view.pixelsHigh) {
    const std::int64_t last = lastPlaceOf(view);
    const auto whole = [&](const std::string& text) {
        Integer value = numberOf(text).digitsAt(last);
        mpz_mul_si(value, value, 2 * wide);
        return value;
    };
    over = whole("1");
    step = numberOf(view.width).digitsAt(last);
    middle = {whole(view.re), whole(view.im)};
    juliaConstant = {whole(view.cRe), whole(view.cIm)};
    axisRow = indexOfZero(middle.im, high);
    if (julia) axisColumn = indexOfZero(middle.re, wide);
}

// The n with centre + (2 n - count) step = 0; -1 where there is none within the picture.
long ExactView::indexOfZero(const Integer& centre, long count) const {
    Integer quotient;
    if (mpz_divisible_p(centre, step) == 0) return -1;
    mpz_divexact(quotient, centre, step);
    if (mpz_fits_slong_p(quotient) == 0) return -1;
    const long steps = mpz_get_si(quotient);
    const bool within = steps >= -count && steps <= count && (count - steps) % 2 == 0;
    return within ? (count - steps) / 2 : -1;
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

Wide wide(mpfr_srcptr x) {
    long exponent = 0;
    const double mantissa = mpfr_get_d_2exp(&exponent, x, MPFR_RNDN);
    return Wide(mantissa, exponent);
}

}  // namespace deep

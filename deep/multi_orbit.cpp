#include "deep/multi_orbit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "compute/fixed_math.h"
#include "deep/smooth.h"
#include "deep/wide.h"

namespace deep {
namespace {

constexpr double INSIDE = std::numeric_limits<double>::quiet_NaN();
constexpr double LN2 = 0.693147180559945309;
// Every bound is a sum of a few products: this covers their own roundings.
const Wide UPWARDS(1 + 0x1p-40);

Wide wide(mpfr_srcptr x) {
    long exponent = 0;
    const double mantissa = mpfr_get_d_2exp(&exponent, x, MPFR_RNDN);
    return Wide(mantissa, exponent);
}

double logarithm(Wide x) {
    if (x.isZero()) return -std::numeric_limits<double>::infinity();
    return fixedLog(x.mantissa()) + static_cast<double>(x.exponent()) * LN2;
}

enum class Side { inside, outside, unknown };

// One orbit at one precision.
class Orbit {
  public:
    Orbit(const ExactView& exact, const View& v, const ExactPoint& pixel, long bits)
        : view(v),
          unit(1, -bits),
          zr(bits),
          zi(bits),
          cr(bits),
          ci(bits),
          rr(bits),
          ii(bits),
          m(bits),
          difference(bits) {
        const ExactPoint& c = exact.isJulia() ? exact.constant() : pixel;
        constantOff = set(cr, c.re, exact) + set(ci, c.im, exact);
        constantSize = abs(wide(cr)) + abs(wide(ci));
        mpfr_set_zero(zr, 1);
        mpfr_set_zero(zi, 1);
        if (exact.isJulia()) radius = set(zr, pixel.re, exact) + set(zi, pixel.im, exact);
    }

    // Steps from z_n until its end; what is not decided is UNDECIDED.
    Outcome follow(bool wantsValue, StopFlag stop) {
        measure();
        for (int n = 0; n < view.maxIters; ++n) {
            if (n % 256 == 0 && isSet(stop)) return {INTERRUPTED, INSIDE};
            const Wide before = size, beforeOff = sizeOff;
            step();
            const Side at = side();
            if (at == Side::unknown) return {UNDECIDED, INSIDE};
            if (at == Side::outside) return escaped(n, before, beforeOff, wantsValue);
        }
        return {view.maxIters, INSIDE};
    }

    // The value at the precision reached, though it might round to another unit.
    double uncertainValue() const { return lastValue; }

  private:
    // Returns what the rounded number may be off.
    Wide set(Big& to, const Integer& numerator, const ExactView& exact) {
        const bool rounded = divide(to, numerator, exact.denominator());
        return rounded ? abs(wide(to)) * unit : Wide();
    }

    // |z|^2 and how far it may be from the exact orbit's: 2 |z| e + e^2 and its three roundings.
    void measure() {
        mpfr_clear_inexflag();
        mpfr_sqr(rr, zr, MPFR_RNDN);
        mpfr_sqr(ii, zi, MPFR_RNDN);
        mpfr_add(m, rr, ii, MPFR_RNDN);
        size = wide(m);
        sizeOff = (root(size) * Wide(2) + radius) * radius;
        squaresRounded = mpfr_inexflag_p() != 0;
        if (squaresRounded) sizeOff = sizeOff + Wide(3) * size * unit;
        sizeOff = sizeOff * UPWARDS * UPWARDS;
    }

    // The squares of z are known from its measure; their roundings count here again. In units of
    // 2^-p each of the squares is off by its size s at most, together s; their difference by s, the
    // product by s / 2, doubled s, and each sum with c by |z'| <= s + |c|: 5 s + 2 |c| in all.
    void step() {
        mpfr_clear_inexflag();
        mpfr_mul(zi, zr, zi, MPFR_RNDN);
        mpfr_mul_2ui(zi, zi, 1, MPFR_RNDN);
        mpfr_add(zi, zi, ci, MPFR_RNDN);
        mpfr_sub(zr, rr, ii, MPFR_RNDN);
        mpfr_add(zr, zr, cr, MPFR_RNDN);
        Wide next = (root(size) * Wide(2) + radius) * radius + constantOff;
        if (mpfr_inexflag_p() || squaresRounded) {
            next = next + Wide(8) * (size + constantSize) * unit;
        }
        radius = next * UPWARDS * UPWARDS;
        measure();
    }

    Side side() {
        mpfr_sub_d(difference, m, view.limit, MPFR_RNDN);
        const Wide beyond = wide(difference);
        const Wide off = sizeOff * UPWARDS;
        if (off.isZero()) return beyond > Wide() ? Side::outside : Side::inside;
        if (beyond > off * Wide(1 + 0x1p-20)) return Side::outside;
        return -beyond > off * Wide(1 + 0x1p-20) ? Side::inside : Side::unknown;
    }

    Outcome escaped(int n, Wide before, Wide beforeOff, bool wantsValue) {
        if (!wantsValue) return {n, 0};
        // ln(1 + x) <= x, and ln(1 - x) >= -x / (1 - x); each logarithm itself is within 4 u.
        const Wide most = before.isZero() ? Wide() : beforeOff;
        const double first = before.isZero() ? 0 : ratio(most, before);
        const double second = ratio(sizeOff, size);
        const double logBefore = logarithm(before), logAfter = logarithm(size);
        const double own = std::isinf(logBefore) ? 0 : std::fabs(logBefore);
        const double error = std::max(first, second) + 0x1p-50 * (own + std::fabs(logAfter));
        const Rounded v = roundedValue(n, logBefore, logAfter, fixedLog(view.limit), error);
        lastValue = v.value;
        return {v.certain && (!before.isZero() || beforeOff.isZero()) ? n : UNDECIDED, v.value};
    }

    static double ratio(Wide off, Wide of) {
        const double r =
            Wide(off.mantissa() / of.mantissa(), off.exponent() - of.exponent()).value();
        return r < 1 ? r / (1 - r) : std::numeric_limits<double>::infinity();
    }

    const View& view;
    const Wide unit;
    Big zr, zi, cr, ci, rr, ii, m, difference;
    Wide radius, constantOff, constantSize, size, sizeOff;
    bool squaresRounded = false;
    double lastValue = INSIDE;
};

}  // namespace

Outcome followExactly(const ExactView& exact, const View& view, int i, int j, bool wantsValue,
                      StopFlag stop) {
    // |z|^2 <= L < infinity is never wrong for such limits, nor ever right for a NaN.
    if (!(view.limit < std::numeric_limits<double>::infinity())) {
        return {std::max(view.maxIters, 0), INSIDE};
    }
    const ExactPoint pixel = exact.pixel(i, j);
    if (view.limit >= 4 && exact.staysOnRealAxis(pixel)) {
        return {std::max(view.maxIters, 0), INSIDE};
    }
    for (long bits = std::max(128L, 64 - exact.spacingExponent());; bits += bits / 2) {
        Orbit orbit(exact, view, pixel, bits);
        const Outcome outcome = orbit.follow(wantsValue, stop);
        if (outcome.count != UNDECIDED || bits > MOST_BITS) return outcome;
    }
}

}  // namespace deep

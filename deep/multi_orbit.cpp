#include "deep/multi_orbit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "compute/fixed_math.h"
#include "compute/rounded_value.h"
#include "compute/wide.h"
#include "deep/exact_tie.h"

namespace deep {
namespace {

constexpr double INSIDE = std::numeric_limits<double>::quiet_NaN();
constexpr double LN2 = 0.693147180559945309;
// Every bound is a sum of a few products: this covers their own roundings.
const Wide UPWARDS(1 + 0x1p-40);

double logarithm(Wide x) {
    if (x.isZero()) return -std::numeric_limits<double>::infinity();
    return fixedLog(x.mantissa()) + static_cast<double>(x.exponent()) * LN2;
}

enum class Side { inside, outside, unknown };

// The steps, in order, after which an orbit lies exactly on the limit, and so has not escaped.
using Ties = std::vector<int>;

// One orbit at one precision.
class Orbit {
  public:
    Orbit(const ExactView& exact, const View& v, const ExactPoint& pixel, long precision,
          const Ties& onLimit)
        : view(v), ties(onLimit), unit(1, -precision), bits(precision) {
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
            mpfr_set(sizeBefore, m, MPFR_RNDN);
            step();
            if (std::binary_search(ties.begin(), ties.end(), n)) continue;
            const Side at = side();
            if (at == Side::unknown) {
                inDoubt = n;
                return {UNDECIDED, INSIDE};
            }
            if (at == Side::outside) return escaped(n, before, beforeOff, wantsValue);
        }
        return {view.maxIters, INSIDE};
    }

    // What is known at the precision reached: the count may be, though the value might yet round to
    // another unit.
    Outcome known() const { return open; }

    // The step after which it could not be said whether the orbit has escaped, or -1.
    int stepInDoubt() const { return inDoubt; }

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
        if (!wantsValue || (before.isZero() && beforeOff.isZero()))
            return {n, static_cast<double>(n)};
        const Rounded v = valueOf(n, before, beforeOff);
        if (v.certain) return {n, v.value};
        open = {n, v.value};
        return {UNDECIDED, INSIDE};
    }

    // ln(1 + x) <= x, and ln(1 - x) >= -x / (1 - x); each logarithm itself is within 4 u.
    Rounded valueOf(int n, Wide before, Wide beforeOff) {
        mpfr_sub(difference, m, sizeBefore, MPFR_RNDN);
        const Wide gap = wide(difference);
        if (gap < before * Wide(0x1p-30)) return nearValue(n, gap, before, beforeOff + sizeOff);
        const double logBefore = logarithm(before), logAfter = logarithm(size);
        const double error = std::max(ratio(beforeOff, before), ratio(sizeOff, size)) +
                             0x1p-50 * (std::fabs(logBefore) + std::fabs(logAfter));
        return roundedValue(n, logBefore, logAfter, fixedLog(view.limit), error);
    }

    // Where one step leads from just below the limit to just above, logarithms would cancel: of
    // x = (L - s) / s and y = (s' - s) / s the quotient of ln(1 + x) and ln(1 + y) is wanted.
    Rounded nearValue(int n, Wide gap, Wide before, Wide off) {
        mpfr_sub_d(difference, sizeBefore, view.limit, MPFR_RNDN);
        const Wide left = -wide(difference);
        const auto bend = [](double x) { return 1 - x / 2 + x * x / 3; };
        const double x = quotient(left, before), y = quotient(gap, before);
        const double q = quotient(left, gap) * (bend(x) / bend(y));
        return roundedQuotient(n, q, 4 * quotient(off, gap) + 0x1p-48);
    }

    static double quotient(Wide a, Wide b) { return (a / b).value(); }

    static double ratio(Wide off, Wide of) {
        const double r = of.isZero() ? 1 : quotient(off, of);
        return r < 1 ? r / (1 - r) : std::numeric_limits<double>::infinity();
    }

    const View& view;
    const Ties& ties;
    const Wide unit;
    const long bits;
    Big zr{bits}, zi{bits}, cr{bits}, ci{bits}, rr{bits}, ii{bits};
    Big sizeBefore{bits}, m{bits}, difference{bits};
    Wide radius, constantOff, constantSize, size, sizeOff;
    bool squaresRounded = false;
    int inDoubt = -1;
    Outcome open{UNDECIDED, INSIDE};
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
    Ties ties;
    long bits = std::max(128L, 64 - exact.spacingExponent());
    for (;;) {
        Orbit orbit(exact, view, pixel, bits, ties);
        const Outcome outcome = orbit.follow(wantsValue, stop);
        if (outcome.count != UNDECIDED) return outcome;
        const int n = orbit.stepInDoubt();
        if (n >= 0 && isExactTie(exact, pixel, n, view.limit)) {
            ties.push_back(n);
            continue;
        }
        if (bits > MOST_BITS) return orbit.known();
        bits += bits / 2;
    }
}

}  // namespace deep

#include "deep/reference.h"

#include <algorithm>
#include <cmath>

namespace deep {
namespace {

// Of 0 something below all others that a shift by it leaves at 0.
long exponentOf(mpfr_srcptr x) {
    return mpfr_zero_p(x) ? -(1L << 24) : mpfr_get_exp(x);
}

// An orbit that is back sooner goes on: starting anew would be what takes the time.
constexpr int SHORTEST = 64;

// The first of a list in order of indices that stands at m or behind it.
template <class List>
auto firstFrom(const List& list, std::uint32_t m) {
    return std::ranges::lower_bound(list, m, {}, &List::value_type::at);
}

class Orbit {
  public:
    // furthest: how far the furthest pixel's constant is from this one's.
    Orbit(const ExactView& exact, const ExactPoint& start, const ExactPoint& constant, double bound,
          Wide furthest, long precision)
        : limit(bound),
          furthestSquared(furthest * furthest),
          keepsZeros(exact.spacingExponent() < -60),
          bits(precision) {
        divide(re, start.re, exact.denominator());
        divide(im, start.im, exact.denominator());
        divide(cr, constant.re, exact.denominator());
        divide(ci, constant.im, exact.denominator());
    }

    // Adds the point reached; whether the orbit goes on behind it.
    bool keep(Reference& to) {
        const Pair<double> x = split(re), y = split(im);
        mpfr_sqr(rr, re, MPFR_RNDN);
        mpfr_sqr(ii, im, MPFR_RNDN);
        mpfr_add(rest, rr, ii, MPFR_RNDN);
        square = mpfr_get_d(rest, MPFR_RNDN);
        mpfr_sub_d(rest, rest, limit, MPFR_RNDN);
        keepTinySize(to);
        const Pair<double> size = split(rest);
        if (!(square >= 0x1p-300)) keepTiny(to);
        to.z[0].insert(to.z[0].end(), {x.high, y.high});
        to.z[1].insert(to.z[1].end(), {x.low, y.low});
        to.size[0].push_back(size.high);
        to.size[1].push_back(size.low);
        return square <= std::max(16.0, limit);
    }

    // Each square is rounded by 2^-p of itself, their difference and the product by as much again,
    // the sums with C by 2^-p |Z'|, C itself twice: 5 |Z|^2 + 4 |C| in all. The last point that is
    // stepped from has |Z|^2 <= max(16, L), for which `digits` has its bits.
    void step() {
        spread = spread * Wide(4 * square);
        if (spread < furthestSquared) spread = furthestSquared;
        mpfr_mul(im, re, im, MPFR_RNDN);
        mpfr_mul_2ui(im, im, 1, MPFR_RNDN);
        mpfr_add(im, im, ci, MPFR_RNDN);
        mpfr_sub(re, rr, ii, MPFR_RNDN);
        mpfr_add(re, re, cr, MPFR_RNDN);
    }

    // Whether the orbit is back at 0 but for an eighth of what differences have grown to, as the
    // derivative tells. Nearly all pixels start anew here anyhow, and it would tell them nothing
    // new from here on.
    bool isBack() const { return square > 0x1p-600 && Wide(64 * square) < spread; }

  private:
    // `rest` is |Z|^2 - L.
    void keepTinySize(Reference& to) {
        const Wide size = wide(rest);
        if (size.isZero() || size.exponent() >= TINY_EXPONENT - 1) return;
        to.tinySizes.push_back({static_cast<std::uint32_t>(to.size[0].size()), size});
    }

    void keepTiny(Reference& to) {
        const auto at = static_cast<std::uint32_t>(to.size[0].size());
        const bool isZero = wide(re).isZero() && wide(im).isZero();
        if (at == to.critical || (isZero && !keepsZeros)) return;
        const long exponent = std::max(exponentOf(re), exponentOf(im));
        to.tiny.push_back({at,
                           static_cast<std::int32_t>(exponent),
                           {scaled(re, -exponent), scaled(im, -exponent)}});
    }

    static Pair<double> scaled(mpfr_srcptr x, long power) {
        Big number(mpfr_get_prec(x));
        mpfr_mul_2si(number, x, power, MPFR_RNDN);
        return split(number);
    }

    const double limit;
    const Wide furthestSquared;
    Wide spread;  // the square of what differences have grown to
    double square = 0;
    // Where differences are not small their steps from 0 are plain ones.
    const bool keepsZeros;
    const long bits;
    Big re{bits}, im{bits}, cr{bits}, ci{bits}, rr{bits}, ii{bits}, rest{bits};
};

}  // namespace

Pair<double> split(mpfr_srcptr x) {
    const double high = mpfr_get_d(x, MPFR_RNDN);
    Big rest(mpfr_get_prec(x));
    mpfr_sub_d(rest, x, high, MPFR_RNDN);
    return {high, mpfr_get_d(rest, MPFR_RNDN)};
}

Reference::Reference(const ExactView& exact, const View& view, long precision, StopFlag stop)
    : bits(precision) {
    const ExactPoint zero{};
    digits =
        bits + 2 * std::max(exact.wholeBits(exact.centre()), exact.wholeBits(exact.constant()));
    if (view.limit > 16) digits += std::ilogb(view.limit) - 3;
    if (!exact.isJulia()) {
        addOrbit(exact, view, zero, exact.centre(), stop);
        firstEnd = lastEnd;
        return;
    }
    critical = ~std::uint32_t{0};
    addOrbit(exact, view, exact.centre(), exact.constant(), stop);
    firstEnd = lastEnd;
    critical = lastEnd + 1;
    addOrbit(exact, view, zero, exact.constant(), stop);
}

void Reference::addOrbit(const ExactView& exact, const View& view, const ExactPoint& start,
                         const ExactPoint& constant, StopFlag stop) {
    const double half = std::max(view.pixelsWide, view.pixelsHigh) / 2.0;
    const Wide furthest = exact.isJulia() ? Wide() : Wide(half, exact.spacingExponent());
    Orbit orbit(exact, start, constant, view.limit, furthest, digits);
    for (int n = 0; orbit.keep(*this) && n < view.maxIters; ++n) {
        if (n % 256 == 255 && isSet(stop)) {
            isWhole = false;  // short, but a reference still
            break;
        }
        if (n >= SHORTEST && orbit.isBack()) break;
        orbit.step();
    }
    lastEnd = static_cast<std::uint32_t>(size[0].size() - 1);
}

Wide Reference::sizeAt(std::uint32_t m) const {
    const auto at = firstFrom(tinySizes, m);
    return at != tinySizes.end() && at->at == m ? at->size : Wide(size[0][m]);
}

const TinyPoint* Reference::tinyFrom(std::uint32_t m) const {
    return tiny.data() + (firstFrom(tiny, m) - tiny.begin());
}

const TinyPoint* Reference::tinyAt(std::uint32_t m) const {
    const TinyPoint* point = tinyFrom(m);
    return point != tinyEnd() && point->at == m ? point : nullptr;
}

}  // namespace deep

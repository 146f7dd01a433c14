#include "deep/reference.h"

#include <algorithm>

namespace deep {
namespace {

// x as a sum of two doubles; `rest` is overwritten.
void split(mpfr_srcptr x, Big& rest, double& high, double& low) {
    high = mpfr_get_d(x, MPFR_RNDN);
    mpfr_sub_d(rest, x, high, MPFR_RNDN);
    low = mpfr_get_d(rest, MPFR_RNDN);
}

class Orbit {
  public:
    Orbit(const ExactView& exact, const ExactPoint& start, const ExactPoint& constant, double bound,
          long bits)
        : limit(bound), re(bits), im(bits), cr(bits), ci(bits), rr(bits), ii(bits), rest(bits) {
        divide(re, start.re, exact.denominator());
        divide(im, start.im, exact.denominator());
        divide(cr, constant.re, exact.denominator());
        divide(ci, constant.im, exact.denominator());
    }

    // Adds the point reached; whether the orbit goes on behind it.
    bool keep(Reference& to) {
        double part[6];
        split(re, rest, part[0], part[1]);
        split(im, rest, part[2], part[3]);
        mpfr_sqr(rr, re, MPFR_RNDN);
        mpfr_sqr(ii, im, MPFR_RNDN);
        mpfr_add(rest, rr, ii, MPFR_RNDN);
        const double square = mpfr_get_d(rest, MPFR_RNDN);
        mpfr_sub_d(rest, rest, limit, MPFR_RNDN);
        split(rest, rest, part[4], part[5]);
        if (!(square >= 0x1p-300)) keepTiny(to);
        for (int p = 0; p < 2; ++p) {
            to.z[p].push_back(part[p]);
            to.z[p].push_back(part[2 + p]);
            to.size[p].push_back(part[4 + p]);
        }
        return square <= 16;
    }

    // Each square is rounded by 2^-p of itself, their difference and the product by as much again,
    // the sums with C by 2^-p |Z'|, C itself twice: for |Z| <= 4 less than 128 * 2^-p in all.
    void step() {
        mpfr_mul(im, re, im, MPFR_RNDN);
        mpfr_mul_2ui(im, im, 1, MPFR_RNDN);
        mpfr_add(im, im, ci, MPFR_RNDN);
        mpfr_sub(re, rr, ii, MPFR_RNDN);
        mpfr_add(re, re, cr, MPFR_RNDN);
    }

  private:
    void keepTiny(Reference& to) {
        if (mpfr_zero_p(static_cast<mpfr_srcptr>(re)) && mpfr_zero_p(static_cast<mpfr_srcptr>(im)))
            return;
        long exponent = TINY_EXPONENT;
        if (!mpfr_zero_p(static_cast<mpfr_srcptr>(re))) exponent = mpfr_get_exp(re);
        if (!mpfr_zero_p(static_cast<mpfr_srcptr>(im))) {
            const long other = mpfr_get_exp(im);
            exponent =
                mpfr_zero_p(static_cast<mpfr_srcptr>(re)) ? other : std::max(exponent, other);
        }
        TinyPoint point{static_cast<std::uint32_t>(to.size[0].size()),
                        static_cast<std::int32_t>(exponent),
                        {},
                        {}};
        Big scaled(mpfr_get_prec(static_cast<mpfr_srcptr>(re)));
        Big left(mpfr_get_prec(static_cast<mpfr_srcptr>(re)));
        mpfr_mul_2si(scaled, re, -exponent, MPFR_RNDN);
        split(scaled, left, point.re[0], point.re[1]);
        mpfr_mul_2si(scaled, im, -exponent, MPFR_RNDN);
        split(scaled, left, point.im[0], point.im[1]);
        to.tiny.push_back(point);
    }

    double limit;
    Big re, im, cr, ci, rr, ii, rest;
};

}  // namespace

Reference::Reference(const ExactView& exact, const View& view, long precision, StopFlag stop)
    : bits(precision) {
    const ExactPoint zero{};
    if (!exact.isJulia()) {
        addOrbit(exact, view, zero, exact.centre(), stop);
        firstEnd = lastEnd;
        return;
    }
    addOrbit(exact, view, exact.centre(), exact.constant(), stop);
    firstEnd = lastEnd;
    critical = lastEnd + 1;
    addOrbit(exact, view, zero, exact.constant(), stop);
}

void Reference::addOrbit(const ExactView& exact, const View& view, const ExactPoint& start,
                         const ExactPoint& constant, StopFlag stop) {
    Orbit orbit(exact, start, constant, view.limit, bits);
    for (int n = 0; orbit.keep(*this) && n < view.maxIters; ++n) {
        if (n % 256 == 255 && isSet(stop)) break;  // short, but a reference still
        orbit.step();
    }
    lastEnd = static_cast<std::uint32_t>(size[0].size() - 1);
}

const TinyPoint* Reference::tinyFrom(std::uint32_t m) const {
    const auto at = std::lower_bound(tiny.begin(), tiny.end(), m,
                                     [](const TinyPoint& p, std::uint32_t i) { return p.at < i; });
    return tiny.data() + (at - tiny.begin());
}

}  // namespace deep

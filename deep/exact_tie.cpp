#include "deep/exact_tie.h"

#include <cmath>

namespace deep {
namespace {

// (re + im i) / over.
struct Fraction {
    Integer re, im, over;
};

Integer times(const Integer& a, const Integer& b) {
    Integer product;
    mpz_mul(product, a, b);
    return product;
}

// z^2 + c, c over `over`: z's denominator is a multiple of it.
void step(Fraction& z, const ExactPoint& c, const Integer& over) {
    const Integer square = times(z.over, z.over);
    Integer share, re = times(z.re, z.re), im = times(z.re, z.im);
    mpz_divexact(share, square, over);
    mpz_submul(re, z.im, z.im);
    mpz_mul_2exp(im, im, 1);
    mpz_addmul(re, c.re, share);
    mpz_addmul(im, c.im, share);
    z = {re, im, square};
}

// |z|^2 against the limit, a whole number times a power of two as every double: below 0, 0 or
// above.
int compare(const Fraction& z, double limit) {
    int exponent = 0;
    const double mantissa = std::ldexp(std::frexp(limit, &exponent), 53);
    exponent -= 53;
    Integer size = times(z.re, z.re), bound = times(z.over, z.over), whole;
    mpz_addmul(size, z.im, z.im);
    mpz_set_d(whole, mantissa);
    mpz_mul(bound, bound, whole);
    if (exponent >= 0) {
        mpz_mul_2exp(bound, bound, static_cast<mp_bitcnt_t>(exponent));
    } else {
        mpz_mul_2exp(size, size, static_cast<mp_bitcnt_t>(-exponent));
    }
    return mpz_cmp(size, bound);
}

}  // namespace

bool isExactTie(const ExactView& exact, const ExactPoint& pixel, int n, double limit) {
    const Integer& over = exact.denominator();
    const int doublings = exact.isJulia() ? n + 1 : n;
    const auto bits = static_cast<double>(mpz_sizeinbase(over, 2));
    if (!(std::ldexp(bits, doublings) <= static_cast<double>(MOST_TIE_BITS))) return false;
    const ExactPoint& c = exact.isJulia() ? exact.constant() : pixel;
    Fraction z{pixel.re, pixel.im, over};
    for (int i = 0; i < doublings; ++i) step(z, c, over);
    return compare(z, limit) == 0;
}

bool isBeyond(const ExactView& exact, const ExactPoint& point, double limit) {
    return compare({point.re, point.im, exact.denominator()}, limit) > 0;
}

}  // namespace deep

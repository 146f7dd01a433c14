#include "oracle.h"

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

namespace oracle {
namespace {

constexpr int MOST_BITS = 15000;  // a radius of 2^P units must be a long double
constexpr int EXACT_STEPS = 6;    // ratios double their length with each
constexpr double INSIDE = std::numeric_limits<double>::quiet_NaN();

mpz_class powerOfTen(unsigned long exponent) {
    mpz_class power;
    mpz_ui_pow_ui(power.get_mpz_t(), 10, exponent);
    return power;
}

// mantissa * 2^exponent as a long double.
long double toLongDouble(const mpz_class& number, long shift) {
    long exponent = 0;
    const double mantissa = mpz_get_d_2exp(&exponent, number.get_mpz_t());
    return ldexpl(mantissa, static_cast<int>(exponent + shift));
}

long double logOf(const mpz_class& number, int bits) {
    long exponent = 0;
    const double mantissa = mpz_get_d_2exp(&exponent, number.get_mpz_t());
    return logl(mantissa) + static_cast<long double>(exponent - bits) * logl(2.0L);
}

}  // namespace

mpq_class decimal(const std::string& text) {
    const std::size_t e = text.find_first_of("eE");
    std::string digits = text.substr(0, e);
    long exponent = e == std::string::npos ? 0 : std::stol(text.substr(e + 1));
    if (const std::size_t point = digits.find('.'); point != std::string::npos) {
        exponent -= static_cast<long>(digits.size() - point - 1);
        digits.erase(point, 1);
    }
    if (!digits.empty() && digits[0] == '+') digits.erase(0, 1);
    mpq_class number(mpz_class(digits, 10));
    const mpz_class power = powerOfTen(static_cast<unsigned long>(std::labs(exponent)));
    if (exponent < 0) number /= power;
    if (exponent > 0) number *= power;
    return number;
}

// One orbit at one precision. A unit is 2^-bits; x, y and radius count units, and the disc of that
// radius about (x, y) holds the point of exact arithmetic.
class Follower {
  public:
    Follower(const Oracle::Orbit& orbit, double limit, int precision)
        : exact(orbit),
          exactLimit(limit),
          bits(precision),
          scaledLimit(scaled(limit, 2 * precision)) {
        radius = cut(orbit.start, x, y);
        cutOfConstant = cut(orbit.constant, cx, cy);
        square();
    }

    std::optional<Answer> follow(int maxIters) {
        for (int n = 0; n < maxIters; ++n) {
            before = magnitude;
            step();
            const std::optional<bool> left = leaves(n);
            if (!left) return std::nullopt;
            if (*left) return Answer{n, value(n), bits};
        }
        return Answer{maxIters, INSIDE, bits};
    }

  private:
    // limit * 2^shift, a whole number.
    static mpz_class scaled(double limit, int shift) {
        int exponent = 0;
        const double mantissa = std::frexp(limit, &exponent);
        mpz_class whole(std::ldexp(mantissa, 53));
        if (shift + exponent < 53) throw std::invalid_argument("too few bits for the limit");
        mpz_mul_2exp(whole.get_mpz_t(), whole.get_mpz_t(),
                     static_cast<unsigned long>(shift + exponent - 53));
        return whole;
    }

    // A ratio's whole units, downwards; answers whether anything was cut off.
    bool cut(const mpq_class& ratio, mpz_class& units) const {
        mpz_class numerator = ratio.get_num(), rest;
        mpz_mul_2exp(numerator.get_mpz_t(), numerator.get_mpz_t(),
                     static_cast<unsigned long>(bits));
        mpz_fdiv_qr(units.get_mpz_t(), rest.get_mpz_t(), numerator.get_mpz_t(),
                    ratio.get_den().get_mpz_t());
        return rest != 0;
    }

    // Each part that is cut lies less than a unit below the true one.
    long double cut(const Oracle::Point& point, mpz_class& re, mpz_class& im) const {
        const bool reCut = cut(point.re, re), imCut = cut(point.im, im);
        return (reCut ? 1.0L : 0.0L) + (imCut ? 1.0L : 0.0L);
    }

    void square() {
        xx = x * x;
        yy = y * y;
        magnitude = xx + yy;
        // Upwards: the parts of a double are cut by 2^-52, the root is rounded by 2^-63.
        length = sqrtl(toLongDouble(magnitude, -2L * bits)) * UPWARDS;
    }

    // z^2 + c. With z within e: |z'^2 - z^2| <= 2|z|e + e^2. A unit for each part that is cut, and
    // what the constant was cut by.
    void step() {
        const auto shift = static_cast<unsigned long>(bits);
        sum = x + y;
        sum *= sum;
        sum -= magnitude;  // 2xy
        xx -= yy;
        long double cuts = cutOfConstant;
        if (mpz_divisible_2exp_p(xx.get_mpz_t(), shift) == 0) cuts += 1;
        if (mpz_divisible_2exp_p(sum.get_mpz_t(), shift) == 0) cuts += 1;
        mpz_fdiv_q_2exp(x.get_mpz_t(), xx.get_mpz_t(), shift);
        mpz_fdiv_q_2exp(y.get_mpz_t(), sum.get_mpz_t(), shift);
        x += cx;
        y += cy;
        radius = (spread() + cuts) * UPWARDS;
        square();
    }

    // 2|z|e + e^2, in units.
    long double spread() const { return (2 * length + ldexpl(radius, -bits)) * radius; }

    // Whether |z|^2 > limit, where that holds for the whole disc: there |z|^2 differs from the
    // middle's by at most 2|z|e + e^2.
    std::optional<bool> leaves(int n) {
        if (radius > ldexpl(1.0L, bits - 2)) return std::nullopt;
        sum = magnitude - scaledLimit;
        const long double distance = fabsl(toLongDouble(sum, -bits));  // cut: no more than the true
        const long double doubt = spread() * UPWARDS;
        if (sum > 0 && distance > doubt) return true;
        if (sum <= 0 && distance >= doubt) return false;
        if (n < EXACT_STEPS) return leavesExactly(n);
        return std::nullopt;
    }

    bool leavesExactly(int n) const {
        Oracle::Point z = exact.start;
        for (int k = 0; k <= n; ++k) {
            const mpq_class re = z.re * z.re - z.im * z.im + exact.constant.re;
            z.im = 2 * z.re * z.im + exact.constant.im;
            z.re = re;
        }
        return z.re * z.re + z.im * z.im > mpq_class(exactLimit);
    }

    double value(int n) const {
        double q = 1;
        if (before > 0) {
            const long double first = logOf(before, 2 * bits), last = logOf(magnitude, 2 * bits);
            const long double part = (logl(exactLimit) - first) / (last - first);
            if (part >= 0 && part <= 1) q = static_cast<double>(part);
        }
        return n - 1 + q;
    }

    static constexpr long double UPWARDS = 1 + 0x1p-40L;

    const Oracle::Orbit& exact;
    const double exactLimit;
    const int bits;
    const mpz_class scaledLimit;  // units of 2^(-2 bits), as xx, yy and magnitude are
    mpz_class x, y, cx, cy, xx, yy, magnitude, before, sum;
    long double radius, cutOfConstant;
    long double length;  // |z| or little more
};

Oracle::Oracle(const View& v)
    : view(v), re(decimal(v.re)), im(decimal(v.im)), width(decimal(v.width)) {
    if (!v.cRe.empty()) {
        cRe = decimal(v.cRe);
        cIm = decimal(v.cIm);
    }
    const mpz_class narrow = width.get_den() * v.pixelsWide / (width.get_num() + 1) + 1;
    bitsAtFirst = static_cast<int>(mpz_sizeinbase(narrow.get_mpz_t(), 2)) + 96;
}

Oracle::Orbit Oracle::orbit(int i, int j) const {
    const int w = view.pixelsWide, h = view.pixelsHigh;
    const mpq_class half(1, 2);
    mpq_class across(i, w), down(j, h), shape(h, w);
    across.canonicalize();
    down.canonicalize();
    shape.canonicalize();
    const Point point{re + (across - half) * width, im + (down - half) * width * shape};
    if (view.cRe.empty()) return {{0, 0}, point};
    return {point, {cRe, cIm}};
}

// With c in [-2, 1/4] and b the larger root of b^2 - b + c = 0, z^2 + c takes [-b, b] into itself,
// and b <= 2. |z| <= b is z^2 - |z| + c <= 0, or |z| <= 1/2. A start on the imaginary axis is on
// the real one after a step, and within reach of it if it was that near before.
bool Oracle::staysOnTheRealAxis(const Orbit& o) const {
    const mpq_class& c = o.constant.re;
    if (view.limit < 4 || o.constant.im != 0 || c < -2 || c > mpq_class(1, 4)) return false;
    mpq_class z = o.start.re;
    if (o.start.re == 0) z = c - o.start.im * o.start.im;
    if (o.start.re != 0 && o.start.im != 0) return false;
    const mpq_class size = abs(z);
    return size <= mpq_class(1, 2) || size * size - size + c <= 0;
}

Answer Oracle::pixelWith(int bits, int i, int j) const {
    const Orbit o = orbit(i, j);
    return Follower(o, view.limit, bits).follow(view.maxIters).value_or(Answer{UNDECIDED, 0, bits});
}

Answer Oracle::pixel(int i, int j) const {
    const Orbit o = orbit(i, j);
    if (staysOnTheRealAxis(o)) return {view.maxIters, INSIDE, 0};
    for (int bits = bitsAtFirst; bits < MOST_BITS; bits += bits / 2) {
        const auto answer = Follower(o, view.limit, bits).follow(view.maxIters);
        if (answer) return *answer;
    }
    return {UNDECIDED, 0, MOST_BITS};
}

}  // namespace oracle

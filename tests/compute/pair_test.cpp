// Pairs of doubles against rational numbers, which are exact.
#include "compute/pair.h"

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using Double = Pair<double>;
using Rational = mpq_class;

Rational exact(double x) {
    return Rational(x);
}
Rational exact(const Double& x) {
    return Rational(x.high) + Rational(x.low);
}

Rational power(int exponent) {
    return Rational(std::ldexp(1.0, exponent));
}

template <class N>
struct Exact {
    Rational re, im;
    explicit Exact(const Complex<N>& z) : re(exact(z.re)), im(exact(z.im)) {}
    Rational size() const { return abs(re) + abs(im); }
};

class Pairs : public testing::Test {
  protected:
    double number(int least, int most) {
        const double m = std::uniform_real_distribution<double>(1, 2)(random);
        const int e = std::uniform_int_distribution<int>(least, most)(random);
        return std::ldexp(random() % 2 == 0 ? m : -m, e);
    }

    // A number whose low part is below half a unit of its high part, often just.
    Double pair(int least, int most) {
        const double high = number(least, most);
        return twoSum(high, high * number(-60, -54));
    }

    template <class N>
    N any() {
        if constexpr (std::is_same_v<N, double>) {
            return number(-3, 3);
        } else {
            return pair(-3, 3);
        }
    }

    template <class N>
    Complex<N> complex() {
        return {any<N>(), any<N>()};
    }

    std::mt19937 random{5};
};

// u' of the result, or of what it is the sum of.
void expectWithin(const Rational& bound, const Rational& actual, const Rational& expected) {
    EXPECT_LE(Rational(abs(actual - expected)), bound);
}

// Whether the high part is the nearest double to the whole, but for a last bit.
void expectTold(const Double& x) {
    EXPECT_LE(std::fabs(x.low), 0x1p-52 * std::fabs(x.high));
}

TEST_F(Pairs, AreTheSumOfTwoDoublesExactly) {
    for (int n = 0; n < 5000; ++n) {
        const double a = number(-70, 70), b = number(-70, 70);
        const Double sum = twoSum(a, b);
        EXPECT_EQ(sum.high, a + b);
        EXPECT_EQ(exact(sum), exact(a) + exact(b));
    }
}

TEST_F(Pairs, AreTheSumOfALargerAndASmallerDoubleExactly) {
    for (int n = 0; n < 5000; ++n) {
        const double a = number(0, 70), b = number(-70, -1);
        const Double sum = quickTwoSum(a, b);
        EXPECT_EQ(sum.high, a + b);
        EXPECT_EQ(exact(sum), exact(a) + exact(b));
    }
    EXPECT_EQ(exact(quickTwoSum(0.0, 0x1p-80)), exact(0x1p-80));
}

// Also where all but the last bits of the two cancel.
TEST_F(Pairs, HaveSumsAndDifferencesOf99Bits) {
    for (int n = 0; n < 20000; ++n) {
        const Double a = pair(-3, 3);
        const double beside = 1 + (n % 2 == 0 ? number(-52, -1) : 0.0);
        const Double b =
            n % 3 == 0 ? pair(-60, 60) : twoSum(-a.high * beside, a.low * number(-3, 3));
        const Rational sum = exact(a) + exact(b), difference = exact(a) - exact(b);
        expectWithin(abs(sum) * power(-99), exact(a + b), sum);
        expectWithin(abs(difference) * power(-99), exact(a - b), difference);
        expectTold(a + b);
    }
}

TEST_F(Pairs, HaveProductsOf99Bits) {
    for (int n = 0; n < 20000; ++n) {
        const Double a = pair(-30, 30), b = pair(-30, 30);
        const Rational product = exact(a) * exact(b);
        expectWithin(abs(product) * power(-99), exact(a * b), product);
        expectTold(a * b);
    }
}

TEST_F(Pairs, HaveANegativeAndAHead) {
    const Double x = pair(0, 0);
    EXPECT_EQ(exact(-x), -exact(x));
    EXPECT_EQ(head(x), x.high);
    EXPECT_EQ(head(1.5), 1.5);
}

TEST_F(Pairs, AreMultipliedByPowersOfTwoExactly) {
    for (int n = 0; n < 100; ++n) {
        const Double x = pair(-3, 3);
        EXPECT_EQ(exact(times(x, 0x1p-9)), exact(x) * power(-9));
        EXPECT_EQ(times(x.high, 0x1p5), x.high * 32);
    }
}

TEST_F(Pairs, AreAddedToAfterAProductOrAScaling) {
    for (int n = 0; n < 5000; ++n) {
        const Double a = pair(-3, 3), b = pair(-3, 3), c = pair(-3, 3);
        const Rational product = exact(a) * exact(b);
        expectWithin((abs(product) * 2 + abs(exact(c))) * power(-99), exact(mulAdd(a, b, c)),
                     product + exact(c));
        const Rational scaled = exact(a) * power(-2) + exact(c);
        expectWithin(abs(scaled) * power(-99), exact(scaleAdd(0.25, a, c)), scaled);
        // Rounded once.
        const Rational single = exact(a.high) * power(-2) + exact(c.high);
        expectWithin(abs(single) * power(-53), exact(scaleAdd(0.25, a.high, c.high)), single);
    }
}

// The error of an operation of numbers of that type, relative.
template <class N>
Rational unit() {
    return std::is_same_v<N, double> ? power(-53) : power(-99);
}

template <class N>
class ComplexNumbers : public Pairs {};
using Parts = testing::Types<double, Double>;
TYPED_TEST_SUITE(ComplexNumbers, Parts);

TYPED_TEST(ComplexNumbers, AreAddedPartByPart) {
    for (int n = 0; n < 1000; ++n) {
        const auto a = this->template complex<TypeParam>(), b = this->template complex<TypeParam>();
        const Exact x(a), y(b), sum(a + b);
        expectWithin(abs(x.re + y.re) * unit<TypeParam>(), sum.re, x.re + y.re);
        expectWithin(abs(x.im + y.im) * unit<TypeParam>(), sum.im, x.im + y.im);
    }
}

TYPED_TEST(ComplexNumbers, AreMultipliedAsComplexNumbersAre) {
    for (int n = 0; n < 1000; ++n) {
        const auto a = this->template complex<TypeParam>(), b = this->template complex<TypeParam>(),
                   c = this->template complex<TypeParam>();
        const Exact x(a), y(b), z(c), product(a * b), sum(mulAdd(a, b, c));
        const Rational re = x.re * y.re - x.im * y.im, im = x.re * y.im + x.im * y.re;
        const Rational bound = 3 * x.size() * y.size() * unit<TypeParam>();
        expectWithin(bound, product.re, re);
        expectWithin(bound, product.im, im);
        expectWithin(bound + 2 * z.size() * unit<TypeParam>(), sum.re, re + z.re);
        expectWithin(bound + 2 * z.size() * unit<TypeParam>(), sum.im, im + z.im);
    }
}

TYPED_TEST(ComplexNumbers, AreScaledPartByPart) {
    for (int n = 0; n < 1000; ++n) {
        const auto a = this->template complex<TypeParam>(), c = this->template complex<TypeParam>();
        const Exact x(a), z(c), scaled(times(a, 0x1p-7)), sum(scaleAdd(0x1p-2, a, c));
        EXPECT_EQ(scaled.re, x.re * power(-7));
        EXPECT_EQ(scaled.im, x.im * power(-7));
        const Rational re = x.re * power(-2) + z.re, im = x.im * power(-2) + z.im;
        expectWithin(abs(re) * unit<TypeParam>(), sum.re, re);
        expectWithin(abs(im) * unit<TypeParam>(), sum.im, im);
    }
}

TYPED_TEST(ComplexNumbers, HaveASquareOfTheirHeads) {
    for (int n = 0; n < 1000; ++n) {
        const auto z = this->template complex<TypeParam>();
        const Rational re(head(z.re)), im(head(z.im)), square = re * re + im * im;
        expectWithin(square * power(-52), exact(squareOf(z)), square);
    }
}

}  // namespace

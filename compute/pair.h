// Unevaluated sums of two doubles with some 105 bits: u' = 2^-99 bounds the relative error of every
// operation here as 2^-53 bounds that of a double's, with room to spare. The algorithms and their
// bounds (3 u^2 for sums, 4 u^2 for products, u = 2^-53) are those of Joldes, Muller and Popescu,
// "Tight and rigorous error bounds for basic building blocks of double-word arithmetic", 2017.
//
// R is double or a vector of doubles with a fused mulAdd. Included once by plain code and again for
// each instruction set, as compute/complex.h is.
//
// Also what both tiers say in one text, of doubles as of pairs, real or complex.
#if !defined(TESSARY_COMPUTE_PAIR_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_COMPUTE_PAIR_H
#define TESSARY_COMPUTE_PAIR_H

#include <cmath>
#include <type_traits>

inline double mulAdd(double a, double b, double c) {
    return std::fma(a, b, c);
}
#endif

template <class R>
struct Pair {
    R high, low;
};

// a + b exactly.
template <class R>
inline Pair<R> twoSum(R a, R b) {
    const R sum = a + b;
    const R bPart = sum - a;
    const R aPart = sum - bPart;
    return {sum, (a - aPart) + (b - bPart)};
}

// a + b exactly, where |a| >= |b| or a is 0.
template <class R>
inline Pair<R> quickTwoSum(R a, R b) {
    const R sum = a + b;
    return {sum, b - (sum - a)};
}

template <class R>
inline Pair<R> operator+(Pair<R> a, Pair<R> b) {
    const Pair<R> high = twoSum(a.high, b.high), low = twoSum(a.low, b.low);
    const Pair<R> sum = quickTwoSum(high.high, high.low + low.high);
    return quickTwoSum(sum.high, low.low + sum.low);
}

template <class R>
inline Pair<R> operator-(Pair<R> a) {
    return {-a.high, -a.low};
}

template <class R>
inline Pair<R> operator-(Pair<R> a, Pair<R> b) {
    return a + -b;
}

template <class R>
inline Pair<R> operator*(Pair<R> a, Pair<R> b) {
    const R product = a.high * b.high;
    const R rest = mulAdd(a.high, b.high, -product);
    const R cross = mulAdd(a.low, b.high, a.high * b.low);
    return quickTwoSum(product, rest + cross);
}

template <class R>
inline Pair<R> mulAdd(Pair<R> a, Pair<R> b, Pair<R> c) {
    return a * b + c;
}

// A number of as many parts as the tier has.
template <int PARTS, class R>
using Of = std::conditional_t<PARTS == 1, R, Pair<R>>;

template <class R>
inline R head(R x) {
    return x;
}
template <class R>
inline R head(Pair<R> x) {
    return x.high;
}

// Times a power of two: exact.
template <class R>
inline R times(R x, R power) {
    return x * power;
}
template <class R>
inline Pair<R> times(Pair<R> x, R power) {
    return {x.high * power, x.low * power};
}

template <class R>
inline R scaleAdd(R power, R a, R c) {
    return mulAdd(power, a, c);
}
template <class R>
inline Pair<R> scaleAdd(R power, Pair<R> a, Pair<R> c) {
    return times(a, power) + c;
}

template <class N>
struct Complex {
    N re, im;
};

template <class N>
inline Complex<N> operator+(const Complex<N>& a, const Complex<N>& b) {
    return {a.re + b.re, a.im + b.im};
}

template <class N>
inline Complex<N> operator*(const Complex<N>& a, const Complex<N>& b) {
    return {mulAdd(a.re, b.re, -(a.im * b.im)), mulAdd(a.re, b.im, a.im * b.re)};
}

template <class N>
inline Complex<N> mulAdd(const Complex<N>& a, const Complex<N>& b, const Complex<N>& c) {
    return {mulAdd(a.re, b.re, mulAdd(-a.im, b.im, c.re)),
            mulAdd(a.re, b.im, mulAdd(a.im, b.re, c.im))};
}

template <class R, class N>
inline Complex<N> times(const Complex<N>& a, R power) {
    return {times(a.re, power), times(a.im, power)};
}

template <class R, class N>
inline Complex<N> scaleAdd(R power, const Complex<N>& a, const Complex<N>& c) {
    return {scaleAdd(power, a.re, c.re), scaleAdd(power, a.im, c.im)};
}

// |z|^2 of the heads.
template <class N>
inline auto squareOf(const Complex<N>& z) {
    return mulAdd(head(z.re), head(z.re), head(z.im) * head(z.im));
}

#endif

// Unevaluated sums of two doubles with some 105 bits: u' = 2^-99 bounds the relative error of every
// operation here as 2^-53 bounds that of a double's, with room to spare. The algorithms and their
// bounds (3 u^2 for sums, 4 u^2 for products, u = 2^-53) are those of Joldes, Muller and Popescu,
// "Tight and rigorous error bounds for basic building blocks of double-word arithmetic", 2017.
//
// R is double or a vector of doubles with a fused mulAdd. Included once by plain code and again for
// each instruction set, as compute/complex.h is.
#if !defined(TESSARY_DEEP_PAIR_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_DEEP_PAIR_H
#define TESSARY_DEEP_PAIR_H

#include <cmath>

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

// Times a power of two: exact.
template <class R>
inline Pair<R> scaleAdd(R power, Pair<R> a, Pair<R> c) {
    return Pair<R>{power * a.high, power * a.low} + c;
}

#endif

// Complex arithmetic of the escape-time rules.
//
// Everything here is a template over a number type N: float, double, or a vector of either. The
// order of operations is part of what a picture is: the same text must give the same bits for every
// N, compiler and optimisation level, so nothing is factored, contracted or reassociated.
//
// Plain code includes this file once. The vector renderer includes it again inside the namespace of
// each instruction set, because a compiler fits a function to the set in force where its text
// stands; TESSARY_VECTOR_TEXT lets the text through each time.
#if !defined(TESSARY_COMPUTE_COMPLEX_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_COMPUTE_COMPLEX_H
#define TESSARY_COMPUTE_COMPLEX_H
#endif

#include "compute/rounded_trig.h"

template <class N>
struct cpuComplex {
    N r;  // real part
    N i;  // imaginary part
};

template <class N>
inline cpuComplex<N> operator+(const cpuComplex<N>& a, const cpuComplex<N>& b) {
    return {a.r + b.r, a.i + b.i};
}

template <class N>
inline cpuComplex<N> operator-(const cpuComplex<N>& a, const cpuComplex<N>& b) {
    return {a.r - b.r, a.i - b.i};
}

template <class N>
inline cpuComplex<N> operator*(const cpuComplex<N>& a, const cpuComplex<N>& b) {
    return {a.r * b.r - a.i * b.i, a.i * b.r + a.r * b.i};
}

// A real constant as a complex number. Products with it run through the full complex
// multiplication, so that an infinite or NaN part spreads as it does between two complex numbers.
template <class N>
inline cpuComplex<N> realConstant(double k) {
    return {N(k), N(0.0)};
}

template <class N>
inline N magnitudeSquared(const cpuComplex<N>& z) {
    return z.r * z.r + z.i * z.i;
}

// The scalar member of the family `select(mask, a, b)`: a where the mask holds, else b.
template <class N>
inline N select(bool mask, N a, N b) {
    return mask ? a : b;
}

// Trigonometric functions of a = r + i*j, of correctly rounded factors in double. For float the
// parts are widened and each product is rounded once more, on storing.
template <class T>
inline cpuComplex<T> sinC(const cpuComplex<T>& a) {
    const SineCosine r = sineCosine(a.r), j = hyperbolicSineCosine(a.i);
    return {static_cast<T>(r.sine * j.cosine), static_cast<T>(r.cosine * j.sine)};
}

template <class T>
inline cpuComplex<T> cosC(const cpuComplex<T>& a) {
    const SineCosine r = sineCosine(a.r), j = hyperbolicSineCosine(a.i);
    return {static_cast<T>(r.cosine * j.cosine), static_cast<T>(-(r.sine * j.sine))};
}

template <class T>
inline cpuComplex<T> sinhC(const cpuComplex<T>& a) {
    const SineCosine r = hyperbolicSineCosine(a.r), j = sineCosine(a.i);
    return {static_cast<T>(r.sine * j.cosine), static_cast<T>(r.cosine * j.sine)};
}

template <class T>
inline cpuComplex<T> coshC(const cpuComplex<T>& a) {
    const SineCosine r = hyperbolicSineCosine(a.r), j = sineCosine(a.i);
    return {static_cast<T>(r.cosine * j.cosine), static_cast<T>(r.sine * j.sine)};
}

#endif

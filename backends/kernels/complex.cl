// Complex numbers, passed by value.
typedef struct {
    REAL r;  // real part
    REAL i;  // imaginary part
} cuComplex;

cuComplex setComplex(REAL rIn, REAL iIn) {
    cuComplex c;
    c.r = rIn;
    c.i = iIn;
    return c;
}

REAL magnitude2(cuComplex c) {
    return c.r * c.r + c.i * c.i;
}

cuComplex mult(cuComplex a, cuComplex b) {
    return setComplex(a.r * b.r - a.i * b.i, a.i * b.r + a.r * b.i);
}

cuComplex mults(REAL s, cuComplex a) {
    return setComplex(s * a.r, s * a.i);
}

// A power as a repeated product; exponents below 1 give 1.
cuComplex pow_int(cuComplex a, int exponent) {
    if (exponent <= 0) return setComplex(1.0, 0.0);
    cuComplex result = a;
    for (int n = 1; n < exponent; ++n) result = mult(result, a);
    return result;
}

cuComplex add(cuComplex a, cuComplex b) {
    return setComplex(a.r + b.r, a.i + b.i);
}

cuComplex subtract(cuComplex a, cuComplex b) {
    return setComplex(a.r - b.r, a.i - b.i);
}

cuComplex addScalar(cuComplex a, REAL s) {
    return setComplex(a.r + s, a.i);
}

cuComplex subtractScalar(cuComplex a, REAL s) {
    return setComplex(a.r - s, a.i);
}

cuComplex negate(cuComplex a) {
    return setComplex(-a.r, -a.i);
}

cuComplex cosCREAL(cuComplex a) {
    return setComplex(cos(a.r) * cosh(a.i), -(sin(a.r) * sinh(a.i)));
}

cuComplex sinCREAL(cuComplex a) {
    return setComplex(sin(a.r) * cosh(a.i), cos(a.r) * sinh(a.i));
}

cuComplex coshCREAL(cuComplex a) {
    return setComplex(cosh(a.r) * cos(a.i), sinh(a.r) * sin(a.i));
}

cuComplex sinhCREAL(cuComplex a) {
    return setComplex(sinh(a.r) * cos(a.i), cosh(a.r) * sin(a.i));
}

cuComplex expCREAL(cuComplex a) {
    return setComplex(exp(a.r) * cos(a.i), exp(a.r) * sin(a.i));
}

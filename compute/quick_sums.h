// The sums of compute/quick_trig.h, where their errors are counted, over a number type: double, or
// a vector of doubles (compute/vector_rounded-inl.h).
//
// Included once by plain code and again for each instruction set, as compute/complex.h is.
#if !defined(TESSARY_COMPUTE_QUICK_SUMS_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_COMPUTE_QUICK_SUMS_H
#define TESSARY_COMPUTE_QUICK_SUMS_H

// Of an approximation, relative to its value.
inline constexpr double QUICK_ERROR = 0x1.4p-68;

// Leaves no room for a fraction.
inline constexpr double WITHOUT_FRACTION = 0x1.8p52;

inline double asFloat(double x) {
    return static_cast<float>(x);
}

#endif

// A number in two parts, of which the high one has 29 bits.
template <class N>
struct SplitNumber {
    N high, low;
};

// What units leave of an argument: high + low, high being a float. all: the rest within 2 u of it.
template <class N>
struct QuickRest {
    N high, low, all;
};

// An argument in units: WITHOUT_FRACTION and their number, and the rest.
template <class N>
struct QuickUnits {
    N shifted;
    QuickRest<N> rest;
};

// high + low, off by less than QUICK_ERROR times the value it stands for.
template <class N>
struct QuickValue {
    N high, low;

    N above() const { return high + (low + high * N(QUICK_ERROR)); }
    N below() const { return high + (low - high * N(QUICK_ERROR)); }
    auto decided() const { return above() == below(); }
};

template <class N>
struct QuickPair {
    QuickValue<N> sine, cosine;
};

// a + b = high + low exactly, where |a| >= |b| or a = 0 (Dekker 1971).
template <class N>
struct ExactSum {
    N high, low;

    ExactSum(N a, N b) : high(a + b), low(b - (high - a)) {}
};

template <class N>
inline QuickUnits<N> inUnits(N x, double perUnit, double unit1, double unit2, double unit3) {
    const N shifted = x * N(perUnit) + N(WITHOUT_FRACTION);
    const N n = shifted - N(WITHOUT_FRACTION);
    const N near = x - n * N(unit1), middle = near - n * N(unit2), last = n * N(unit3);
    const N high = asFloat(middle);
    return {shifted, {high, near - high - n * N(unit2) - last, middle - last}};
}

// a cos t + b sin t, given cos t - 1 and sin t - t.
template <class N>
inline QuickValue<N> rotate(SplitNumber<N> a, SplitNumber<N> b, QuickRest<N> t, N cosine, N sine) {
    const ExactSum<N> sum(a.high, b.high * t.high);
    const N byB = (b.high + b.low) * (sine + t.low) + b.low * t.high;
    return {sum.high, (sum.low + a.low) + (byB + (a.high + a.low) * cosine)};
}

// At the angle whose sine and cosine are s and c, and t further.
template <class N>
inline QuickPair<N> sineCosineBeyond(SplitNumber<N> s, SplitNumber<N> c, QuickRest<N> t) {
    const N w = t.all * t.all;
    const N cosine = w * (w * (w * N(-1.0 / 720) + N(1.0 / 24)) - N(0.5));
    const N sine = t.all * w * (w * (w * N(-1.0 / 5040) + N(1.0 / 120)) - N(1.0 / 6));
    return {rotate(s, c, t, cosine, sine), rotate(c, {-s.high, -s.low}, t, cosine, sine)};
}

// At the argument whose exponential has the half a, and its inverse the half b, and t further; a >=
// b.
template <class N>
inline QuickPair<N> hyperbolicBeyond(SplitNumber<N> a, SplitNumber<N> b, QuickRest<N> t) {
    const N w = t.all * t.all;
    const N cosine = w * (w * (w * N(1.0 / 720) + N(1.0 / 24)) + N(0.5));
    const N sine = t.all * w * (w * (w * N(1.0 / 5040) + N(1.0 / 120)) + N(1.0 / 6)) + t.low;
    const N byA = a.high * t.high, byB = b.high * t.high;
    const ExactSum<N> u(a.high, b.high), v(a.high, -b.high), uByT(byA, -byB), vByT(byA, byB);
    const N uLow = a.low + b.low, vLow = a.low - b.low;
    const N uAll = u.high + uLow, vAll = v.high + vLow;
    const ExactSum<N> sineSum(v.high, vByT.high), cosineSum(u.high, uByT.high);
    return {{sineSum.high, ((sineSum.low + v.low) + (vByT.low + vLow)) +
                               ((uAll * sine + uLow * t.high) + vAll * cosine)},
            {cosineSum.high, ((cosineSum.low + u.low) + (uByT.low + uLow)) +
                                 ((vAll * sine + vLow * t.high) + uAll * cosine)}};
}

#endif

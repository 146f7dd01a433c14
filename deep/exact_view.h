// The points of a view as fractions of whole numbers: nothing is rounded.
#pragma once

#include "compute/wide.h"
#include "deep/view.h"
#include "frac/big_number.h"

namespace deep {

// A point as (re + im i) / denominator of the view.
struct ExactPoint {
    Integer re, im;
};

// Const once made; any thread. The view is one that refusal() accepts.
class ExactView {
  public:
    explicit ExactView(const View& view);

    // What all numerators here are over: 2 W 10^k with the k that makes all decimals whole.
    const Integer& denominator() const { return over; }
    const ExactPoint& centre() const { return middle; }
    const ExactPoint& constant() const { return juliaConstant; }
    bool isJulia() const { return julia; }
    ExactPoint pixel(int i, int j) const;

    // pixel(i, j) - centre, in units of width / (2 W).
    long stepsRight(int i) const { return 2L * i - wide; }
    long stepsDown(int j) const { return 2L * j - high; }
    const Integer& halfStep() const { return step; }

    // log2 of width / W, rounded down.
    long spacingExponent() const;

    // An n >= 0 with |re|, |im| < 2^n.
    long wholeBits(const ExactPoint& point) const;

    // Whether it is worth asking that of a pixel; cheap.
    bool mayStayOnRealAxis(int i, int j) const { return i == axisColumn || j == axisRow; }

    // Whether the orbit runs on the real axis within the interval that z^2 + c maps into itself,
    // so that |z| <= 2 for ever. Such an orbit may be chaotic: no precision would follow it far.
    bool staysOnRealAxis(const ExactPoint& pixel) const;

  private:
    long indexOfZero(const Integer& centre, long count) const;
    bool isWithinRealInterval(const Integer& x, const Integer& c) const;

    bool julia;
    long wide, high;
    long axisRow = -1, axisColumn = -1;  // where pixels have im = 0, or re = 0 in a Julia set
    Integer over, step;
    ExactPoint middle, juliaConstant;
};

// exact / over as a floating-point number; whether it had to be rounded.
bool divide(Big& to, const Integer& exact, const Integer& over);

// x to a double's precision, however small it is.
Wide wide(mpfr_srcptr x);

}  // namespace deep

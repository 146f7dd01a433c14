// The way behind compute/rounded_trig.h for arguments that its quick way cannot decide: the same
// functions in whole numbers of many limbs. About a hundred times slower than the quick way.
#pragma once

#include "compute/quick_trig.h"
#include "compute/sine_cosine.h"

namespace exact_trig {

// The correctly rounded functions of a finite x, |x| >= 2^-27; the hyperbolic ones for |x| < 712.
SineCosine sineCosine(double x);
SineCosine hyperbolicSineCosine(double x);

// The same with so many 64-bit limbs behind the binary point, 3 or 8, and whether that was enough
// to decide how to round both: 3 nearly always are, more than 8 have never been seen to be needed
// and would be needed by one argument in 2^380.
struct Attempt {
    SineCosine value;
    bool decided;
};
template <int LIMBS>
Attempt trySineCosine(double x);
template <int LIMBS>
Attempt tryHyperbolicSineCosine(double x);

// For the quick way: a finite x of any size, |x| >= 2^-27, in units of pi / 1024 without whole
// turns. The rest is off by less than 2^-130.
quick_trig::Reduced reduceTrigonometric(double x);

}  // namespace exact_trig

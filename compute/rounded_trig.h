// Sine and cosine, hyperbolic sine and cosine, correctly rounded: the double nearest to the true
// value, ties impossible. They depend on no library and no processor, so the trigonometric rules
// give the same bits everywhere.
#pragma once

#include "compute/sine_cosine.h"

// sin(x) and cos(x), x in radians, any double. sineCosine(-0) has the sine -0; infinities and NaN
// give NaN. Any thread; allocates nothing and takes no lock.
SineCosine sineCosine(double x);

// sinh(x) and cosh(x), any double. Beyond the range of a double they are infinite; the hyperbolic
// sine of -0 is -0; NaN gives NaN. Any thread; allocates nothing and takes no lock.
SineCosine hyperbolicSineCosine(double x);

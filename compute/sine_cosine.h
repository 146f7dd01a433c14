// What the functions of compute/rounded_trig.h and exact_trig.h return: a sine and a cosine of one
// argument, circular or hyperbolic.
#pragma once

struct SineCosine {
    double sine, cosine;
};

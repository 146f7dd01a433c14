// How much work a picture is, whoever renders it.
#pragma once

#include "bench/views.h"

namespace bench {

// Mean number of steps that a pixel of the 2048 x 2048 picture takes in scalar code, from a random
// sample of pixels that takes about a third of a second.
double meanSteps(const View& view, int iterationLimit, bool doublePrecision);

}  // namespace bench

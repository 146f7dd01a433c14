// The last tier: one pixel's orbit in arithmetic of as many digits as it takes.
//
// The computed z is the middle of a disc of radius e that holds the exact one:
//     e' <= 2 |z| e + e^2 + roundings,
// the last term only where a result was rounded, so that orbits which run exactly onto the limit
// are decided too. Discs do not wrap as rectangles do, which would cost digits every step.
#pragma once

#include "compute/stop_flag.h"
#include "deep/exact_view.h"
#include "deep/view.h"

namespace deep {

inline constexpr int UNDECIDED = -1;
inline constexpr int INTERRUPTED = -2;

struct Outcome {
    int count;     // as Picture::render writes it, UNDECIDED or INTERRUPTED
    double value;  // NaN where the orbit stays
};

// The effort: the precision starts above the depth of the view and grows by half until the orbit is
// decided, as long as it is no more than MOST_BITS. An orbit loses at most two bits a step within
// |z| <= 2, so whatever is left undecided lies within 2^-MOST_BITS or so of the limit itself, or
// is that chaotic for that long.
inline constexpr long MOST_BITS = 1L << 16;

// Pixel (i, j) of the view; any thread. wantsValue: the precision also grows until the value is
// known to VALUE_UNIT; one that never is, in the middle between two units, is given as it is last.
Outcome followExactly(const ExactView& exact, const View& view, int i, int j, bool wantsValue,
                      StopFlag stop);

}  // namespace deep

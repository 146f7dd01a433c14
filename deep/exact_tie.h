// Orbits that run exactly onto the limit: |z|^2 = L, which no precision tells from nearly so where
// the numbers are no sums of powers of two.
#pragma once

#include "deep/exact_view.h"

namespace deep {

// Whole numbers of a step longer than this are not tried: an orbit's double with every step.
inline constexpr long MOST_TIE_BITS = 1L << 20;

// Whether |z_(n+1)|^2 is exactly `limit`, finite, after step n from 0, by fractions of whole
// numbers; false too where these would take more than MOST_TIE_BITS. Any thread.
bool isExactTie(const ExactView& exact, const ExactPoint& pixel, int n, double limit);

// Whether |point|^2 > limit, finite, by whole numbers. Any thread.
bool isBeyond(const ExactView& exact, const ExactPoint& point, double limit);

}  // namespace deep

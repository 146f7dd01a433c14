// The quick way gives an interval that the true value lies in. Where both its ends round to the
// same double, so does the value; the exact way settles the others, about one argument in 2^13.
#include "compute/rounded_trig.h"

#include <cmath>
#include <limits>

#include "compute/exact_trig.h"
#include "compute/quick_trig.h"

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

// Below it sin x and sinh x round to x, cos x and cosh x to 1: they differ by x^3 / 6 and x^2 / 2,
// and half the distance to the next double is at least 2^-54 of x, and 2^-54 at 1.
using quick_trig::SMALLEST;

// cosh 711 is beyond the range of a double.
constexpr double OVERFLOWS = 711.0;

bool decided(const quick_trig::Reduced& t, const quick_trig::Pair& pair) {
    return t.restIsLarge() && pair.sine.decided() && pair.cosine.decided();
}

// Arguments that the quick way does not take as they are.
[[gnu::noinline]] SineCosine unusualSineCosine(double x) {
    if (std::fabs(x) < SMALLEST) return {x, 1.0};
    if (!std::isfinite(x)) return {x - x, x - x};
    const quick_trig::Reduced t = exact_trig::reduceTrigonometric(x);
    const quick_trig::Pair pair = quick_trig::sineCosine(t);
    if (decided(t, pair)) return {pair.sine.above(), pair.cosine.above()};
    return exact_trig::sineCosine(x);
}

[[gnu::noinline]] SineCosine unusualHyperbolicSineCosine(double x) {
    if (std::fabs(x) < SMALLEST) return {x, 1.0};
    if (std::fabs(x) < OVERFLOWS) return exact_trig::hyperbolicSineCosine(x);
    return {x * INFINITE, std::fabs(x) * INFINITE};
}

}  // namespace

SineCosine sineCosine(double x) {
    const double size = std::fabs(x);
    if (!(size >= SMALLEST && size <= quick_trig::LARGEST)) return unusualSineCosine(x);
    const quick_trig::Reduced t = quick_trig::reduceTrigonometric(x);
    const quick_trig::Pair pair = quick_trig::sineCosine(t);
    if (decided(t, pair)) return {pair.sine.above(), pair.cosine.above()};
    return exact_trig::sineCosine(x);
}

SineCosine hyperbolicSineCosine(double x) {
    const double size = std::fabs(x);
    if (!(size >= SMALLEST && size <= quick_trig::LARGEST_HYPERBOLIC)) {
        return unusualHyperbolicSineCosine(x);
    }
    const quick_trig::Reduced t = quick_trig::reduceHyperbolic(size);
    const quick_trig::Pair pair = quick_trig::hyperbolicSineCosine(t);
    if (!decided(t, pair)) return exact_trig::hyperbolicSineCosine(x);
    return {std::copysign(pair.sine.above(), x), pair.cosine.above()};
}

// trig_search COUNT SEED: tries so many random arguments below 8 and prints those whose sine,
// cosine or hyperbolic kin lies next to the middle between two doubles, within 1 / COUNT of their
// distance, with that share as a power of two. tests/compute/hard_trig_arguments.h has its
// findings.
#include <mpfr.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "compute/quick_trig.h"

namespace {

// How far a value of 200 bits is from the middle between two doubles, in units of their distance.
double fromMiddle(const mpfr_t value) {
    static thread_local struct Room {
        Room() { mpfr_init2(rest, 200); }
        ~Room() { mpfr_clear(rest); }
        mpfr_t rest;
    } room;
    const double below = mpfr_get_d(value, MPFR_RNDZ), above = mpfr_get_d(value, MPFR_RNDA);
    mpfr_sub_d(room.rest, value, below, MPFR_RNDN);
    mpfr_div_d(room.rest, room.rest, above - below, MPFR_RNDN);
    mpfr_sub_d(room.rest, room.rest, 0.5, MPFR_RNDN);
    return std::fabs(mpfr_get_d(room.rest, MPFR_RNDN));
}

template <class Function>
void report(const char* kind, Function function, double x, double near) {
    static thread_local struct Room {
        Room() { mpfr_inits2(200, x, a, b, static_cast<mpfr_ptr>(nullptr)); }
        ~Room() { mpfr_clears(x, a, b, static_cast<mpfr_ptr>(nullptr)); }
        mpfr_t x, a, b;
    } room;
    mpfr_set_d(room.x, x, MPFR_RNDN);
    function(room.a, room.b, room.x, MPFR_RNDN);
    const double distance = std::fmin(fromMiddle(room.a), fromMiddle(room.b));
    if (distance < near) std::printf("%s %a %.1f\n", kind, x, std::log2(distance));
}

bool decided(const quick_trig::Pair& pair) {
    return pair.sine.decided() && pair.cosine.decided();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const double count = std::atof(argv[1]), near = 1 / count;
    std::mt19937_64 random(static_cast<std::uint64_t>(std::atoll(argv[2])));
    for (double n = 0; n < count; ++n) {
        const double x = std::ldexp(static_cast<double>(random() >> 11), -50);
        using namespace quick_trig;
        if (!decided(quick_trig::sineCosine(reduceTrigonometric(x)))) {
            report("trigonometric", mpfr_sin_cos, x, near);
        }
        if (!decided(quick_trig::hyperbolicSineCosine(reduceHyperbolic(x)))) {
            report("hyperbolic", mpfr_sinh_cosh, x, near);
        }
    }
    return 0;
}

// What the lean trigonometric orbits claim, in either precision, with the instruction set that is
// forced. Compiled apart from the renderers, so that a changed line is tested within seconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "compute/vector_renderer.h"

namespace lean_claims {

// The instruction sets of this machine that have lean functions; perhaps none.
const std::vector<vector_control::Target>& targets();
void forceTarget(std::int64_t bit);  // 0: the best one

enum class Precision { single, twice };

// A claim: the scalar rule's state lies within `bound` of (r, i), and those of all orbits that
// began in the saved ball within `ball`. In single precision all numbers are floats.
struct Claim {
    double r, i, bound, ball;
};

// The claim one step after `claim`. type: 2 to 5.
Claim step(Precision precision, int type, const Claim& claim, double cr, double ci);

enum class Verdict { stays, escaped, doubtful };
Verdict decide(Precision precision, const Claim& claim, double limit);

// Whether it is seen at once that every state within `distance` stays below the limit.
bool staysWithin(Precision precision, const Claim& claim, double distance, double limit);

// Whether the ball of a claim has returned into the one of this radius around a saved state.
bool returned(Precision precision, const Claim& claim, double savedR, double savedI, double radius);

// The four functions; the hyperbolic ones may both have turned their sign with the others.
vector_control::TrigValues factors(Precision precision, double circular, double hyperbolic);

// The root that lengths of slopes are taken from.
double root(Precision precision, double square);

// An orbit in work, as compute/vector_claims-inl.h keeps it, and what is to be done with it.
struct Slot {
    Claim now;
    double savedR, savedI, savedRadius, cr, ci;
    bool live;
    std::uint64_t count;  // DOUBT where nobody knows
};
inline constexpr std::uint64_t DOUBT = ~std::uint64_t{0};
struct Slots {
    std::vector<Slot> slots;
    std::size_t alive;
};

// At most 32 slots after a block of steps, the first of which is number `stepsBefore`, with balls
// or without, and after balls were laid around their states.
Slots advance(Precision precision, int type, const std::vector<Slot>& slots, double limit,
              int steps, int stepsBefore, bool balls);
Slots save(Precision precision, const std::vector<Slot>& slots, double radius);

}  // namespace lean_claims

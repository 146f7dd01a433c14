// What the trigonometric renderer claims of an orbit and of a product, and what it decides by that,
// with the instruction set that is forced. Compiled apart from the renderers, so that a changed
// line is tested within seconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "compute/vector_renderer.h"

namespace trig_claims {

// The instruction sets with vectors that this machine has; perhaps none.
const std::vector<vector_control::Target>& targets();
void forceTarget(std::int64_t bit);  // 0: the best one

// A claim: the state of the yardstick's orbit lies within `bound` of (r, i).
struct Claim {
    double r, i, bound;
};

// What a double orbit claims one step after `claim`. type: 2 to 5.
Claim step(int type, const Claim& claim, double cr, double ci);

// An orbit in work: what is claimed of it now and was when it was saved, the constant of its rule,
// whether it still iterates, and its count, which is `IN_DOUBT` where nobody knows.
inline constexpr std::uint64_t IN_DOUBT = ~std::uint64_t{0};
struct Slot {
    Claim now, saved;
    double cr, ci;
    bool live;
    std::uint64_t count;
};

// At most 32 slots, as the renderer keeps them; `alive` is how many it holds for live.
struct Slots {
    std::vector<Slot> slots;
    std::size_t alive;
};

// What the renderer does to its slots, in the rule of `type`, 2 to 5: a block of steps, the first
// of which is number `stepsBefore`; the end of orbits that repeat; the remembering of all of them;
// and the moving together of those that live, saved claims too when there are any.
Slots advance(int type, const std::vector<Slot>& slots, double limit, int steps, int stepsBefore);
Slots endRepeats(const std::vector<Slot>& slots);
Slots save(const std::vector<Slot>& slots);
Slots closeRanks(const std::vector<Slot>& slots, bool saved);

enum class Verdict { escaped, stays, doubtful };
Verdict decide(const Claim& claim, double limit);

// Whether a product is said to round to the float that the yardstick's product rounds to.
bool roundsSafely(double product);

// The four functions on one vector of doubles.
vector_control::TrigValues factors(double trigonometric, double hyperbolic);

// The function of rule `type` in float, on a vector whose lane `lane` holds z and whose others hold
// 1 + i, or z too; what comes out in that lane. lane: any, taken modulo the number of lanes.
struct FloatValue {
    float r, i;
};
FloatValue floatFunction(int type, FloatValue z, std::size_t lane, bool everywhere);

}  // namespace trig_claims

// What the certified renderer does to the orbits in its slots: which end, as what, and that a claim
// stays with its orbit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tests/compute/trig_claims.h"

namespace {

using trig_claims::Claim;
using trig_claims::IN_DOUBT;
using trig_claims::Slot;
using trig_claims::Slots;

// Fills three vectors of the widest instruction set, the last of them in part.
constexpr std::size_t COUNT = 21;
constexpr std::uint64_t UNKNOWN = 1000;  // the iteration limit, until a count is known
constexpr double SURE = 0x1p-50;

Slot orbit(double r, double i, double bound) {
    return {{r, i, bound}, {r, i, bound}, 0.25, -0.5, true, UNKNOWN};
}

std::vector<Slot> orbits() {
    std::vector<Slot> slots;
    for (std::size_t n = 0; n < COUNT; ++n) {
        const double x = 0.01 * static_cast<double>(n + 1);
        slots.push_back(orbit(x, -x, SURE * (1 + x)));
    }
    return slots;
}

double above(double x) {
    return std::nextafter(x, std::numeric_limits<double>::infinity());
}
double below(double x) {
    return std::nextafter(x, -std::numeric_limits<double>::infinity());
}

class TrigSlots : public testing::TestWithParam<std::size_t> {
  protected:
    TrigSlots() { trig_claims::forceTarget(trig_claims::targets()[GetParam()].bit); }
    ~TrigSlots() override { trig_claims::forceTarget(0); }
};

void expectClaim(const Claim& actual, const Claim& expected, std::size_t n) {
    EXPECT_EQ(actual.r, expected.r) << "slot " << n;
    EXPECT_EQ(actual.i, expected.i) << "slot " << n;
    EXPECT_EQ(actual.bound, expected.bound) << "slot " << n;
}

// --- repeats

TEST_P(TrigSlots, AnOrbitThatReturnsWithABoundNoLargerEndsAsOneThatStays) {
    for (const bool smaller : {false, true}) {
        std::vector<Slot> slots = orbits();
        if (smaller) {
            for (Slot& slot : slots) slot.now.bound = below(slot.now.bound);
        }
        const Slots after = trig_claims::endRepeats(slots);
        EXPECT_EQ(after.alive, 0u);
        for (const Slot& slot : after.slots) {
            EXPECT_FALSE(slot.live);
            EXPECT_EQ(slot.count, UNKNOWN);
        }
    }
}

TEST_P(TrigSlots, AnOrbitElsewhereOrLessSurelyKnownGoesOn) {
    for (int difference = 0; difference < 6; ++difference) {
        std::vector<Slot> slots = orbits();
        for (Slot& slot : slots) {
            double* const parts[] = {&slot.now.r, &slot.now.r,     &slot.now.i,
                                     &slot.now.i, &slot.now.bound, &slot.now.bound};
            double& part = *parts[difference];
            part = difference == 5 ? 2 * part : difference % 2 == 0 ? above(part) : below(part);
        }
        const Slots after = trig_claims::endRepeats(slots);
        EXPECT_EQ(after.alive, COUNT) << "difference " << difference;
        for (const Slot& slot : after.slots) EXPECT_TRUE(slot.live);
    }
}

TEST_P(TrigSlots, OneOrbitThatReturnsEndsAloneAndOnce) {
    for (std::size_t n = 0; n < COUNT; ++n) {
        std::vector<Slot> slots = orbits();
        for (Slot& slot : slots) slot.saved.r += 1;
        slots[n].saved.r = slots[n].now.r;
        const Slots after = trig_claims::endRepeats(slots);
        EXPECT_EQ(after.alive, COUNT - 1);
        for (std::size_t m = 0; m < COUNT; ++m) EXPECT_EQ(after.slots[m].live, m != n);
        EXPECT_EQ(trig_claims::endRepeats(after.slots).alive, COUNT - 1);
    }
}

TEST_P(TrigSlots, ASavedStateIsThePresentOneAndItsBoundIsTwiceAsLargeNowAndThen) {
    std::vector<Slot> slots = orbits();
    for (Slot& slot : slots) slot.saved = {7, 7, 7};
    const Slots after = trig_claims::save(slots);
    EXPECT_EQ(after.alive, COUNT);
    for (std::size_t n = 0; n < COUNT; ++n) {
        const Claim& z = slots[n].now;
        expectClaim(after.slots[n].now, {z.r, z.i, 2 * z.bound}, n);
        expectClaim(after.slots[n].saved, {z.r, z.i, 2 * z.bound}, n);
    }
}

// --- steps

TEST_P(TrigSlots, OrbitsThatStayTakeTheStepsOfTheClaims) {
    for (int type = 2; type <= 5; ++type) {
        const std::vector<Slot> slots = orbits();
        const Slots after = trig_claims::advance(type, slots, 1e4, 3, 0);
        EXPECT_EQ(after.alive, COUNT);
        for (std::size_t n = 0; n < COUNT; ++n) {
            Claim z = slots[n].now;
            for (int i = 0; i < 3; ++i) z = trig_claims::step(type, z, slots[n].cr, slots[n].ci);
            expectClaim(after.slots[n].now, z, n);
            EXPECT_TRUE(after.slots[n].live);
            EXPECT_EQ(after.slots[n].count, UNKNOWN);
        }
    }
}

// sinh leaves the limit with its first step from 3, with its second from 1.5.
TEST_P(TrigSlots, AnOrbitThatEscapesEndsWithTheNumberOfItsStep) {
    for (std::size_t n = 0; n < COUNT; ++n) {
        std::vector<Slot> slots = orbits();
        slots[n].now = {3, 0, SURE};
        slots[(n + 1) % COUNT].now = {1.5, 0, SURE};
        const Slots after = trig_claims::advance(4, slots, 30, 4, 40);
        EXPECT_EQ(after.alive, COUNT - 2);
        for (std::size_t m = 0; m < COUNT; ++m) {
            const bool first = m == n, second = m == (n + 1) % COUNT;
            EXPECT_EQ(after.slots[m].live, !first && !second);
            EXPECT_EQ(after.slots[m].count, first ? 40u : second ? 41u : UNKNOWN);
        }
    }
}

TEST_P(TrigSlots, AnOrbitThatIsHardlyKnownEndsInDoubt) {
    for (std::size_t n = 0; n < COUNT; ++n) {
        std::vector<Slot> slots = orbits();
        slots[n].now = {3, 0, 1};
        const Slots after = trig_claims::advance(4, slots, 30, 4, 40);
        EXPECT_EQ(after.alive, COUNT - 1);
        for (std::size_t m = 0; m < COUNT; ++m) {
            EXPECT_EQ(after.slots[m].live, m != n);
            EXPECT_EQ(after.slots[m].count, m == n ? IN_DOUBT : UNKNOWN);
        }
    }
}

TEST_P(TrigSlots, WhatHasEndedEndsNoSecondTime) {
    std::vector<Slot> slots = orbits();
    for (std::size_t n = 0; n < COUNT; n += 2) {
        slots[n] = {{3, 0, n % 4 == 0 ? 1 : SURE}, {}, 0, 0, false, n};
    }
    const Slots after = trig_claims::advance(4, slots, 30, 4, 40);
    EXPECT_EQ(after.alive, COUNT / 2);
    for (std::size_t n = 0; n < COUNT; ++n) {
        EXPECT_EQ(after.slots[n].live, n % 2 == 1);
        EXPECT_EQ(after.slots[n].count, n % 2 == 1 ? UNKNOWN : n);
    }
}

// --- moving together

TEST_P(TrigSlots, ClaimsMoveWithTheirOrbits) {
    for (const bool saved : {false, true}) {
        std::vector<Slot> slots = orbits(), left;
        for (std::size_t n = 0; n < COUNT; ++n) {
            const auto x = static_cast<double>(n);
            slots[n].saved = {x, 2 * x, 3 * x};
            slots[n].cr = 4 * x;
            slots[n].live = n % 3 == 1;
            if (slots[n].live) left.push_back(slots[n]);
        }
        const Slots after = trig_claims::closeRanks(slots, saved);
        ASSERT_EQ(after.slots.size(), left.size());
        EXPECT_EQ(after.alive, left.size());
        for (std::size_t n = 0; n < left.size(); ++n) {
            expectClaim(after.slots[n].now, left[n].now, n);
            if (saved) expectClaim(after.slots[n].saved, left[n].saved, n);
            EXPECT_EQ(after.slots[n].cr, left[n].cr);
            EXPECT_TRUE(after.slots[n].live);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Target, TrigSlots,
                         testing::Range(std::size_t{0}, trig_claims::targets().size()),
                         [](const testing::TestParamInfo<std::size_t>& target) {
                             return trig_claims::targets()[target.param].name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TrigSlots);

}  // namespace

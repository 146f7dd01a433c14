// What the disc of a single pixel claims: every state in it steps into the next one, as the rule
// computes it; near the rim of what stays the claims are at their tightest.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "compute/rules.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/disc_claims.h"

namespace {

using disc_claims::discsOf;
using vector_test::Random;

template <class T>
long double distance(const cpuComplex<T>& a, const cpuComplex<T>& b) {
    return std::hypot(static_cast<long double>(a.r) - static_cast<long double>(b.r),
                      static_cast<long double>(a.i) - static_cast<long double>(b.i));
}

// A number in the disc, mostly at its rim in the direction in which a step leads furthest away.
template <class T>
cpuComplex<T> placeIn(Random& random, const cpuComplex<T>& middle, T radius) {
    const double outwards = std::atan2(middle.i, middle.r);
    for (;;) {
        const double angle = outwards + random.uniform(-0.02, 0.02);
        const double part = static_cast<double>(radius) * random.uniform(0.9999, 1);
        const cpuComplex<T> z{static_cast<T>(middle.r + part * std::cos(angle)),
                              static_cast<T>(middle.i + part * std::sin(angle))};
        if (distance(z, middle) <= static_cast<long double>(radius)) return z;
    }
}

// A constant whose cycle of so many points attracts, the more faintly the smaller `room` is.
template <class T>
cpuComplex<T> attracting(Random& random, std::size_t count, double room) {
    const double angle = random.uniform(0, 6.2831853);
    if (count == 1) {  // c = b - b^2 with |2 b| = 1 - room
        const double re = (1 - room) / 2 * std::cos(angle), im = (1 - room) / 2 * std::sin(angle);
        return {static_cast<T>(re - re * re + im * im), static_cast<T>(im - 2 * re * im)};
    }
    return {static_cast<T>(-1 + (1 - room) / 4 * std::cos(angle)),
            static_cast<T>((1 - room) / 4 * std::sin(angle))};
}

template <class T>
int expectClaimsHold(std::size_t count, double weakest) {
    Random random(3);
    int closed = 0;
    for (int i = 0; i < 4000; ++i) {
        const auto c = attracting<T>(random, count, std::pow(10.0, -random.uniform(0, weakest)));
        const auto discs = discsOf<T>(c, count);
        if (!discs.closed) continue;
        ++closed;
        for (std::size_t k = 0; k < count; ++k) {
            const auto z = placeIn(random, discs.middle[k], discs.radius[k]);
            const auto to = JuliaRule::step(z, c);
            const std::size_t next = (k + 1) % count;
            EXPECT_LE(distance(to, discs.middle[next]),
                      static_cast<long double>(discs.radius[next]))
                << "c (" << c.r << ", " << c.i << ") radius " << discs.radius[k];
            EXPECT_LE(distance(discs.middle[k], {0, 0}) + discs.radius[k], 1.99L);
            if (testing::Test::HasFailure()) return closed;
        }
    }
    return closed;
}

template <class T>
class OwnDiscs : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(OwnDiscs, Precisions);

TYPED_TEST(OwnDiscs, KeepTheirOrbitsOnEveryInstructionSet) {
    const double weakest = sizeof(TypeParam) == 4 ? 5 : 11;
    for (const auto& target : vector_control::targets()) {
        if (target.name == "scalar") continue;
        SCOPED_TRACE(target.name);
        disc_claims::forceTarget(target.bit);
        for (const std::size_t count : {std::size_t{1}, std::size_t{2}}) {
            const int closed = expectClaimsHold<TypeParam>(count, weakest);
            EXPECT_GT(closed, 1000) << "of " << count;
        }
    }
    disc_claims::forceTarget(0);
}

TYPED_TEST(OwnDiscs, DoNotCloseWhereNothingAttracts) {
    for (const auto& [re, im] : {std::pair{0.26, 0.0}, {-2.0, 0.0}, {-1.3, 0.0}, {-0.391, -0.6}}) {
        for (const std::size_t count : {std::size_t{1}, std::size_t{2}}) {
            const cpuComplex<TypeParam> c{static_cast<TypeParam>(re), static_cast<TypeParam>(im)};
            EXPECT_FALSE(discsOf<TypeParam>(c, count).closed) << re;
        }
    }
    const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
    EXPECT_FALSE(discsOf<TypeParam>({nan, 0}, 1).closed);
    EXPECT_FALSE(discsOf<TypeParam>({0, nan}, 2).closed);
}

}  // namespace

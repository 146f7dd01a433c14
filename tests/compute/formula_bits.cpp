// Prints one number made of the counts of every formula over a spread of pixels, and of the
// trigonometric functions over arguments of all sizes. Built several times, compiled in different
// ways; all builds must print the same.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>

#include "compute/exact_trig.h"
#include "compute/formulas.h"
#include "compute/quick_trig.h"

namespace {

std::uint64_t hash = 14695981039346656037u;

void mix(int count) {
    for (int shift = 0; shift < 32; shift += 8) {
        hash ^= (static_cast<std::uint32_t>(count) >> shift) & 0xffu;
        hash *= 1099511628211u;
    }
}

// The parameter values make orbits linger, so that one wrong bit has time to grow into a count.
template <class T, class Formula>
void mixFormula(Formula formula, T half, T cx, T cy, T limit) {
    for (int y = 0; y < 67; ++y) {
        for (int x = 0; x < 71; ++x) {
            mix(formula(x, y, 71, 67, -half, half, -half * T(0.7), half * T(0.9), cx, cy, limit,
                        300));
        }
    }
}

template <class T>
void mixAll() {
    mixFormula<T>(juliaCPU<T>, T(1.5), T(-0.8), T(0.156), T(4));
    mixFormula<T>(sinCPU<T>, T(8), T(0), T(0), T(128));
    mixFormula<T>(cosCPU<T>, T(8), T(0), T(0), T(128));
    mixFormula<T>(sinhCPU<T>, T(5), T(0), T(0), T(128));
    mixFormula<T>(coshCPU<T>, T(8), T(0), T(0), T(128));
    mixFormula<T>(barnsley1CPU<T>, T(4), T(0.6), T(1.1), T(4));
    mixFormula<T>(barnsley2CPU<T>, T(4), T(0.6), T(1.1), T(4));
    mixFormula<T>(barnsley3CPU<T>, T(2), T(1.0), T(0), T(4));
    mixFormula<T>(barnsleySierpinskiCPU<T>, T(2), T(0), T(0), T(4));
    mixFormula<T>(dragonCPU<T>, T(1.4), T(1.6493), T(0.961), T(4));
    mixFormula<T>(chebyshevCPU<T>, T(1), T(0), T(0), T(16));
    mixFormula<T>(hermiteCPU<T>, T(2), T(0), T(0), T(1000));
    mixFormula<T>(legendreCPU<T>, T(1.2), T(0), T(0), T(16));
}

void mix(double x) {
    const auto bits = std::isnan(x) ? 0 : std::bit_cast<std::uint64_t>(x);
    mix(static_cast<int>(bits));
    mix(static_cast<int>(bits >> 32));
}

void mix(const SineCosine& pair) {
    mix(pair.sine);
    mix(pair.cosine);
}

void mix(const quick_trig::Pair& pair) {
    mix(pair.sine.high);
    mix(pair.sine.low);
    mix(pair.cosine.high);
    mix(pair.cosine.low);
}

// Both ways to a function by themselves as well: no rounding hides a difference there.
void mixFunctions() {
    std::mt19937_64 random(3);
    for (int n = 0; n < 20000; ++n) {
        const auto any = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
        mix(sineCosine(any));
        mix(hyperbolicSineCosine(any));
        const double usual = static_cast<double>(random() >> 11) * 0x1p-49;
        mix(sineCosine(usual));
        mix(hyperbolicSineCosine(usual));
        mix(quick_trig::sineCosine(quick_trig::reduceTrigonometric(usual)));
        mix(quick_trig::hyperbolicSineCosine(quick_trig::reduceHyperbolic(usual)));
        if (n % 16 != 0) continue;
        mix(exact_trig::sineCosine(usual));
        mix(exact_trig::hyperbolicSineCosine(usual));
    }
}

}  // namespace

int main() {
    mixFunctions();
    mixAll<float>();
    mixAll<double>();
    std::printf("%016llx\n", static_cast<unsigned long long>(hash));
    return 0;
}

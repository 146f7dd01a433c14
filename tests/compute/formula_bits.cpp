// Prints one number made of the counts of every formula over a spread of pixels. Built several
// times, with the formulas compiled in different ways; all builds must print the same.
#include <cstdint>
#include <cstdio>

#include "compute/formulas.h"

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

}  // namespace

int main() {
    mixAll<float>();
    mixAll<double>();
    std::printf("%016llx\n", static_cast<unsigned long long>(hash));
    return 0;
}

// The discs of single pixels as every instruction set computes them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "compute/complex.h"
#include "compute/vector_renderer.h"

namespace disc_claims {

template <class T>
struct Discs {
    std::size_t count;
    cpuComplex<T> middle[2];
    T radius[2];
    bool closed;
};

// About the fixed point (count 1) or the cycle of two points (count 2) of c, by the instruction set
// that is forced.
template <class T>
Discs<T> discsOf(const cpuComplex<T>& c, std::size_t count);

// As vector_control::forceTarget, for discsOf.
void forceTarget(std::int64_t bit);

}  // namespace disc_claims

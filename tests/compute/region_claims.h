// The balls about an outline, and a region's lanes, as every instruction set computes them.
#pragma once

#include <cstdint>

#include "compute/staying_region.h"
#include "compute/vector_renderer.h"

namespace region_claims {

struct Ball {
    cpuComplex<float> middle;
    float radius;
};

// By the instruction set that is forced, under c.
Ball ballAfterStep(const Ball& ball, const cpuComplex<double>& c);
bool edgeStays(const Horizon& horizon, const CellEdge& edge);

template <class T>
bool inRegion(const StayingRegion& region, T re, T im);

// Forces one of the sets of vector_control::targets() but the scalar one; 0 gives the machine's
// best one back.
void forceTarget(std::int64_t bit);

}  // namespace region_claims

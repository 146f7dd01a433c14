// The vector renderer: the rules of compute/rules.h on as many pixels at a time as the machine has
// lanes, with the bytes of the scalar functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "compute/vector_tile.h"

// Renders the tile by rule `type` with the best instruction set of the machine and returns true.
// Returns false, with nothing written, where vectors do not help: an unknown rule, or a machine
// without vectors. Allocates nothing and takes no lock; any thread, on disjoint tiles at once.
bool renderWithVectors(const VectorTile<float>& tile, int type);
bool renderWithVectors(const VectorTile<double>& tile, int type);

// For tests and benchmarks only; the program takes what the machine has. Call while no tile is
// being rendered.
namespace vector_control {

// One instruction set that this build and this machine have: a bit of Highway's HWY_* family.
struct Target {
    std::int64_t bit;
    std::string name;
};

// All of them, best first. The last one, "scalar", stands for the plain scalar renderer, on every
// machine and in every build.
std::vector<Target> targets();

// From now on every tile is rendered with this instruction set alone; 0 gives the machine's best
// one back.
void forceTarget(std::int64_t bit);

// sin and cos of one argument, sinh and cosh of another, as the forced instruction set computes
// them; |arguments| <= 300. The scalar target gives the rounded ones.
struct TrigValues {
    double sin, cos, sinh, cosh;
};
TrigValues evaluateTrig(double trigonometric, double hyperbolic);

// Turns the search for orbits that repeat off or on (it is on at start). Off, every point that
// stays costs all its steps; the picture is the same.
void detectCycles(bool on);
bool detectsCycles();

// Whether the forced instruction set is one with vectors.
bool usesVectors();

// What forceTarget and detectCycles say holds for smooth values (compute/value_tile.h) as well.

}  // namespace vector_control

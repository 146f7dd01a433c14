// A region in which orbits of z^2 + c surely stay within 3/2 for some steps, where nothing attracts
// them and nothing repeats: about a fixed point that they turn about for long.
//
// It is made of squares, and its outline is covered by discs. Claim: if a ball about each disc's
// middle, as large as the disc, stays within R = 3/2 for n steps, whatever is added to each step up
// to the size of a rounding, then so does every orbit that starts in the region, as it is computed.
// Proof: let z_(k+1) = z_k^2 + c + d_k be that orbit, d_k being its roundings. The map from any
// start w to what these very d_k lead to after k steps is a polynomial in w. Inside of the outline
// it is no greater than somewhere on it (maximum modulus), and there the balls hold it below R: for
// |d_k| is no more than the rounding of a step from |z_k| < R, step by step.
// So some hundred balls decide on a whole region. How it was found does not matter.
//
// A ball about m with radius F steps into one about m' with (compute/vector_region-inl.h)
//     F' = F (2 |m| + F) + v (3.7 R^2 + 3.7 |m|^2 + 4 |c|),  v = 2^-24,
// for |w^2 - m^2| <= F (2 |m| + F). A step in float, or double, rounds: in the real part the
// squares and their difference, 2 v |z|^2, and the sum, v |z'|; in the imaginary one the product
// and the sum, v |z|^2 and v |z'|. With |z'| <= |z|^2 + |c| the length is below v (3.7 |z|^2 + 1.5
// |c|). The orbit's is added, for |z| < R; the middle, computed in float, takes its own, and c,
// rounded to float, v |c|.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "compute/complex.h"
#include "compute/stop_flag.h"

// Squares of 1/64 that cover |re|, |im| < 2, one bit each, by row.
struct StayingRegion {
    static constexpr int CELLS = 256, PER_UNIT = 64, BITS = 32;

    alignas(64) std::uint32_t row[CELLS][CELLS / BITS] = {};
    std::uint32_t behind = 0;  // for who reads two words at a time
    bool any = false;

    // The column or row of a coordinate; below 0 or above the last where there is none.
    static int cellOf(double coordinate);

    // Whether a cell belongs to the region; cells that do not exist never do.
    bool has(int x, int y) const {
        return x >= 0 && y >= 0 && x < CELLS && y < CELLS &&
               (row[y][x / BITS] >> x % BITS & 1) != 0;
    }
    bool holds(double re, double im) const { return any && has(cellOf(re), cellOf(im)); }

    // Whether all points between two corners are in it.
    bool holdsAll(const cpuComplex<double>& a, const cpuComplex<double>& b) const;
};

// For how many steps orbits are to stay, under which constant.
struct Horizon {
    cpuComplex<double> c;
    int steps;

    // Balls are so small that they do not outgrow the steps: more steps take more of them, and over
    // more than these the roundings alone fill them nearly everywhere.
    static constexpr int MOST_STEPS = 1024;
    int discsPerEdge() const { return 16 * ((steps - 1) / 768 + 1); }
};

// A side of a cell: from the corner left of column x and below row y, to the right or upwards.
struct CellEdge {
    int x, y;
    bool across;
};

// Whether discs cover the edge whose orbits all stay.
using EdgeTest = bool (*)(const Horizon&, const CellEdge&);

// Sets the region about a place where an orbit was after many steps; none where the outline cannot
// be proven with a moderate number of tests. Returns whether it is worth no other try: not where
// the orbit was about to leave, which costs little to find, nor where `stop` was set meanwhile:
// then it ends within a millisecond, with none.
bool findStayingRegion(const Horizon& horizon, const cpuComplex<double>& place, EdgeTest stays,
                       StayingRegion& region, StopFlag stop = nullptr);

// What a thread knows of the constant that it had last.
struct KnownRegion {
    // A search costs a sixth at most of what so many orbits do that take all their steps.
    static constexpr std::size_t WORTH_A_SEARCH = std::size_t{1} << 19;

    Horizon horizon{{std::numeric_limits<double>::quiet_NaN(), 0}, 0};
    std::size_t stayed = 0;  // orbits that took all steps
    std::size_t next = 0;    // how many of them are worth a search, or another one
    bool sought = false;
    StayingRegion region;

    // Begins anew where it is about another constant or too few steps, or where it knows nothing
    // yet and fewer steps will do.
    void turnTo(const Horizon& wanted) {
        const bool same = wanted.c.r == horizon.c.r && wanted.c.i == horizon.c.i;
        const bool enough =
            wanted.steps == horizon.steps || (wanted.steps < horizon.steps && region.any);
        if (!same || !enough) beginAnew(wanted);
    }

    // Counts so many more orbits that took all steps; returns whether to search now.
    bool worthASearch(std::size_t more);

  private:
    void beginAnew(const Horizon& wanted);
};

// Each thread writes and reads its own, no lock. The picture does not depend on it.
inline thread_local KnownRegion lastRegion;

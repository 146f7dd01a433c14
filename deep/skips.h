// Skipping: many steps of a difference at once by a linear map that is certified within a radius.
//
// With d the difference from the reference and dc that of the constants, a node stands for the
// steps from index m on and says: for |d| <= r and |dc| <= Delta = 2^deltaExponent,
//     |F(d, dc) - (A d + B dc)| <= kappa |d| + beta,
// and all states within them, the last one included, are certain not to have escaped.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "deep/reference.h"

namespace deep {

// A = a 2^aExponent, B = b 2^bExponent, each in as many parts as the tier has. The
// bound F of the squared error (see orbit_lanes-inl.h) becomes, with D = |d|^2,
//     2^(2 aExponent) (onBound F + onSize D) + 2^(2 bExponent + 2 deltaExponent) onDelta.
template <int PARTS>
struct Node {
    Complex<Of<PARTS, double>> a, b;
    double onBound, onSize, onDelta;
    std::int64_t key;  // of the largest D + 16 E that is in the radius, see keyOf
    std::int32_t aExponent, bExponent;
};

// Positive numbers in the order of their keys; a number may have several neighbours' key. x
// 2^power.
inline std::int64_t keyOf(double x, std::int64_t power) {
    return static_cast<std::int64_t>(std::bit_cast<std::uint64_t>(x) >> 12) +
           power * (std::int64_t{1} << 40);
}

// Nodes of 2^level steps, level from LEAST_LEVEL on: node j of an orbit whose Z = 0 (or start) has
// index s stands for the steps from index s + 1 + j 2^level.
inline constexpr int LEAST_LEVEL = 2;

template <int PARTS>
class Skips {
  public:
    // unit: what one operation of the tier is off, relative; radius: how far |d| / |2 Z| may go.
    // etaOverDelta: 128 * 2^-bits / Delta.
    void make(const Reference& reference, double limit, double unit, double radius,
              double etaOverDelta, std::int64_t deltaExponent);

    // The longest node from index m on whose radius holds everything of a key up to `key`, no
    // longer than `steps`; null where there is none. *length: how many steps it stands for.
    const Node<PARTS>* find(std::uint32_t m, std::int64_t key, int steps, int* length) const;

    // No node holds a larger key.
    std::int64_t largestKey() const { return largest; }

  private:
    using Level = std::vector<Node<PARTS>>;
    struct Tree {
        std::uint32_t start;
        std::vector<Level> levels;
    };
    Tree trees[2];
    int treeCount = 0;
    std::int64_t largest = 0;

    template <int>
    friend class SkipMaker;
};

// The loop by which the compiler copies an array has a name of the compiler's own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern template class Skips<1>;
extern template class Skips<2>;
// NOLINTEND(bugprone-reserved-identifier)

template <int PARTS>
inline const Node<PARTS>* Skips<PARTS>::find(std::uint32_t m, std::int64_t key, int steps,
                                             int* length) const {
    const Tree& tree = treeCount == 2 && m > trees[1].start ? trees[1] : trees[0];
    std::uint32_t at = m - tree.start - 1;  // at the start itself a number that nothing divides
    if (at % (1u << LEAST_LEVEL) != 0) return nullptr;
    at >>= LEAST_LEVEL;
    const Node<PARTS>* best = nullptr;
    int span = 1 << LEAST_LEVEL;
    for (const Level& level : tree.levels) {
        if (at >= level.size() || span > steps || level[at].key < key) break;
        best = &level[at];
        *length = span;
        if (at % 2 != 0) break;
        at /= 2;
        span *= 2;
    }
    return best;
}

}  // namespace deep

// Rendering the counts and smooth values of one view, with vectors and without.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace value_test {

// All that the numbers of a picture depend on.
struct View {
    int type = 0;
    bool doublePrecision = false;
    double xMin = -2, xMax = 2, yMin = -1.5, yMax = 1.5;
    double cx = 0, cy = 0;
    double limit = 4;
    int maxIters = 768;
    int width = 64, height = 64;
    int tileWidth = 16, tileHeight = 16;
};

std::ostream& operator<<(std::ostream& out, const View& view);

// The numbers of a picture, row by row. What no renderer wrote is CANARY.
struct Numbers {
    static constexpr std::int32_t CANARY = -77;
    std::vector<std::int32_t> counts;
    std::vector<double> values;
};

// Which of a tile's pointers are not null.
enum class Wanted { BOTH, COUNTS, VALUES };

Numbers vectorNumbers(const View& view, Wanted wanted = Wanted::BOTH);
Numbers scalarNumbers(const View& view, Wanted wanted = Wanted::BOTH);

// Whether all bits are the same, with the first pixel where they are not.
testing::AssertionResult sameNumbers(const Numbers& actual, const Numbers& expected, int width);

// Whether every instruction set gives the scalar numbers, bit for bit.
testing::AssertionResult allTargetsAgree(const View& view, Wanted wanted = Wanted::BOTH);

// A catalogue view with the limit that smooth colours want.
View catalogueView(std::size_t index, bool doublePrecision);

}  // namespace value_test

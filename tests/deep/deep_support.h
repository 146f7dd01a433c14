// Pictures of deep/ as the tests of its results want them.
#pragma once

#include <cstdint>
#include <vector>

#include "deep/deep_picture.h"
#include "oracle.h"

deep::View toDeep(const oracle::View& view);

// A rectangle of a picture, row by row.
struct Numbers {
    int across, down;
    std::vector<std::int32_t> counts;
    std::vector<double> values;
    std::int64_t undecided;
};

// What render never writes: where it still stands, a pixel was left out.
constexpr std::int32_t UNTOUCHED = -7;

Numbers renderPart(const deep::Picture& picture, int x, int y, int across, int down,
                   StopFlag stop = nullptr);
Numbers renderWhole(const oracle::View& view);

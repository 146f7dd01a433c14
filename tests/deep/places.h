// The views of places.txt and edges.txt, and what the yardstick found there (pictures.txt).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "oracle.h"

namespace oracle {

constexpr int SIDE = 128;  // pixels of a place's picture, each way

struct Place {
    std::string name;
    View view;
};

// In the file's order. A file that cannot be read or is damaged: std::runtime_error.
const std::vector<Place>& places();

// A pixel whose orbit meets the limit almost exactly (edges.txt).
struct Edge {
    View view;
    int x, y;
};

std::vector<Edge> edges();

// Of a whole picture of SIDE x SIDE counts, row by row.
struct Picture {
    std::uint64_t hash = 0;
    std::int32_t least = 0, most = 0;  // of those that escape
    int inside = 0, different = 0;     // pixels that stay; different counts
    long long steps = 0;               // of all pixels
};

Picture summary(const std::vector<std::int32_t>& counts, int maxIters);

// By the name of the place, as deep_yardstick_pictures wrote them.
std::map<std::string, Picture> knownPictures();

}  // namespace oracle

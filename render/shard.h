// One machine's share of the work of several.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "render/job.h"

namespace render {

// Share `number` of `count`, from 1.
struct Shard {
    int number = 1, count = 1;
};

inline constexpr int MOST_SHARDS = 1000000;

// Every count-th of the pieces, from the number-th.
template <class Piece>
std::vector<Piece> shareOf(std::vector<Piece> pieces, Shard shard) {
    std::vector<Piece> share;
    const auto step = static_cast<std::size_t>(shard.count);
    for (auto n = static_cast<std::size_t>(shard.number - 1); n < pieces.size(); n += step) {
        share.push_back(std::move(pieces[n]));
    }
    return share;
}

// The rows of a picture of this height that a share makes. As many as the others' or one less;
// none where there are more shares than rows.
struct BandPlace {
    int first = 0, rows = 0;
};
BandPlace bandPlace(int height, Shard shard);

// The job that makes a share of a picture as a picture of its own. A share without rows is a single
// black row, so that each share leaves a file.
Job bandOf(Job job, Shard shard);

// {"number": K, "of": N, "compress": "fast", "metadata": "all"}: what the joined picture is to be.
nlohmann::json bandSettings(const Band& band);

// The band that a document's object "render" tells of, in a picture of this size; nothing where it
// tells of none, or nothing that can be.
std::optional<Band> readBand(const nlohmann::json& render, Size whole);

}  // namespace render

#include "render/shard.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace render {
namespace {

using nlohmann::json;

// A whole number from 1 to `most` under this key.
std::optional<int> numberIn(const json& object, const char* key, int most) {
    if (!object.contains(key) || !object[key].is_number_unsigned()) return {};
    const auto number = object[key].get<std::uint64_t>();
    if (number < 1 || number > static_cast<std::uint64_t>(most)) return {};
    return static_cast<int>(number);
}

// Which of two words stands under this key: 0 or 1.
std::optional<bool> wordIn(const json& object, const char* key, const char* no, const char* yes) {
    if (!object.contains(key)) return {};
    if (object[key] == no) return false;
    if (object[key] == yes) return true;
    return {};
}

Band bandAt(Size whole, Shard shard) {
    const BandPlace place = bandPlace(whole.height, shard);
    Band band;
    band.number = shard.number;
    band.count = shard.count;
    band.first = place.first;
    band.whole = whole;
    band.blank = place.rows == 0;
    return band;
}

}  // namespace

BandPlace bandPlace(int height, Shard shard) {
    const auto edge = [&](std::int64_t n) { return static_cast<int>(height * n / shard.count); };
    const int first = edge(shard.number - 1);
    return {first, edge(shard.number) - first};
}

Job bandOf(Job job, Shard shard) {
    job.band = bandAt(job.size, shard);
    job.size.height = std::max(bandPlace(job.size.height, shard).rows, 1);
    return job;
}

json bandSettings(const Band& band) {
    return {{"number", band.number},
            {"of", band.count},
            {"compress", band.small ? "small" : "fast"},
            {"metadata", band.metadata ? "all" : "none"}};
}

std::optional<Band> readBand(const json& render, Size whole) {
    if (!render.is_object() || !render.contains("band") || !render["band"].is_object()) return {};
    const json& object = render["band"];
    const auto count = numberIn(object, "of", MOST_SHARDS);
    const auto number = numberIn(object, "number", count.value_or(0));
    const auto small = wordIn(object, "compress", "fast", "small");
    const auto metadata = wordIn(object, "metadata", "none", "all");
    if (!count || !number || !small || !metadata) return {};
    Band band = bandAt(whole, {*number, *count});
    band.small = *small;
    band.metadata = *metadata;
    return band;
}

}  // namespace render

#include "frac/command/identities.h"

#include <map>

std::int32_t Identities::takeFree() {
    while (!taken.insert(lowest).second) ++lowest;
    return lowest;
}

void Identities::keepApart(std::vector<fractal>& entries) {
    const std::set<std::int32_t> before = taken;
    // First all that stay, so that none of them becomes the new one of another.
    for (const fractal& entry : entries) taken.insert(entry.fractalID);
    std::map<std::int32_t, std::int32_t> replaced;
    for (fractal& entry : entries) {
        if (!before.contains(entry.fractalID)) continue;
        const auto [place, isNew] = replaced.try_emplace(entry.fractalID, 0);
        if (isNew) place->second = takeFree();
        entry.fractalID = place->second;
    }
}

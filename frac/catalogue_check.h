// What is damaged in the bytes of a .frac file. Plain functions; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// One thing that loading cannot keep as it stands.
struct Damage {
    std::size_t offset;  // of the byte it is about, from 0; the length of the file where bytes lack
    std::string text;    // "entry 2: ...", no line end
};

// Everything damaged, in the order of the file. There is some exactly where saving what was loaded
// would give other bytes; numbers that mean nothing to the renderers are no damage.
std::vector<Damage> findDamage(std::string_view bytes);

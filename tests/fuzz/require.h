// What a target demands of the code that it plays with.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process, with the words on standard error, where something does not hold that always
// must: an input that shows it is a finding.
inline void require(bool holds, const char* words) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", words);
    std::abort();
}

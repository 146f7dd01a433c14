// How the companion fails: one line on standard error, and a status.
#pragma once

#include <stdexcept>

namespace render {

// What a run meets: a file, a disk, an entry that is not there. Status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What the command line alone shows to be wrong. Status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace render

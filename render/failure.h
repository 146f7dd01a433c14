// How the companion fails: one line on standard error, and a status.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace render {

// What a run meets: a file, a disk, an entry that is not there. Status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What make() makes of an entry of the catalogue; a Failure of it names the entry.
template <class Make>
auto ofEntry(std::uint64_t number, const Make& make) {
    try {
        return make();
    } catch (const Failure& failure) {
        throw Failure("entry " + std::to_string(number) + ": " + failure.what());
    }
}

// What the command line alone shows to be wrong. Status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace render

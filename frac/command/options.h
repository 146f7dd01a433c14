// What tessary-frac is asked to do.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// An option that does not go with the entry it is for: status 2, as other mistakes in the line.
struct Mistake : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A number of an option: the nearest double, and the text as it was typed.
struct TypedNumber {
    double value = 0.0;
    std::string text;
};

// Changes of one entry; what is empty stays as it is.
struct Changes {
    std::optional<std::string> name;
    std::optional<std::int32_t> limit, palette;
    std::optional<double> sizeLimit;
    std::optional<TypedNumber> width;  // finite and above 0, though its double may be 0
    std::optional<std::array<TypedNumber, 2>> center, c;  // x or real part first; center: finite
    std::optional<std::array<double, 4>> view;  // xMin, xMax, yMin, yMax; excludes the others

    bool any() const {
        return name || limit || palette || sizeLimit || width || center || c || view;
    }
};

// Entries by number, both ends included; numbers count from 1, first is at most last.
struct EntryRange {
    std::size_t first = 1, last = 1;
};

struct Options {
    // What was asked for: does it, or throws a std::exception whose text is one line.
    void (*action)(const Options&) = nullptr;

    std::vector<std::string> files;     // "-" is a standard stream
    std::optional<std::string> output;  // likewise; where it is needed, it is there
    bool json = false;
    std::size_t entry = 1;
    std::vector<EntryRange> entries;
    std::int32_t formula = 0;
    Changes changes;
};

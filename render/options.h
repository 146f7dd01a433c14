// What a run of tessary-render is asked for: filled once by the command line, and handed on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "render/colouring.h"
#include "render/deflate.h"
#include "render/flight.h"
#include "render/geometry.h"
#include "render/job.h"
#include "render/shard.h"

namespace render {

// Entries of a catalogue by their numbers from 1; both ends belong to it.
struct EntryRange {
    std::uint64_t first = 1, last = 1;
};

// --size: without a height the view's proportions give it.
struct WantedSize {
    int width = 0;
    std::optional<int> height;
};

inline constexpr int DEFAULT_WIDTH = 2048;
inline constexpr int LARGEST_THUMBNAIL = 1024;

// --palette: a built-in one by its number, or the path of a .map file.
struct WantedPalette {
    std::int32_t type = 0;
    std::string map;  // empty for a built-in one
};

// The colour options, and what is made in place of pictures.
struct ColourChoice {
    WantedColours wanted;
    std::string gradientFile;    // where the gradient of `wanted` is still to be read; or empty
    std::string counts, values;  // numbers instead of pictures, and where; one of them, or empty
    std::string swatch;          // only the gradient, and where; or empty

    bool wantsNumbers() const { return !counts.empty() || !values.empty(); }
};

// Those wanted, with the gradient of a file. Failure when it cannot be read.
WantedColours wantedColours(const ColourChoice& choice);

// What is left empty is the input's own affair, or the default told beside it.
struct Options {
    std::vector<std::string> inputs;    // one path or "-"; with `join` one or more
    std::string output;                 // path, folder or "-"; empty for NAME-001.png and so on
    std::optional<EntryRange> entries;  // all
    std::optional<WantedSize> size;     // that of a picture's own, or DEFAULT_WIDTH
    Fit fit = Fit::contain;
    std::optional<Precision> precision;    // that of a picture's own; or each entry's usual one
    std::optional<int> supersample;        // that of a picture's own, or 1
    std::optional<WantedPalette> palette;  // each entry's
    std::optional<std::int32_t> limit;     // each entry's
    ColourChoice colour;
    int threads = 0;  // 0: as many as the machine runs at once
    Compression compression = Compression::fast;
    bool metadata = true;
    bool quiet = false;
    bool film = false;             // one film rather than stills
    FlightOptions flight;          // of the film
    bool dryRun = false;           // only list the frames of the film
    std::optional<Shard> shard;    // all of it
    bool join = false;             // make one picture of the inputs, which are bands
    std::optional<int> thumbnail;  // only a small picture of the first entry: its longer side
    bool resume = false;           // leave pictures that are there already
};

}  // namespace render

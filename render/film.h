// Films: the frames of a flight as pictures to make, and as lines to read.
#pragma once

#include <string>
#include <vector>

#include "render/flight.h"
#include "render/options.h"
#include "render/source.h"

namespace render {

// The frames that the options ask for and the pictures that they are, in one order; those of a
// share where the options name one.
struct Film {
    std::vector<Frame> frames;
    std::vector<Job> jobs;
};

Film planFilm(const Options& options, const Source& source);

// A line for each frame, ended by a line feed: its number, that of the entry flown to, xMin, xMax,
// yMin and yMax, each the shortest text that reads back to the same bits, with tabs between. A
// frame at an exact place has its centre and its width instead.
std::string linesOf(const std::vector<Frame>& frames);

}  // namespace render

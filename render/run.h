// Making pictures: all cores compute and pack bands, one thread writes them.
#pragma once

#include <cstdint>
#include <vector>

#include "render/encoder.h"
#include "render/job.h"

namespace render {

struct RunOptions {
    int threads = 0;    // 0: as many as the machine runs at once
    bool quiet = true;  // no progress bar
};

// So many threads, or as many as the machine runs at once where none are wanted.
int threadCount(int wanted);

// How many samples of these pictures exact arithmetic has left undecided.
std::int64_t unprovenIn(const std::vector<Job>& jobs);

// Removes what killed runs have left in the folders of these pictures.
void removeLeftoversOf(const std::vector<Job>& jobs);

// Makes every picture, in order, each under its name as soon as it is whole; while one is being
// written the next ones are being made. Memory is bounded by the width of the pictures, not their
// height or number. Failure ends it; pictures finished before stay.
void makePictures(const std::vector<Job>& jobs, const Encoder& encoder, const RunOptions& options);

}  // namespace render

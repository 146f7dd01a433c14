// Bands that several machines made, as one picture or one file of numbers.
#pragma once

#include <string>
#include <vector>

#include "render/run.h"

namespace render {

// Writes to `output` the picture, or the numbers, whose bands these files are, in any order: the
// file that one run writes. Failure, with the file it is about, when they are not all the bands of
// one picture, each once, or one of them is not whole.
void joinBands(const std::vector<std::string>& paths, const std::string& output,
               const RunOptions& options);

}  // namespace render

// Small pictures for file managers, of files that nobody vouches for: little time, little memory.
#pragma once

#include "render/options.h"

namespace render {

// Writes the first entry of the catalogue in the one input, a plain file, to the output: a PNG
// without text chunks, its longer side options.thumbnail pixels. Of the file only the beginning is
// read. What takes too long at the entry's own iteration limit is drawn with the largest of some
// smaller limits that a second and a half is enough for: always some picture, computed by one
// thread in some seconds at most. A file that is there is filled rather
// than replaced. Failure when there is no entry to draw, and nothing is left.
void makeThumbnail(const Options& options);

}  // namespace render

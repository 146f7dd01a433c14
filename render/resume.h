// What an earlier run has left to do.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "render/encoder.h"
#include "render/job.h"

namespace render {

// Whether the file at path is a whole PNG with this head, which tells its size, its view and how it
// was made: every checksum is sound and every pixel is there. Any thread.
bool isWhole(const std::string& path, std::string_view head);

// The jobs whose files are not there, are not whole or show something else.
std::vector<Job> unfinished(const std::vector<Job>& jobs, const Encoder& encoder);

}  // namespace render

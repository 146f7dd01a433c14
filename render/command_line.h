// The command line of tessary-render.
#pragma once

#include <optional>

#include "render/options.h"

namespace render {

// The options of a command line, or nothing when it asked for help or version, which are then
// printed. Throws UsageError.
std::optional<Options> readOptions(int argc, const char* const* argv);

}  // namespace render

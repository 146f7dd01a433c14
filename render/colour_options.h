// The options of colours and numbers.
#pragma once

#include "render/options.h"

namespace CLI {
class App;
}

namespace render {

// Adds them to a command line; what they read goes to `options`, which outlives it.
void addColourOptions(CLI::App& app, Options& options);

// Throws UsageError for options of which one makes no sense with another. Where numbers or a swatch
// are wanted, `options` says where they go as if -o had.
void checkColourOptions(const CLI::App& app, Options& options);

// Throws UsageError when options about a gradient are given and none is there.
void checkGradientIsThere(const Options& options, const WantedColours& merged);

}  // namespace render

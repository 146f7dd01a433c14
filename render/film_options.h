// The options of films and of work that is shared.
#pragma once

#include "render/options.h"

namespace CLI {
class App;
}

namespace render {

// Adds them to a command line; what they read goes to `options`, which outlives it.
void addFilmOptions(CLI::App& app, Options& options);
void addShareOptions(CLI::App& app, Options& options);

// Throws UsageError for options of which one makes no sense with another.
void checkFilmOptions(const CLI::App& app, const Options& options);

}  // namespace render

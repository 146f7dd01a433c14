// The extension of saved catalogues.
#pragma once

#include <string>

// Appends ".frac" to path unless the first ".frac" in it, in capitals or not, already ends it. Only
// the first counts: /data/old.fractals/a.frac gets a second extension. Any bytes; any thread.
void applyFracExtension(std::string& path);

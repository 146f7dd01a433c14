// Colour options in the object "render" of a document.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "render/colouring.h"

namespace render {

// Adds them: "colour", "escape", "gradient" (its text), "blend", "scale", "period", "range",
// "offset", "inside", "depth" and "dither", those that say something.
void addColourSettings(const WantedColours& colours, nlohmann::json& object);

// Those that it holds. A value that is none is a Failure.
WantedColours readColourSettings(const nlohmann::json& object);

}  // namespace render

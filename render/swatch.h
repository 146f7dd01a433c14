// Pictures of gradients.
#pragma once

#include "render/options.h"

namespace render {

// One turn of the gradient that the options name, from left to right: the job of that picture.
Job planSwatch(const Options& options);

}  // namespace render

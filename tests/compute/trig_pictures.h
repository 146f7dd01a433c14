// The trigonometric renderers by themselves, with the instruction set that is forced: compiled
// apart from those of the other rules, so that a changed line is tested within seconds.
#pragma once

#include <cstddef>

#include "compute/vector_tile.h"

namespace trig_pictures {

// Renders a tile by rule `type`, 2 to 5. The escape limit is at most 90,000.
void draw(const VectorTile<float>& tile, int type);
void draw(const VectorTile<double>& tile, int type);

// Renders a picture of one chunk by the hyperbolic cosine up to the pixels that are in doubt at
// last, which are given up as if the program had ended meanwhile. Returns how many those are; 0
// also where there are no stages.
std::size_t giveUpHyperbolicCosine(const VectorTile<double>& tile);

// How many chunks the calling thread makes next without the stage in float; -1 where there is none.
int chunksWithoutFloat();

}  // namespace trig_pictures

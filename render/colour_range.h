// The values that occur in a picture.
#pragma once

#include "render/job.h"

namespace render {

// The least and the greatest value, or with bands count, of the points that escape in all of the
// picture of which a job makes all or a band; 0 and 0 where none does. Computes them on so many
// threads (0: as many as the machine runs at once); their number does not matter. The job has a
// colouring.
ValueRange valuesIn(const Job& job, int threads);

// The job, with one turn of its gradient over these values.
Job stretched(Job job, const ValueRange& range);

}  // namespace render

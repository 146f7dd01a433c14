// Which arithmetic a picture takes, and what exact arithmetic is told of it.
#pragma once

#include <vector>

#include "deep/deep_picture.h"
#include "render/job.h"

namespace render {

// The view with a rectangle of doubles that a picture of this size shows, where it lies at an exact
// place; any other as it is.
fractal framed(fractal view, Size size);

// Whether the samples of a picture lie so close together that doubles cannot tell how they differ:
// by less than 2^-40 of the coordinates that occur. c counts as one where the rule takes it.
bool isBeyondDouble(const fractal& view, Size samples);

// The view at the exact place that its rectangle names: its middle and its width, to the last bit.
// Failure where it has none: it is mirrored, not finite, or its proportions are not the picture's.
fractal placedExactly(fractal view, Size size);

// Lets the exact pictures of a film that have one centre take over the reference of the deepest.
void shareReferences(const std::vector<Job>& jobs);

// Chooses the arithmetic of a job from what is wanted of it: Precision::automatic is exact where
// doubles do not suffice. Colouring, size and supersampling of the job must be there. Failure
// where exact arithmetic is wanted and cannot be had: another rule than Mandelbrot and Julia, or
// what deep::refusal() says.
void choosePrecision(Job& job, Precision wanted);

}  // namespace render

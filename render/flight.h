// A catalogue as one flight: which frames a film has and what each of them shows.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "frac/fractal.h"

namespace render {

enum class Glide {
    smooth,  // by one constant factor a frame, easing in and out
    linear   // by equal steps, as in the window
};

inline constexpr int WINDOW_STEPS = 20;
inline constexpr std::uint64_t MOST_FRAMES = 999999;  // what six digits can number

struct FlightOptions {
    Glide glide = Glide::smooth;
    int steps = WINDOW_STEPS;    // of a linear glide, at least 1
    double seconds = 4;          // of a smooth glide, above 0
    double rate = 30;            // frames a second, above 0
    std::optional<double> hold;  // seconds an entry is shown, at least 0
    int fade = 0;                // frames at a cut, at least 0
};

// How a frame between two strangers is made.
struct Crossing {
    std::shared_ptr<const fractal> from;  // the view left
    int step = 0, steps = 1;  // so many parts of the light are those of the view reached
};

struct Frame {
    std::uint64_t number = 0;  // in the film, from 1
    std::uint64_t entry = 0;   // the entry flown to, by its number in the catalogue
    fractal view;              // what is shown, its rectangle fitted
    std::optional<Crossing> crossing;
    double share = 1;  // of the way to that entry from the one before, 0 to 1
};

// Brings the rectangle of a view to the proportions of the film.
using FitView = std::function<fractal(const fractal&)>;

// The frames of a film over these entries, the first of which has number `first`.
//
// Every entry is shown for the frames that hold asks for, one at least. Between neighbours of one
// identity a glide comes, whose last frame is the first of those; between others there is a cut, or
// as many cross-faded frames as wanted.
//
// A linear glide adds (new - old) / steps to every edge of the rectangles in the catalogue, frame
// after frame, as the window does, and lands exactly on the new one; each rectangle is fitted.
// Until it lands all else is as in the entry left. What is not finite is so in the frames, as
// there.
//
// A smooth glide flies from the fitted rectangle to the fitted rectangle, so that its frames have
// the film's proportions too. No edge ever moves back. Meanwhile all else is as in the entry flown
// to, but the iteration limit is the greater of both, lest what is far in sight lose its detail.
// Where there is no such flight (a side that is zero or not finite, or mirrored to the other one)
// the old rectangle stays until the last frame.
//
// From or to an exact place a smooth glide flies likewise, but centre and width are decimals with
// as many digits as each frame needs, so that it may be of any length; pixels are square.
//
// Failure when there are more than MOST_FRAMES, and for a linear glide from or to an exact place.
// Any thread.
std::vector<Frame> planFlight(const std::vector<fractal>& entries, std::uint64_t first,
                              const FlightOptions& options, const FitView& fit);

// How much of the way a smooth glide has made after `frame` of `frames` frames: a steady pace that
// grows evenly over the first fifth and falls evenly over the last. 0 <= frame <= frames, frames at
// least 1 and at most MOST_FRAMES. progress(n, N) and progress(N - n, N) add up to 1.
double progress(std::int64_t frame, std::int64_t frames);

}  // namespace render

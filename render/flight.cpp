#include "render/flight.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "frac/json_entry.h"
#include "render/exact_flight.h"
#include "render/failure.h"
#include "render/steady_zoom.h"

namespace render {
namespace {

constexpr double HOLD_SMOOTH = 1;  // seconds

// Frames in so many seconds: at least one, and at most one too many.
std::int64_t framesIn(double seconds, double rate) {
    const double frames = std::round(seconds * rate);
    return static_cast<std::int64_t>(std::clamp(frames, 1.0, double{MOST_FRAMES + 1}));
}

std::int64_t framesOfGlide(const FlightOptions& options) {
    if (options.glide == Glide::linear) return options.steps;
    return framesIn(options.seconds, options.rate);
}

std::int64_t framesHeld(const FlightOptions& options) {
    if (!options.hold && options.glide == Glide::linear) return 1;
    return framesIn(options.hold.value_or(HOLD_SMOOTH), options.rate);
}

// The value between `before` and `target`, neither short of the one nor past the other.
double towards(double target, double before, double value) {
    return std::clamp(value, std::min(before, target), std::max(before, target));
}

void moveTowards(const fractal& target, const Side& x, const Side& y, fractal& view) {
    view.xMin = towards(target.xMin, view.xMin, x.low);
    view.xMax = towards(target.xMax, view.xMax, x.high);
    view.yMin = towards(target.yMin, view.yMin, y.low);
    view.yMax = towards(target.yMax, view.yMax, y.high);
}

void setRectangle(const fractal& from, fractal& view) {
    view.xMin = from.xMin, view.xMax = from.xMax;
    view.yMin = from.yMin, view.yMax = from.yMax;
}

Side across(const fractal& view) {
    return {view.xMin, view.xMax};
}

Side upright(const fractal& view) {
    return {view.yMin, view.yMax};
}

// The constant stays that of the entry flown to.
void placeAt(ExactPlace place, const fractal& target, fractal& view) {
    place.cRe = target.exact ? target.exact->cRe : std::string();
    place.cIm = target.exact ? target.exact->cIm : std::string();
    placeExactly(view, place);
}

// Puts frames one after another.
class Reel {
  public:
    void add(std::uint64_t entry, const fractal& view, std::optional<Crossing> crossing = {},
             double share = 1) {
        if (frames.size() == MOST_FRAMES) {
            throw Failure("the film would have more than " + std::to_string(MOST_FRAMES) +
                          " frames");
        }
        frames.push_back({frames.size() + 1, entry, view, std::move(crossing), share});
    }

    std::vector<Frame> frames;
};

class Planner {
  public:
    Planner(const FlightOptions& wanted, const FitView& fitting) : options(wanted), fit(fitting) {}

    void begin(const fractal& view, std::uint64_t number) { hold(fit(view), number, 0); }

    // All frames of the way from an entry to its neighbour, and those that show that one.
    void fly(const fractal& from, const fractal& to, std::uint64_t number) {
        if (from.fractalID != to.fractalID) {
            cut(fit(from), fit(to), number);
            return;
        }
        const bool exact = from.exact || to.exact;
        if (options.glide == Glide::linear) {
            if (exact) refuseSteps(from.exact ? number - 1 : number);
            glideBySteps(from, to, number);
        } else if (exact) {
            glideExactly(fit(from), fit(to), number);
        } else {
            glideSmoothly(fit(from), fit(to), number);
        }
        hold(fit(to), number, 1);
    }

    Reel reel;

  private:
    void hold(const fractal& view, std::uint64_t number, std::int64_t shown) {
        for (auto n = framesHeld(options); n > shown; --n) reel.add(number, view);
    }

    void cut(const fractal& from, const fractal& to, std::uint64_t number) {
        const auto left = std::make_shared<const fractal>(from);
        for (int n = 1; n <= options.fade; ++n) {
            reel.add(number, to, Crossing{left, n, options.fade + 1});
        }
        hold(to, number, 0);
    }

    void glideBySteps(const fractal& from, const fractal& to, std::uint64_t number) {
        const double steps = options.steps;
        const double xMax = (to.xMax - from.xMax) / steps, yMax = (to.yMax - from.yMax) / steps;
        const double xMin = (to.xMin - from.xMin) / steps, yMin = (to.yMin - from.yMin) / steps;
        fractal view = from;
        for (int n = 1; n < options.steps; ++n) {
            view.xMax += xMax, view.yMax += yMax;
            view.xMin += xMin, view.yMin += yMin;
            reel.add(number, fit(view), {}, n / steps);
        }
        reel.add(number, fit(to));
    }

    [[noreturn]] static void refuseSteps(std::uint64_t number) {
        throw Failure("entry " + std::to_string(number) +
                      ": a linear glide adds doubles, and this view lies at decimals");
    }

    void glideExactly(const fractal& from, const fractal& to, std::uint64_t number) {
        const auto flight = ExactFlight::between(from, to);
        const std::int64_t frames = framesOfGlide(options);
        fractal view = to;
        setRectangle(from, view);
        view.exact.reset();
        if (from.exact) placeAt(*from.exact, to, view);
        view.maxIters = std::max(from.maxIters, to.maxIters);
        for (std::int64_t n = 1; n < frames; ++n) {
            const double done = progress(n, frames), left = progress(frames - n, frames);
            if (flight) placeAt(flight->at(done, left), to, view);
            reel.add(number, fit(view), {}, done);
        }
        reel.add(number, to);
    }

    void glideSmoothly(const fractal& from, const fractal& to, std::uint64_t number) {
        const auto x = SideFlight::between(across(from), across(to));
        const auto y = SideFlight::between(upright(from), upright(to));
        const std::int64_t frames = framesOfGlide(options);
        fractal view = to;
        setRectangle(from, view);
        view.maxIters = std::max(from.maxIters, to.maxIters);
        for (std::int64_t n = 1; n < frames; ++n) {
            const double done = progress(n, frames), left = progress(frames - n, frames);
            if (x && y) moveTowards(to, x->at(done, left), y->at(done, left), view);
            reel.add(number, view, {}, done);
        }
        reel.add(number, to);
    }

    const FlightOptions& options;
    const FitView& fit;
};

}  // namespace

// With a fifth to reach it, the steady pace is 5/4 of the mean one.
double progress(std::int64_t frame, std::int64_t frames) {
    const std::int64_t left = frames - frame;
    const auto square = static_cast<double>(8 * frames * frames);
    if (5 * frame <= frames) return static_cast<double>(25 * frame * frame) / square;
    if (5 * left <= frames) return 1 - static_cast<double>(25 * left * left) / square;
    return static_cast<double>(10 * frame - frames) / static_cast<double>(8 * frames);
}

std::vector<Frame> planFlight(const std::vector<fractal>& entries, std::uint64_t first,
                              const FlightOptions& options, const FitView& fit) {
    if (entries.empty()) return {};
    Planner planner(options, fit);
    planner.begin(entries.front(), first);
    for (std::size_t n = 1; n < entries.size(); ++n) {
        planner.fly(entries[n - 1], entries[n], first + n);
    }
    return std::move(planner.reel.frames);
}

}  // namespace render

#include "render/flight.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "render/failure.h"
#include "render/geometry.h"
#include "render/steady_zoom.h"

namespace {

using render::FlightOptions;
using render::Frame;
using render::Glide;
using render::planFlight;
using render::progress;

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

fractal view(double xMin, double xMax, double yMin, double yMax, int identity = 0) {
    fractal f;
    f.xMin = xMin, f.xMax = xMax, f.yMin = yMin, f.yMax = yMax;
    f.maxIters = 100;
    f.fractalID = identity;
    return f;
}

const fractal START = view(-2, 2, -1.5, 1.5);
const fractal CHILD = view(-0.8, -0.7, 0.1, 0.175);
const fractal STRANGER = view(-1, 1, -1, 1, 1);

fractal asItIs(const fractal& f) {
    return f;
}

FlightOptions linear(int steps = 20) {
    FlightOptions options;
    options.glide = Glide::linear;
    options.steps = steps;
    return options;
}

// A smooth glide of so many frames, entries shown for one.
FlightOptions smooth(int frames) {
    FlightOptions options;
    options.seconds = frames;
    options.rate = 1;
    options.hold = 0;
    return options;
}

bool sameRectangle(const fractal& a, const fractal& b) {
    return std::memcmp(&a.xMax, &b.xMax, 4 * sizeof(double)) == 0;
}

std::vector<fractal> glide(const fractal& from, const fractal& to, int frames,
                           const render::FitView& fit = asItIs) {
    std::vector<fractal> views;
    for (const Frame& frame : planFlight({from, to}, 1, smooth(frames), fit)) {
        views.push_back(frame.view);
    }
    return views;
}

bool isFinite(const fractal& f) {
    return std::isfinite(f.xMin) && std::isfinite(f.xMax) && std::isfinite(f.yMin) &&
           std::isfinite(f.yMax);
}

// Whether the edge only ever goes towards where it ends.
bool goesOneWay(const std::vector<fractal>& views, double fractal::*edge) {
    const double first = views.front().*edge, last = views.back().*edge;
    for (std::size_t n = 1; n < views.size(); ++n) {
        const double before = views[n - 1].*edge, now = views[n].*edge;
        if (first <= last ? now < before || now > last : now > before || now < last) return false;
    }
    return true;
}

bool goesOneWay(const std::vector<fractal>& views) {
    return goesOneWay(views, &fractal::xMin) && goesOneWay(views, &fractal::xMax) &&
           goesOneWay(views, &fractal::yMin) && goesOneWay(views, &fractal::yMax);
}

TEST(AnEntryItsChildAndAStranger, MakeOneAndTwentyAndOneFrames) {
    const auto frames = planFlight({START, CHILD, STRANGER}, 1, linear(), asItIs);
    ASSERT_EQ(frames.size(), 22u);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        EXPECT_EQ(frames[n].number, n + 1);
        EXPECT_EQ(frames[n].entry, n == 0 ? 1u : n <= 20 ? 2u : 3u);
        EXPECT_FALSE(frames[n].crossing);
    }
    EXPECT_TRUE(sameRectangle(frames.front().view, START));
    EXPECT_TRUE(sameRectangle(frames[20].view, CHILD));
    EXPECT_TRUE(sameRectangle(frames[21].view, STRANGER));
}

TEST(ALinearGlide, AddsTheWindowsSteps) {
    const auto frames = planFlight({START, CHILD}, 1, linear(), asItIs);
    fractal window = START;
    const double xMaxStep = (CHILD.xMax - START.xMax) / 20,
                 xMinStep = (CHILD.xMin - START.xMin) / 20;
    const double yMaxStep = (CHILD.yMax - START.yMax) / 20,
                 yMinStep = (CHILD.yMin - START.yMin) / 20;
    for (std::size_t n = 1; n < 20; ++n) {
        window.xMax += xMaxStep, window.yMax += yMaxStep;
        window.xMin += xMinStep, window.yMin += yMinStep;
        EXPECT_TRUE(sameRectangle(frames[n].view, window)) << n;
    }
}

TEST(ALinearGlide, TakesAllElseOverWhenItLands) {
    fractal child = CHILD;
    child.maxIters = 500;
    child.name = "child";
    const auto frames = planFlight({START, child}, 1, linear(), asItIs);
    EXPECT_EQ(frames[19].view.maxIters, 100);
    EXPECT_EQ(frames[19].view.name, "");
    EXPECT_EQ(frames[20].view.maxIters, 500);
    EXPECT_EQ(frames[20].view.name, "child");
}

TEST(ALinearGlide, HasAsManyFramesAsSteps) {
    for (const int steps : {1, 2, 7, 1000}) {
        const auto frames = planFlight({START, CHILD}, 1, linear(steps), asItIs);
        EXPECT_EQ(frames.size(), 1u + static_cast<std::size_t>(steps));
        EXPECT_TRUE(sameRectangle(frames.back().view, CHILD));
    }
}

TEST(ALinearGlide, HasEachOfItsRectanglesFitted) {
    const auto square = [](const fractal& f) {
        return render::fitted(f, {10, 10}, render::Fit::contain);
    };
    const auto raw = planFlight({START, CHILD}, 1, linear(), asItIs);
    const auto frames = planFlight({START, CHILD}, 1, linear(), square);
    for (std::size_t n = 0; n < raw.size(); ++n) {
        EXPECT_TRUE(sameRectangle(frames[n].view, square(raw[n].view))) << n;
    }
}

TEST(Frames, AreCountedBySecondsAndRate) {
    FlightOptions options;
    EXPECT_EQ(planFlight({START, CHILD}, 1, options, asItIs).size(), 30u + 120 + 29);
    options.seconds = 0.5, options.rate = 25, options.hold = 0.2;
    EXPECT_EQ(planFlight({START, CHILD}, 1, options, asItIs).size(), 5u + 13 + 4);
    options.seconds = 1e-9, options.hold = 1e-9;
    EXPECT_EQ(planFlight({START, CHILD, STRANGER}, 1, options, asItIs).size(), 1u + 1 + 1);
}

TEST(AnEntry, IsHeldAsLongAsWanted) {
    auto options = linear(5);
    options.rate = 10, options.hold = 0.3;
    const auto frames = planFlight({START, CHILD, STRANGER}, 4, options, asItIs);
    ASSERT_EQ(frames.size(), 3u + 5 + 2 + 3);
    for (const std::size_t n : {7u, 8u, 9u}) EXPECT_TRUE(sameRectangle(frames[n].view, CHILD));
    EXPECT_EQ(frames[9].entry, 5u);
    EXPECT_EQ(frames[10].entry, 6u);
}

TEST(ACut, IsFadedOverAsManyFramesAsWanted) {
    auto options = linear();
    options.fade = 3;
    const auto frames = planFlight({START, STRANGER, START}, 1, options, asItIs);
    ASSERT_EQ(frames.size(), 1u + 3 + 1 + 3 + 1);
    for (const int step : {1, 2, 3}) {
        const Frame& frame = frames[static_cast<std::size_t>(step)];
        ASSERT_TRUE(frame.crossing);
        EXPECT_EQ(frame.entry, 2u);
        EXPECT_EQ(frame.crossing->step, step);
        EXPECT_EQ(frame.crossing->steps, 4);
        EXPECT_TRUE(sameRectangle(frame.view, STRANGER));
        EXPECT_TRUE(sameRectangle(*frame.crossing->from, START));
    }
    EXPECT_FALSE(frames[4].crossing);
    EXPECT_EQ(frames[5].entry, 3u);
}

TEST(AFilm, OfMoreFramesThanSixDigitsNumberIsAFailure) {
    auto options = linear(1);
    options.rate = 1, options.hold = 999999;
    EXPECT_EQ(planFlight({START}, 1, options, asItIs).size(), 999999u);
    EXPECT_THROW(planFlight({START, CHILD}, 1, options, asItIs), render::Failure);
    options.hold = 1e300;
    EXPECT_THROW(planFlight({START}, 1, options, asItIs), render::Failure);
}

TEST(AFilm, OfNothingHasNoFrames) {
    EXPECT_TRUE(planFlight({}, 1, {}, asItIs).empty());
}

TEST(Progress, IsSteadyBetweenTheFirstAndTheLastFifth) {
    EXPECT_EQ(progress(0, 120), 0);
    EXPECT_EQ(progress(120, 120), 1);
    for (std::int64_t n = 24; n < 96; ++n) {
        EXPECT_NEAR(progress(n + 1, 120) - progress(n, 120), 1.25 / 120, 1e-15);
    }
}

TEST(Progress, EasesInAndOut) {
    for (std::int64_t n = 1; n < 24; ++n) {
        const double before = progress(n, 120) - progress(n - 1, 120);
        const double now = progress(n + 1, 120) - progress(n, 120);
        EXPECT_GT(now, before + 1e-5);
        EXPECT_NEAR(progress(120 - n, 120), 1 - progress(n, 120), 1e-15);
    }
}

TEST(Progress, NeverGoesBack) {
    for (const std::int64_t frames : {1, 2, 3, 4, 5, 6, 7, 99, 120, 999999}) {
        for (std::int64_t n = 1; n <= frames; ++n) {
            ASSERT_GT(progress(n, frames), progress(n - 1, frames)) << n << "/" << frames;
        }
    }
}

TEST(ASmoothGlide, ChangesTheWidthByOneFactorInItsMiddle) {
    const auto views = glide(START, CHILD, 120);
    const auto width = [&](std::size_t n) { return views[n].xMax - views[n].xMin; };
    const double factor = width(51) / width(50);
    EXPECT_LT(factor, 1);
    for (std::size_t n = 24; n < 96; ++n) EXPECT_NEAR(width(n + 1) / width(n), factor, 1e-12);
    EXPECT_NEAR(std::log(factor), 1.25 / 120 * std::log(0.1 / 4), 1e-12);
}

TEST(ASmoothGlide, KeepsTheFixedPointInItsPlace) {
    for (const fractal& to : {CHILD, view(3, 10, -2, 1), view(-30, 50, -20, 40)}) {
        const double u = (START.xMin - to.xMin) / ((to.xMax - to.xMin) - 4);
        for (const fractal& f : glide(START, to, 60)) {
            EXPECT_NEAR(f.xMin + u * (f.xMax - f.xMin), START.xMin + u * 4, 1e-13);
        }
    }
}

TEST(ASmoothGlide, BetweenEqualSizesIsAPan) {
    const auto views = glide(START, view(-1, 3, 0.5, 3.5), 100);
    for (std::size_t n = 0; n < views.size(); ++n) {
        const double done = progress(static_cast<std::int64_t>(n), 100);
        EXPECT_NEAR(views[n].xMin, -2 + done, 1e-15);
        EXPECT_NEAR(views[n].xMax, 2 + done, 1e-15);
        EXPECT_NEAR(views[n].yMin, -1.5 + 2 * done, 1e-15);
    }
}

TEST(ASmoothGlide, EndsExactlyOnTheEntry) {
    for (const int frames : {1, 2, 3, 5, 120}) {
        const auto views = glide(START, CHILD, frames);
        EXPECT_EQ(views.size(), static_cast<std::size_t>(frames) + 1);
        EXPECT_TRUE(sameRectangle(views.back(), CHILD));
    }
}

TEST(ASmoothGlide, BackShowsTheSameRectangles) {
    const auto there = glide(START, CHILD, 50), back = glide(CHILD, START, 50);
    for (std::size_t n = 0; n <= 50; ++n) {
        EXPECT_NEAR(there[n].xMin, back[50 - n].xMin, 1e-15);
        EXPECT_NEAR(there[n].yMax, back[50 - n].yMax, 1e-15);
    }
}

TEST(ASmoothGlide, HasTheProportionsOfTheFilm) {
    const auto fit = [](const fractal& f) {
        return render::fitted(f, {160, 90}, render::Fit::contain);
    };
    const auto views = glide(view(-2, 2, -0.1, 0.1), view(0, 1e-3, 0, 1), 60, fit);
    for (const fractal& f : views) {
        EXPECT_NEAR((f.xMax - f.xMin) / (f.yMax - f.yMin), 16.0 / 9, 1e-12);
        EXPECT_TRUE(sameRectangle(fit(f), f));
    }
}

TEST(ASmoothGlide, ShowsTheEntryFlownToWithTheGreaterLimit) {
    fractal child = CHILD;
    child.maxIters = 500;
    child.name = "child";
    const auto in = planFlight({START, child}, 1, smooth(5), asItIs);
    EXPECT_EQ(in[0].view.maxIters, 100);
    for (std::size_t n = 1; n <= 5; ++n) {
        EXPECT_EQ(in[n].view.maxIters, 500);
        EXPECT_EQ(in[n].view.name, "child");
    }
    const auto out = planFlight({child, START}, 1, smooth(5), asItIs);
    EXPECT_EQ(out[1].view.maxIters, 500);
    EXPECT_EQ(out[5].view.maxIters, 100);
}

// Numbers of every size, ends of ranges and neighbours included.
class AnyNumber {
  public:
    double operator()() {
        const double special[] = {0, -0.0, 1, -2, 1.7e308, -1.7e308, 5e-324, -5e-324, 1e-300, 0.25};
        switch (random() % 6) {
            case 0:
                return special[random() % std::size(special)];
            case 1:
                return std::nextafter(last, INF);
            case 2:
                return std::nextafter(last, -INF);
            case 3:
                return last * (1 + std::ldexp(between(-1, 1), -static_cast<int>(random() % 52)));
            case 4:
                return last = std::ldexp(between(-1, 1), static_cast<int>(random() % 2000) - 1000);
            default:
                return last = between(-2, 2);
        }
    }

  private:
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    std::mt19937_64 random{1};
    double last = 0.3;
};

TEST(NoEdgeOfASmoothGlide, EverMovesBack) {
    AnyNumber any;
    for (int i = 0; i < 20000; ++i) {
        const fractal from = view(any(), any(), any(), any()),
                      to = view(any(), any(), any(), any());
        if (!isFinite(from) || !isFinite(to)) continue;
        const auto views = glide(from, to, 1 + i % 40);
        ASSERT_TRUE(std::all_of(views.begin(), views.end(), isFinite)) << i;
        ASSERT_TRUE(goesOneWay(views)) << i;
        ASSERT_TRUE(sameRectangle(views.front(), from) && sameRectangle(views.back(), to)) << i;
    }
}

TEST(NoEdgeOfASmoothGlide, EverMovesBackInDeepZooms) {
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> place(-2, 2), depth(-52, 2), ratio(0.2, 5);
    for (int i = 0; i < 3000; ++i) {
        const auto deep = [&] {
            const double x = place(random), y = place(random), wide = std::exp2(depth(random));
            const double high = wide * ratio(random);
            return i % 2 == 0 ? view(x, x + wide, y, y + high) : view(x + wide, x, y + high, y);
        };
        const render::Fit fits[] = {render::Fit::contain, render::Fit::cover, render::Fit::stretch};
        const auto fit = fits[i % 3];
        const auto views = glide(deep(), deep(), 1 + i % 150, [&](const fractal& f) {
            return render::fitted(f, {320, 180}, fit);
        });
        ASSERT_TRUE(goesOneWay(views)) << i;
    }
}

TEST(ARectangleWithoutFlight, StaysUntilTheLastFrame) {
    const fractal odd[] = {
        view(1, 1, 0, 1),      view(0, INF, 0, 1),     view(NOT_A_NUMBER, 1, 0, 1),
        view(0, 1, -INF, INF), view(2, -2, -1.5, 1.5), view(-2, 2, 1.5, -1.5)};
    for (const fractal& f : odd) {
        for (const auto& [from, to] : {std::pair(START, f), std::pair(f, START)}) {
            const auto views = glide(from, to, 10);
            ASSERT_EQ(views.size(), 11u);
            for (std::size_t n = 0; n < 10; ++n) EXPECT_TRUE(sameRectangle(views[n], from));
            EXPECT_TRUE(sameRectangle(views[10], to));
        }
    }
}

TEST(AMirroredView, FliesLikeAnyOther) {
    const auto upright = glide(START, CHILD, 30);
    const auto mirrored = glide(view(2, -2, -1.5, 1.5), view(-0.7, -0.8, 0.1, 0.175), 30);
    for (std::size_t n = 0; n <= 30; ++n) {
        EXPECT_EQ(mirrored[n].xMin, upright[n].xMax);
        EXPECT_EQ(mirrored[n].xMax, upright[n].xMin);
    }
}

// The C library's functions, to judge by.
TEST(SteadyZoom, KnowsItsFunctions) {
    for (double x = 0; x < 700; x = x * 1.01 + 1e-12) {
        EXPECT_NEAR(render::decay(x) / std::exp(-x), 1, 1e-15 * (1 + x)) << x;
        EXPECT_NEAR(render::decayed(x), -std::expm1(-x), 1e-15 * -std::expm1(-x)) << x;
        const double ratio = std::exp(x);
        EXPECT_NEAR(render::logRatio(ratio * 1e-4, 1e-4), std::log(ratio), 3e-16 * (1 + x)) << x;
    }
    EXPECT_EQ(render::decay(0), 1);
    EXPECT_EQ(render::decay(2000), 0);
    EXPECT_EQ(render::decayed(2000), 1);
    EXPECT_EQ(render::logRatio(0.3, 0.3), 0);
    EXPECT_NEAR(render::logRatio(1.7e308, 5e-324), std::log(1.7e308) - std::log(5e-324), 1e-12);
}

}  // namespace

#include "render/exact_flight.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "frac/json_entry.h"
#include "frac/number_text.h"
#include "render/failure.h"
#include "render/flight.h"

namespace {

using render::ExactFlight;

fractal deepEntry(const std::string& re, const std::string& im, const std::string& width) {
    fractal entry;
    placeExactly(entry, {re, im, width, {}, {}});
    return entry;
}

Decimal decimal(const std::string& text) {
    return Decimal::of(std::string_view(text));
}

// ln of a width, to about 1e-12.
double logOf(const std::string& width) {
    return std::log(decimal(width).leading()) +
           static_cast<double>(decimal(width).magnitude()) * 2.302585092994045684;
}

const fractal WIDE = deepEntry("-0.5", "0.25", "4");
const fractal DEEP =
    deepEntry("-0.743643887037158704752191506114774", "0.131825904205311970493", "2.5e-1000");

TEST(ExactFlights, ShrinkByOneFactorAFrame) {
    const auto flight = ExactFlight::between(WIDE, DEEP);
    const double whole = logOf("4") - logOf("2.5e-1000");
    for (const double done : {0.0, 0.125, 0.5, 0.75, 1.0}) {
        EXPECT_NEAR(logOf(flight->at(done, 1 - done).width), logOf("4") - done * whole, 1e-9);
    }
}

// (centre - point) / width is the same for the point that the flight goes about.
TEST(ExactFlights, KeepThePointThatTheyGoAboutInItsPlace) {
    const auto flight = ExactFlight::between(WIDE, DEEP);
    const double start = -0.5 + 0.743643887037158704752191506114774;
    for (const double done : {0.0, 0.1, 0.4, 0.6, 0.9}) {
        const ExactPlace place = flight->at(done, 1 - done);
        const Decimal way = decimal(place.re) - decimal(DEEP.exact->re);
        const std::int64_t magnitude = decimal(place.width).magnitude();
        const double off = nearestNumber(way.shifted(-magnitude).text());
        EXPECT_NEAR(off / decimal(place.width).leading(), start / 4, 1e-12) << done;
    }
}

TEST(ExactFlights, EndWhereTheyShould) {
    const auto flight = ExactFlight::between(WIDE, DEEP);
    EXPECT_EQ(flight->at(1, 0).width, "2.5e-1000");
    EXPECT_EQ(flight->at(1, 0).re, DEEP.exact->re);
    EXPECT_EQ(flight->at(0, 1).width, "4");
    EXPECT_EQ(decimal(flight->at(0, 1).im).rounded(-20).text(), "0.25");
}

TEST(ExactFlights, GoTheSameWayBack) {
    const auto in = ExactFlight::between(WIDE, DEEP), out = ExactFlight::between(DEEP, WIDE);
    for (const double done : {0.25, 0.5, 0.75}) {
        EXPECT_EQ(in->at(done, 1 - done).re, out->at(1 - done, done).re);
        EXPECT_EQ(in->at(done, 1 - done).width, out->at(1 - done, done).width);
    }
}

TEST(ExactFlights, AboutOneCentreKeepItAsItWasWritten) {
    const fractal narrow = deepEntry("-0.2500", "+1e0", "1e-90");
    const auto flight = ExactFlight::between(deepEntry("-0.25", "1", "4"), narrow);
    for (const double done : {0.0, 0.3, 0.8}) {
        EXPECT_EQ(flight->at(done, 1 - done).re, "-0.2500");
        EXPECT_EQ(flight->at(done, 1 - done).im, "+1e0");
    }
}

TEST(ExactFlights, OfEqualWidthsMoveAlong) {
    const auto flight =
        ExactFlight::between(deepEntry("1", "0", "1e-30"), deepEntry("2", "0", "1e-30"));
    EXPECT_EQ(flight->at(0.25, 0.75).re, "1.25");
    EXPECT_EQ(flight->at(0.25, 0.75).width, "1e-30");
}

TEST(ExactFlights, StartFromARectangleWithAllItsDigits) {
    fractal view;
    view.xMin = -2, view.xMax = 2.1, view.yMin = -1, view.yMax = 1;
    const ExactPlace place = ExactFlight::between(view, DEEP)->at(0, 1);
    const Decimal middle = (Decimal::of(2.1) - Decimal::of(2.0)) * Decimal::of(0.5);
    EXPECT_EQ(decimal(place.re).rounded(-19).text(), middle.rounded(-19).text());
    EXPECT_EQ(place.width, (Decimal::of(2.1) + Decimal::of(2.0)).rounded(-19).text());
}

TEST(ExactFlights, AreNotThereForMirroredOrEndlessRectangles) {
    fractal mirrored, endless;
    mirrored.xMin = 1, mirrored.xMax = -1, mirrored.yMin = -1, mirrored.yMax = 1;
    endless.xMin = -1, endless.xMax = HUGE_VAL, endless.yMin = -1, endless.yMax = 1;
    EXPECT_FALSE(ExactFlight::between(mirrored, DEEP));
    EXPECT_FALSE(ExactFlight::between(DEEP, endless));
}

// ---- as frames of a film

std::vector<render::Frame> film(const std::vector<fractal>& entries, render::Glide glide) {
    render::FlightOptions options;
    options.glide = glide;
    options.seconds = 1, options.rate = 10, options.hold = 0;
    return render::planFlight(entries, 1, options, [](const fractal& view) { return view; });
}

TEST(ExactFilms, FlyFrameByFrameToTheEntryItself) {
    fractal deep = DEEP;
    deep.maxIters = 500;
    fractal wide = WIDE;
    wide.maxIters = 900;
    const auto frames = film({wide, deep}, render::Glide::smooth);
    ASSERT_EQ(frames.size(), 11U);
    EXPECT_EQ(frames.back().view.exact, deep.exact);
    EXPECT_EQ(frames.back().view.maxIters, 500);
    EXPECT_EQ(frames[5].view.maxIters, 900);
    for (std::size_t n = 1; n < frames.size(); ++n) {
        const Decimal before = decimal(frames[n - 1].view.exact->width);
        EXPECT_LT((decimal(frames[n].view.exact->width) - before).sign(), 0) << n;
    }
}

TEST(ExactFilms, HaveTheConstantFlownTo) {
    const auto withConstant = [](const char* width, const char* re) {
        fractal entry;
        placeExactly(entry, {"0", "0", width, re, "0.5"});
        return entry;
    };
    const auto frames =
        film({withConstant("1", "-0.25"), withConstant("1e-40", "-0.125")}, render::Glide::smooth);
    EXPECT_EQ(frames[0].view.exact->cRe, "-0.25");
    EXPECT_EQ(frames[4].view.exact->cRe, "-0.125");
    EXPECT_EQ(frames[4].view.cx, -0.125);
}

TEST(ExactFilms, RefuseToAddDoubles) {
    fractal view;
    view.xMin = -2, view.xMax = 2, view.yMin = -2, view.yMax = 2;
    EXPECT_THROW(film({view, DEEP}, render::Glide::linear), render::Failure);
    EXPECT_THROW(film({DEEP, view}, render::Glide::linear), render::Failure);
}

}  // namespace

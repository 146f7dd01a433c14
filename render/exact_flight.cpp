#include "render/exact_flight.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "render/steady_zoom.h"

namespace render {
namespace {

constexpr std::int64_t DIGITS = 20;

// ln 10 in two parts: the first has so few digits that multiples of it up to millions are exact.
constexpr double LN10_HIGH = 0x1.26bb1bb8p+1, LN10_LOW = 0x1.aaa8ac16ea56dp-30;

// mantissa * 10^tens.
struct Scaled {
    double mantissa;
    std::int64_t tens;
};

// e^-x for x >= 0, however small that is; the mantissa is between 0.09 and 1.
Scaled scaledDecay(double x) {
    const double tens = std::floor(x / LN10_HIGH);
    const double rest = (x - tens * LN10_HIGH) - tens * LN10_LOW;
    return {decay(std::max(rest, 0.0)), -static_cast<std::int64_t>(tens)};
}

Decimal times(const Decimal& number, Scaled factor) {
    return (number * Decimal::of(factor.mantissa)).shifted(factor.tens);
}

// The natural logarithm of large / small, both above 0.
double decimalLog(const Decimal& largeOne, const Decimal& smallOne) {
    const double a = largeOne.leading(), b = smallOne.leading();
    const double mantissas = a >= b ? logRatio(a, b) : -logRatio(b, a);
    const auto tens = static_cast<double>(largeOne.magnitude() - smallOne.magnitude());
    return std::max(tens * LN10_HIGH + (tens * LN10_LOW + mantissas), 0.0);
}

bool isUpright(double low, double high) {
    return std::isfinite(low) && std::isfinite(high) && low < high;
}

Decimal middleOf(double low, double high) {
    return (Decimal::of(low) + Decimal::of(high)) * Decimal::of(0.5);
}

}  // namespace

std::optional<ExactFlight::Place> ExactFlight::placeOf(const fractal& view) {
    if (view.exact) {
        const ExactPlace& place = *view.exact;
        return Place{Decimal::of(place.re), Decimal::of(place.im), Decimal::of(place.width),
                     place.re, place.im};
    }
    if (!isUpright(view.xMin, view.xMax) || !isUpright(view.yMin, view.yMax)) return {};
    const Decimal re = middleOf(view.xMin, view.xMax), im = middleOf(view.yMin, view.yMax);
    return Place{re, im, Decimal::of(view.xMax) - Decimal::of(view.xMin), re.text(), im.text()};
}

std::optional<ExactFlight> ExactFlight::between(const fractal& from, const fractal& to) {
    const auto start = placeOf(from), end = placeOf(to);
    if (!start || !end) return {};
    return ExactFlight(*start, *end);
}

ExactFlight::ExactFlight(const Place& from, const Place& to)
    : shrinking((to.width - from.width).sign() <= 0) {
    large = shrinking ? from : to;
    small = shrinking ? to : from;
    log = decimalLog(large.width, small.width);
}

// From the nearer end, where less is lost.
Decimal ExactFlight::widthAt(double fromLarge, double fromSmall) const {
    if (fromLarge <= fromSmall) return times(large.width, scaledDecay(log * fromLarge));
    const Scaled shrunk = scaledDecay(log * fromSmall);
    return times(small.width, {1 / shrunk.mantissa, -shrunk.tens});
}

// The centre goes straight from one to the other, and its part of that way is that of the width.
Decimal ExactFlight::towardsLarge(const Decimal& way, double fromLarge, double fromSmall) const {
    if (!(log > 0)) return times(way, {fromSmall, 0});
    Scaled rest = scaledDecay(log * fromLarge);
    rest.mantissa *= decayed(log * fromSmall) / decayed(log);
    return times(way, rest);
}

ExactPlace ExactFlight::at(double done, double left) const {
    if (!shrinking) std::swap(done, left);
    Decimal width = widthAt(done, left);
    const std::int64_t last = width.magnitude() - DIGITS;
    const auto centre = [&](const Decimal& end, const Decimal& start,
                            const std::string& asWritten) {
        if (end == start) return asWritten;
        return (end + towardsLarge(start - end, done, left).rounded(last)).text();
    };
    return {centre(small.re, large.re, small.reText),
            centre(small.im, large.im, small.imText),
            width.rounded(last + 1).text(),
            {},
            {}};
}

}  // namespace render

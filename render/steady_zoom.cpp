#include "render/steady_zoom.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace render {
namespace {

// ln 2 in two parts: the first has so few digits that whole multiples of it are exact.
constexpr double LN2_HIGH = 0x1.62e42feep-1, LN2_LOW = 0x1.a39ef35793c76p-33;
constexpr double LN2 = LN2_HIGH + LN2_LOW;
constexpr int EXP_TERMS = 18;
constexpr int LOG_TERMS = 20;

// e^x - 1 for |x| <= 1/2, by its series.
double expLessOne(double x) {
    double sum = 0;
    for (int n = EXP_TERMS; n >= 1; --n) sum = (sum + 1) * x / n;
    return sum;
}

// Halves are subtracted: the difference of two finite ends may not be finite.
double halfOf(Side side) {
    return 0.5 * side.high - 0.5 * side.low;
}

double centreOf(Side side) {
    return 0.5 * side.high + 0.5 * side.low;
}

bool isFinite(Side side) {
    return std::isfinite(side.low) && std::isfinite(side.high);
}

}  // namespace

double decay(double x) {
    constexpr double LEAST = 1100;  // where nothing is left
    if (x >= LEAST) return 0;
    const double twos = std::floor(x / LN2 + 0.5);
    const double rest = (x - twos * LN2_HIGH) - twos * LN2_LOW;
    return std::ldexp(1 + expLessOne(-rest), -static_cast<int>(twos));
}

double decayed(double x) {
    return x <= 0.5 ? -expLessOne(-x) : 1 - decay(x);
}

// The powers of two apart, and of what is left 2 artanh((a - b) / (a + b)).
double logRatio(double large, double small) {
    int largeTwos = 0, smallTwos = 0;
    const double a = std::frexp(large, &largeTwos), b = std::frexp(small, &smallTwos);
    const double z = (a - b) / (a + b);
    double sum = 0;
    for (int n = LOG_TERMS; n >= 1; --n) sum = (sum + 1.0 / (2 * n + 1)) * z * z;
    return std::max((largeTwos - smallTwos) * LN2 + 2 * z * (1 + sum), 0.0);
}

std::optional<SideFlight> SideFlight::between(Side from, Side to) {
    if (!isFinite(from) || !isFinite(to)) return {};
    const double before = halfOf(from), after = halfOf(to);
    if (before == 0 || after == 0 || std::signbit(before) != std::signbit(after)) return {};
    return SideFlight(from, to);
}

SideFlight::SideFlight(Side from, Side to)
    : shrinking(std::abs(halfOf(to)) <= std::abs(halfOf(from))) {
    const Side large = shrinking ? from : to, small = shrinking ? to : from;
    largeHalf = halfOf(large), smallHalf = halfOf(small);
    largeCentre = centreOf(large), smallCentre = centreOf(small);
    log = logRatio(std::abs(largeHalf), std::abs(smallHalf));
}

// From the nearer end, where less is lost.
double SideFlight::halfLength(double fromLarge, double fromSmall) const {
    if (fromLarge <= fromSmall) return largeHalf * decay(log * fromLarge);
    return smallHalf / decay(log * fromSmall);
}

// The centre goes straight from one to the other, and its part of that way is that of the length.
double SideFlight::centre(double fromLarge, double fromSmall) const {
    const double half = 0.5 * smallCentre - 0.5 * largeCentre;
    const double part = log > 0 ? decayed(log * fromLarge) / decayed(log) : fromLarge;
    if (part <= 0.5) return largeCentre + half * (2 * part);
    const double rest =
        log > 0 ? decay(log * fromLarge) * decayed(log * fromSmall) / decayed(log) : fromSmall;
    return smallCentre - half * (2 * rest);
}

Side SideFlight::at(double done, double left) const {
    if (!shrinking) std::swap(done, left);
    const double middle = centre(done, left), half = halfLength(done, left);
    return {middle - half, middle + half};
}

}  // namespace render

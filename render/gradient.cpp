#include "render/gradient.h"

#include <algorithm>
#include <cmath>

#include "compute/fixed_math.h"
#include "render/colour_curves.h"

namespace render {
namespace {

constexpr double LEAST = 1e-10;  // what GIMP takes as nothing

Levels mixed(const Levels& a, const Levels& b, double share) {
    Levels out{};
    for (std::size_t c = 0; c < 3; ++c) out[c] = a[c] + (b[c] - a[c]) * share;
    return out;
}

Levels each(const Levels& in, double (*function)(double)) {
    return {function(in[0]), function(in[1]), function(in[2])};
}

using Matrix = std::array<Levels, 3>;

Levels product(const Matrix& m, const Levels& v) {
    Levels out{};
    for (std::size_t r = 0; r < 3; ++r) out[r] = m[r][0] * v[0] + m[r][1] * v[1] + m[r][2] * v[2];
    return out;
}

// Björn Ottosson's Oklab. Between the roots of the three cone responses and Lab lies a linear map,
// so mixing the roots is mixing Lab.
constexpr Matrix CONES = {{{0.4122214708, 0.5363325363, 0.0514459929},
                           {0.2119034982, 0.6806995451, 0.1073969566},
                           {0.0883024619, 0.2817188376, 0.6299787005}}};
constexpr Matrix LIGHT = {{{4.0767416621, -3.3077115913, 0.2309699292},
                           {-1.2684380046, 2.6097574011, -0.3413193965},
                           {-0.0041960863, -0.7034186147, 1.7076147010}}};

Levels rootsOf(const Levels& colour) {
    return each(product(CONES, each(colour, lightOf)), fixedCubeRoot);
}

Levels fromRoots(const Levels& roots) {
    return each(product(LIGHT, each(roots, [](double x) { return x * x * x; })), levelOf);
}

Levels blended(const Levels& a, const Levels& b, double share, Blend blend) {
    if (share <= 0) return a;
    if (share >= 1) return b;
    switch (blend) {
        case Blend::oklab:
            return fromRoots(mixed(rootsOf(a), rootsOf(b), share));
        case Blend::linear:
            return each(mixed(each(a, lightOf), each(b, lightOf), share), levelOf);
        default:
            return mixed(a, b, share);
    }
}

// Hue from 0 up to 1, saturation, value.
Levels toHsv(const Levels& c) {
    const double most = std::max({c[0], c[1], c[2]}), least = std::min({c[0], c[1], c[2]});
    const double span = most - least;
    if (span <= 0.0001) return {0, 0, most};
    double hue = 0;
    if (c[0] == most) {
        hue = (c[1] - c[2]) / span;
        if (hue < 0) hue += 6;
    } else if (c[1] == most) {
        hue = 2 + (c[2] - c[0]) / span;
    } else {
        hue = 4 + (c[0] - c[1]) / span;
    }
    return {hue / 6, span / most, most};
}

Levels fromHsv(const Levels& c) {
    const double value = c[2];
    const double place = (c[0] >= 1 ? 0 : c[0]) * 6;
    const int sector = static_cast<int>(place);
    const double f = place - sector;
    const double w = value * (1 - c[1]), q = value * (1 - c[1] * f),
                 t = value * (1 - c[1] * (1 - f));
    const Levels sectors[] = {{value, t, w}, {q, value, w}, {w, value, t},
                              {w, q, value}, {t, w, value}, {value, w, q}};
    return sectors[sector];
}

double hueBetween(double a, double b, double share, Segment::Colouring way) {
    if (way == Segment::Colouring::hsvUp) {
        const double hue = a + (a < b ? b - a : 1 - (a - b)) * share;
        return hue > 1 ? hue - 1 : hue;
    }
    const double hue = a - (b < a ? a - b : 1 - (b - a)) * share;
    return hue < 0 ? hue + 1 : hue;
}

Levels blendedHsv(const Segment& segment, double share) {
    const Levels a = toHsv(segment.from), b = toHsv(segment.to);
    Levels hsv = mixed(a, b, share);
    hsv[0] = hueBetween(a[0], b[0], share, segment.colouring);
    return fromHsv(hsv);
}

double linearShare(double middle, double place) {
    if (place <= middle) return middle < LEAST ? 0 : 0.5 * place / middle;
    return 1 - middle < LEAST ? 1 : 0.5 + 0.5 * (place - middle) / (1 - middle);
}

// place^(ln 1/2 / ln middle)
double curvedShare(double middle, double place) {
    if (middle < LEAST) return 1;
    if (1 - middle < LEAST || place <= 0) return 0;
    const double power = fixedLog(place) * -0.693147180559945309 / fixedLog(middle);
    return power < -700 ? 0 : fixedExp(power);
}

double sphereShare(double distance) {
    return std::sqrt(std::max(1 - distance * distance, 0.0));
}

}  // namespace

double shareAt(const Segment& segment, double place) {
    constexpr double HALF_PI = 1.57079632679489662;
    const double length = segment.right - segment.left;
    const bool point = length < LEAST;
    const double middle = point ? 0.5 : (segment.middle - segment.left) / length;
    const double inside = point ? 0.5 : (place - segment.left) / length;
    const double share = linearShare(middle, inside);
    switch (segment.blending) {
        case Segment::Blending::curved:
            return curvedShare(middle, inside);
        case Segment::Blending::sine:
            return (sine(HALF_PI * (2 * share - 1)) + 1) / 2;
        case Segment::Blending::sphereIncreasing:
            return sphereShare(share - 1);
        case Segment::Blending::sphereDecreasing:
            return 1 - sphereShare(share);
        case Segment::Blending::step:
            return inside >= middle ? 1 : 0;
        default:
            return share;
    }
}

namespace {

Segment between(const Gradient::Stop& a, const Gradient::Stop& b, double turn) {
    Segment segment;
    segment.left = a.place;
    segment.right = b.place + turn;
    segment.middle = (segment.left + segment.right) / 2;
    segment.from = a.colour;
    segment.to = b.colour;
    return segment;
}

// The segment from the last stop to the first one lies at both ends. Of those without a length
// there is nothing to be seen.
std::vector<Segment> segmentsOf(const std::vector<Gradient::Stop>& stops) {
    std::vector<Segment> segments;
    Gradient::Stop before = stops.back();
    before.place -= 1;
    segments.push_back(between(before, stops.front(), 0));
    for (std::size_t n = 1; n < stops.size(); ++n) {
        segments.push_back(between(stops[n - 1], stops[n], 0));
    }
    segments.push_back(between(stops.back(), stops.front(), 1));
    std::erase_if(segments, [](const Segment& segment) { return segment.left == segment.right; });
    return segments;
}

}  // namespace

Gradient::Gradient(const std::vector<Stop>& stops, std::string text)
    : segments(segmentsOf(stops)), description(std::move(text)), fromStops(true) {}

Gradient::Gradient(std::vector<Segment> parts, std::string text)
    : segments(std::move(parts)), description(std::move(text)), fromStops(false) {}

Levels Gradient::at(double place, Blend blend) const {
    const auto behind =
        std::upper_bound(segments.begin(), segments.end(), place,
                         [](double x, const Segment& segment) { return x < segment.left; });
    const Segment& segment = behind == segments.begin() ? *behind : *(behind - 1);
    const double share = std::clamp(shareAt(segment, place), 0.0, 1.0);
    return segment.colouring == Segment::Colouring::rgb
               ? blended(segment.from, segment.to, share, blend)
               : blendedHsv(segment, share);
}

std::vector<double> Gradient::edges() const {
    std::vector<double> places = {0, 1};
    for (const Segment& segment : segments) {
        for (const double place : {segment.left, segment.middle}) {
            if (place > 0 && place < 1) places.push_back(place);
        }
    }
    std::sort(places.begin(), places.end());
    return places;
}

}  // namespace render

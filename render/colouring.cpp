#include "render/colouring.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "compute/fixed_math.h"
#include "compute/saturate.h"
#include "render/colour_curves.h"

namespace render {
namespace {

template <class Value>
void fill(Value& chosen, const Value& usual) {
    if (!chosen) chosen = usual;
}

Levels levelsOf(const Colour& colour) {
    return {colour[0] / 255.0, colour[1] / 255.0, colour[2] / 255.0};
}

std::shared_ptr<const Gradient> gradientFor(const WantedColours& colours) {
    if (colours.gradient || !colours.hasGradient()) return colours.gradient;
    return std::make_shared<const Gradient>(readGradient(gradientNames().front()));
}

bool isRaised(std::int32_t formula) {
    constexpr std::int32_t MANDELBROT = 0, JULIA = 1, CHEBYSHEV = 11, HERMITE = 12, LEGENDRE = 13;
    constexpr std::array RULES = {MANDELBROT, JULIA, CHEBYSHEV, HERMITE, LEGENDRE};
    return std::find(RULES.begin(), RULES.end(), formula) != RULES.end();
}

}  // namespace

WantedColours merged(WantedColours chosen, const WantedColours& usual) {
    // A new gradient has its own way of mixing.
    if (!chosen.gradient) fill(chosen.blend, usual.blend);
    fill(chosen.gradient, usual.gradient);
    fill(chosen.smooth, usual.smooth);
    fill(chosen.escape, usual.escape);
    fill(chosen.scale, usual.scale);
    // A new length of a turn, or a new range, wins over both.
    if (!chosen.period && !chosen.autoRange) {
        chosen.range = usual.range;
        chosen.period = usual.period;
    }
    fill(chosen.offset, usual.offset);
    fill(chosen.inside, usual.inside);
    fill(chosen.depth, usual.depth);
    fill(chosen.dither, usual.dither);
    return chosen;
}

double escapeBound(const fractal& view, const WantedColours& colours) {
    if (colours.escape) return *colours.escape;
    const double own = truncateToInt(view.maxSize);
    const bool raised = colours.smooth.value_or(false) && isRaised(view.fractalType);
    return raised ? std::max(own, SMOOTH_BOUND) : own;
}

namespace {

void bend(GradientPart& part) {
    part.start[3] = 1;
}

}  // namespace

GradientTable::GradientTable(const Gradient& from, Blend how, const Levels& inside)
    : gradient(from), blend(how), parts(GRADIENT_TABLE) {
    for (int n = 0; n < GRADIENT_PARTS; ++n) parts[static_cast<std::size_t>(n)] = partAt(n);
    for (const double edge : gradient.edges()) {
        const double place = edge * GRADIENT_PARTS;
        const auto n = static_cast<std::size_t>(place);
        if (n < GRADIENT_END && place > static_cast<double>(n)) bend(parts[n]);
    }
    bend(parts[GRADIENT_END]);
    for (std::size_t c = 0; c < 3; ++c) {
        parts[GRADIENT_INSIDE].start[c] = static_cast<float>(inside[c]);
    }
}

// The end of a part is taken a little before it, as an edge may lie there.
GradientPart GradientTable::partAt(int n) const {
    constexpr double END = 1 - 0x1p-20, NEAR = 0.25 / 65535;
    const auto colourAt = [&](double share) {
        return gradient.at((n + share) / GRADIENT_PARTS, blend);
    };
    const Levels start = colourAt(0), end = colourAt(END);
    GradientPart part;
    for (std::size_t c = 0; c < 3; ++c) {
        part.start[c] = static_cast<float>(start[c]);
        part.change[c] = static_cast<float>(end[c] - start[c]);
    }
    for (const double share : {0.05, 0.25, 0.5, 0.75, 0.95}) {
        const Levels exact = colourAt(share);
        for (std::size_t c = 0; c < 3; ++c) {
            const double line = start[c] + share * (end[c] - start[c]);
            if (!(std::abs(line - exact[c]) < NEAR)) bend(part);
        }
    }
    return part;
}

// What lies on a straight line of levels lies on one of light where the part is short enough.
GradientPart GradientTable::lightOfPart(const GradientPart& part) const {
    constexpr double NEAR = 1.0 / 65535;
    GradientPart light;
    light.start[3] = part.start[3];
    for (std::size_t c = 0; c < 3; ++c) {
        const double from = lightOf(part.start[c]), to = lightOf(part.start[c] + part.change[c]);
        light.start[c] = static_cast<float>(from);
        light.change[c] = static_cast<float>(to - from);
        const double middle = part.start[c] + part.change[c] / 2;
        if (!(std::abs(levelOf((from + to) / 2) - middle) < NEAR)) bend(light);
    }
    return light;
}

const GradientPart* GradientTable::lights() const {
    std::call_once(lit, [this] {
        lightParts.reserve(parts.size());
        for (const GradientPart& part : parts) lightParts.push_back(lightOfPart(part));
    });
    return lightParts.data();
}

Light GradientTable::lightAt(double place) const {
    const double scaledPlace = place * GRADIENT_PARTS;
    const auto n = static_cast<std::size_t>(static_cast<int>(scaledPlace));
    const GradientPart& part = lights()[n];
    const auto share = static_cast<float>(scaledPlace - static_cast<double>(n));
    Light light;
    if (part.start[3] != 0) {
        const Levels levels = gradient.at(place, blend);
        for (std::size_t c = 0; c < 3; ++c) light[c] = static_cast<float>(lightOf(levels[c]));
    } else {
        for (std::size_t c = 0; c < 3; ++c) light[c] = part.start[c] + share * part.change[c];
    }
    return light;
}

Light GradientTable::lightInside() const {
    const GradientPart& part = lights()[GRADIENT_INSIDE];
    return {part.start[0], part.start[1], part.start[2]};
}

double bent(double value, Scale scale) {
    const double above = value > 0 ? value : 0;
    return scale == Scale::squareRoot ? std::sqrt(above) : fixedLog(above + 1);
}

Colouring::Colouring(const WantedColours& colours)
    : options(colours),
      gradient(gradientFor(colours)),
      smooth(colours.smooth.value_or(false)),
      deep(colours.depth.value_or(8) == 16),
      dithered(!deep && colours.dither.value_or(smooth)),
      scale(colours.scale.value_or(Scale::linear)),
      turn(scaled(colours.period.value_or(USUAL_PERIOD), scale)),
      offset(colours.offset.value_or(0)),
      insideLevels(levelsOf(colours.inside.value_or(Colour{}))) {
    if (!gradient) return;
    options.gradient = gradient;
    options.blend = colours.blend.value_or(gradient->usualBlend());
    table = std::make_shared<const GradientTable>(*gradient, *options.blend, insideLevels);
    if (options.range) stretch(*options.range);
}

void Colouring::stretch(const ValueRange& range) {
    options.range = range;
    start = scaled(range.least, scale);
    turn = scaled(range.greatest, scale) - start;
}

// Over a range without a length all values lie where the gradient begins, as nothing divided by
// infinity is.
ValueColours Colouring::forRows() const {
    const bool ranged = options.range.has_value();
    ValueColours rows{table->data(), scale, start, turn, offset, ranged, deep};
    if (ranged && !(turn > 0)) {
        rows.turn = std::numeric_limits<double>::infinity();
        rows.start = rows.offset = 0;
    }
    return rows;
}

ValueColours Colouring::forSamples() const {
    ValueColours rows = forRows();
    rows.parts = table->lights();
    return rows;
}

Colouring Colouring::over(const ValueRange& range) const {
    Colouring other = *this;
    other.stretch(range);
    return other;
}

namespace {

constexpr float thresholdAt(unsigned x, unsigned y) {
    unsigned rank = 0;
    for (unsigned bit = 0; bit < 4; ++bit) {
        const unsigned across = x >> bit & 1U, down = y >> bit & 1U;
        rank = rank << 2U | (across ^ down) << 1U | down;
    }
    return static_cast<float>(2 * rank + 1) / 512;
}

constexpr DitherPattern pattern() {
    DitherPattern rows{};
    for (unsigned y = 0; y < 16; ++y) {
        for (unsigned x = 0; x < 16; ++x) rows[y][x] = thresholdAt(x, y);
    }
    return rows;
}

}  // namespace

const DitherPattern DITHER = pattern();

}  // namespace render

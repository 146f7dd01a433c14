// What a pixel's count or value becomes: a colour of a gradient.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "compute/value_colours.h"
#include "frac/fractal.h"
#include "render/gradient.h"

namespace render {

using Scale = ValueScale;

inline constexpr double USUAL_PERIOD = 64;
inline constexpr double SMOOTH_BOUND = 65536;  // see escapeBound()

// Values, or counts, from the least to the greatest.
struct ValueRange {
    double least = 0, greatest = 0;
};

// The colour options, as a command line or a picture's document gives them. What is left empty is
// the default told beside it.
struct WantedColours {
    std::optional<bool> smooth;                // no: by counts
    std::optional<double> escape;              // escapeBound()
    std::shared_ptr<const Gradient> gradient;  // the first built-in one; the palette, by counts
    std::optional<Blend> blend;                // the gradient's usual one
    std::optional<Scale> scale;                // linear
    std::optional<double> period;              // USUAL_PERIOD
    std::optional<double> offset;              // 0
    std::optional<ValueRange> range;  // over which one turn is stretched; the period says how long
    bool autoRange = false;           // stretch it over the values of the picture
    std::optional<Colour> inside;     // black
    std::optional<int> depth;         // 8; or 16
    std::optional<bool> dither;       // where smooth colours become 8 bits

    // Whether colours come from a gradient.
    bool hasGradient() const { return smooth.value_or(false) || gradient; }
    // Whether pixels take another way than the palette's and the window's.
    bool isAny() const { return hasGradient() || escape || depth == 16; }
};

// `chosen`, and what it leaves empty as in `usual`.
WantedColours merged(WantedColours chosen, const WantedColours& usual);

// The escape bound of a view. For smooth values it is raised to SMOOTH_BOUND under the rules that
// have one polynomial everywhere: the further out, the smoother.
double escapeBound(const fractal& view, const WantedColours& colours);

using Light = std::array<float, 3>;

// A gradient in GRADIENT_PARTS parts, each a straight line where that is as good as the gradient
// itself, so that a pixel costs little more than looking. Any thread.
class GradientTable {
  public:
    // The gradient must outlive it. inside: the colour of values that are NaN.
    GradientTable(const Gradient& gradient, Blend blend, const Levels& inside = {});

    // The colour at 0 <= place <= 1 within a quarter of a level of 16 bits.
    Levels at(double place) const;

    // The light of the colour there, within a level of 16 bits of that of its levels.
    Light lightAt(double place) const;
    // Of values that are NaN.
    Light lightInside() const;

    // The table as compute/value_colours.h takes it, of levels and of light.
    const GradientPart* data() const { return parts.data(); }
    const GradientPart* lights() const;

  private:
    GradientPart partAt(int n) const;
    GradientPart lightOfPart(const GradientPart& part) const;

    const Gradient& gradient;
    Blend blend;
    std::vector<GradientPart> parts;
    mutable std::once_flag lit;  // light is made when it is first asked for
    mutable std::vector<GradientPart> lightParts;
};

// A value on its scale: linear as it is, the root of what is above zero, or the logarithm of one
// more than that. bent(): the last two.
double bent(double value, Scale scale);
double scaled(double value, Scale scale);

// All that the colours of a picture depend on beside its view. Any thread.
class Colouring {
  public:
    explicit Colouring(const WantedColours& colours);

    const WantedColours& wanted() const { return options; }
    bool isSmooth() const { return smooth; }
    bool isDeep() const { return deep; }
    bool isDithered() const { return dithered; }
    bool hasGradient() const { return table != nullptr; }

    // The same with one turn over these values.
    Colouring over(const ValueRange& range) const;

    // The colour of a value, or of a count with a gradient; NaN is inside.
    Levels of(double value) const;
    // The light of a value.
    Light lightOf(double value) const;
    // The colour at 0 <= place <= 1 of the gradient.
    Levels atPlace(double place) const { return table->at(place); }
    const Levels& inside() const { return insideLevels; }

    // What colourValues() and colourAverages() make the same levels of; with a gradient only. They
    // are of use while this colouring, or a copy of it, lives.
    ValueColours forRows() const;
    ValueColours forSamples() const;

  private:
    void stretch(const ValueRange& range);
    double placeOf(double value) const;

    WantedColours options;
    std::shared_ptr<const Gradient> gradient;  // null for the palette
    std::shared_ptr<const GradientTable> table;
    bool smooth, deep, dithered;
    Scale scale;
    double start = 0;  // scaled value at which a turn begins
    double turn;       // scaled length of one
    double offset;
    Levels insideLevels;
};

// The share of the way to the next level up at which pixel (x, y) is rounded up no more, less than
// 1: of every 16 x 16 pixels each has another one of 1/512, 3/512, ... 511/512.
using DitherPattern = std::array<std::array<float, 16>, 16>;
extern const DitherPattern DITHER;
inline float ditherThreshold(int x, int y) {
    return DITHER[static_cast<unsigned>(y) % 16][static_cast<unsigned>(x) % 16];
}

// What follows is done for each pixel, so the compiler may see it.

// x less the whole number below it. Beyond 2^52 every number is whole.
inline double fraction(double x) {
    if (!(x > -0x1p52 && x < 0x1p52)) return 0;
    const double rest = x - static_cast<double>(static_cast<std::int64_t>(x));
    return rest < 0 ? rest + 1 : rest;
}

inline Levels GradientTable::at(double place) const {
    const double scaledPlace = place * GRADIENT_PARTS;
    const auto n = static_cast<std::size_t>(static_cast<int>(scaledPlace));
    const GradientPart& part = parts[n];
    if (part.start[3] != 0) return gradient.at(place, blend);
    const auto share = static_cast<float>(scaledPlace - static_cast<double>(n));
    return {static_cast<double>(part.start[0] + share * part.change[0]),
            static_cast<double>(part.start[1] + share * part.change[1]),
            static_cast<double>(part.start[2] + share * part.change[2])};
}

inline double scaled(double value, Scale scale) {
    return scale == Scale::linear ? value : bent(value, scale);
}

// Over a range the greatest value lies at the gradient's end, not at the beginning of the next
// turn.
inline double Colouring::placeOf(double value) const {
    if (options.range && !(turn > 0)) return 0;
    const double turns = (scaled(value, scale) - start) / turn + offset;
    const double place = fraction(turns);
    return options.range && place == 0 && turns > 0 ? 1 : place;
}

inline Light Colouring::lightOf(double value) const {
    return value != value ? table->lightInside() : table->lightAt(placeOf(value));
}

inline Levels Colouring::of(double value) const {
    return value != value ? insideLevels : table->at(placeOf(value));
}

}  // namespace render

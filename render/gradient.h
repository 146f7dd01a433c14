// Gradients: a colour for each place from 0 to 1.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "render/palette.h"

namespace render {

// Red, green and blue, each 0 to 1.
using Levels = std::array<double, 3>;

enum class Blend { oklab, linear, srgb };  // where colours are mixed

// From `left` over `middle` to `right`, where the colours are `from`, as the blending has it, and
// `to`. In the terms of GIMP's gradients.
struct Segment {
    enum class Blending { linear, curved, sine, sphereIncreasing, sphereDecreasing, step };
    enum class Colouring { rgb, hsvUp, hsvDown };  // up: hues grow

    double left = 0, middle = 0.5, right = 1;
    Levels from{}, to{};  // sRGB
    Blending blending = Blending::linear;
    Colouring colouring = Colouring::rgb;
};

class Gradient {
  public:
    // stops: places from 0 to 1 that never fall, at least one. Behind the last one the first comes
    // again, so that turn follows turn without an edge. text: see below.
    struct Stop {
        double place = 0;
        Levels colour{};
    };
    Gradient(const std::vector<Stop>& stops, std::string text);

    // segments: in order, from 0 to 1 without a gap.
    Gradient(std::vector<Segment> segments, std::string text);

    // The colour at 0 <= place <= 1, in sRGB; colours beyond it are taken as the nearest levels. At
    // an edge it is that of the part behind it, at 1 that of the last part.
    Levels at(double place, Blend blend) const;

    // Places between which the colour changes without a jump, in order.
    std::vector<double> edges() const;

    // What readGradient() makes the same gradient of.
    const std::string& text() const { return description; }

    // How colours are mixed unless it is said: stops as seen by the eye, segments as GIMP does.
    Blend usualBlend() const { return fromStops ? Blend::oklab : Blend::srgb; }

  private:
    std::vector<Segment> segments;
    std::string description;
    bool fromStops;
};

// The share of `to` at `place` of a segment, by GIMP's formulas.
double shareAt(const Segment& segment, double place);

// The gradient of this name or text: one of gradientNames(), stops such as "#000764 0, #206bcb
// 0.16" (places from 0 to 1 in order, at least one stop), or the text of a GIMP gradient. Failure
// that says what was expected, and in which column or line, for anything else.
Gradient readGradient(const std::string& text);

// A colour as "#206bcb", and back; nothing for any other text.
std::optional<Colour> readColourText(std::string_view text);
std::string colourText(const Colour& colour);

// Whether a text names a gradient's file: one that ends in .map or .ggr.
bool isGradientFile(std::string_view text);

// The gradient in such a file. K colours of a .map stand at 0, 1/K, 2/K and so on. Failure with the
// file's name, and mostly the line.
Gradient readGradientFile(const std::string& path);

// Those that are built in, the usual one first.
const std::vector<std::string>& gradientNames();

// Its stops as text; empty for a name that is none.
std::string_view builtInGradient(std::string_view name);

}  // namespace render

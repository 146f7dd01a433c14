// How a view flies between places that doubles cannot name, at a steady pace through any depth.
//
// Beside exact decimals all of it is the arithmetic of render/steady_zoom.h: the same everywhere.
#pragma once

#include <optional>

#include "frac/decimal.h"
#include "frac/fractal.h"

namespace render {

// The flight of a centre and a width: the width changes by one constant factor in equal parts of
// the way, about the point that has the same place in both pictures; equal widths move along.
class ExactFlight {
  public:
    // Rectangles of doubles count with all their digits; their heights do not matter. Nothing where
    // one is mirrored, empty or infinite.
    static std::optional<ExactFlight> between(const fractal& from, const fractal& to);

    // The place after `done` of the way, with `left` still to go; both 0 to 1, together 1. Its
    // width is rounded to 20 digits, its centre to as small a part of that; a part of the centre
    // that stays is written as at the end that is narrower. No constant.
    ExactPlace at(double done, double left) const;

  private:
    struct Place {
        Decimal re, im, width;
        std::string reText, imText;  // the centre as it was written
    };
    static std::optional<Place> placeOf(const fractal& view);
    ExactFlight(const Place& from, const Place& to);

    Decimal widthAt(double fromLarge, double fromSmall) const;
    Decimal towardsLarge(const Decimal& way, double fromLarge, double fromSmall) const;

    Place large, small;
    double log;      // of the larger width by the smaller
    bool shrinking;  // whether the flight starts at the larger one
};

}  // namespace render

// How one side of a rectangle changes while a view flies to another at a steady pace.
//
// All of it is + - * / and scaling by powers of two, which every processor rounds alike, so a
// flight is the same everywhere.
#pragma once

#include <optional>

namespace render {

// The ends of a side; high is below low in a mirrored view.
struct Side {
    double low = 0, high = 0;
};

// e^-x for x >= 0, at most x * 2^-52 or so from it. 0 where it is below every number.
double decay(double x);

// 1 - e^-x for x >= 0.
double decayed(double x);

// The natural logarithm of large / small, for finite large >= small > 0.
double logRatio(double large, double small);

// The flight of one side: its length grows or shrinks by one constant factor in equal parts of the
// way, about the point that has the same place in both sides; sides of equal length move along.
class SideFlight {
  public:
    // Nothing where there is no such flight: a side without length or with an end that is not
    // finite, or sides that are mirrored to one another.
    static std::optional<SideFlight> between(Side from, Side to);

    // The side after `done` of the way, with `left` still to go; both 0 to 1, together 1. Rounding
    // may carry it past an end by some units in the last place.
    Side at(double done, double left) const;

  private:
    SideFlight(Side from, Side to);
    double halfLength(double fromLarge, double fromSmall) const;
    double centre(double fromLarge, double fromSmall) const;

    double largeHalf, smallHalf, largeCentre, smallCentre;
    double log;      // of the larger length by the smaller
    bool shrinking;  // whether the flight starts at the larger one
};

}  // namespace render

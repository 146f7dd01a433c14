#include "tests/fuzz/gradient_check.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using render::Blend;
using render::Gradient;
using render::Levels;

// The edges and what lies between and about them.
std::vector<double> placesIn(const Gradient& gradient) {
    std::vector<double> places = {0, 1, 1.0 / 3, 0.999999, 5e-324};
    double last = 0;
    for (const double edge : gradient.edges()) {
        require(edge >= last && edge <= 1, "edges come in order");
        places.insert(places.end(), {edge, (last + edge) / 2, std::nextafter(edge, 0.0)});
        last = edge;
        if (places.size() > 200) break;
    }
    return places;
}

bool isLevel(double value) {
    return value >= 0 && value <= 1;
}

Levels levelsAt(const Gradient& gradient, double place, Blend blend) {
    const Levels levels = gradient.at(place, blend);
    require(std::all_of(levels.begin(), levels.end(), isLevel), "levels are from 0 to 1");
    return levels;
}

}  // namespace

void checkGradient(const Gradient& gradient) {
    const Gradient again = render::readGradient(gradient.text());
    require(again.text() == gradient.text(), "a gradient's text is read as itself");
    for (const double place : placesIn(gradient)) {
        for (const Blend blend : {Blend::oklab, Blend::linear, Blend::srgb}) {
            require(levelsAt(gradient, place, blend) == levelsAt(again, place, blend),
                    "a gradient's text makes the same colours");
        }
    }
}

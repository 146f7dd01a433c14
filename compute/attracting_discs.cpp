#include "compute/attracting_discs.h"

#include <cmath>
#include <limits>

namespace {

struct KnownDiscs {
    Point c{std::numeric_limits<double>::quiet_NaN(), 0};
    double unit = 0;
    Discs discs;
};

// Each thread writes and reads its own, no lock.
thread_local KnownDiscs lastOfThread;

double lengthOf(const Point& z) {
    return std::sqrt(magnitudeSquared(z));
}

// The root of z with the real part that is not negative; z not on the negative real axis.
Point rootOf(const Point& z) {
    const double re = std::sqrt((lengthOf(z) + z.r) / 2);
    return {re, z.i / (2 * re)};
}

bool inCardioid(const Point& c) {
    const double x = c.r - 0.25, q = x * x + c.i * c.i;
    return q * (q + x) < c.i * c.i / 4;
}

bool inDiscLeftOfIt(const Point& c) {
    return (c.r + 1) * (c.r + 1) + c.i * c.i < 0.0625;
}

void findFixedPoint(const Constants& c, Discs& discs) {
    const Point root = rootOf({1 - 4 * c.middle.r, -4 * c.middle.i});
    discs.count = 1;
    discs.middle[0] = {(1 - root.r) / 2, -root.i / 2};
    // The larger root of F (2 |b| + F) + off = F, and a little less.
    const double room = 1 - 2 * lengthOf(discs.middle[0]);
    discs.fit(0.4995 * (room + std::sqrt(room * room - 4 * c.off())), 1, c);
}

void findTwoPoints(const Constants& c, Discs& discs) {
    const Point root = rootOf({-3 - 4 * c.middle.r, -4 * c.middle.i});
    discs.count = 2;
    discs.middle[0] = {(-1 + root.r) / 2, root.i / 2};
    discs.middle[1] = {(-1 - root.r) / 2, -root.i / 2};
    discs.fit(0.5, 8, c);
}

}  // namespace

bool Discs::close(double first, const Constants& c) {
    double next = first;
    for (std::size_t k = 0; k < count; ++k) {
        radius[k] = next;
        const double length = lengthOf(middle[k]);
        if (!(length + next < 1.99)) return false;
        const Point gap = middle[k] * middle[k] + c.middle - middle[(k + 1) % count];
        next = next * (2 * length + next) + lengthOf(gap) + c.off();
    }
    return next <= first;
}

void Discs::fit(double largest, int tries, const Constants& c) {
    for (; tries > 0; --tries, largest *= 0.75) {
        if (close(largest, c)) return;
    }
    count = 0;
}

bool Discs::hold(const Point& z, double extent, double unit) const {
    for (std::size_t k = 0; k < count; ++k) {
        if (lengthOf(z - middle[k]) + extent <= reach(k, unit)) return true;
    }
    return false;
}

void findDiscs(const Constants& c, Discs& discs) {
    discs.count = 0;
    if (inCardioid(c.middle)) {
        findFixedPoint(c, discs);
    } else if (inDiscLeftOfIt(c.middle)) {
        findTwoPoints(c, discs);
    }
}

void findDiscsByTrial(const Constants& c, Discs& discs) {
    constexpr int STEPS_TO_REST = 3000;
    discs.count = 0;
    Point z{0, 0};
    for (int i = 0; i < STEPS_TO_REST; ++i) {
        z = z * z + c.middle;
        if (!(magnitudeSquared(z) <= 4)) return;
    }
    const Point first = z;
    for (std::size_t n = 0; n < Discs::MOST; ++n) {
        discs.middle[n] = z;
        z = z * z + c.middle;
        if (lengthOf(z - first) > 1e-6) continue;
        discs.count = n + 1;
        discs.fit(1, 60, c);
        return;
    }
}

const Discs& discsOfView(const Point& c, double unit) {
    KnownDiscs& known = lastOfThread;
    if (!(c.r == known.c.r && c.i == known.c.i && unit == known.unit)) {
        known.c = c;
        known.unit = unit;
        findDiscsByTrial({c, 0, unit}, known.discs);
    }
    return known.discs;
}

#include "compute/staying_region.h"

#include <algorithm>
#include <cmath>

namespace {

using Point = cpuComplex<double>;

// The region begins as coarse squares whose middles stay for long.
constexpr int COARSE = 4, COARSE_CELLS = StayingRegion::CELLS / COARSE;

Point middleOf(int x, int y) {
    constexpr double SIDE = double{COARSE} / StayingRegion::PER_UNIT;
    return {(x + 0.5) * SIDE - 2, (y + 0.5) * SIDE - 2};
}

// Squares that are looked at together, so that one orbit's results are waited for beside others'.
struct Batch {
    static constexpr int MOST = 8;

    // Takes in the middle of another square.
    void add(int x, int y) {
        const Point z = middleOf(x, y);
        for (int n = count; n < MOST; ++n) re[n] = z.r, im[n] = z.i;
        ++count;
    }

    // Twice as many steps as needed: what is near the rim of what stays cannot be proven.
    void follow(const Horizon& h) {
        constexpr int BETWEEN_LOOKS = 32;
        for (int n = 0; n < 2 * h.steps && anyStays(); n += BETWEEN_LOOKS) {
            for (int k = 0; k < BETWEEN_LOOKS; ++k) step(h.c);
        }
    }

    void step(const Point& c) {
        for (int n = 0; n < MOST; ++n) {
            const double product = re[n] * im[n];
            re[n] = re[n] * re[n] - im[n] * im[n] + c.r;
            im[n] = product + product + c.i;
        }
    }

    bool stays(int n) const { return re[n] * re[n] + im[n] * im[n] < 4; }
    bool anyStays() const {
        bool any = false;
        for (int n = 0; n < count; ++n) any |= stays(n);
        return any;
    }

    double re[MOST], im[MOST];
    int count = 0;
};

bool middleStays(const Horizon& h, int x, int y) {
    Batch one;
    one.add(x, y);
    one.follow(h);
    return one.stays(0);
}

void fillSquare(StayingRegion& region, int x, int y) {
    constexpr std::uint32_t SQUARE = (1u << COARSE) - 1;
    const int first = x * COARSE;
    for (int i = 0; i < COARSE; ++i) {
        region.row[y * COARSE + i][first / StayingRegion::BITS] |= SQUARE
                                                                   << first % StayingRegion::BITS;
    }
}

// Fills the coarse squares that stay and hang together with one of them.
class Flood {
  public:
    Flood(const Horizon& h, StopFlag flag, StayingRegion& r) : horizon(h), stop(flag), region(r) {}

    void from(int x, int y) {
        wait(x, y);
        while (count > 0 && !isSet(stop)) {
            Batch batch;
            const int first = std::max(count - Batch::MOST, 0), last = count;
            for (int n = first; n < last; ++n) batch.add(columnOf(waiting[n]), lineOf(waiting[n]));
            batch.follow(horizon);
            std::uint16_t done[Batch::MOST];
            std::copy(waiting + first, waiting + last, done);
            count = first;
            for (int n = 0; n < batch.count; ++n) {
                if (batch.stays(n)) take(columnOf(done[n]), lineOf(done[n]));
            }
        }
    }

  private:
    static int columnOf(int square) { return square % COARSE_CELLS; }
    static int lineOf(int square) { return square / COARSE_CELLS; }

    void take(int x, int y) {
        fillSquare(region, x, y);
        wait(x - 1, y);
        wait(x + 1, y);
        wait(x, y - 1);
        wait(x, y + 1);
    }

    void wait(int x, int y) {
        if (x < 0 || y < 0 || x >= COARSE_CELLS || y >= COARSE_CELLS || seen[y][x]) return;
        seen[y][x] = true;
        waiting[count++] = static_cast<std::uint16_t>(y * COARSE_CELLS + x);
    }

    const Horizon& horizon;
    StopFlag stop;
    StayingRegion& region;
    bool seen[COARSE_CELLS][COARSE_CELLS] = {};
    std::uint16_t waiting[COARSE_CELLS * COARSE_CELLS] = {};
    int count = 0;
};

// Takes away the cells with an edge to the outside that does not pass its test, until all do.
class Peeling {
  public:
    Peeling(const Horizon& h, EdgeTest test, StopFlag flag, StayingRegion& r)
        : horizon(h), stays(test), stop(flag), region(r) {}

    // Whether the outline is proven in the end.
    bool run() {
        bool changed = true;
        while (changed && tests <= MOST_TESTS) {
            changed = false;
            for (int y = 0; y < StayingRegion::CELLS; ++y) changed |= peelRow(y);
        }
        return !changed && tests <= MOST_TESTS;
    }

  private:
    // Where something is found, some 4,100 do.
    static constexpr int MOST_TESTS = 5000;

    bool peelRow(int y) {
        bool changed = false;
        for (int word = 0; word < StayingRegion::CELLS / StayingRegion::BITS; ++word) {
            for (std::uint32_t left = region.row[y][word]; left != 0; left &= left - 1) {
                const int bit = __builtin_ctz(left);
                if (outlineStays(word * StayingRegion::BITS + bit, y)) continue;
                if (tests > MOST_TESTS) return true;
                region.row[y][word] &= ~(1u << bit);
                changed = true;
            }
        }
        return changed;
    }

    // Whether every side of the cell that is one of the outline passes.
    bool outlineStays(int x, int y) {
        return (region.has(x, y - 1) || passes({x, y, true})) &&
               (region.has(x, y + 1) || passes({x, y + 1, true})) &&
               (region.has(x - 1, y) || passes({x, y, false})) &&
               (region.has(x + 1, y) || passes({x + 1, y, false}));
    }

    bool passes(const CellEdge& edge) {
        bool& known = proven[edge.across][edge.y][edge.x];
        if (known) return true;
        if (isSet(stop)) tests = MOST_TESTS;  // as if they had been made
        if (++tests > MOST_TESTS) return false;
        return known = stays(horizon, edge);
    }

    const Horizon& horizon;
    EdgeTest stays;
    StopFlag stop;
    StayingRegion& region;
    int tests = 0;
    bool proven[2][StayingRegion::CELLS + 1][StayingRegion::CELLS + 1] = {};
};

}  // namespace

int StayingRegion::cellOf(double coordinate) {
    const double cell = std::floor((coordinate + 2) * PER_UNIT);
    return cell >= 0 && cell < CELLS ? static_cast<int>(cell) : -1;
}

bool StayingRegion::holdsAll(const cpuComplex<double>& a, const cpuComplex<double>& b) const {
    const auto [left, right] = std::minmax({cellOf(a.r), cellOf(b.r)});
    const auto [low, high] = std::minmax({cellOf(a.i), cellOf(b.i)});
    if (!any) return false;
    for (int y = low; y <= high; ++y) {
        for (int x = left; x <= right; ++x) {
            if (!has(x, y)) return false;
        }
    }
    return true;
}

bool findStayingRegion(const Horizon& horizon, const Point& place, EdgeTest stays,
                       StayingRegion& region, StopFlag stop) {
    region = {};
    const int x = StayingRegion::cellOf(place.r), y = StayingRegion::cellOf(place.i);
    if (x < 0 || y < 0 || !middleStays(horizon, x / COARSE, y / COARSE)) return false;
    Flood(horizon, stop, region).from(x / COARSE, y / COARSE);
    if (isSet(stop)) return false;
    if (!Peeling(horizon, stays, stop, region).run()) return !isSet(stop);
    for (const auto& line : region.row) {
        for (const std::uint32_t word : line) region.any |= word != 0;
    }
    return true;
}

bool KnownRegion::worthASearch(std::size_t more) {
    stayed += more;
    if (sought || stayed < next) return false;
    next = stayed + (stayed + 7) / 8;
    return true;
}

void KnownRegion::beginAnew(const Horizon& wanted) {
    horizon = wanted;
    stayed = 0;
    next = WORTH_A_SEARCH;
    sought = region.any = false;
}

#include "deep/skips.h"

#include <algorithm>
#include <cmath>

#include "compute/pair.h"

namespace deep {
namespace {

// All sums of bounds below round upwards by this, relatively: their own roundings are far less.
constexpr double UPWARDS = 1 + 0x1p-30;

// Mantissas beyond 2^+-MOST_SHIFT give their exponent away.
constexpr int MOST_SHIFT = 100;

template <class N>
double sizeOf(const Complex<N>& a) {
    return std::sqrt(squareOf(a)) * UPWARDS;
}

// A number with an exponent of its own, which is 0 as long as the number is of moderate size.
template <class N>
struct Scaled {
    Complex<N> number;
    std::int64_t exponent;

    void normalize() {
        const double size = std::max(std::fabs(head(number.re)), std::fabs(head(number.im)));
        const int own = size > 0 ? std::ilogb(size) : 0;
        const std::int64_t all = exponent + own;
        const std::int64_t wanted = std::abs(all) <= MOST_SHIFT ? 0 : all;
        number = times(number, widePower(exponent - wanted));
        exponent = wanted;
    }
};

}  // namespace

// A linear map with its certificate: kappa in units of 2^a.exponent, beta of Delta 2^b.exponent.
template <int PARTS>
class SkipMaker {
  public:
    using Number = Of<PARTS, double>;
    struct Map {
        Scaled<Number> a, b;
        double kappa, beta;
        Wide radius;
    };

    SkipMaker(const Reference& from, double limit, double unit, double furthest,
              double etaOverDelta, std::int64_t deltaExponent)
        : reference(from),
          u(unit),
          epsilon(furthest),
          stays(0.995 * std::min(2.0, std::sqrt(limit))),
          ownBeta(6 * unit + etaOverDelta),
          delta(1, deltaExponent) {}

    void make(Skips<PARTS>& to, std::uint32_t start, std::uint32_t end) {
        auto& tree = to.trees[to.treeCount++];
        tree.start = start;
        std::vector<Map> maps = firstLevel(start, end);
        while (!maps.empty()) {
            auto& level = tree.levels.emplace_back();
            level.reserve(maps.size());
            for (const Map& map : maps) level.push_back(node(map));
            for (const auto& n : level) to.largest = std::max(to.largest, n.key);
            const auto span = std::uint32_t{1} << (LEAST_LEVEL + tree.levels.size());
            for (std::uint32_t j = 0; j < maps.size() / 2; ++j) {
                maps[j] = merged(maps[2 * j], maps[2 * j + 1], start + 1 + (j + 1) * span);
            }
            maps.resize(maps.size() / 2);
        }
    }

  private:
    std::vector<Map> firstLevel(std::uint32_t start, std::uint32_t end) {
        constexpr std::uint32_t SPAN = 1u << LEAST_LEVEL;
        std::vector<Map> maps;
        maps.reserve((end - start) / SPAN + 1);
        for (std::uint32_t m = start + 1; m + SPAN <= end; m += SPAN) {
            const Map first = merged(leaf(m), leaf(m + 1), m + 2);
            maps.push_back(merged(first, merged(leaf(m + 2), leaf(m + 3), m + 4), m + 4));
        }
        return maps;
    }

    Scaled<Number> point(std::uint32_t m) const {
        const TinyPoint* tiny = reference.tinyAt(m);
        if (tiny != nullptr) return {cut<PARTS>(tiny->number), tiny->exponent};
        return {reference.point<PARTS>(m), 0};
    }

    double distance(std::uint32_t m) const {
        return std::hypot(reference.z[0][2 * m], reference.z[0][2 * m + 1]) * UPWARDS;
    }

    // One step: w = 2 Z + d, |d|^2 <= r |d|, and 2 Z is rounded by u |2 Z| when kept.
    Map leaf(std::uint32_t m) const {
        Map map{point(m), {cut<PARTS>(ONE), 0}, 0, ownBeta, {}};
        map.a.number = times(map.a.number, 2.0);
        const Wide size(sizeOf(map.a.number), map.a.exponent);
        const Wide room(stays - distance(m));
        map.radius = std::max(Wide(), std::min(size * Wide(epsilon), room));
        map.a.normalize();
        map.kappa =
            (map.radius.at(-map.a.exponent) + 1.01 * u * size.at(-map.a.exponent)) * UPWARDS;
        return map;
    }

    // x, then y, which leads to index `end`.
    Map merged(const Map& x, const Map& y, std::uint32_t end) const {
        Map map;
        const double ax = sizeOf(x.a.number), ay = sizeOf(y.a.number);
        const double bx = sizeOf(x.b.number), by = sizeOf(y.b.number);
        map.a = {y.a.number * x.a.number, y.a.exponent + x.a.exponent};
        map.kappa = (ay * x.kappa + y.kappa * (ax + x.kappa) + 6 * u * ay * ax) * UPWARDS;
        addParts(map, x, y, bx, ay, by);
        rescale(map);
        map.radius = radius(map, x, y, end);
        return map;
    }

    // How far x, then y, may be told from their map; what has overflowed tells nothing.
    Wide radius(const Map& map, const Map& x, const Map& y, std::uint32_t end) const {
        if (!std::isfinite(map.kappa) || !std::isfinite(map.beta)) return {};
        const Wide moved = Wide((sizeOf(x.b.number) + x.beta) * UPWARDS, x.b.exponent) * delta;
        const Wide grown((sizeOf(x.a.number) + x.kappa) * UPWARDS, x.a.exponent);
        const Wide left = Wide(stays - distance(end)) -
                          Wide((sizeOf(map.b.number) + map.beta) * UPWARDS, map.b.exponent) * delta;
        const Wide all((sizeOf(map.a.number) + map.kappa) * UPWARDS, map.a.exponent);
        return std::min(
            {x.radius, held(quotient(y.radius - moved, grown)), held(quotient(left, all))});
    }

    // B = A_y B_x + B_y; beta = |A_y| beta_x + kappa_y (|B_x| + beta_x) + beta_y + roundings.
    void addParts(Map& map, const Map& x, const Map& y, double bx, double ay, double by) const {
        const std::int64_t first = y.a.exponent + x.b.exponent;
        map.b.exponent = std::max(first, y.b.exponent);
        const double f = widePower(first - map.b.exponent),
                     g = widePower(y.b.exponent - map.b.exponent);
        map.b.number = times(y.a.number * x.b.number, f) + times(y.b.number, g);
        map.beta = ((ay * x.beta + y.kappa * (bx + x.beta) + 6 * u * ay * bx) * f +
                    (y.beta + 6 * u * by) * g) *
                   UPWARDS;
    }

    static void rescale(Map& map) {
        const std::int64_t a = map.a.exponent, b = map.b.exponent;
        map.a.normalize();
        map.b.normalize();
        map.kappa *= widePower(a - map.a.exponent);
        map.beta *= widePower(b - map.b.exponent);
    }

    // A radius that is negative or no number holds no difference.
    static Wide held(Wide radius) { return radius > Wide() ? radius : Wide(); }

    static Wide quotient(Wide a, Wide b) {
        return b.isZero() ? Wide(1, 1 << 20) : a / b * Wide(1 / UPWARDS);
    }

    // (|d| + e)^2 <= 1.0625 (D + 16 E).
    static std::int64_t keyWithin(Wide radius) {
        if (radius.isZero()) return std::numeric_limits<std::int64_t>::min();
        const Wide most = radius * radius * Wide(1 / 1.0626);
        return keyOf(most.mantissa(), most.exponent());
    }

    // The error becomes (|A| + kappa) e + (kappa + 8 u |A|) |d| + (beta + 8 u |B|) Delta at most:
    // the map's slope, its certificate, and the roundings of A d + B dc.
    Node<PARTS> node(const Map& map) const {
        Node<PARTS> n;
        const double a = sizeOf(map.a.number), b = sizeOf(map.b.number);
        const double slope = a + map.kappa, size = map.kappa + 8 * u * a,
                     rest = map.beta + 8 * u * b;
        n.a = map.a.number;
        n.b = map.b.number;
        n.onBound = slope * slope * UPWARDS;
        n.onSize = 2 * size * size * UPWARDS;
        n.onDelta = 2 * rest * rest * UPWARDS;
        n.key = keyWithin(map.radius);
        n.aExponent = static_cast<std::int32_t>(map.a.exponent);
        n.bExponent = static_cast<std::int32_t>(map.b.exponent);
        return n;
    }

    static constexpr Complex<Pair<double>> ONE{{1, 0}, {0, 0}};
    const Reference& reference;
    const double u, epsilon, stays, ownBeta;
    const Wide delta;
};

template <int PARTS>
void Skips<PARTS>::make(const Reference& reference, double limit, double unit, double radius,
                        double etaOverDelta, std::int64_t deltaExponent) {
    SkipMaker<PARTS> maker(reference, limit, unit, radius, etaOverDelta, deltaExponent);
    largest = std::numeric_limits<std::int64_t>::min();
    if (reference.critical > 0) maker.make(*this, 0, reference.firstEnd);
    maker.make(*this, reference.critical, reference.lastEnd);
}

template class Skips<1>;
template class Skips<2>;

}  // namespace deep

// A node of the table of skips against the steps it stands for, each taken without roundings that
// matter: |F(d, dc) - (A d + B dc)| <= kappa |d| + beta for all d within the node's radius.
//
// The reference stays at a fixed point of its Julia set: so each step has the same rounding of Z,
// and the errors of A and B all point one way. That leaves more room than one term fills: so two
// nodes without any error of their own are merged as well.
#include <gmpxx.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "deep/exact_view.h"
// The maker of the tables stands in this source alone.
#include "deep/skips.cpp"  // NOLINT(bugprone-suspicious-include)

namespace {

constexpr long BITS = 1200;
constexpr int STEPS = 256;
constexpr double NONE = 0x1p-120;  // as a radius: what is left out is nothing beside the roundings
constexpr std::int64_t DELTA = -420;

// Numbers of so many digits that these steps lose none that matter.
struct Point {
    mpf_class re, im;
};
Point pointOf(double re, double im, std::int64_t exponent) {
    Point p{mpf_class(re, BITS), mpf_class(im, BITS)};
    const auto by = static_cast<mp_bitcnt_t>(std::abs(exponent));
    for (mpf_class* x : {&p.re, &p.im}) exponent < 0 ? * x >>= by : * x <<= by;
    return p;
}
Point operator+(const Point& a, const Point& b) {
    return {a.re + b.re, a.im + b.im};
}
Point operator-(const Point& a, const Point& b) {
    return {a.re - b.re, a.im - b.im};
}
Point operator*(const Point& a, const Point& b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
// |a| / 2^exponent.
double sizeOf(const Point& a, std::int64_t exponent = 0) {
    const mpf_class square = a.re * a.re + a.im * a.im;
    long power = 0;
    const double part = mpf_get_d_2exp(&power, square.get_mpf_t());
    return std::sqrt(std::ldexp(part, power & 1)) *
           std::exp2(static_cast<double>((power >> 1) - exponent));
}

// z = z^2 + c at a point of six digits.
struct FixedPoint {
    mpq_class re, im;

    deep::View view() const {
        return {
            text(re), text(im), "1e-280", text(re - re * re + im * im), text(im - 2 * re * im), 4,
            4,        4,        STEPS + 2};
    }
    Point point() const { return {mpf_class(re, BITS), mpf_class(im, BITS)}; }

  private:
    static std::string text(const mpq_class& x) {
        const mpz_class digits = x.get_num() * mpz_class("1000000000000") / x.get_den();
        return digits.get_str() + "e-12";
    }
};

// Some repel by little, so that nodes are of moderate size, some by more, and some attract.
FixedPoint fixedPoint(std::mt19937_64& random, int n) {
    constexpr double LEAST[] = {0.5, 0.5, 0.05}, MOST[] = {0.52, 0.95, 0.4};
    std::uniform_real_distribution<double> turn(0, 6.2831853), size(LEAST[n % 3], MOST[n % 3]);
    const double r = size(random), angle = turn(random);
    FixedPoint point{mpq_class(std::lround(r * std::cos(angle) * 1e6), 1000000),
                     mpq_class(std::lround(r * std::sin(angle) * 1e6), 1000000)};
    point.re.canonicalize();
    point.im.canonicalize();
    return point;
}

Point pointOf(const Complex<double>& x, std::int64_t exponent) {
    return pointOf(x.re, x.im, exponent);
}
Point pointOf(const Complex<Pair<double>>& x, std::int64_t exponent) {
    return pointOf(x.re.high, x.im.high, exponent) + pointOf(x.re.low, x.im.low, exponent);
}

constexpr double unitOf(int parts) {
    return parts == 1 ? 0x1p-53 : 0x1p-99;
}

// The node and what it promises, kappa in units of 2^aExponent, beta of Delta 2^bExponent.
template <int PARTS>
struct Promise {
    explicit Promise(const deep::Node<PARTS>& n)
        : node(n), a(pointOf(n.a, n.aExponent)), b(pointOf(n.b, n.bExponent)) {
        // The table keeps 2 (kappa + 8 u |A|)^2 and 2 (beta + 8 u |B|)^2.
        constexpr double u = unitOf(PARTS);
        kappa = std::sqrt(n.onSize / 2) - 8 * u * sizeOf(a, n.aExponent);
        beta = std::sqrt(n.onDelta / 2) - 8 * u * sizeOf(b, n.bExponent);
    }
    const deep::Node<PARTS>& node;
    Point a, b;
    double kappa, beta;
};

struct Case {
    bool moves;      // d is not 0
    bool isOffset;   // dc is not 0
    double radius;   // of the table
    double eta = 0;  // by which one step is off, the first or the last, over Delta
};

// What a difference goes through.
struct Course {
    int steps;
    Point d, dc, eta;
    int offAt;  // the step that is off by eta
};

// Of |F(d, dc) - (A d + B dc)|, as a part of what is promised for it.
template <int PARTS>
double usedOf(const Promise<PARTS>& promise, const FixedPoint& fixed, const Course& course) {
    const auto& [steps, d, dc, eta, offAt] = course;
    const Point z = fixed.point(), w = z + z;
    Point exact = d;
    for (int n = 0; n < steps; ++n) {
        exact = (w + exact) * exact + dc;
        if (n == offAt) exact = exact + eta;
    }
    const Point off = exact - (promise.a * d + promise.b * dc);
    const double ofA = promise.kappa * sizeOf(pointOf(1, 0, promise.node.aExponent)),
                 ofB = promise.beta * sizeOf(pointOf(1, 0, promise.node.bExponent));
    const double allowed = ofA * sizeOf(d, DELTA) + ofB;
    const double used = sizeOf(off, DELTA);
    return used == 0 ? 0 : used / allowed;
}

// The largest |d| of a node, in units of 2^DELTA.
double radiusOf(std::int64_t key) {
    const auto bits = static_cast<std::uint64_t>(key - 2 * DELTA * (std::int64_t{1} << 40));
    return std::sqrt(std::bit_cast<double>(bits << 12));
}

// The k-th size of a difference, in units of 2^DELTA: the radius itself where that matters.
double sizeOfDifference(const Case& with, std::int64_t key, int k) {
    if (!with.moves) return 0;
    return std::ldexp(with.radius == NONE ? 0x1p10 : radiusOf(key), -3 * k);
}

template <int PARTS>
void expectPromisesKept(const Case& with) {
    std::mt19937_64 random(20261122);
    for (int n = 0; n < 60; ++n) {
        const FixedPoint fixed = fixedPoint(random, n);
        const deep::View view = fixed.view();
        const deep::ExactView exact(view);
        const deep::Reference reference(exact, view, BITS, nullptr);
        deep::Skips<PARTS> skips;
        skips.make(reference, view.limit, unitOf(PARTS), with.radius, with.eta, DELTA);
        for (int span = 4; span <= STEPS; span *= 2) {
            int steps = 0;
            const auto* node =
                skips.find(1, std::numeric_limits<std::int64_t>::min(), span, &steps);
            ASSERT_TRUE(node != nullptr && steps == span) << span;
            const Promise<PARTS> promise(*node);
            for (int k = 0; k < 4; ++k) {
                const double turn = 0.7 * k + n, size = sizeOfDifference(with, node->key, k);
                const Point d = pointOf(size * std::cos(turn), size * std::sin(turn), DELTA);
                const double offset = with.isOffset ? 0.999 : 0;
                const Point dc =
                    pointOf(offset * std::cos(3 * turn), offset * std::sin(3 * turn), DELTA);
                const Point eta = pointOf(0.999 * with.eta, 0, DELTA);
                const Course course{steps, d, dc, eta, k % 2 == 0 ? 0 : steps - 1};
                ASSERT_LE(usedOf(promise, fixed, course), 1) << n << ' ' << span << ' ' << k;
            }
        }
    }
}

TEST(ANodeOfDoubles, KeepsItsPromiseOnTheDifference) {
    expectPromisesKept<1>({true, false, NONE});
}

TEST(ANodeOfDoubles, KeepsItsPromiseOnTheOffset) {
    expectPromisesKept<1>({false, true, NONE});
}

TEST(ANodeOfDoubles, KeepsItsPromiseOnTheRoundingsOfTheReference) {
    expectPromisesKept<1>({false, false, NONE, 0x1p-20});
}

TEST(ANodeOfDoubles, KeepsItsPromisesTogether) {
    expectPromisesKept<1>({true, true, 0x1p-52});
}

TEST(ANodeOfPairs, KeepsItsPromisesTogether) {
    expectPromisesKept<2>({true, true, 0x1p-95});
}

TEST(ANodeOfPairs, KeepsItsPromiseOnTheDifference) {
    expectPromisesKept<2>({true, false, NONE});
}

TEST(ANodeOfPairs, KeepsItsPromiseOnTheOffset) {
    expectPromisesKept<2>({false, true, NONE});
}

// ---- single nodes ----

using Maker = deep::SkipMaker<1>;

// Private members by name: an explicit instantiation may say them all.
template <class Name, auto MEMBER>
struct Opened {
    friend auto opened(Name) { return MEMBER; }
};
#define TESSARY_OPEN(Name, name)  \
    struct Name {                 \
        friend auto opened(Name); \
    };                            \
    template struct Opened<Name, &Maker::name>
TESSARY_OPEN(Merged, merged);
TESSARY_OPEN(NodeOf, node);
#undef TESSARY_OPEN

struct SingleNodes {
    deep::View view{"0.3", "0.2", "1e-280", "-0.32", "0.54", 4, 4, 4, 20};
    deep::ExactView exact{view};
    deep::Reference reference{exact, view, BITS, nullptr};
    Maker maker{reference, view.limit, unitOf(1), NONE, 0, DELTA};
};

// No simple number of about this size.
Complex<double> numberOf(std::mt19937_64& random, double size) {
    std::uniform_real_distribution<double> turn(0, 6.2831853), part(0.7, 1.4);
    const double angle = turn(random), length = size * part(random);
    return {length * std::cos(angle), length * std::sin(angle)};
}

struct ExactNumber {
    mpq_class re, im;
};
ExactNumber exactly(const Complex<double>& x) {
    return {x.re, x.im};
}
ExactNumber operator*(const ExactNumber& a, const ExactNumber& b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
ExactNumber operator+(const ExactNumber& a, const ExactNumber& b) {
    return {a.re + b.re, a.im + b.im};
}
mpq_class squaredDistance(const ExactNumber& a, const Complex<double>& b) {
    const mpq_class re = a.re - b.re, im = a.im - b.im;
    return re * re + im * im;
}

// B_y beside A_y B_x may be large, alike or small: each of both has its roundings.
TEST(AMergedNode, PromisesNoLessThanItsOwnRoundings) {
    const SingleNodes nodes;
    std::mt19937_64 random(20261122);
    for (int n = 0; n < 6000; ++n) {
        const double share = std::exp2(20 * (n % 3 - 1));
        Maker::Map x{{numberOf(random, 1.5), 0}, {numberOf(random, 1), 0}, 0, 0, Wide(1)};
        Maker::Map y{{numberOf(random, 3), 0}, {numberOf(random, 3 * share), 0}, 0, 0, Wide(1)};
        const Maker::Map both = (nodes.maker.*opened(Merged()))(x, y, 1);
        const ExactNumber ay = exactly(y.a.number);
        const ExactNumber a = ay * exactly(x.a.number);
        const ExactNumber b = ay * exactly(x.b.number) + exactly(y.b.number);
        ASSERT_LE(squaredDistance(a, both.a.number), mpq_class(both.kappa) * both.kappa) << n;
        ASSERT_LE(squaredDistance(b, both.b.number), mpq_class(both.beta) * both.beta) << n;
    }
}

// What has overflowed, or is made of what has.
TEST(AMergedNode, HoldsNoDifferenceWhereItsCertificateIsNoNumber) {
    const SingleNodes nodes;
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        for (int which = 0; which < 5; ++which) {
            Maker::Map x{{{2, 1}, 0}, {{1, 0}, 0}, 0x1p-50, 0x1p-50, Wide(0x1p-60)}, y = x;
            ASSERT_FALSE((nodes.maker.*opened(Merged()))(x, y, 1).radius.isZero());
            (which == 0   ? x.kappa
             : which == 1 ? x.beta
             : which == 2 ? y.kappa
             : which == 3 ? y.beta
                          : x.b.number.re) = bad;
            EXPECT_TRUE((nodes.maker.*opened(Merged()))(x, y, 1).radius.isZero()) << which;
        }
    }
    Maker::Map x{{{2, 1}, 0}, {{1, 0}, 0}, 0, 0, Wide(0x1p-60)}, y = x;
    y.radius = Wide(std::nan(""));
    EXPECT_TRUE((nodes.maker.*opened(Merged()))(x, y, 1).radius.isZero());
}

// In units of which d and the offset are of the size of 1: what A d + B dc loses, by the operations
// of a step.
TEST(ANode, AddsNoLessThanTheRoundingsOfItsUse) {
    const SingleNodes nodes;
    std::mt19937_64 random(20261122);
    for (int n = 0; n < 6000; ++n) {
        const double share = std::exp2(20 * (n % 3 - 1));
        const Maker::Map map{
            {numberOf(random, 3), 0}, {numberOf(random, 3 * share), 0}, 0, 0, Wide(1)};
        const auto node = (nodes.maker.*opened(NodeOf()))(map);
        const Complex<double> d = numberOf(random, 1), dc = numberOf(random, 0.7);
        const Complex<double> made = mulAdd(node.a, d, node.b * dc);
        const ExactNumber exact = exactly(node.a) * exactly(d) + exactly(node.b) * exactly(dc);
        const double allowed = node.onSize * squareOf(d) + node.onDelta;
        ASSERT_LE(squaredDistance(exact, made), mpq_class(allowed)) << n;
    }
}

// Where the true difference, d and its error, may be longer than the radius no node is used.
TEST(ANode, IsNotFoundWhereTheTrueDifferenceMayBeOutOfItsRadius) {
    const SingleNodes nodes;
    for (int n = 1; n < 2000; ++n) {
        const double radius = 1 + n * 0x1p-12, e = radius * n / 2000, d = radius * 1.00001 - e;
        const Maker::Map map{{{2, 0}, 0}, {{1, 0}, 0}, 0, 0, Wide(radius)};
        const auto node = (nodes.maker.*opened(NodeOf()))(map);
        ASSERT_GT(deep::keyOf(d * d + 16 * e * e, 0), node.key) << n;
    }
}

}  // namespace
